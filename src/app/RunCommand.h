#pragma once

#include "app/CommandLine.h"

namespace vostel {

// The program itself: chooses a bar, starts the modules, runs until it is asked to quit. Returns
// the exit status.
int runProgram(const CommandLine& commandLine, int& argc, char** argv);

}  // namespace vostel
