#include "monitors/nettraffic/TrafficLines.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vostel {

namespace {

constexpr double shortestSeconds = 0.25;  // rates over less than this are noise
constexpr double gapIntervals = 3;
constexpr double secondsOfDay = 86'400;
constexpr std::string_view separators = ", \t\r";

template <typename Number>
std::optional<Number> wholeNumber(std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc{} && end == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
}

void trimRight(std::string_view& text) {
    const std::size_t last = text.find_last_not_of(separators);
    text = text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

void trimLeft(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(separators), text.size()));
}

// Cuts the last field off the text. Fields are taken from the right, because a name may hold
// blanks and commas.
std::string_view takeLastField(std::string_view& text) {
    trimRight(text);
    const std::size_t before = text.find_last_of(separators);
    const std::size_t start = before == std::string_view::npos ? 0 : before + 1;
    const std::string_view field = text.substr(start);
    text = text.substr(0, start);
    return field;
}

struct Clock {
    double seconds = 0;
    std::size_t length = 0;
};

std::optional<Clock> clockAt(std::string_view text) {
    const auto digits = [&](std::size_t at, int most) -> int {
        const auto number = text.size() >= at + 2 && text[at] >= '0' && text[at] <= '9'
                                ? wholeNumber<int>(text.substr(at, 2))
                                : std::nullopt;
        return number && *number <= most ? *number : -1;
    };
    const int hours = digits(0, 23);
    if (text.size() < 8 || hours < 0 || text[2] != ':' || text[5] != ':' || digits(3, 59) < 0 ||
        digits(6, 60) < 0) {
        return std::nullopt;
    }
    Clock clock{hours * 3600.0 + digits(3, 59) * 60.0 + digits(6, 60), 8};
    if (text.size() > 8 && text[8] == '.') {
        double place = 0.1;
        for (clock.length = 9;
             clock.length < text.size() && text[clock.length] >= '0' && text[clock.length] <= '9';
             ++clock.length, place /= 10) {
            clock.seconds += (text[clock.length] - '0') * place;
        }
    }
    return clock;
}

// Counters that fell belong to another process of the same pid, which starts with what it has.
double growth(std::uint64_t now, std::uint64_t before) {
    return now > before ? static_cast<double>(now - before) : 0;
}

}  // namespace

std::optional<double> parseClockTime(std::string_view line) {
    for (std::size_t colon = line.find(':'); colon != std::string_view::npos;
         colon = line.find(':', colon + 1)) {
        if (colon >= 2) {
            if (const auto clock = clockAt(line.substr(colon - 2))) {
                return clock->seconds;
            }
        }
    }
    return std::nullopt;
}

std::optional<TrafficRow> parseTrafficRow(std::string_view line) {
    const auto out = wholeNumber<std::uint64_t>(takeLastField(line));
    const auto in = wholeNumber<std::uint64_t>(takeLastField(line));
    if (!in || !out) {
        return std::nullopt;
    }
    trimRight(line);
    trimLeft(line);
    if (const auto clock = clockAt(line)) {
        line.remove_prefix(clock->length);
        trimLeft(line);
    }
    const std::size_t dot = line.rfind('.');
    const auto pid =
        dot == std::string_view::npos ? std::nullopt : wholeNumber<int>(line.substr(dot + 1));
    if (!pid || *pid < 0) {
        return std::nullopt;
    }
    return TrafficRow{*pid, line.substr(0, dot), *in, *out};
}

TrafficLines::TrafficLines(double seconds) : interval(seconds) {}

std::optional<std::vector<ProcessTraffic>> TrafficLines::feed(std::string_view bytes) {
    result.reset();
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        const std::string_view piece = bytes.substr(0, end);
        skipping = skipping || buffer.size() + piece.size() > longestLine;
        if (skipping) {
            buffer.clear();
        } else {
            buffer.append(piece);
        }
        if (end == std::string_view::npos) {
            break;
        }
        if (!skipping) {
            takeLine(buffer);
        }
        buffer.clear();
        skipping = false;
        bytes.remove_prefix(end + 1);
    }
    return std::move(result);
}

void TrafficLines::takeLine(std::string_view line) {
    constexpr std::string_view sightMark = "# sight=";
    // A process may be called "timedatectl": a row is a row whatever its name begins with.
    if (const auto row = parseTrafficRow(line)) {
        if (open && (rows.size() < mostRows || rows.contains(row->pid))) {
            rows[row->pid] = {std::string(row->name), row->bytesIn, row->bytesOut};
        }
    } else if (line.starts_with("time")) {
        finishBlock();
        open = true;
        time = parseClockTime(line);
    } else if (line == "# end" || line == "# end\r") {
        finishBlock();
    } else if (line.starts_with(sightMark) && line.size() <= 200) {
        sightWords = line.substr(2);
    }
}

void TrafficLines::finishBlock() {
    if (!open) {
        return;
    }
    ++blockCount;
    double seconds = interval;
    if (time && previousTime && *time != *previousTime) {
        seconds = *time - *previousTime + (*time < *previousTime ? secondsOfDay : 0);
    }
    const bool gap = seconds > gapIntervals * std::max(std::ceil(interval), 1.0);
    if (previous) {
        result =
            gap ? std::vector<ProcessTraffic>{} : ratesOver(std::max(seconds, shortestSeconds));
    }
    previous = std::move(rows);
    previousTime = time;
    rows = {};
    open = false;
}

std::vector<ProcessTraffic> TrafficLines::ratesOver(double seconds) const {
    std::vector<ProcessTraffic> rates;
    for (const auto& [pid, now] : rows) {
        const auto before = previous->find(pid);
        if (before == previous->end()) {
            continue;
        }
        const double down = growth(now.bytesIn, before->second.bytesIn) / seconds;
        const double up = growth(now.bytesOut, before->second.bytesOut) / seconds;
        if (down + up > 0) {
            rates.push_back({pid, now.name, down, up});
        }
    }
    std::stable_sort(rates.begin(), rates.end(),
                     [](const auto& a, const auto& b) { return a.down + a.up > b.down + b.up; });
    rates.resize(std::min(rates.size(), mostDelivered));
    return rates;
}

}  // namespace vostel
