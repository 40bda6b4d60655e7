#pragma once

#include "app/CommandLine.h"

namespace vostel {

// Writes the bar, the items and their popovers as PNG files, from live data of a few seconds.
// Returns 1 when a file cannot be written.
int runSnapshot(const CommandLine& commandLine, int& argc, char** argv);

}  // namespace vostel
