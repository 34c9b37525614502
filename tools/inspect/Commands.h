#pragma once

#include "Definitions.h"

namespace Inspect {

// The commands. Each writes its output and returns the exit status.

int runScan(const Arguments& arguments);
int runVerify(const Arguments& arguments);
int runPlan(const Arguments& arguments);
int runFind(const Arguments& arguments);
int runCommands(const Arguments& arguments);
int runDecode(const Arguments& arguments);
int runExplain(const Arguments& arguments);
int runCatalogue(const Arguments& arguments);

}  // namespace Inspect
