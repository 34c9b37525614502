#include "Platform/FileFacts.h"

namespace Platform {

TreeSize& TreeSize::operator+=(const TreeSize& more) {
    files += more.files;
    folders += more.folders;
    links += more.links;
    others += more.others;
    bytes += more.bytes;
    unread += more.unread;
    return *this;
}

}  // namespace Platform
