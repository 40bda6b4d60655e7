#include "monitors/process/PsOutput.h"

#include <charconv>
#include <cmath>

#include "monitors/process/CommandWords.h"
#include "monitors/process/FriendlyName.h"
#include "monitors/process/PrintableText.h"

namespace vostel {

namespace {

template <typename Number>
bool toNumber(std::string_view word, Number& value) {
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return error == std::errc() && end == word.data() + word.size();
}

}  // namespace

std::vector<ProcEntry> parsePsOutput(std::string_view text) {
    std::vector<ProcEntry> entries;
    if (!isUtf8(text)) {
        return entries;
    }
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        ProcEntry entry;
        const bool numbers = toNumber(CommandWords::takeWord(line), entry.pid) &&
                             toNumber(CommandWords::takeWord(line), entry.cpu) &&
                             toNumber(CommandWords::takeWord(line), entry.rss);
        const std::size_t command = line.find_first_not_of(" \t");
        // "nan" and "inf" are numbers to from_chars, but cannot be sorted.
        if (numbers && command != std::string_view::npos && std::isfinite(entry.cpu) &&
            std::isfinite(entry.rss)) {
            entry.name = friendlyName(line.substr(command));
            entries.push_back(std::move(entry));
        }
    }
    return entries;
}

}  // namespace vostel
