#include "app/updates/VersionOrder.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vostel {

namespace {

// In the order of age: a version that goes on with a word is older than one that ends here.
enum class Kind { Word, End, Number };

struct Run {
    Kind kind = Kind::End;
    std::string_view text;  // a number without leading zeros
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isLetter(char c) {
    const char l = lower(c);
    return (l >= 'a' && l <= 'z') || static_cast<unsigned char>(c) >= 0x80;
}

void dropZeros(std::vector<Run>& runs) {
    while (!runs.empty() && runs.back().kind == Kind::Number && runs.back().text.empty()) {
        runs.pop_back();
    }
}

std::vector<Run> runsOf(std::string_view version) {
    version = version.substr(0, version.find('+'));
    if (version.size() > 1 && lower(version[0]) == 'v' && isDigit(version[1])) {
        version.remove_prefix(1);
    }
    std::vector<Run> runs;
    for (std::size_t i = 0; i < version.size();) {
        std::size_t end = i + 1;
        if (isDigit(version[i])) {
            while (end < version.size() && isDigit(version[end])) {
                ++end;
            }
            while (i < end && version[i] == '0') {
                ++i;
            }
            runs.push_back({Kind::Number, version.substr(i, end - i)});
        } else if (isLetter(version[i])) {
            while (end < version.size() && isLetter(version[end])) {
                ++end;
            }
            dropZeros(runs);
            runs.push_back({Kind::Word, version.substr(i, end - i)});
        }
        i = end;
    }
    dropZeros(runs);
    return runs;
}

std::weak_ordering compareRuns(const Run& a, const Run& b) {
    if (a.kind != b.kind) {
        return a.kind <=> b.kind;
    }
    if (a.kind == Kind::Number && a.text.size() != b.text.size()) {
        return a.text.size() <=> b.text.size();
    }
    return std::lexicographical_compare_three_way(
        a.text.begin(), a.text.end(), b.text.begin(), b.text.end(), [](char x, char y) {
            return static_cast<unsigned char>(lower(x)) <=> static_cast<unsigned char>(lower(y));
        });
}

}  // namespace

std::weak_ordering compareVersions(std::string_view a, std::string_view b) {
    const std::vector<Run> left = runsOf(a);
    const std::vector<Run> right = runsOf(b);
    for (std::size_t i = 0; i < std::max(left.size(), right.size()); ++i) {
        const auto order =
            compareRuns(i < left.size() ? left[i] : Run(), i < right.size() ? right[i] : Run());
        if (order != 0) {
            return order;
        }
    }
    return std::weak_ordering::equivalent;
}

std::string_view leadingNumbers(std::string_view release) {
    const auto end = std::find_if(release.begin(), release.end(),
                                  [](char c) { return !isDigit(c) && c != '.'; });
    return release.substr(0, static_cast<std::size_t>(end - release.begin()));
}

}  // namespace vostel
