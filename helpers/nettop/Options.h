#pragma once

#include <optional>
#include <span>
#include <string>

namespace vostel::nettop {

struct Options {
    int interval = 1;      // seconds between two blocks, 1 to 3600 ("-s")
    long long blocks = 0;  // how many to print; 0: until the reader goes away ("-l")
    bool help = false;
    bool version = false;
};

// What the command line asks for, or the one line to print before ending with status 2.
struct ParsedOptions {
    Options options;
    std::string error;  // empty: none
};

// Accepts "-P" (one row per process), "-x" (plain numbers), "-J bytes_in,bytes_out", "-l COUNT",
// "-s SECONDS", "--help" and "--version". The first two are the only form of output there is.
ParsedOptions parseOptions(std::span<char* const> arguments);

std::string helpText();

}  // namespace vostel::nettop
