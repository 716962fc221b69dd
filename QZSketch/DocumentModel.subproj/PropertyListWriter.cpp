#include "PropertyListWriter.h"

#include <algorithm>
#include <cstring>

#include "HexCoding.h"

namespace ovka {
namespace {

constexpr std::size_t kBlockBytes = 256U << 10U;

[[nodiscard]] bool isBare(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  });
}

/// The character at the front of `text`, which loses it. A byte that is no UTF-8 counts as the
/// character of its number, so that nothing is dropped.
unsigned takeCharacter(std::string_view* text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>((*text)[i]); };
  const unsigned first = byte(0);
  const std::size_t length = first < 0xC2 ? 1U : first < 0xE0 ? 2U : first < 0xF0 ? 3U : 4U;
  unsigned code = length == 1 ? first : first & (0xFFU >> (length + 1));
  bool valid = length <= text->size() && first < 0xF5;
  for (std::size_t i = 1; valid && i < length; ++i) {
    valid = (byte(i) & 0xC0U) == 0x80U;
    code = code << 6U | (byte(i) & 0x3FU);
  }
  static constexpr unsigned kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  valid = valid && code >= kLeast[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  text->remove_prefix(valid ? length : 1);
  return valid ? code : first;
}

void appendUnit(std::string* to, unsigned unit) {
  static constexpr char kHex[] = "0123456789abcdef";
  *to += "\\U";
  for (const unsigned shift : {12U, 8U, 4U, 0U}) *to += kHex[unit >> shift & 15U];
}

void appendCharacter(std::string* to, unsigned code) {
  switch (code) {
    case '"':
      *to += "\\\"";
      return;
    case '\\':
      *to += "\\\\";
      return;
    case '\n':
      *to += "\\n";
      return;
    case '\r':
      *to += "\\r";
      return;
    case '\t':
      *to += "\\t";
      return;
    default:
      break;
  }
  if (code >= ' ' && code < 127) {
    *to += static_cast<char>(code);
  } else if (code < 0x10000) {
    appendUnit(to, code);
  } else {
    appendUnit(to, 0xD800 + ((code - 0x10000) >> 10U));
    appendUnit(to, 0xDC00 + ((code - 0x10000) & 0x3FFU));
  }
}

}  // namespace

int MemoryWriter::write(std::span<const std::byte> bytes) {
  to_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return 0;
}

PropertyListWriter::PropertyListWriter(FileWriter& to)
    : to_(to), block_(std::make_unique_for_overwrite<char[]>(kBlockBytes)) {}

void PropertyListWriter::flush() {
  if (error_ == 0 && used_ > 0) {
    error_ = to_.write(std::as_bytes(std::span<const char>(block_.get(), used_)));
  }
  used_ = 0;
}

void PropertyListWriter::put(std::string_view text) {
  while (!text.empty()) {
    if (used_ == kBlockBytes) flush();
    const std::size_t count = std::min(text.size(), kBlockBytes - used_);
    std::memcpy(block_.get() + used_, text.data(), count);
    used_ += count;
    text.remove_prefix(count);
  }
}

void PropertyListWriter::indent() {
  put("\n");
  for (std::size_t i = 0; i < depth_; ++i) put("    ");
}

void PropertyListWriter::beginValue() {
  if (depth_ == 0 || !isArray_.back()) return;
  if (!isEmpty_.back()) put(",");
  isEmpty_.back() = false;
  indent();
}

void PropertyListWriter::endValue() {
  if (depth_ > 0 && !isArray_.back()) put(";");
}

void PropertyListWriter::container(char bracket) {
  beginValue();
  put({&bracket, 1});
  ++depth_;
  isArray_.push_back(bracket == '(');
  isEmpty_.push_back(true);
}

void PropertyListWriter::endContainer(char bracket) {
  --depth_;
  const bool empty = isEmpty_.back();
  isArray_.pop_back();
  isEmpty_.pop_back();
  if (!empty) indent();
  put({&bracket, 1});
  endValue();
}

void PropertyListWriter::beginDictionary() {
  container('{');
}
void PropertyListWriter::endDictionary() {
  endContainer('}');
}
void PropertyListWriter::beginArray() {
  container('(');
}
void PropertyListWriter::endArray() {
  endContainer(')');
}

void PropertyListWriter::key(std::string_view name) {
  isEmpty_.back() = false;
  indent();
  text(name);
  put(" = ");
}

void PropertyListWriter::string(std::string_view content) {
  beginValue();
  text(content);
  endValue();
}

void PropertyListWriter::text(std::string_view content) {
  if (isBare(content)) {
    put(content);
  } else {
    quotedText(content);
  }
}

void PropertyListWriter::quotedText(std::string_view content) {
  std::string piece = "\"";
  while (!content.empty()) {
    appendCharacter(&piece, takeCharacter(&content));
    if (piece.size() > 4096) {
      put(piece);
      piece.clear();
    }
  }
  put(piece + "\"");
}

void PropertyListWriter::beginData() {
  beginValue();
  put("<");
  lineBytes_ = 0;
}

void PropertyListWriter::data(std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    if (lineBytes_ == kDataLine) {
      put("\n");
      lineBytes_ = 0;
    }
    if (kBlockBytes - used_ < 2) flush();
    const std::size_t count =
        std::min({bytes.size(), kDataLine - lineBytes_, (kBlockBytes - used_) / 2});
    hexEncode(bytes.first(count), block_.get() + used_);
    used_ += 2 * count;
    lineBytes_ += count;
    bytes = bytes.subspan(count);
  }
}

void PropertyListWriter::endData() {
  put(">");
  endValue();
}

void PropertyListWriter::value(const PropertyList& list) {
  if (const std::string* content = list.text()) {
    string(*content);
  } else if (const PropertyList::Bytes* bytes = list.bytes()) {
    beginData();
    data(*bytes);
    endData();
  } else if (const PropertyList::Array* array = list.array()) {
    beginArray();
    for (const PropertyList& item : *array) value(item);
    endArray();
  } else if (const PropertyList::Dictionary* dictionary = list.dictionary()) {
    beginDictionary();
    for (const PropertyList::Entry& entry : *dictionary) {
      key(entry.key);
      value(entry.value);
    }
    endDictionary();
  }
}

int PropertyListWriter::finish() {
  put("\n");
  flush();
  return error_;
}

}  // namespace ovka
