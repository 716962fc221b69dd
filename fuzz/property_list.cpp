#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "PropertyListReader.h"
#include "PropertyListWriter.h"

using namespace ovka;

namespace {

std::string textOf(const PropertyList& list) {
  std::string text;
  MemoryWriter to(text);
  PropertyListWriter writer(to);
  writer.value(list);
  if (writer.finish() != 0) std::abort();
  return text;
}

/// Lengths of all data items, as counted and as handed on.
struct Lengths final : PropertyListEvents {
  explicit Lengths(bool want) : wanted(want) {}
  bool wanted;
  std::uint64_t handedOn = 0;
  std::vector<std::uint64_t> counted;

  bool beginDictionary() override { return true; }
  bool key(std::string_view /*text*/) override { return true; }
  bool endDictionary() override { return true; }
  bool beginArray() override { return true; }
  bool endArray() override { return true; }
  bool string(std::string_view /*text*/) override { return true; }
  bool beginData(bool* want) override {
    *want = wanted;
    handedOn = 0;
    return true;
  }
  bool data(std::span<const std::uint8_t> bytes) override {
    handedOn += bytes.size();
    return true;
  }
  bool endData(std::uint64_t length) override {
    if (wanted && handedOn != length) std::abort();
    counted.push_back(length);
    return true;
  }
};

std::vector<std::uint64_t> lengthsOf(std::string_view input, bool wanted) {
  MemoryFile file(input);
  Lengths lengths(wanted);
  PropertyListParser parser(file, lengths);
  if (!parser.parse()) std::abort();
  return lengths.counted;
}

}  // namespace

/// Whatever is read must be written in a form that reads as the same tree, and the lengths of data
/// may not depend on whether its bytes are wanted.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  PropertyList list;
  PropertyListError error;
  if (!readPropertyList(input, &list, &error)) {
    if (error.text.empty()) std::abort();
    return 0;
  }
  if (lengthsOf(input, true) != lengthsOf(input, false)) std::abort();
  const std::string text = textOf(list);
  PropertyList back;
  if (!readPropertyList(text, &back, &error)) std::abort();
  // Texts that are no UTF-8 change once, to characters; then nothing may change any more.
  if (textOf(back) != text) std::abort();
  return 0;
}
