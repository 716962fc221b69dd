#include "CaptureQueue.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <type_traits>

namespace ovka {

static_assert(std::is_trivially_copyable_v<CaptureRecordHead>);

bool CaptureQueue::push(CaptureRecordHead head, std::span<const std::uint8_t> payload) noexcept {
  if (payload.size() > captureformat::kMaximumPayload ||
      sizeof head + payload.size() > ring_.size() - used_) {
    return false;
  }
  head.length = static_cast<std::uint32_t>(payload.size());
  std::array<std::uint8_t, sizeof head> bytes{};
  std::memcpy(bytes.data(), &head, sizeof head);
  put(bytes);
  put(payload);
  return true;
}

bool CaptureQueue::pop(CaptureRecordHead& head, std::vector<std::uint8_t>& payload) {
  if (used_ == 0) return false;
  std::array<std::uint8_t, sizeof head> bytes{};
  get(bytes);
  std::memcpy(&head, bytes.data(), sizeof head);
  payload.resize(head.length);
  get(payload);
  return true;
}

void CaptureQueue::put(std::span<const std::uint8_t> bytes) noexcept {
  const std::size_t at = (front_ + used_) % ring_.size();
  const std::size_t first = std::min(bytes.size(), ring_.size() - at);
  std::copy_n(bytes.begin(), first, ring_.begin() + static_cast<std::ptrdiff_t>(at));
  std::copy_n(bytes.data() + first, bytes.size() - first, ring_.begin());
  used_ += bytes.size();
}

void CaptureQueue::get(std::span<std::uint8_t> bytes) noexcept {
  const std::size_t first = std::min(bytes.size(), ring_.size() - front_);
  std::copy_n(ring_.data() + front_, first, bytes.begin());
  std::copy_n(ring_.data(), bytes.size() - first, bytes.data() + first);
  front_ = (front_ + bytes.size()) % ring_.size();
  used_ -= bytes.size();
}

}  // namespace ovka
