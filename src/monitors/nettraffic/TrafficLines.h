#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vostel {

// The rates of one process between two blocks, in bytes per second.
struct ProcessTraffic {
    int pid = 0;
    std::string name;  // as the helper printed it, any bytes
    double down = 0;
    double up = 0;
};

// One row: "NAME.PID,IN,OUT". Blanks may stand for the commas, a clock time and an empty last field
// may surround it. Nothing for anything else.
struct TrafficRow {
    int pid = 0;
    std::string_view name;
    std::uint64_t bytesIn = 0;
    std::uint64_t bytesOut = 0;
};
std::optional<TrafficRow> parseTrafficRow(std::string_view line);

// The first clock time "HH:MM:SS" or "HH:MM:SS.fraction" in the line, in seconds since midnight.
std::optional<double> parseClockTime(std::string_view line);

// Turns the output of the traffic helper into rates, block by block. Takes bytes in pieces of any
// size. What is kept is bounded: a line of more than `longestLine` bytes is skipped up to its end,
// and a block counts at most `mostRows` processes.
class TrafficLines {
  public:
    static constexpr std::size_t longestLine = 4096;
    static constexpr std::size_t mostRows = 8192;
    static constexpr std::size_t mostDelivered = 10;

    // `interval`: seconds between blocks, for blocks whose times do not tell. The helper counts in
    // whole seconds, so its blocks are `interval` rounded up apart.
    explicit TrafficLines(double interval);

    // Returns the result of the last block that these bytes completed: the processes with traffic,
    // the busiest first, at most ten; among equals the lowest pid first. Nothing when no block was
    // completed, and for the first block, which only gives the next one its start. So does a block
    // after a gap of more than three intervals (a suspend, a stopped helper), with an empty result.
    // The helper's clock goes on from midnight at 0 and is never set: an earlier time of day is one
    // of the next day.
    std::optional<std::vector<ProcessTraffic>> feed(std::string_view bytes);

    // Blocks completed so far.
    std::uint64_t blocks() const { return blockCount; }

    // How far the helper sees, as it says in a line "# sight=..."; empty before that.
    const std::string& sight() const { return sightWords; }

  private:
    struct Counters {
        std::string name;
        std::uint64_t bytesIn = 0;
        std::uint64_t bytesOut = 0;
    };
    using Block = std::map<int, Counters>;

    void takeLine(std::string_view line);
    void finishBlock();
    std::vector<ProcessTraffic> ratesOver(double seconds) const;

    double interval;
    std::string buffer;  // of a line whose end has not come
    bool skipping = false;
    bool open = false;  // a header has come and the block goes on
    std::optional<double> time;
    std::optional<double> previousTime;
    std::uint64_t blockCount = 0;
    Block rows;
    std::optional<Block> previous;
    std::optional<std::vector<ProcessTraffic>> result;
    std::string sightWords;
};

}  // namespace vostel
