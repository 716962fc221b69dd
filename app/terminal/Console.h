#pragma once

#include <atomic>
#include <cstdint>

#include "NoticeLog.h"
#include "Print.h"

namespace ovka::terminal {

/// Takes the system's own console lines while a command runs: standard output belongs to the
/// command's output. All lines go to a log that the full-screen view shows from; beside it,
/// standard error gets what a person must see (failed steps, lines that hang up or come back) or
/// everything. One at a time.
class Console {
 public:
  enum class Show : std::uint8_t {
    Nothing,    ///< the log alone: the screen is in use
    Important,  ///< lines that begin with "Error" or "Line"
    All,
  };
  /// Until started() is called only Show::All shows anything: a command that cannot start says why
  /// itself, in one line.
  explicit Console(Show show);
  void started() { started_ = true; }
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  [[nodiscard]] const NoticeLog& log() const { return log_; }

 private:
  NoticeLog log_;
  std::atomic<bool> started_{false};
  PrintSink before_;
};

}  // namespace ovka::terminal
