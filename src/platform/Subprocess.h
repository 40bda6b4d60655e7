#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vostel::Subprocess {

// Runs the program at `path` (no search along PATH) and returns what it wrote to its standard
// output, byte for byte. Nothing when it cannot be started, runs longer than `timeoutSeconds`, ends
// by a signal or with an exit status other than 0, or writes more than `outputCap` bytes.
//
// The program runs in a process group of its own, with default signals, standard input and error
// on /dev/null and no other descriptor of ours. Its output is complete when it ends: what it leaves
// running does not delay the answer, and the whole group is killed before this returns.
//
// Blocks its thread; any thread but the main one may call it, several at the same time.
std::optional<std::string> run(const std::string& path, const std::vector<std::string>& arguments,
                               double timeoutSeconds, std::size_t outputCap = 8 << 20);

}  // namespace vostel::Subprocess
