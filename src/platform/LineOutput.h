#pragma once

#include <string_view>

namespace vostel {

// What became of a line.
enum class LineOutput {
    Written,
    Dropped,  // there is no room: whoever reads has stopped, for now
    Closed,   // nobody reads any more
};

// Writes a line, and the end of it, to an open file without ever waiting, also where who reads has
// stopped (a full pipe, a terminal that is held). A line of a pipe is written whole or not at all;
// what is longer than a pipe takes at once (PIPE_BUF, 4096 bytes) is cut. From any thread.
LineOutput writeLine(int descriptor, std::string_view line);

}  // namespace vostel
