#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vostel {

// The words of the first command in shell code that does some work: what only prepares ("cd",
// "export", assignments before it) is skipped, quotes are resolved, and the words end where one
// begins that only a shell could tell ("$X"). Empty when the code is more than such commands:
// whatever is returned first is a command, never an argument or a value.
std::vector<std::string> firstCommand(std::string_view code);

}  // namespace vostel
