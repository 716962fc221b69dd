#include "Json.h"

#include <cmath>

#include "Numbers.h"
#include "Utf8.h"

namespace ovka::terminal {

void JsonWriter::separate() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (used_.empty()) return;
  if (used_.back()) out_ += ',';
  used_.back() = true;
}

JsonWriter& JsonWriter::beginObject() {
  separate();
  out_ += '{';
  used_.push_back(false);
  return *this;
}

JsonWriter& JsonWriter::endObject() {
  out_ += '}';
  used_.pop_back();
  return *this;
}

JsonWriter& JsonWriter::beginArray() {
  separate();
  out_ += '[';
  used_.push_back(false);
  return *this;
}

JsonWriter& JsonWriter::endArray() {
  out_ += ']';
  used_.pop_back();
  return *this;
}

JsonWriter& JsonWriter::key(std::string_view name) {
  separate();
  quote(name);
  out_ += ':';
  afterKey_ = true;
  return *this;
}

JsonWriter& JsonWriter::number(double value) {
  if (!std::isfinite(value)) return null();
  separate();
  // Readers that tell whole numbers from others would lose the sign of a plain "-0".
  if (value == 0 && std::signbit(value)) {
    out_ += "-0.0";
  } else {
    appendNumber(out_, value);
  }
  return *this;
}

JsonWriter& JsonWriter::integer(std::int64_t value) {
  separate();
  appendInteger(out_, value);
  return *this;
}

JsonWriter& JsonWriter::text(std::string_view value) {
  separate();
  quote(value);
  return *this;
}

JsonWriter& JsonWriter::boolean(bool value) {
  separate();
  out_ += value ? "true" : "false";
  return *this;
}

JsonWriter& JsonWriter::null() {
  separate();
  out_ += "null";
  return *this;
}

JsonWriter& JsonWriter::numbers(std::span<const double> values) {
  beginArray();
  for (const double value : values) number(value);
  return endArray();
}

void JsonWriter::quote(std::string_view value) {
  constexpr const char* kHex = "0123456789abcdef";
  out_ += '"';
  while (!value.empty()) {
    const char32_t point = takeCodePoint(value);
    if (point == '"' || point == '\\') {
      out_ += '\\';
      out_ += static_cast<char>(point);
    } else if (point == '\n') {
      out_ += "\\n";
    } else if (point == '\t') {
      out_ += "\\t";
    } else if (point == '\r') {
      out_ += "\\r";
    } else if (point < 0x20 || point == 0x7F) {
      out_ += "\\u00";
      out_ += kHex[point >> 4U];
      out_ += kHex[point & 0xFU];
    } else {
      appendUtf8(out_, point);
    }
  }
  out_ += '"';
}

}  // namespace ovka::terminal
