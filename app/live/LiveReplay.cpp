#include "LiveReplay.h"

#include <algorithm>
#include <chrono>
#include <system_error>

#include "CaptureSettings.h"

namespace ovka {
namespace {

/// A line that was opened later than this after the first one (ns) is not waited for as long as it
/// was live; its own time skips the rest.
constexpr std::int64_t kLongestWait = 2'000'000'000;

}  // namespace

std::string LiveReplay::open(const std::string& path) {
  if (const int error = source_.open(path); error != 0)
    return "cannot read " + path + ": " + std::generic_category().message(error);
  if (!reader_.begin()) return path + ": " + reader_.error();
  lines_ = std::make_unique<ReplaySerialPorts>(
      reader_, clock_, [this](std::int64_t nanoseconds) { waitUntil(nanoseconds); });
  return {};
}

std::vector<std::string> LiveReplay::inputs() {
  std::vector<std::string> paths = capturedInputs(reader_.settings());
  if (paths.empty()) paths.push_back(lines_->firstPath());
  return paths;
}

void LiveReplay::waitUntil(std::int64_t nanoseconds) {
  const std::int64_t rest = std::min(nanoseconds - clock_.nanoseconds(), kLongestWait);
  std::unique_lock guard(lock_);
  stop_.wait_for(guard, std::chrono::nanoseconds(rest), [this] { return stopped_; });
}

void LiveReplay::stop() {
  {
    const std::scoped_lock guard(lock_);
    stopped_ = true;
  }
  stop_.notify_all();
}

}  // namespace ovka
