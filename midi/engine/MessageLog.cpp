#include "MessageLog.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace ovka {
namespace {

constexpr const char* kSources[] = {"none", "band", "single", "shutdown", "panic", "test"};

/// Length of the UTF-8 character at the front; 0 where there is none.
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return 0;
  }
  // Overlong forms, surrogates, beyond the last character.
  if ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
      (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F)) {
    return 0;
  }
  return length;
}

void appendString(std::string& to, std::string_view text) {
  to += '"';
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    const auto first = static_cast<unsigned char>(text[0]);
    if (length == 0) {
      to += "\\ufffd";
    } else if (first == '"' || first == '\\') {
      to += '\\';
      to += text[0];
    } else if (first < 0x20 || first == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", first);
      to += escape;
    } else {
      to += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  to += '"';
}

void appendNumber(std::string& to, std::string_view key, std::int64_t value, bool nullBelow0) {
  to += ",\"";
  to += key;
  to += "\":";
  to += nullBelow0 && value < 0 ? "null" : std::to_string(value);
}

std::string utc(std::int64_t nanoseconds) {
  using namespace std::chrono;
  const sys_time<microseconds> time(floor<microseconds>(std::chrono::nanoseconds(nanoseconds)));
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  char text[64];
  std::snprintf(
      text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%06dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
  return text;
}

}  // namespace

std::string MessageLog::format(const SentMessage& message) const {
  std::string line = "{\"time_ns\":" + std::to_string(message.time);
  line += ",\"wall\":\"" + utc(wallStart_ + message.time) + "\",\"cause\":\"";
  line += kSources[static_cast<std::size_t>(message.cause.source) % std::size(kSources)];
  line += '"';
  appendNumber(line, "setup", message.cause.setup, true);
  appendNumber(line, "band", message.cause.band, true);
  appendNumber(line, "sample", message.cause.sample, true);
  appendNumber(line, "port", message.port, true);
  line += ",\"to\":";
  const auto end = std::find(message.name.begin(), message.name.end(), '\0');
  appendString(line, {message.name.data(), static_cast<std::size_t>(end - message.name.begin())});
  line += ",\"stamp\":" + std::to_string(message.timeStamp) + ",\"bytes\":[";
  for (std::size_t i = 0; i < std::min<std::size_t>(message.size, 3); ++i) {
    if (i > 0) line += ',';
    line += std::to_string(message.bytes[i]);
  }
  line += ']';
  appendNumber(line, "error", message.error, false);
  line += '}';
  return line;
}

std::size_t MessageLog::drain(const std::function<void(std::string_view)>& line) {
  const std::scoped_lock guard(drainLock_);
  std::size_t lines = 0;
  SentMessage message;
  while (lines < kEntries && ring_.pop(message)) {
    line(format(message));
    ++lines;
  }
  const std::uint64_t dropped = ring_.dropped();
  if (dropped != droppedTold_) {
    line("{\"dropped\":" + std::to_string(dropped - droppedTold_) + '}');
    droppedTold_ = dropped;
    ++lines;
  }
  return lines;
}

}  // namespace ovka
