#include "Platform/Darwin/DarwinSystemLog.h"

#include "Platform/Darwin/FoundationBridge.h"

namespace Platform::Darwin {

void DarwinSystemLog::log(std::string_view text) {
    const Pool pool;
    // Never as the format: the text has paths and other programs' output in it.
    NSLog(@"%@", foundationString(text));
}

}  // namespace Platform::Darwin
