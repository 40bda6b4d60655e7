#pragma once

#include <string>
#include <vector>

namespace vostel {

// Writes the line to standard error, "[Vostel] " before it, without waiting for who reads it, and
// keeps it for the diagnostics. From any thread. Never give it a secret.
void writeLogLine(const std::string& line);

// The last lines, oldest first: at most 40, each cut at 400 bytes.
std::vector<std::string> recentLogLines();

}  // namespace vostel
