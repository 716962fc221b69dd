#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ovka {

/// A property list as a tree of values: text, bytes, ordered array, dictionary in the order of the
/// file. Text is UTF-8. A plain value: copying copies the tree.
class PropertyList {
 public:
  struct Entry;
  using Bytes = std::vector<std::uint8_t>;
  using Array = std::vector<PropertyList>;
  using Dictionary = std::vector<Entry>;

  PropertyList();                       ///< empty text
  PropertyList(std::string text);       // NOLINT: a value is what it holds
  PropertyList(const char* text);       // NOLINT
  PropertyList(Bytes bytes);            // NOLINT
  PropertyList(Array array);            // NOLINT
  PropertyList(Dictionary dictionary);  // NOLINT
  PropertyList(const PropertyList& other);
  PropertyList(PropertyList&& other) noexcept;
  PropertyList& operator=(const PropertyList& other);
  PropertyList& operator=(PropertyList&& other) noexcept;
  ~PropertyList();

  /// nullptr when the value is of another kind.
  [[nodiscard]] const std::string* text() const { return std::get_if<std::string>(&value_); }
  [[nodiscard]] const Bytes* bytes() const { return std::get_if<Bytes>(&value_); }
  [[nodiscard]] const Array* array() const { return std::get_if<Array>(&value_); }
  [[nodiscard]] const Dictionary* dictionary() const { return std::get_if<Dictionary>(&value_); }
  [[nodiscard]] Array* array() { return std::get_if<Array>(&value_); }
  [[nodiscard]] Dictionary* dictionary() { return std::get_if<Dictionary>(&value_); }

  /// The value of a key; nullptr when this is no dictionary or has no such key. Of a key that
  /// occurs twice the last one counts.
  [[nodiscard]] const PropertyList* find(std::string_view key) const;

  [[nodiscard]] bool operator==(const PropertyList& other) const;

 private:
  std::variant<std::string, Bytes, Array, Dictionary> value_;
};

struct PropertyList::Entry {
  std::string key;
  PropertyList value;

  [[nodiscard]] bool operator==(const Entry& other) const {
    return key == other.key && value == other.value;
  }
};

}  // namespace ovka
