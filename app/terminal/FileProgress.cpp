#include "FileProgress.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <unistd.h>

namespace ovka::terminal {
namespace {

using std::chrono::steady_clock;

constexpr std::chrono::milliseconds kFirst{500};
constexpr std::chrono::milliseconds kInPlace{200};
constexpr std::chrono::seconds kLines{10};

}  // namespace

void FileProgress::begin(const std::string& what) {
  end();
  what_ = what;
  done_ = 0;
  total_ = 0;
  over_ = false;
  shower_ = std::thread([this] { run(); });
}

void FileProgress::end() {
  if (!shower_.joinable()) return;
  {
    const std::scoped_lock guard(lock_);
    over_ = true;
  }
  ended_.notify_all();
  shower_.join();
}

std::string FileProgress::line(std::chrono::nanoseconds elapsed) const {
  const std::uint64_t total = total_;
  const std::uint64_t done = std::min<std::uint64_t>(done_, total);
  std::array<char, 64> numbers{};
  const double seconds = std::chrono::duration<double>(elapsed).count();
  if (total == 0) {
    std::snprintf(numbers.data(), numbers.size(), ": %.1f s", seconds);
  } else {
    std::snprintf(numbers.data(), numbers.size(), ": %.0f %%, %.1f s",
                  100.0 * static_cast<double>(done) / static_cast<double>(total), seconds);
  }
  return "ovka: " + what_ + numbers.data();
}

void FileProgress::run() {
  const bool terminal = isatty(STDERR_FILENO) == 1;
  const auto start = steady_clock::now();
  bool shown = false;
  std::unique_lock guard(lock_);
  for (auto next = start + kFirst;; next += terminal ? kInPlace : kLines) {
    if (ended_.wait_until(guard, next, [this] { return over_; })) break;
    const std::string text = line(steady_clock::now() - start);
    std::fprintf(stderr, terminal ? "\r%s\033[K" : "%s\n", text.c_str());
    std::fflush(stderr);
    shown = true;
  }
  if (!terminal || !shown) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
}

}  // namespace ovka::terminal
