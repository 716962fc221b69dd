#include "FixedFraming.h"

#include <algorithm>
#include <cstring>

#include "ByteCodes.h"
#include "StatusLines.h"

namespace ovka {
namespace {

/// Frames behind a boundary whose line ends speak for it.
constexpr std::size_t kWitnesses = 3;
/// Frame lengths that must be there before a boundary is looked for: two to look in, three behind.
constexpr std::size_t kLookAhead = 2 + kWitnesses;

}  // namespace

std::size_t FixedFraming::append(std::span<const std::uint8_t> block) {
  const std::size_t count = std::min(block.size(), window_.size() - waiting_);
  std::memcpy(window_.data() + waiting_, block.data(), count);
  waiting_ += count;
  return count;
}

void FixedFraming::drop(std::size_t count) {
  if (count == 0) return;
  waiting_ -= count;
  std::memmove(window_.data(), window_.data() + count, waiting_);
}

FixedFraming::Piece FixedFraming::classify(std::span<const std::uint8_t> bytes) const {
  if (const std::size_t status = statusLineLength(bytes)) return {Found::StatusLine, status};
  if (bytes.size() < shape_.length) return {};
  const Piece piece = frameOrNot(bytes);
  if (piece.kind != Found::Noise) return piece;
  if (bytes.size() < kLookAhead * shape_.length) return {};
  return {Found::Noise, noiseLength(bytes)};
}

FixedFraming::Piece FixedFraming::frameOrNot(std::span<const std::uint8_t> bytes) const {
  const std::size_t length = shape_.length;
  const Piece frame{Found::Frame, length};
  const Piece noise{Found::Noise, 0};
  if (shape_.groups && looksLikeRecord(bytes.data())) return frame;
  if (!endsFrame(bytes.data())) return noise;
  if (shape_.text || bytes[length - 2] != kCarriageReturn) return frame;
  // Two carriage returns at the end of a binary frame: either the last byte of its samples is a 13,
  // or a byte was lost and the second one opens the next frame. The next frame's end tells.
  if (bytes.size() < 2 * length) return {};
  const bool aligned = bytes[2 * length - 1] == kCarriageReturn ||
                       bytes[2 * length - 2] != kCarriageReturn ||
                       statusLineLength(bytes.subspan(length)) > 0;
  return aligned ? frame : noise;
}

/// A frame by its line end: the last byte, and in text the only one.
bool FixedFraming::endsFrame(const std::uint8_t* frame) const {
  const std::size_t inside = shape_.length - 1;
  if (frame[inside] != kCarriageReturn) return false;
  return !shape_.text || std::memchr(frame, kCarriageReturn, inside) == nullptr;
}

bool FixedFraming::looksLikeRecord(const std::uint8_t* record) const {
  constexpr std::size_t kGroup = 4;       // three characters and a separator
  constexpr std::size_t kSureBytes = 12;  // three groups are there in every configuration
  for (std::size_t i = 0; i < kSureBytes; ++i) {
    const bool separator = i % kGroup == kGroup - 1;
    if (isHexDigit(record[i]) == separator) return false;
  }
  return std::memchr(record, kCarriageReturn, shape_.length - 1) == nullptr &&
         !isHexDigit(record[shape_.length - 1]);
}

/// How many of the witnesses behind a boundary end where they should; a status line is as good as
/// all of them.
int FixedFraming::evidence(std::span<const std::uint8_t> bytes) const {
  if (statusLineLength(bytes) > 0) return static_cast<int>(kWitnesses);
  int found = 0;
  for (std::size_t i = 0; i < kWitnesses; ++i) {
    if (endsFrame(bytes.data() + i * shape_.length)) ++found;
  }
  return found;
}

/// Bytes up to the next boundary. Between equally well witnessed ones the shortest slip wins,
/// counted from here or from where this frame should have ended.
std::size_t FixedFraming::noiseLength(std::span<const std::uint8_t> bytes) const {
  const std::size_t length = shape_.length;
  const auto slip = [&](std::size_t at) {
    return std::min(at, at > length ? at - length : length - at);
  };
  std::size_t best = length;
  int bestEvidence = 0;
  for (std::size_t at = 1; at < 2 * length; ++at) {
    const bool possible = bytes[at - 1] == kCarriageReturn || at == length || at == length - 1;
    if (!possible) continue;
    const int found = evidence(bytes.subspan(at));
    if (found > bestEvidence || (found == bestEvidence && found > 0 && slip(at) < slip(best))) {
      best = at;
      bestEvidence = found;
    }
  }
  // Records without line ends have no boundary to look for but their groups: try the next byte.
  return shape_.groups && bestEvidence == 0 ? 1 : best;
}

}  // namespace ovka
