#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <thread>
#include <vector>

#include "Files.h"

namespace ovka {

/// A helper of the parser on a thread of its own: looks for long runs of hexadecimal digits in the
/// second half of a large file while the parser works on the first, so that both check the samples
/// of a day. It knows nothing of the form: a run counts only where the parser comes upon it inside
/// a data item.
class DigitScout {
 public:
  /// Digits and white space from `begin` up to `end`.
  struct Run {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint64_t digits = 0;
    std::uint64_t lineEnds = 0;
    std::uint64_t lastLine = 0;  ///< offset behind the last line end; where there is one
  };

  /// Begins at once, unless the file is small or there is no thread to be had.
  explicit DigitScout(FileReader& file);
  /// Ends the thread.
  ~DigitScout();
  DigitScout(const DigitScout&) = delete;
  DigitScout& operator=(const DigitScout&) = delete;

  /// Where the first run begins; the parser must stop there and ask. UINT64_MAX: there is none.
  [[nodiscard]] std::uint64_t begin() const { return begin_; }
  /// The run that begins at an offset at or behind begin(); the first call waits for the thread.
  [[nodiscard]] const Run* runAt(std::uint64_t offset);

 private:
  void scout();

  FileReader& file_;
  std::uint64_t begin_ = UINT64_MAX;
  std::vector<Run> runs_;  ///< by offset; the thread's until it has ended
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace ovka
