#include "DesktopDialogs.h"

#include <algorithm>
#include <utility>

namespace ovka::desktop {

void DesktopDialogs::alert(std::string_view message, std::string_view detail) {
  const std::scoped_lock guard(lock_);
  waiting_.push_back({0, std::string(message), std::string(detail)});
}

bool DesktopDialogs::confirm(std::string_view message, std::string_view detail) {
  if (std::this_thread::get_id() == windows_) return false;
  std::unique_lock guard(lock_);
  if (shut_) return false;
  const std::uint64_t number = ++lastNumber_;
  waiting_.push_back({number, std::string(message), std::string(detail)});
  bool yes = false;
  answered_.wait(guard, [&] {
    const auto found = std::find_if(answers_.begin(), answers_.end(),
                                    [&](const auto& answer) { return answer.first == number; });
    if (found == answers_.end()) return shut_;
    yes = found->second;
    answers_.erase(found);
    return true;
  });
  return yes;
}

void DesktopDialogs::beep() {
  const std::scoped_lock guard(lock_);
  beep_ = true;
}

std::optional<DesktopDialogs::Request> DesktopDialogs::next() {
  const std::scoped_lock guard(lock_);
  if (waiting_.empty()) return std::nullopt;
  Request first = std::move(waiting_.front());
  waiting_.pop_front();
  return first;
}

void DesktopDialogs::answer(std::uint64_t number, bool yes) {
  {
    const std::scoped_lock guard(lock_);
    answers_.emplace_back(number, yes);
  }
  answered_.notify_all();
}

bool DesktopDialogs::takeBeep() {
  const std::scoped_lock guard(lock_);
  return std::exchange(beep_, false);
}

void DesktopDialogs::shutDown() {
  {
    const std::scoped_lock guard(lock_);
    shut_ = true;
  }
  answered_.notify_all();
}

}  // namespace ovka::desktop
