#pragma once

namespace vostel {

// What a list of top processes is sorted by.
enum class ProcMetric { cpu, memory };

}  // namespace vostel
