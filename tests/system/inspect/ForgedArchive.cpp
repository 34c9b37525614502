#include "ForgedArchive.h"

#include "Base/Archive/KeyedArchiver.h"

namespace InspectTest {

std::string archiveOf(const std::vector<const Base::CodedObject*>& objects) {
    const auto bytes = Base::archivedArray(objects);
    return {bytes.begin(), bytes.end()};
}

std::string archiveOf(const Base::CodedObject& object) {
    return archiveOf(std::vector<const Base::CodedObject*>{&object});
}

}  // namespace InspectTest
