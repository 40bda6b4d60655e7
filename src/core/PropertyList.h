#pragma once

#include <plist/plist.h>

#include <map>
#include <memory>
#include <optional>
#include <string_view>

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace vostel {

// A property list node and everything below it; owns the C handle.
struct PlistDeleter {
    void operator()(void* node) const { plist_free(static_cast<plist_t>(node)); }
};
using PlistNode = std::unique_ptr<void, PlistDeleter>;

// A property list whose root is a dictionary with text keys: what a settings file holds. Values
// of every property-list type are kept as they are, also those that this program has no use for.
class PropertyList {
  public:
    PropertyList();
    PropertyList(const PropertyList& other);
    PropertyList(PropertyList&&) = default;
    PropertyList& operator=(PropertyList other);

    // Reads the XML or the binary form. Nothing when the bytes do not parse or stand for more than
    // can be read safely (see PropertyListBounds); `notDictionary` is set when they parse, but
    // their root is not a dictionary.
    static std::optional<PropertyList> parse(const QByteArray& bytes,
                                             bool* notDictionary = nullptr);

    // Well-formed whatever the texts hold: XML 1.0 has no place for most control characters, which
    // are left out.
    QByteArray toXml() const;

    bool contains(const QString& key) const;
    QStringList keys() const;
    void remove(const QString& key);

    // Typed reading; a value of another type counts as absent. A boolean may be stored as the
    // number 0 or 1; a number may be stored as an integer; numbers are finite.
    std::optional<bool> boolean(const QString& key) const;
    std::optional<double> number(const QString& key) const;
    std::optional<QString> text(const QString& key) const;
    std::optional<QStringList> textList(const QString& key) const;  // every entry must be text

    // The truth of whatever is stored: a boolean, a number other than 0, a text that begins with
    // Y, y, T, t or a digit from 1 to 9. Anything else is false.
    bool truth(const QString& key) const;
    // Whether a boolean, a number or a text is stored, which have a truth of their own.
    bool holdsTruth(const QString& key) const;

    void set(const QString& key, bool value);
    void set(const QString& key, double value);
    void set(const QString& key, const QString& value);
    void set(const QString& key, const QStringList& value);
    // A copy of the value that `other` holds under the key; nothing when it holds none.
    void copyFrom(const PropertyList& other, const QString& key);

  private:
    explicit PropertyList(PlistNode node) : root(std::move(node)) {}
    plist_t item(const QString& key) const;
    void setNode(const QString& key, plist_t node);

    PlistNode root;
};

}  // namespace vostel
