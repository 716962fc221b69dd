#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Files.h"
#include "PropertyList.h"
#include "PropertyListParser.h"

namespace ovka {

/// Bytes in memory as a file; the caller keeps them.
class MemoryFile final : public FileReader {
 public:
  explicit MemoryFile(std::string_view bytes) : bytes_(bytes) {}
  [[nodiscard]] std::uint64_t size() const override { return bytes_.size(); }
  [[nodiscard]] int readAt(std::uint64_t offset, std::span<std::byte> out,
                           std::size_t* got) override;

 private:
  std::string_view bytes_;
};

/// Builds the tree of what is read. Refuses once the tree would take more than `bytes` of memory: a
/// short hostile text may ask for very many empty values.
class PropertyListBuilder final : public PropertyListEvents {
 public:
  static constexpr std::size_t kDefaultBytes = 512U << 20U;

  explicit PropertyListBuilder(std::size_t bytes = kDefaultBytes) : left_(bytes) {}
  /// The finished tree.
  [[nodiscard]] PropertyList take() { return std::move(root_); }
  /// The tree of what was read before a fault; a value that was not finished is left out.
  [[nodiscard]] PropertyList takeUnfinished();

  bool beginDictionary() override { return open(PropertyList::Dictionary{}); }
  bool key(std::string_view text) override;
  bool endDictionary() override { return close(); }
  bool beginArray() override { return open(PropertyList::Array{}); }
  bool endArray() override { return close(); }
  bool string(std::string_view text) override;
  bool beginData(bool* wanted) override;
  bool data(std::span<const std::uint8_t> bytes) override;
  bool endData(std::uint64_t length) override;
  [[nodiscard]] std::string refusal() const override;

 private:
  struct Level {
    PropertyList container;
    std::string key;
  };
  [[nodiscard]] bool charge(std::size_t bytes);
  bool open(PropertyList container);
  bool close();
  bool add(PropertyList value);

  std::size_t left_;
  std::vector<Level> levels_;
  PropertyList::Bytes bytes_;
  PropertyList root_;
};

/// Reads a whole property list. False: `*error` says what and where, `*result` is untouched.
[[nodiscard]] bool readPropertyList(FileReader& source, PropertyList* result,
                                    PropertyListError* error,
                                    const PropertyListLimits& limits = {});
[[nodiscard]] bool readPropertyList(std::string_view text, PropertyList* result,
                                    PropertyListError* error,
                                    const PropertyListLimits& limits = {});

}  // namespace ovka
