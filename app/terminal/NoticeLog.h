#pragma once

#include <array>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace ovka::terminal {

/// Keeps the last console lines of the system while a full-screen view has the terminal. Taking a
/// text allocates nothing, so the road of a sample may print. Any thread.
class NoticeLog {
 public:
  /// Takes a piece of console text; a line is complete at its line feed. Carriage returns and other
  /// control characters become spaces, a line longer than 159 bytes is cut.
  void take(std::string_view text);

  /// The newest complete lines, oldest first, at most `count`; empty ones are left out.
  [[nodiscard]] std::vector<std::string> last(std::size_t count) const;

 private:
  struct Line {
    std::array<char, 159> bytes;
    std::size_t length = 0;
  };
  mutable std::mutex lock_;
  std::array<Line, 64> lines_{};
  std::size_t written_ = 0;  ///< complete lines so far
};

}  // namespace ovka::terminal
