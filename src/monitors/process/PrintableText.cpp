#include "monitors/process/PrintableText.h"

#include <cstdint>

namespace vostel {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::string_view ellipsis = "\xE2\x80\xA6";     // U+2026

// The length of the well-formed sequence that `bytes` begins with, 0 when there is none.
std::size_t takeCharacter(std::string_view bytes, std::uint32_t& character) {
    const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned lead = at(0);
    if (lead < 0x80) {
        character = lead;
        return 1;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) {
        return 0;
    }
    character = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80) {
            return 0;
        }
        character = character << 6 | (at(i) & 0x3F);
    }
    const bool overlong =
        (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    return overlong || surrogate || character > 0x10FFFF ? 0 : length;
}

bool isBlank(std::uint32_t c) {
    return c <= 0x20 || (c >= 0x7F && c <= 0xA0) || c == 0x2028 || c == 0x2029;
}

// Direction marks, zero-width characters, byte order mark.
bool isInvisible(std::uint32_t c) {
    return (c >= 0x200B && c <= 0x200F) || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || c == 0xAD || c == 0x61C;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        std::uint32_t character = 0;
        const std::size_t length = takeCharacter(bytes, character);
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
    return true;
}

std::string printableText(std::string_view bytes, std::size_t mostCharacters) {
    std::string text;
    std::size_t count = 0;
    std::size_t lastStart = 0;  // where the last character in `text` begins
    bool blankWaits = false;
    const auto append = [&](std::string_view character) {
        lastStart = text.size();
        text += character;
        ++count;
    };
    while (!bytes.empty() && count <= mostCharacters) {
        std::uint32_t character = 0xFFFD;
        const std::size_t length = takeCharacter(bytes, character);
        const std::string_view shown = length > 0 ? bytes.substr(0, length) : replacement;
        bytes.remove_prefix(length > 0 ? length : 1);
        if (length > 0 && isBlank(character)) {
            blankWaits = !text.empty();
        } else if (length == 0 || !isInvisible(character)) {
            if (blankWaits && count < mostCharacters) {
                append(" ");
            }
            blankWaits = false;
            if (count == mostCharacters) {
                text.resize(mostCharacters > 0 ? lastStart : 0);
                text += mostCharacters > 0 ? ellipsis : std::string_view();
                return text;
            }
            append(shown);
        }
    }
    return text;
}

}  // namespace vostel
