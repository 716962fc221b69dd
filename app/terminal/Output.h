#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace ovka::terminal {

/// Standard output (or any open descriptor) for text that scripts read: gathered, written whole,
/// every failure reported. Throws Failure (ExitCode::Output) when it cannot be written and
/// ReaderGone when the reader of a pipe went away. One thread.
class Output {
 public:
  explicit Output(int descriptor = 1, std::string name = "standard output")
      : descriptor_(descriptor), name_(std::move(name)) {}

  /// The text to append to.
  [[nodiscard]] std::string& text() { return text_; }
  void write(std::string_view text) { text_ += text; }

  /// Writes out what was gathered when it is more than a few pages.
  void flushWhenLarge();
  void flush();

 private:
  int descriptor_;
  std::string name_;
  std::string text_;
};

}  // namespace ovka::terminal
