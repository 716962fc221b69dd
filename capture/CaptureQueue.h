#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "CaptureFormat.h"

namespace ovka {

/// Records on their way to the disk: a ring of bytes of fixed size, allocated once. Not locked; its
/// owner is.
class CaptureQueue {
 public:
  explicit CaptureQueue(std::size_t bytes) : ring_(bytes) {}

  /// False when there is no room; the queue is unchanged then.
  bool push(CaptureRecordHead head, std::span<const std::uint8_t> payload) noexcept;
  /// False when empty. `payload` is resized to fit.
  bool pop(CaptureRecordHead& head, std::vector<std::uint8_t>& payload);

 private:
  void put(std::span<const std::uint8_t> bytes) noexcept;
  void get(std::span<std::uint8_t> bytes) noexcept;

  std::vector<std::uint8_t> ring_;
  std::size_t front_ = 0;
  std::size_t used_ = 0;
};

}  // namespace ovka
