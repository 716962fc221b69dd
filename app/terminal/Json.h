#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ovka::terminal {

/// Writes JSON piece by piece at the end of a text that the caller hands on whenever it likes.
///
/// Commas and colons come by themselves. Numbers read back exactly (shortest form); NaN and the
/// infinities, which JSON lacks, become null. Texts are escaped; bytes that are not UTF-8 become
/// U+FFFD. No white space is written.
class JsonWriter {
 public:
  explicit JsonWriter(std::string& out) : out_(out) {}

  JsonWriter& beginObject();
  JsonWriter& endObject();
  JsonWriter& beginArray();
  JsonWriter& endArray();
  JsonWriter& key(std::string_view name);

  JsonWriter& number(double value);
  JsonWriter& integer(std::int64_t value);
  JsonWriter& text(std::string_view value);
  JsonWriter& boolean(bool value);
  JsonWriter& null();

  /// An array of numbers.
  JsonWriter& numbers(std::span<const double> values);

 private:
  void separate();
  void quote(std::string_view value);

  std::string& out_;
  std::vector<bool> used_;  ///< one entry an open bracket: whether it holds something already
  bool afterKey_ = false;
};

}  // namespace ovka::terminal
