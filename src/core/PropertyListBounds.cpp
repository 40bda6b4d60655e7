#include "core/PropertyListBounds.h"

#include <cstdint>
#include <optional>
#include <vector>

#include <QByteArrayMatcher>

namespace vostel {

namespace {

constexpr int mostContainers = 4000;
constexpr int mostNodes = 500'000;
constexpr std::uint64_t mostBytes = 64 << 20;

// Binary form: a header, the objects, a table of their offsets, and a trailer of 32 bytes that
// holds, from byte 6 on: size of an offset, size of a reference (1 byte each), number of objects,
// number of the root, offset of the table (8 bytes each). Numbers are big-endian.
constexpr std::uint64_t headerSize = 8;
constexpr std::uint64_t trailerSize = 32;
constexpr std::uint64_t widest = 8;  // bytes of a number that says where or how much

class BinaryForm {
  public:
    explicit BinaryForm(const QByteArray& form)
        : bytes(form), size(static_cast<std::uint64_t>(form.size())) {}

    bool isBounded() {
        if (size < headerSize + trailerSize) {
            return true;  // does not parse
        }
        const std::uint64_t trailer = size - trailerSize;
        offsetSize = number(trailer + 6, 1);
        referenceSize = number(trailer + 7, 1);
        objects = number(trailer + 8, 8);
        table = number(trailer + 24, 8);
        if (objects > size) {
            return true;  // more than the table has room for: does not parse
        }
        if (objects > mostNodes || offsetSize > widest || referenceSize > widest) {
            return false;
        }
        named.assign(objects, false);
        for (std::uint64_t i = 0; i < objects; ++i) {
            const auto object = at(i);
            if (object && (object->isTooWide || (object->references > 0 && !count(*object)))) {
                return false;
            }
        }
        return true;
    }

  private:
    struct Object {
        std::uint64_t references = 0;  // of a list or dictionary
        std::uint64_t first = 0;       // where they stand
        std::uint64_t bytes = 0;       // of a text or data
        bool isContainer = false;
        bool isTooWide = false;  // the number that tells its length
    };

    // 0 beyond the end.
    std::uint64_t number(std::uint64_t from, std::uint64_t length) const {
        std::uint64_t value = 0;
        for (std::uint64_t i = 0; i < length && from < size && i < size - from; ++i) {
            value = value << 8 | static_cast<std::uint8_t>(bytes[static_cast<qsizetype>(from + i)]);
        }
        return value;
    }

    std::optional<Object> at(std::uint64_t index) const {
        const std::uint64_t offset = number(table + index * offsetSize, offsetSize);
        if (index >= objects || offset >= size) {
            return std::nullopt;
        }
        const std::uint64_t marker = number(offset, 1);
        std::uint64_t length = marker & 0xF;
        Object object;
        object.first = offset + 1;
        if (length == 0xF) {  // an integer object of 2^n bytes tells the length
            const std::uint64_t width = std::uint64_t{1} << (number(offset + 1, 1) & 0xF);
            if (width > widest) {
                object.isTooWide = true;
                return object;
            }
            length = number(offset + 2, width);
            object.first = offset + 2 + width;
        }
        length = std::min(length, size);
        switch (marker >> 4) {
            case 0xA:  // list
            case 0xC:  // set
                object.isContainer = true;
                object.references = length;
                break;
            case 0xD:  // dictionary: the keys, then the values
                object.isContainer = true;
                object.references = 2 * length;
                break;
            default:
                object.bytes = length;
                break;
        }
        return object;
    }

    // Adds what the object names to the counts.
    bool count(const Object& object) {
        if (++containers > mostContainers) {
            return false;
        }
        for (std::uint64_t i = 0; i < object.references; ++i) {
            if (++nodes > mostNodes) {
                return false;
            }
            const std::uint64_t position = object.first + i * referenceSize;
            if (position >= size) {
                return true;  // does not parse
            }
            const std::uint64_t index = number(position, referenceSize);
            const auto target = at(index);
            if (!target) {
                continue;
            }
            total += target->bytes + 1;
            if (total > mostBytes || (target->isContainer && named[index])) {
                return false;
            }
            named[index] = true;
        }
        return true;
    }

    const QByteArray& bytes;
    const std::uint64_t size;
    std::uint64_t offsetSize = 0;
    std::uint64_t referenceSize = 0;
    std::uint64_t objects = 0;
    std::uint64_t table = 0;
    std::vector<bool> named;
    int containers = 0;
    int nodes = 0;
    std::uint64_t total = 0;
};

int occurrences(const QByteArray& text, const char* word, int most) {
    const QByteArrayMatcher matcher(word);
    int found = 0;
    for (qsizetype at = matcher.indexIn(text); at >= 0 && found <= most;
         at = matcher.indexIn(text, at + 1)) {
        ++found;
    }
    return found;
}

}  // namespace

bool isBinaryPropertyList(const QByteArray& bytes) {
    return bytes.startsWith("bplist");
}

bool isPropertyListBounded(const QByteArray& bytes) {
    if (isBinaryPropertyList(bytes)) {
        return BinaryForm(bytes).isBounded();
    }
    return occurrences(bytes, "<dict", mostContainers) +
                   occurrences(bytes, "<array", mostContainers) <=
               mostContainers &&
           occurrences(bytes, "<", 2 * mostNodes) <= 2 * mostNodes;  // each is opened and closed
}

}  // namespace vostel
