#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

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

}  // namespace

/// Whatever is read must be written in a form that reads as the same tree, and reading may not
/// depend on whether data is wanted.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  PropertyList list;
  PropertyListError error;
  if (!readPropertyList(input, &list, &error)) {
    if (error.text.empty()) std::abort();
    return 0;
  }
  const std::string text = textOf(list);
  PropertyList back;
  if (!readPropertyList(text, &back, &error)) std::abort();
  // Texts that are no UTF-8 change once, to characters; then nothing may change any more.
  if (textOf(back) != text) std::abort();
  return 0;
}
