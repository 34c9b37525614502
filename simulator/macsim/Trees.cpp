#include "macsim/Trees.h"

#include "macsim/HostPrograms.h"

namespace Simulator {

bool removeTree(const std::string& folder) {
    // The tool copes with any depth, which the standard library's removal does not.
    return runProgram({"rm", "-rf", "--one-file-system", "--", folder}) == 0;
}

}  // namespace Simulator
