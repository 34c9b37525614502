#include "Platform/Posix/Moments.h"

namespace Platform::Posix {

void atMoment(Moment /*moment*/, int /*folder*/, const char* /*name*/) {}

}  // namespace Platform::Posix
