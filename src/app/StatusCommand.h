#pragma once

#include "app/CommandLine.h"

namespace vostel {

class AppServices;

// Prints every enabled item's current values once.
int runStatus(const CommandLine& commandLine, int& argc, char** argv);

// The same of these services: starts the items, waits until each has measured what it shows (rates
// need two readings, 0.25 s apart; a source that does not answer has four seconds) and prints to
// standard output. Runs the event loop of the application object.
int printStatus(AppServices& services, bool json);

}  // namespace vostel
