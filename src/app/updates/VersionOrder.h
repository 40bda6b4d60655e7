#pragma once

#include <compare>
#include <string_view>

namespace vostel {

// Orders version texts as update feeds mean them. A text is a row of numbers (of any length) and
// words; everything between them only separates. Numbers count as numbers; zeros at the end of a
// row of numbers do not count ("1.0" is "1.0.0"); a word announces what it stands before ("2.0b1"
// and "2.0-rc1" come before "2.0"), words compare by their ASCII letters without case. What follows
// a
// "+" and a "v" before the first number are passed over. Any two texts can be compared, in a total
// preorder.
std::weak_ordering compareVersions(std::string_view a, std::string_view b);

// The numbers that a release of the kernel begins with: "6.1.0-18-amd64" gives "6.1.0".
std::string_view leadingNumbers(std::string_view release);

}  // namespace vostel
