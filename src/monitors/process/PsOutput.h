#pragma once

#include <string_view>
#include <vector>

#include "monitors/process/ProcEntry.h"

namespace vostel {

// What `ps -A -o pid=,pcpu=,rss=,command=` prints, in its order. The first three fields end at a
// run of blanks, the command keeps its own. A line with fewer fields or with a field that is no
// number is skipped; text that is not UTF-8 gives an empty list. The name is the friendly one.
std::vector<ProcEntry> parsePsOutput(std::string_view text);

}  // namespace vostel
