#include "ConvertLine.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <span>

#include "StatusLines.h"
#include "Truncate.h"
#include "bitRevRev8MK.h"

namespace ovka::terminal {
namespace {

constexpr std::size_t kBetween = 3;  // the channel of the code between the hex groups

std::int64_t distance(std::int32_t a, std::int32_t b) {
  return std::abs(std::int64_t{a} - b);
}

}  // namespace

LineInverse::LineInverse(const SampleLine& decoding, const FrameFormat& format)
    : decoding_(decoding), format_(format) {
  FrameCodes greatest;
  greatest.channels.fill(topCode(format));
  greatest.between = 0xFFF;
  lowest_ = decode({});
  highest_ = decode(greatest);
}

Frame LineInverse::decode(const FrameCodes& codes) const {
  return decoding_.decode(encodeCodes(format_, codes).bytes.data());
}

/// A code of its own: with the reverse display on, two-channel lines fill channels 3 and 4 from
/// channels 1 and 2.
bool LineInverse::carries(std::size_t channel) const {
  const bool copies = channel >= 3 && format_.config <= 1;
  return lowest_.present[channel] && !copies;
}

std::int64_t LineInverse::top(std::size_t channel) const {
  const bool between = channel == kBetween && format_.model >= 4 && format_.config == 2;
  return between ? 0xFFF : topCode(format_);
}

/// Each channel's code follows from the two ends of its range but for rounding: the neighbours
/// decide.
void LineInverse::search(const StoredPoint& wanted, FrameCodes* codes, std::uint32_t* held) const {
  constexpr std::array<std::int64_t, 5> kSteps{0, -1, 1, -2, 2};
  std::array<std::int64_t, buffer::kChannels> guess{};
  std::array<std::int64_t, buffer::kChannels> stride{};  // half of the codes that share a value
  std::array<std::int64_t, buffer::kChannels> best{};
  for (std::size_t c = 0; c < guess.size(); ++c) {
    best[c] = INT64_MAX;
    if (!carries(c)) continue;
    const double range = static_cast<double>(highest_.values[c]) - lowest_.values[c];
    const double above = static_cast<double>(wanted[c]) - lowest_.values[c];
    const auto end = static_cast<double>(top(c));
    guess[c] = range > 0 ? std::llround(std::clamp(above / range * end, 0.0, end)) : top(c) / 2;
    stride[c] = std::max<std::int64_t>(range > 0 ? std::llround(end / range / 2) : 1, 1);
    if (wanted[c] < lowest_.values[c] || wanted[c] > highest_.values[c]) *held |= 1U << c;
  }
  for (const std::int64_t step : kSteps) {
    FrameCodes tried;
    for (std::size_t c = 0; c < guess.size(); ++c) {
      tried.channels[c] = static_cast<std::uint32_t>(
          std::clamp<std::int64_t>(guess[c] + step * stride[c], 0, top(c)));
    }
    tried.between = tried.channels[kBetween];
    const Frame got = decode(tried);
    bool exact = true;
    for (std::size_t c = 0; c < guess.size(); ++c) {
      if (!carries(c)) continue;
      const std::int64_t off = distance(got.values[c], wanted[c]);
      if (off < best[c]) {
        best[c] = off;
        codes->channels[c] = tried.channels[c];
      }
      exact = exact && best[c] == 0;
    }
    if (exact) break;
  }
  codes->between = codes->channels[kBetween];
}

LineInverse::Encoded LineInverse::encode(const StoredPoint& wanted) const {
  Encoded result;
  FrameCodes codes;
  search(wanted, &codes, &result.held);
  result.frame = encodeCodes(format_, codes);
  // Binary samples may spell a status line; then the smallest step that does not is taken.
  for (std::uint32_t step = 1;
       statusLineLength(std::span(result.frame.bytes).first(result.frame.size)) > 0; step <<= 1U) {
    FrameCodes other = codes;
    other.channels[step < 0x10000 ? 2 : 1] ^= step < 0x10000 ? step : 0x100U;
    result.frame = encodeCodes(format_, other);
  }
  result.decoded = decoding_.decode(result.frame.bytes.data());
  return result;
}

ByteInverse::ByteInverse(double scale) {
  constexpr double kSteps = 4.0;
  for (int code = 0; code < 256; ++code) {
    const double sample = static_cast<double>(truncateTo<std::int64_t>(scale * (code - 128)));
    values_[static_cast<std::size_t>(code)] = truncateTo<std::int32_t>(kSteps * sample);
  }
}

std::uint8_t ByteInverse::encode(std::int32_t wanted, std::int32_t* decoded, bool* held) const {
  const bool rising = values_.front() <= values_.back();
  auto nearest = std::lower_bound(
      values_.begin(), values_.end(), wanted,
      [rising](std::int32_t value, std::int32_t to) { return rising ? value < to : value > to; });
  if (nearest == values_.end() || (nearest != values_.begin() &&
                                   distance(*(nearest - 1), wanted) < distance(*nearest, wanted))) {
    --nearest;
  }
  *decoded = *nearest;
  const auto [lowest, highest] = std::minmax(values_.front(), values_.back());
  *held = wanted < lowest || wanted > highest;
  return bitrev[static_cast<std::size_t>(nearest - values_.begin())];
}

}  // namespace ovka::terminal
