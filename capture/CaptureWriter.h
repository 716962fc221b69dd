#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "CaptureBytes.h"
#include "CaptureFormat.h"

namespace ovka {

/// Writes a capture, record by record. The first failure ends the writing, so that what is on disk
/// stays readable up to there; later calls do nothing and give false. Used by one thread at a time.
class CaptureWriter {
 public:
  explicit CaptureWriter(ByteSink& sink) : sink_(sink) {}

  /// Header: wall time of the start (ns since 1970-01-01 UTC) and settings. A name or value that
  /// holds a line end or, in a name, "=", and settings beyond 64 KiB, are refused (EINVAL).
  bool begin(std::int64_t startWallNanoseconds, const CaptureSettings& settings);
  /// Any record but the end; `head.length` is set from the payload, a time before the last one is
  /// raised to it. A payload above 1 MiB is refused without harm to the file.
  bool record(CaptureRecordHead head, std::span<const std::uint8_t> payload);
  /// The end record and a flush.
  bool end(std::int64_t nanoseconds);
  bool flush();

  /// 0 or the errno of the failure that ended the writing.
  [[nodiscard]] int failure() const noexcept { return failure_; }
  [[nodiscard]] std::string name() const { return sink_.name(); }
  [[nodiscard]] std::uint64_t blocks() const noexcept { return blocks_; }
  [[nodiscard]] std::uint64_t bytes() const noexcept { return bytes_; }

 private:
  bool put(std::span<const std::uint8_t> bytes);
  bool putRecord(const CaptureRecordHead& head, std::span<const std::uint8_t> payload);

  ByteSink& sink_;
  int failure_ = 0;
  bool begun_ = false;
  bool ended_ = false;
  std::int64_t lastTime_ = 0;
  std::uint64_t blocks_ = 0;
  std::uint64_t bytes_ = 0;
};

/// Payloads of the records that hold numbers.
[[nodiscard]] std::array<std::uint8_t, 4> hangUpPayload(std::int32_t reason);
[[nodiscard]] std::array<std::uint8_t, 16> countsPayload(std::uint64_t blocks, std::uint64_t bytes);

}  // namespace ovka
