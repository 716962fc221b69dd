#include "FileSignal.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>

namespace ovka {
namespace {

constexpr std::size_t kMaximumColumns = 5;
constexpr std::size_t kMaximumBytes = std::size_t{1} << 30U;
constexpr double kMaximumMicrovolts = 1e6;
constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Cuts a row at commas or semicolons when it has any, else at runs of blanks.
std::vector<std::string_view> cells(std::string_view row) {
  std::vector<std::string_view> found;
  const bool separated = row.find_first_of(",;") != std::string_view::npos;
  while (true) {
    const std::size_t end = row.find_first_of(separated ? ",;" : kBlanks);
    found.push_back(trimmed(row.substr(0, end)));
    if (end == std::string_view::npos) return found;
    row.remove_prefix(end + 1);
    if (!separated) row = trimmed(row);
  }
}

std::optional<float> number(std::string_view text) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  double value = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool usable = error == std::errc{} && end == text.data() + text.size() && !text.empty() &&
                      std::abs(value) <= kMaximumMicrovolts;
  return usable ? std::optional(static_cast<float>(value)) : std::nullopt;
}

std::string at(const std::string& name, std::size_t line, std::size_t column = 0) {
  std::string text = name + ", line " + std::to_string(line);
  if (column > 0) text += ", column " + std::to_string(column);
  return text + ": ";
}

std::string shown(std::string_view text) {
  std::string copy(text.substr(0, 20));
  for (char& character : copy) {
    if (character < ' ' || character > '~') character = '?';
  }
  return "\"" + copy + (text.size() > 20 ? "..." : "") + "\"";
}

/// Adds one row; empty when it is usable.
std::string addRow(const std::vector<std::string_view>& row, const std::string& name,
                   std::size_t line, std::size_t& columns, std::vector<float>& values) {
  if (columns == 0 && row.size() > kMaximumColumns) {
    return at(name, line) + std::to_string(row.size()) + " columns; at most " +
           std::to_string(kMaximumColumns) + " are used, one a channel";
  }
  if (columns == 0) columns = row.size();
  if (row.size() != columns) {
    return at(name, line) + std::to_string(row.size()) + " columns where the rows before have " +
           std::to_string(columns);
  }
  for (std::size_t column = 0; column < row.size(); ++column) {
    const auto value = number(row[column]);
    if (!value) {
      return at(name, line, column + 1) + shown(row[column]) +
             " is not a number of microvolts between -1000000 and 1000000";
    }
    values.push_back(*value);
  }
  return {};
}

bool isHeader(const std::vector<std::string_view>& row) {
  for (const std::string_view cell : row) {
    if (number(cell)) return false;
  }
  return true;
}

std::string readFile(const std::string& path, std::string& text) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             &std::fclose);
  if (!file) return path + ": cannot be opened: " + std::strerror(errno);
  std::vector<char> chunk(1U << 16U);
  while (const std::size_t count = std::fread(chunk.data(), 1, chunk.size(), file.get())) {
    text.append(chunk.data(), count);
    if (text.size() > kMaximumBytes) return path + ": larger than 1 GiB";
  }
  if (std::ferror(file.get()) != 0) return path + ": cannot be read: " + std::strerror(errno);
  return {};
}

}  // namespace

std::unique_ptr<FileSignal> FileSignal::load(const FileChoice& choice, std::string& error) {
  std::string text;
  error = readFile(choice.path, text);
  if (!error.empty()) return nullptr;
  return parse(text, choice.samplesPerSecond, choice.path, error);
}

std::unique_ptr<FileSignal> FileSignal::parse(std::string_view text, double samplesPerSecond,
                                              const std::string& name, std::string& error) {
  std::unique_ptr<FileSignal> signal(new FileSignal);
  signal->samplesPerSecond_ = samplesPerSecond;
  std::size_t columns = 0;
  bool first = true;
  error.clear();
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  for (std::size_t line = 1; !text.empty(); ++line) {
    const std::size_t end = text.find('\n');
    const std::string_view row = trimmed(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (row.empty() || row.front() == '#') continue;
    const auto found = cells(row);
    const bool header = first && isHeader(found);
    first = false;
    if (header) continue;
    error = addRow(found, name, line, columns, signal->values_);
    if (!error.empty()) return nullptr;
  }
  if (columns == 0) {
    error = name + ": holds no numbers";
    return nullptr;
  }
  signal->columns_ = columns;
  return signal;
}

void FileSignal::next(double samplesPerSecond, Microvolts& out) {
  out.fill(0.0);
  const std::size_t count = rows();
  const std::size_t following = row_ + 1 == count ? 0 : row_ + 1;
  for (std::size_t column = 0; column < columns_; ++column) {
    const double here = values_[row_ * columns_ + column];
    const double there = values_[following * columns_ + column];
    out[(column + 1) % out.size()] = here + (there - here) * part_;
  }
  part_ += samplesPerSecond_ / samplesPerSecond;
  const double whole = std::floor(part_);
  part_ -= whole;
  row_ = (row_ + static_cast<std::size_t>(whole)) % count;
}

}  // namespace ovka
