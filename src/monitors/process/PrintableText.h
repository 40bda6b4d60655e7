#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vostel {

// True when `bytes` is well-formed UTF-8 (Unicode 15, table 3-7).
bool isUtf8(std::string_view bytes);

// Bytes from outside as one line that can be shown: U+FFFD for what is not UTF-8, blanks for runs
// of white space and control characters, no invisible direction marks (a name must not be able to
// pose as another), no blanks around, at most `mostCharacters` code points, the last one an
// ellipsis when something was cut.
std::string printableText(std::string_view bytes, std::size_t mostCharacters);

}  // namespace vostel
