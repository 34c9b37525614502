#include "ItemText.h"

#include "Base/FatalError.h"

namespace Inspect {

const char* nameOf(Platform::ItemKind kind) {
    switch (kind) {
        case Platform::ItemKind::file:
            return "file";
        case Platform::ItemKind::folder:
            return "folder";
        case Platform::ItemKind::link:
            return "link";
        case Platform::ItemKind::other:
            return "other";
    }
    Base::fatalError("unexpected enumeration value");
}

}  // namespace Inspect
