#include "Canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "Utf8.h"

namespace ovka::terminal {
namespace {

/// The escape sequence of a style; bold and faint are no colours and stay without them.
const char* sequenceOf(Style style, bool colour) {
  switch (style) {
    case Style::Plain:
      return "\x1b[0m";
    case Style::Strong:
      return "\x1b[0;1m";
    case Style::Faint:
      return "\x1b[0;2m";
    case Style::Title:
      return colour ? "\x1b[0;1;36m" : "\x1b[0;1m";
    case Style::Bar:
      return colour ? "\x1b[0;36m" : "\x1b[0m";
    case Style::Good:
      return colour ? "\x1b[0;32m" : "\x1b[0m";
    case Style::Warn:
      return colour ? "\x1b[0;33m" : "\x1b[0;1m";
    case Style::Bad:
      return colour ? "\x1b[0;1;31m" : "\x1b[0;1m";
  }
  return "";
}

/// What can stand in one cell: wide, combining and control characters cannot.
char32_t drawable(char32_t point) {
  if (point < 0x20 || (point >= 0x7F && point < 0xA0)) return U' ';
  const bool combining = (point >= 0x300 && point < 0x370) ||
                         (point >= 0x200B && point <= 0x200F) ||
                         (point >= 0x2028 && point <= 0x202F);
  const bool wide =
      (point >= 0x1100 && point < 0x1200) || (point >= 0x2E80 && point != kReplacement);
  return combining || wide ? U'?' : point;
}

/// The nearest ASCII character, for terminals without Unicode.
char asciiOf(char32_t point) {
  if (point < 0x80) return static_cast<char>(point);
  switch (point) {
    case U'·':
      return '|';
    case U'●':
      return '*';
    case U'…':
      return '.';
    case U'–':
      return '-';
    case U'─':
      return '-';
    case U'█':
      return '#';
    default:
      return '?';
  }
}

void append(std::string& out, char32_t point, const Look& look) {
  if (look.unicode) {
    appendUtf8(out, point);
  } else {
    out += asciiOf(point);
  }
}

}  // namespace

Look Look::ofEnvironment() {
  const char* noColour = std::getenv("NO_COLOR");
  const char* term = std::getenv("TERM");
  const bool plainTerm =
      term == nullptr || std::strstr(term, "mono") != nullptr || std::strncmp(term, "vt", 2) == 0;
  return {.unicode = localeIsUtf8(),
          .colour = !plainTerm && (noColour == nullptr || *noColour == '\0')};
}

Canvas::Canvas(int width, int height)
    : width_(std::clamp(width, 1, 2000)),
      height_(std::clamp(height, 1, 1000)),
      cells_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_)) {}

void Canvas::set(int column, int row, char32_t point, Style style) {
  if (column < 0 || column >= width_ || row < 0 || row >= height_) return;
  cells_[static_cast<std::size_t>(row) * static_cast<std::size_t>(width_) +
         static_cast<std::size_t>(column)] = {point, style};
}

const Canvas::Cell& Canvas::at(int column, int row) const {
  return cells_[static_cast<std::size_t>(row) * static_cast<std::size_t>(width_) +
                static_cast<std::size_t>(column)];
}

int Canvas::put(int column, int row, std::string_view text, Style style) {
  while (!text.empty()) set(column++, row, drawable(takeCodePoint(text)), style);
  return column;
}

void Canvas::field(int column, int row, int width, std::string_view text, Style style, bool right) {
  std::vector<char32_t> points;
  while (!text.empty()) points.push_back(drawable(takeCodePoint(text)));
  const int length = std::min(static_cast<int>(points.size()), std::max(width, 0));
  const int start = right ? column + width - length : column;
  for (int i = 0; i < length; ++i) set(start + i, row, points[static_cast<std::size_t>(i)], style);
}

void Canvas::bar(int column, int row, int width, double share, const Look& look, Style style) {
  if (!(share > 0) || width <= 0) return;
  const int steps = look.unicode ? 8 : 1;
  const int filled = std::clamp(static_cast<int>(std::lround(std::min(share, 1.0) * width * steps)),
                                1, width * steps);
  for (int i = 0; i < filled / steps; ++i) set(column + i, row, U'█', style);
  // U+258F is one eighth, U+2589 seven eighths.
  if (const int rest = filled % steps; rest > 0)
    set(column + filled / steps, row, static_cast<char32_t>(0x2590 - rest), style);
}

int Canvas::usedWidth(int row) const {
  int used = width_;
  while (used > 0 && at(used - 1, row).point == U' ') --used;
  return used;
}

std::string Canvas::rowText(int row, const Look& look) const {
  std::string out;
  for (int column = 0; column < usedWidth(row); ++column) append(out, at(column, row).point, look);
  return out;
}

std::string Canvas::frame(const Look& look) const {
  std::string out = "\x1b[H";
  for (int row = 0; row < height_; ++row) {
    if (row > 0) out += "\r\n";
    Style style = Style::Plain;
    const int used = usedWidth(row);
    for (int column = 0; column < used; ++column) {
      const Cell& cell = at(column, row);
      if (cell.style != style && cell.point != U' ') {
        style = cell.style;
        out += sequenceOf(style, look.colour);
      }
      append(out, cell.point, look);
    }
    if (style != Style::Plain) out += sequenceOf(Style::Plain, look.colour);
    // A clear behind a full line would take its last character on terminals that wrap late.
    if (used < width_) out += "\x1b[K";
  }
  return out;
}

}  // namespace ovka::terminal
