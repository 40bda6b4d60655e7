#pragma once

#include "app/CommandLine.h"

namespace vostel {

// Settings to a file and back from the command line, with the running program when there is one.
// Return the exit status; a failure is one line on standard error.
int runExport(const CommandLine& commandLine, int& argc, char** argv);
int runImport(const CommandLine& commandLine, int& argc, char** argv);

}  // namespace vostel
