#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ovka::terminal {

/// How a piece of the picture is meant; the colours follow from it in one place.
enum class Style : std::uint8_t { Plain, Strong, Faint, Title, Bar, Good, Warn, Bad };

/// What the terminal can show.
struct Look {
  bool unicode = true;
  bool colour = true;

  /// Unicode by the locale, colour unless NO_COLOR is set or TERM has none.
  static Look ofEnvironment();
};

/// A grid of character cells that is filled in any order and written out at once, so that nothing
/// ever runs over the right edge.
class Canvas {
 public:
  Canvas(int width, int height);

  [[nodiscard]] int width() const { return width_; }
  [[nodiscard]] int height() const { return height_; }

  /// Puts a UTF-8 text; what leaves the grid is cut off. Control characters become spaces and
  /// characters that do not take exactly one column a question mark. Returns the column behind the
  /// text.
  int put(int column, int row, std::string_view text, Style style = Style::Plain);
  /// The same in a field of `width` columns, cut off there, at its right end when `right`.
  void field(int column, int row, int width, std::string_view text, Style style,
             bool right = false);

  /// A horizontal bar of `share` (0 to 1) of `width` columns; in eighths of a column with Unicode,
  /// in whole columns without. More than nothing shows at least the smallest step.
  void bar(int column, int row, int width, double share, const Look& look, Style style);

  /// One row as text without colours and without trailing spaces.
  [[nodiscard]] std::string rowText(int row, const Look& look) const;

  /// The whole picture for a terminal: from the top left corner, every line cleared behind its end,
  /// no line feed behind the last one, so that nothing scrolls or flickers.
  [[nodiscard]] std::string frame(const Look& look) const;

 private:
  struct Cell {
    char32_t point = U' ';
    Style style = Style::Plain;
  };
  void set(int column, int row, char32_t point, Style style);
  [[nodiscard]] int usedWidth(int row) const;
  [[nodiscard]] const Cell& at(int column, int row) const;

  int width_;
  int height_;
  std::vector<Cell> cells_;
};

}  // namespace ovka::terminal
