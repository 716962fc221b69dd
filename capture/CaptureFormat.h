#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// The capture file, version 1; docs/CAPTURE.md describes it byte by byte. All numbers are little
/// endian.
namespace ovka::captureformat {

/// The first byte is no text and the last two change when a program "repairs" line ends.
inline constexpr std::array<std::uint8_t, 8> kMagic{0x89, 'O', 'V', 'C', 'A', 'P', 0x0D, 0x0A};
inline constexpr std::uint32_t kVersion = 1;
inline constexpr std::size_t kFileHeadBytes = 24;    ///< before the settings text
inline constexpr std::size_t kRecordHeadBytes = 20;  ///< its own checksum included
inline constexpr std::uint32_t kMaximumSettings = 64U * 1024U;
inline constexpr std::uint32_t kMaximumPayload = 1024U * 1024U;
inline constexpr std::int64_t kMaximumTime = std::int64_t{1} << 61;  ///< ns, some 73 years

}  // namespace ovka::captureformat

namespace ovka {

/// What a record tells.
enum class CaptureKind : std::uint8_t {
  Block = 1,   ///< bytes as one read gave them
  Opened = 2,  ///< a line was opened; payload: its path
  HungUp = 3,  ///< the far end went; payload: int32, a HangUp constant or an errno
  Closed = 4,  ///< the reader closed the line
  Lost = 5,    ///< blocks that the recorder had no room for; payload: uint64 blocks, uint64 bytes
  End = 255,   ///< the recording was ended in order; payload: uint64 blocks, uint64 bytes
};

/// How a hang-up showed itself; a positive value is the errno of a read.
namespace CaptureHangUp {
inline constexpr std::int32_t kSeenByWait = -1;
inline constexpr std::int32_t kReadGaveNothing = 0;
}  // namespace CaptureHangUp

/// What stands before the payload of a record.
struct CaptureRecordHead {
  CaptureKind kind = CaptureKind::Block;
  /// Number of the line while it is open, from 0; a closed line's number is given again.
  std::uint8_t line = 0;
  /// Waits on the line that timed out since its last record, at most 65535. With them a replay
  /// follows the reader's calls even where no time passed between them.
  std::uint16_t waits = 0;
  std::uint32_t length = 0;  ///< payload bytes
  std::int64_t nanoseconds =
      0;  ///< since the start of the recording, never less than the one before
};

/// NAME and VALUE of a setting in force at the start.
using CaptureSettings = std::vector<std::pair<std::string, std::string>>;

}  // namespace ovka
