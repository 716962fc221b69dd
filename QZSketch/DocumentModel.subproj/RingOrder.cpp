#include "RingOrder.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "BufferVariables.h"

namespace ovka {
namespace {

constexpr std::int64_t kPiecePoints = 64 << 10;

class Reversal {
 public:
  Reversal(SampleStore& store, std::int32_t channel) : store_(store), channel_(channel) {}

  void turn(std::int64_t first, std::int64_t end) {
    while (end - first > 1) {
      const auto length = static_cast<std::size_t>(std::min(kPiecePoints, (end - first) / 2));
      const std::span<std::int32_t> front(front_.data(), length);
      const std::span<std::int32_t> back(back_.data(), length);
      const std::int64_t last = end - static_cast<std::int64_t>(length);
      store_.copyStored(channel_, first, front);
      store_.copyStored(channel_, last, back);
      std::reverse(front.begin(), front.end());
      std::reverse(back.begin(), back.end());
      store_.storeStored(channel_, first, back);
      store_.storeStored(channel_, last, front);
      first += static_cast<std::int64_t>(length);
      end = last;
    }
  }

 private:
  SampleStore& store_;
  std::int32_t channel_;
  std::vector<std::int32_t> front_ = std::vector<std::int32_t>(kPiecePoints);
  std::vector<std::int32_t> back_ = std::vector<std::int32_t>(kPiecePoints);
};

}  // namespace

// Turning both parts round and then the whole changes their places.
void straightenRing(SampleStore& store, std::int64_t first, std::int64_t oldest, std::int64_t end) {
  if (oldest <= first || oldest >= end) return;
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    Reversal reversal(store, channel);
    reversal.turn(first, oldest);
    reversal.turn(oldest, end);
    reversal.turn(first, end);
  }
}

}  // namespace ovka
