#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "Dialogs.h"

namespace ovka::desktop {

/// Alerts and questions of the system on their way to the windows. Whoever asks stands on a thread
/// without windows: an alert is only put in line, so that nothing stands still for a message; a
/// question waits for its answer. The windows look in line on their own timer. Any thread unless a
/// method says otherwise.
class DesktopDialogs final : public Dialogs {
 public:
  /// Made by the thread of the windows, which is never made to wait here.
  DesktopDialogs() = default;

  void alert(std::string_view message, std::string_view detail) override;
  /// CANCEL without asking on the thread of the windows itself and after shutDown().
  [[nodiscard]] bool confirm(std::string_view message, std::string_view detail) override;
  void beep() override;

  struct Request {
    std::uint64_t number = 0;  ///< of a question; 0: an alert
    std::string message;
    std::string detail;
  };
  /// The next to show; nothing when none waits.
  [[nodiscard]] std::optional<Request> next();
  void answer(std::uint64_t number, bool yes);
  /// True once for any number of beeps.
  [[nodiscard]] bool takeBeep();
  /// Nobody is there to answer any more: every question, also a waiting one, gets CANCEL.
  void shutDown();

 private:
  std::thread::id windows_ = std::this_thread::get_id();
  std::mutex lock_;
  std::condition_variable answered_;
  std::deque<Request> waiting_;
  std::deque<std::pair<std::uint64_t, bool>> answers_;
  std::uint64_t lastNumber_ = 0;
  bool beep_ = false;
  bool shut_ = false;
};

}  // namespace ovka::desktop
