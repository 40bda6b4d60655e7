#pragma once

#include "app/CommandLine.h"

namespace vostel {

// Prints every enabled item's current values once. Rates need two readings: takes about a second.
int runStatus(const CommandLine& commandLine, int& argc, char** argv);

}  // namespace vostel
