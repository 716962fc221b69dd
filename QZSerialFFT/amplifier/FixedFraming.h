#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "ByteCodes.h"
#include "LossCounters.h"

namespace ovka {

/// How the frames of a stream look.
struct FrameShape {
  std::size_t length = 16;  ///< bytes of a frame, its carriage return last
  bool text = true;         ///< no carriage return inside a frame
  /// The records of the old Bluetooth head set: the last byte need not be a carriage return; groups
  /// of three hexadecimal characters between separators tell a record.
  bool groups = false;

  bool operator==(const FrameShape&) const = default;
};

/// Cuts a stream into frames by their fixed length, whatever the blocks that it comes in.
///
/// A frame ends with a carriage return at its last byte. Where one is missing, the next boundary is
/// looked for among the following two frame lengths: it comes after a carriage return (or where the
/// old boundary or a lost carriage return puts it) and is believed by the line ends of the three
/// frames behind it. So a corrupted, lost or doubled byte costs the frame that it fell into and no
/// other, once some five frame lengths of the stream have come in. Status lines and
/// acknowledgements between frames are told by their exact syntax. What is skipped is counted in
/// `resyncBytes`. One caller at a time.
///
/// Limit: a binary stream that holds a 13 at the same place of every frame can be taken for one
/// that starts there, when the reception begins in the middle of a frame.
class FixedFraming {
 public:
  enum class Found : std::uint8_t { Frame, StatusLine, Noise, NeedMore };
  struct Piece {
    Found kind = Found::NeedMore;
    std::size_t length = 0;
  };

  /// Calls `onFrame(const std::uint8_t*)` and `onStatusLine(std::span<const std::uint8_t>)` in the
  /// order of the stream. What is not decided yet waits for the next block. A change of shape
  /// starts afresh.
  template <typename OnFrame, typename OnStatusLine>
  void feed(const FrameShape& shape, std::span<const std::uint8_t> block, LossCounters& losses,
            OnFrame&& onFrame, OnStatusLine&& onStatusLine) {
    if (shape != shape_) {
      losses.resyncBytes.add(static_cast<long long>(waiting_));
      reset();
      shape_ = shape;
    }
    while (!block.empty()) {
      block = block.subspan(append(block));
      std::size_t at = 0;
      for (Piece piece = next(at); piece.kind != Found::NeedMore; piece = next(at)) {
        const std::uint8_t* begin = window_.data() + at;
        if (piece.kind == Found::Frame) onFrame(begin);
        if (piece.kind == Found::StatusLine) onStatusLine(std::span(begin, piece.length));
        if (piece.kind == Found::Noise) {
          losses.resyncBytes.add(static_cast<long long>(piece.length));
        }
        at += piece.length;
      }
      drop(at);
    }
  }

  /// Forgets what waits.
  void reset() noexcept { waiting_ = 0; }

 private:
  static constexpr std::size_t kWindow = 4096;
  static constexpr std::size_t kCommonLength = 16;

  std::size_t append(std::span<const std::uint8_t> block);
  void drop(std::size_t count);
  [[nodiscard]] Piece next(std::size_t at) const {
    // The common case at a glance. A status line would end within these bytes, and two carriage
    // returns at the end are what makes a frame doubtful.
    if (shape_.length == kCommonLength && waiting_ - at >= kCommonLength &&
        endsAtLastOf16(window_.data() + at)) {
      return {Found::Frame, kCommonLength};
    }
    return classify(std::span(window_.data() + at, waiting_ - at));
  }
  [[nodiscard]] Piece classify(std::span<const std::uint8_t> bytes) const;
  [[nodiscard]] Piece frameOrNot(std::span<const std::uint8_t> bytes) const;
  [[nodiscard]] bool endsFrame(const std::uint8_t* frame) const;
  [[nodiscard]] bool looksLikeRecord(const std::uint8_t* record) const;
  [[nodiscard]] int evidence(std::span<const std::uint8_t> bytes) const;
  [[nodiscard]] std::size_t noiseLength(std::span<const std::uint8_t> bytes) const;

  FrameShape shape_;
  std::array<std::uint8_t, kWindow> window_{};
  std::size_t waiting_ = 0;  ///< bytes in the window
};

}  // namespace ovka
