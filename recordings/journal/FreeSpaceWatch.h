#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Files.h"

namespace ovka {

/// Watches the room on the disk that a recording goes to and warns in good time: below 10 minutes
/// at the present rate or below 200 MB. One line at the crossing, the next one only after there was
/// plenty again (15 minutes and 300 MB). One thread at a time.
class FreeSpaceWatch {
 public:
  static constexpr std::int64_t kWarnMinutes = 10;
  static constexpr std::uint64_t kWarnBytes = 200'000'000;

  /// Asks for the room in `folder`. `bytesASecond`: what the recording takes, 0 when it rests.
  void check(Files& files, const std::string& folder, double bytesASecond);

  [[nodiscard]] std::optional<std::uint64_t> freeBytes() const { return free_; }
  /// Nothing without a rate or without an answer of the disk.
  [[nodiscard]] std::optional<std::int64_t> minutesLeft() const { return minutes_; }
  [[nodiscard]] bool low() const { return low_; }

 private:
  std::optional<std::uint64_t> free_;
  std::optional<std::int64_t> minutes_;
  bool low_ = false;
};

}  // namespace ovka
