#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Files.h"
#include "PropertyList.h"

namespace ovka {

/// A file in memory that is written to.
class MemoryWriter final : public FileWriter {
 public:
  explicit MemoryWriter(std::string& to) : to_(to) {}
  [[nodiscard]] int write(std::span<const std::byte> bytes) override;
  [[nodiscard]] int sync() override { return 0; }
  [[nodiscard]] int commit() override { return 0; }

 private:
  std::string& to_;
};

/// Writes the plain-text (old-style ASCII) form, event by event, in a fixed small memory. The text
/// is pure ASCII: other characters are written as \Uxxxx. Dictionaries keep the order of the calls.
/// A data item breaks its line after every 4096 bytes, so that text tools cope with long ones.
/// Events must come in the order in which a list is built; one thread.
class PropertyListWriter {
 public:
  static constexpr std::size_t kDataLine = 4096;

  /// `to` outlives the writer.
  explicit PropertyListWriter(FileWriter& to);

  void beginDictionary();
  void key(std::string_view text);
  void endDictionary();
  void beginArray();
  void endArray();
  void string(std::string_view text);
  void beginData();
  void data(std::span<const std::uint8_t> bytes);
  void endData();
  /// A whole tree.
  void value(const PropertyList& list);

  /// Ends the text and hands the rest on. Returns the first error of all writes, 0 if none.
  [[nodiscard]] int finish();
  /// The first error so far; after one nothing more is written.
  [[nodiscard]] int error() const { return error_; }

 private:
  void put(std::string_view text);
  void flush();
  void beginValue();
  void endValue();
  void indent();
  void text(std::string_view text);
  void quotedText(std::string_view text);
  void container(char bracket);
  void endContainer(char bracket);

  FileWriter& to_;
  std::unique_ptr<char[]> block_;
  std::size_t used_ = 0;
  int error_ = 0;
  std::size_t depth_ = 0;
  std::vector<bool> isArray_;  ///< of each open container
  std::vector<bool> isEmpty_;
  std::size_t lineBytes_ = 0;  ///< of the present data line
};

}  // namespace ovka
