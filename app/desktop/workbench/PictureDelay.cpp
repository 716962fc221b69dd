#include "PictureDelay.h"

#include <algorithm>

namespace ovka::desktop {

void PictureDelay::take(std::int64_t now, std::int64_t readAt) {
  if (readAt == 0 || readAt == lastRead_ || readAt > now) return;
  lastRead_ = readAt;
  seen_[next_] = {now, now - readAt};
  next_ = (next_ + 1) % kKept;
  count_ = std::min(count_ + 1, kKept);
}

void PictureDelay::reset() {
  count_ = next_ = 0;
  lastRead_ = 0;
}

PictureDelay::Figures PictureDelay::figures(std::int64_t now) const {
  std::array<std::int64_t, kKept> delays{};
  std::size_t count = 0;
  for (std::size_t i = 0; i < count_; ++i) {
    if (now - seen_[i].at <= kOldest) delays[count++] = seen_[i].delay;
  }
  if (count == 0) return {};
  const auto end = delays.begin() + static_cast<std::ptrdiff_t>(count);
  std::sort(delays.begin(), end);
  return {static_cast<double>(delays[count / 2]) / 1e6,
          static_cast<double>(delays[count - 1]) / 1e6, true};
}

}  // namespace ovka::desktop
