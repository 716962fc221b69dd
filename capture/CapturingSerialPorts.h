#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "CaptureWriter.h"
#include "Clock.h"
#include "SerialPorts.h"
#include "ThreadLauncher.h"

namespace ovka {

/// Serial lines that record everything read from them. Every step goes to the lines beneath
/// unchanged; reads, openings, hang-ups and closings are also put into a queue that was allocated
/// at the start and that a thread of its own empties to the writer, so a slow disk never holds up
/// the reading thread (which waits for a lock only while one block is copied). A full queue drops
/// whole records; the capture says how much (a Lost record), and so does lostBlocks().
///
/// A failure of the disk is printed once ("Error writing capture PATH - ..."); reading goes on.
class CapturingSerialPorts final : public SerialPorts {
 public:
  static constexpr std::size_t kQueueBytes = 4U * 1024U * 1024U;

  /// `writer` begins before the first line is opened, and outlives this object and the launcher's
  /// threads unless finish() was called. Times count from now on `clock`.
  CapturingSerialPorts(SerialPorts& lines, const Clock& clock, CaptureWriter& writer,
                       ThreadLauncher& threads, std::size_t queueBytes = kQueueBytes);
  /// Calls finish().
  ~CapturingSerialPorts() override;
  CapturingSerialPorts(const CapturingSerialPorts&) = delete;
  CapturingSerialPorts& operator=(const CapturingSerialPorts&) = delete;

  /// Writes what is queued and the end record; nothing is recorded afterwards, the lines work on.
  /// Any thread; once is enough. False when the capture could not be written whole.
  bool finish();

  [[nodiscard]] std::uint64_t blocks() const noexcept;
  [[nodiscard]] std::uint64_t lostBlocks() const noexcept;
  /// 0 or the errno of the failure that ended the recording.
  [[nodiscard]] int failure() const noexcept;

  [[nodiscard]] std::vector<SerialDevice> devices(int* error) override;
  [[nodiscard]] SerialResult open(const std::string& path) override;
  [[nodiscard]] SerialResult claimExclusive(int descriptor) override;
  [[nodiscard]] SerialResult clearNonBlocking(int descriptor) override;
  [[nodiscard]] SerialResult getAttributes(int descriptor, SerialAttributes& attributes) override;
  [[nodiscard]] SerialResult setAttributes(int descriptor,
                                           const SerialAttributes& attributes) override;
  [[nodiscard]] SerialResult assertDTR(int descriptor) override;
  [[nodiscard]] SerialResult clearDTR(int descriptor) override;
  [[nodiscard]] SerialResult setHandshakeLines(int descriptor, int lines) override;
  [[nodiscard]] SerialResult getHandshakeLines(int descriptor) override;
  [[nodiscard]] SerialResult setReadLatency(int descriptor, int microseconds) override;
  [[nodiscard]] SerialResult setSpeed(int descriptor, int baud) override;
  [[nodiscard]] SerialWait waitReadable(int descriptor, int timeoutMilliseconds) override;
  [[nodiscard]] SerialResult read(int descriptor, std::span<std::uint8_t> bytes) override;
  [[nodiscard]] SerialResult write(int descriptor, std::span<const std::uint8_t> bytes) override;
  [[nodiscard]] SerialResult drain(int descriptor) override;
  void close(int descriptor) override;

 private:
  class Recorder;
  SerialPorts& lines_;
  std::shared_ptr<Recorder> recorder_;  // shared with the writing thread, which may outlive us
};

}  // namespace ovka
