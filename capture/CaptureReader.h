#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "CaptureBytes.h"
#include "CaptureFormat.h"

namespace ovka {

/// One record as read; `payload` is valid until the next call of the reader.
struct CaptureRecord {
  CaptureRecordHead head;
  std::span<const std::uint8_t> payload;
  /// HungUp records: the reason.
  std::int32_t hangUpReason = 0;
  /// Lost records: the counts.
  std::uint64_t lostBlocks = 0;
  std::uint64_t lostBytes = 0;
};

/// Reads a capture from front to back in bounded memory (at most 1 MiB and some). Every byte is
/// covered by a checksum; whatever stands before the first damage is delivered. Used by one thread
/// at a time.
class CaptureReader {
 public:
  explicit CaptureReader(ByteSource& source) : source_(source) {}

  /// Reads the header. False: error() says why ("not a capture", "version N is newer ...").
  [[nodiscard]] bool begin();
  /// Reads the next record. False at the end record (error() is empty) and at the first fault
  /// ("damaged at byte N", "cut off at byte N after K blocks", or the text of a failed read).
  [[nodiscard]] bool next(CaptureRecord& record);

  [[nodiscard]] std::int64_t startWallNanoseconds() const noexcept { return startWall_; }
  [[nodiscard]] const CaptureSettings& settings() const noexcept { return settings_; }
  /// The value of a setting, or an empty text.
  [[nodiscard]] std::string setting(std::string_view name) const;
  /// Empty while all is well and after an orderly end.
  [[nodiscard]] const std::string& error() const noexcept { return error_; }
  /// Whether the end record was reached.
  [[nodiscard]] bool ended() const noexcept { return ended_; }
  [[nodiscard]] std::uint64_t blocks() const noexcept { return blocks_; }
  [[nodiscard]] std::uint64_t bytes() const noexcept { return bytes_; }

 private:
  [[nodiscard]] bool fill(std::span<std::uint8_t> bytes);
  [[nodiscard]] bool readHead(CaptureRecordHead& head);
  [[nodiscard]] bool readPayload(std::uint32_t length);
  [[nodiscard]] bool accept(CaptureRecord& record);
  [[nodiscard]] bool finish();
  bool parseSettings(std::string_view text);
  bool damaged();
  bool fail(std::string text);

  ByteSource& source_;
  std::vector<std::uint8_t> payload_;
  std::int64_t startWall_ = 0;
  CaptureSettings settings_;
  std::string error_;
  bool begun_ = false;
  bool ended_ = false;
  std::uint64_t at_ = 0;           ///< bytes read so far
  std::uint64_t recordStart_ = 0;  ///< byte at which the current record begins
  std::int64_t lastTime_ = 0;
  std::uint64_t blocks_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace ovka
