#include "CsvSamples.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <span>
#include <string_view>
#include <system_error>
#include <vector>

#include "BufferVariables.h"
#include "Failure.h"
#include "FixedOutputs.h"

namespace ovka::terminal {
namespace {

constexpr std::size_t kPieceBytes = 64U << 10U;
constexpr std::size_t kLongestLine = 200;
constexpr std::size_t kColumns = 1 + buffer::kChannels;

[[noreturn]] void cannotWrite(const std::string& path, int error) {
  throw Failure(ExitCode::Output,
                "cannot write " + path + ": " + std::generic_category().message(error));
}

using CsvValues = std::array<std::int64_t, kColumns>;
using TakeRow = std::function<void(const CsvValues& values, std::size_t columns)>;

/// Takes the rows of a file apart: a point, then values by channel.
class CsvRows {
 public:
  CsvRows(std::string path, TakeRow row) : path_(std::move(path)), row_(std::move(row)) {}

  void take(std::string_view line) {
    ++line_;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line_ == 1 && line.starts_with("point")) return;
    if (line.empty()) return;
    CsvValues values{};
    const std::size_t columns = split(line, values);
    if (columns < 2) wrong("a row has a point and at least one channel");
    if (values[0] < next_) wrong("the points must rise; this one does not");
    if (values[0] >= static_cast<std::int64_t>(buffer::MAXbuffer))
      wrong("a recording ends at point " + std::to_string(buffer::MAXbuffer - 1));
    row_(values, columns);
    next_ = values[0] + 1;
  }
  void finish() const {
    if (next_ == 0) wrong("there is no row of samples in it");
  }

 private:
  [[noreturn]] void wrong(const std::string& what) const {
    throw Failure(ExitCode::BadInput, path_ + ", line " + std::to_string(line_) + ": " + what);
  }

  std::size_t split(std::string_view line, CsvValues& values) const {
    std::size_t columns = 0;
    while (true) {
      if (columns == kColumns)
        wrong("there are more than " + std::to_string(kColumns) + " columns");
      const std::size_t comma = std::min(line.find(','), line.size());
      const std::string_view text = line.substr(0, comma);
      std::int64_t value = 0;
      const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
      const bool fits = columns == 0 ? value >= 0 : value >= INT32_MIN && value <= INT32_MAX;
      if (error != std::errc{} || stop != text.data() + text.size() || !fits) {
        wrong("'" + std::string(text) + "' is no " +
              (columns == 0 ? "point" : "whole number of 32 bits"));
      }
      values[columns++] = value;
      if (comma == line.size()) return columns;
      line.remove_prefix(comma + 1);
    }
  }

  std::string path_;
  TakeRow row_;
  std::int64_t next_ = 0;
  std::uint64_t line_ = 0;
};

void forEachRow(Files& files, const std::string& path, TakeRow row) {
  int error = 0;
  const auto file = files.read(path, &error);
  const auto check = [&] {
    if (error != 0)
      throw Failure(ExitCode::BadInput,
                    "cannot read " + path + ": " + std::generic_category().message(error));
  };
  check();
  CsvRows rows(path, std::move(row));
  std::vector<char> piece(kPieceBytes);
  std::string line;
  std::size_t got = 0;
  for (std::uint64_t offset = 0;; offset += got) {
    error = file->readAt(offset, std::as_writable_bytes(std::span(piece)), &got);
    check();
    if (got == 0) break;
    for (const char letter : std::span(piece).first(got)) {
      if (letter == '\n') {
        rows.take(line);
        line.clear();
      } else if (line.size() <= kLongestLine) {
        line += letter;  // a longer line is no row and is refused as it is
      }
    }
  }
  if (!line.empty()) rows.take(line);
  rows.finish();
}

void makeRoomFor(Engine& engine, std::int64_t point) {
  const std::uint64_t capacity = buffer::maxploop;
  if (static_cast<std::uint64_t>(point) < capacity) return;
  const std::uint64_t wanted =
      std::min(std::max<std::uint64_t>(2 * capacity, static_cast<std::uint64_t>(point) + 1),
               buffer::MAXbuffer);
  static_cast<void>(engine.assign("maxploop=" + std::to_string(wanted)));
  if (buffer::maxploop < wanted) {
    throw Failure(ExitCode::Failed,
                  "there is not enough memory for " + std::to_string(wanted) + " points");
  }
}

}  // namespace

void writeCsv(Engine& engine, Files& files, const std::string& path) {
  int error = 0;
  const auto file = files.write(path, WriteMode::Atomic, &error);
  if (file == nullptr) cannotWrite(path, error);
  std::string text;
  appendDecodeHeader(text);
  const auto flush = [&] {
    error = file->write(std::as_bytes(std::span(text)));
    if (error != 0) cannotWrite(path, error);
    text.clear();
  };
  const std::int64_t end = buffer::ploop;
  for (std::int64_t point = buffer::ploopStart; point < end; ++point) {
    std::array<std::int32_t, buffer::kChannels> values{};
    for (std::size_t i = 0; i < values.size(); ++i)
      engine.store().copyStored(static_cast<std::int32_t>(i), point, std::span(&values[i], 1));
    appendDecodeRow(text, point, values);
    if (text.size() > kPieceBytes) flush();
  }
  flush();
  if ((error = file->commit()) != 0) cannotWrite(path, error);
}

void readCsv(Engine& engine, Files& files, const std::string& path) {
  std::int64_t next = 0;
  forEachRow(files, path, [&](const CsvValues& values, std::size_t columns) {
    makeRoomFor(engine, values[0]);
    for (std::size_t i = 1; i < columns; ++i)
      engine.store().putIntToBuffer(static_cast<std::int32_t>(i) - 1, values[0], values[i]);
    next = values[0] + 1;
  });
  static_cast<void>(engine.assign("maxploop=" + std::to_string(next)));
  buffer::ploop = next;
}

CsvFacts factsOfCsv(Files& files, const std::string& path) {
  CsvFacts facts;
  facts.lowest.fill(INT32_MAX);
  facts.highest.fill(INT32_MIN);
  forEachRow(files, path, [&](const CsvValues& values, std::size_t columns) {
    if (facts.rows++ == 0) facts.first = values[0];
    facts.last = values[0];
    facts.channels = std::max(facts.channels, columns - 1);
    for (std::size_t i = 1; i < columns; ++i) {
      facts.lowest[i - 1] = std::min(facts.lowest[i - 1], values[i]);
      facts.highest[i - 1] = std::max(facts.highest[i - 1], values[i]);
    }
  });
  return facts;
}

}  // namespace ovka::terminal
