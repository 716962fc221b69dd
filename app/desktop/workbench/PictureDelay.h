#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ovka::desktop {

/// How old the newest samples are when they reach the screen: from the reading of the line to the
/// frame that shows them, over the last seconds. Allocates nothing. One thread.
class PictureDelay {
 public:
  /// A frame at `now` shows what was read at `readAt` (ns of one clock; 0: nothing yet). Frames
  /// that show nothing new are left out.
  void take(std::int64_t now, std::int64_t readAt);
  void reset();

  struct Figures {
    double median = 0;  ///< ms
    double worst = 0;   ///< ms
    bool known = false;
  };
  /// Over at most the last kKept frames with something new, none older than ten seconds.
  [[nodiscard]] Figures figures(std::int64_t now) const;

 private:
  static constexpr std::size_t kKept = 512;
  static constexpr std::int64_t kOldest = 10'000'000'000;
  struct Seen {
    std::int64_t at = 0;
    std::int64_t delay = 0;
  };
  std::array<Seen, kKept> seen_{};
  std::size_t next_ = 0;
  std::size_t count_ = 0;
  std::int64_t lastRead_ = 0;
};

}  // namespace ovka::desktop
