#include "core/PropertyList.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/PropertyListBounds.h"

namespace vostel {

namespace {

struct FreeMemory {
    void operator()(char* text) const { std::free(text); }
};
using PlistText = std::unique_ptr<char, FreeMemory>;

QString stringOf(plist_t node) {
    char* raw = nullptr;
    plist_get_string_val(node, &raw);
    const PlistText text(raw);
    return QString::fromUtf8(raw != nullptr ? raw : "");
}

// XML 1.0, section 2.2: the characters that a document may hold.
bool isXmlCharacter(char32_t c) {
    return c >= 0x20 ? c != 0xFFFE && c != 0xFFFF : c == u'\t' || c == u'\n' || c == u'\r';
}

// The bytes as UTF-8 of such characters only. The library writes the bytes of texts as they are.
QByteArray wellFormed(const QByteArray& xml) {
    const bool isPlain = std::all_of(xml.begin(), xml.end(), [](char byte) {
        return static_cast<signed char>(byte) >= 0 && isXmlCharacter(static_cast<char32_t>(byte));
    });
    if (isPlain) {
        return xml;
    }
    QString text = QString::fromUtf8(xml);
    text.removeIf([](QChar c) { return !isXmlCharacter(c.unicode()); });
    return text.toUtf8();
}

}  // namespace

PropertyList::PropertyList() : root(plist_new_dict()) {}

PropertyList::PropertyList(const PropertyList& other) : root(plist_copy(other.root.get())) {}

PropertyList& PropertyList::operator=(PropertyList other) {
    root = std::move(other.root);
    return *this;
}

std::optional<PropertyList> PropertyList::parse(const QByteArray& bytes, bool* notDictionary) {
    if (notDictionary != nullptr) {
        *notDictionary = false;
    }
    if (bytes.isEmpty() || !isPropertyListBounded(bytes)) {
        return std::nullopt;
    }
    plist_t node = nullptr;
    // Each form by the name of its reader: what looks for the form itself has other parameters in
    // newer versions of the library, and finds JSON and OpenStep text, whose lists nobody counted.
    const auto read = isBinaryPropertyList(bytes) ? plist_from_bin : plist_from_xml;
    read(bytes.constData(), static_cast<std::uint32_t>(bytes.size()), &node);
    PlistNode root(node);
    if (!root) {
        return std::nullopt;
    }
    if (plist_get_node_type(node) != PLIST_DICT) {
        if (notDictionary != nullptr) {
            *notDictionary = true;
        }
        return std::nullopt;
    }
    return PropertyList(std::move(root));
}

QByteArray PropertyList::toXml() const {
    char* raw = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root.get(), &raw, &length);
    const PlistText text(raw);
    return wellFormed(QByteArray(raw, static_cast<qsizetype>(length)));
}

plist_t PropertyList::item(const QString& key) const {
    return plist_dict_get_item(root.get(), key.toUtf8().constData());
}

void PropertyList::setNode(const QString& key, plist_t node) {
    plist_dict_set_item(root.get(), key.toUtf8().constData(), node);
}

bool PropertyList::contains(const QString& key) const {
    return item(key) != nullptr;
}

QStringList PropertyList::keys() const {
    QStringList result;
    plist_dict_iter rawIterator = nullptr;
    plist_dict_new_iter(root.get(), &rawIterator);
    const std::unique_ptr<void, decltype(&std::free)> iterator(rawIterator, &std::free);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(root.get(), rawIterator, &key, &value);
        const PlistText text(key);
        if (value == nullptr) {
            return result;
        }
        result << QString::fromUtf8(key);
    }
}

void PropertyList::remove(const QString& key) {
    if (contains(key)) {
        plist_dict_remove_item(root.get(), key.toUtf8().constData());
    }
}

std::optional<bool> PropertyList::boolean(const QString& key) const {
    const plist_t node = item(key);
    if (node != nullptr && plist_get_node_type(node) == PLIST_BOOLEAN) {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }
    const std::optional<double> value = number(key);
    if (value == 0.0 || value == 1.0) {
        return value == 1.0;
    }
    return std::nullopt;
}

std::optional<double> PropertyList::number(const QString& key) const {
    const plist_t node = item(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    if (plist_get_node_type(node) == PLIST_UINT) {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        // The library keeps a negative integer in the same 64 bits.
        return static_cast<double>(static_cast<std::int64_t>(value));
    }
    if (plist_get_node_type(node) == PLIST_REAL) {
        double value = 0;
        plist_get_real_val(node, &value);
        if (std::isfinite(value)) {
            return value;
        }
    }
    return std::nullopt;
}

std::optional<QString> PropertyList::text(const QString& key) const {
    const plist_t node = item(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) {
        return std::nullopt;
    }
    return stringOf(node);
}

std::optional<QStringList> PropertyList::textList(const QString& key) const {
    const plist_t node = item(key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_ARRAY) {
        return std::nullopt;
    }
    QStringList result;
    for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
        const plist_t entry = plist_array_get_item(node, i);
        if (plist_get_node_type(entry) != PLIST_STRING) {
            return std::nullopt;
        }
        result << stringOf(entry);
    }
    return result;
}

bool PropertyList::holdsTruth(const QString& key) const {
    return boolean(key) || number(key) || text(key);
}

bool PropertyList::truth(const QString& key) const {
    if (const auto value = boolean(key)) {
        return *value;
    }
    if (const auto value = number(key)) {
        return *value != 0;
    }
    const QString value = text(key).value_or(QString());
    return !value.isEmpty() && QStringLiteral("YyTt123456789").contains(value.front());
}

void PropertyList::set(const QString& key, bool value) {
    setNode(key, plist_new_bool(value ? 1 : 0));
}

void PropertyList::set(const QString& key, double value) {
    setNode(key, plist_new_real(value));
}

void PropertyList::set(const QString& key, const QString& value) {
    setNode(key, plist_new_string(value.toUtf8().constData()));
}

void PropertyList::set(const QString& key, const QStringList& value) {
    const plist_t array = plist_new_array();
    for (const QString& entry : value) {
        plist_array_append_item(array, plist_new_string(entry.toUtf8().constData()));
    }
    setNode(key, array);
}

void PropertyList::copyFrom(const PropertyList& other, const QString& key) {
    if (const plist_t node = other.item(key)) {
        setNode(key, plist_copy(node));
    }
}

}  // namespace vostel
