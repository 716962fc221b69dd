#include "CapturingSerialPorts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <optional>
#include <vector>

#include "CaptureQueue.h"
#include "Print.h"

namespace ovka {
namespace {

constexpr std::chrono::milliseconds kWriteInterval{20};
constexpr std::size_t kMaximumLines = 16;

std::span<const std::uint8_t> bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

/// The queue with its two sides: the lines put records in, the writing thread takes them out.
class CapturingSerialPorts::Recorder {
 public:
  Recorder(const Clock& clock, CaptureWriter& writer, std::size_t queueBytes)
      : clock_(clock), start_(clock.nanoseconds()), writer_(writer), queue_(queueBytes) {
    payload_.reserve(std::min<std::size_t>(queueBytes, captureformat::kMaximumPayload));
  }

  void opened(int descriptor, const std::string& path) {
    const std::lock_guard guard(lock_);
    forget(descriptor);
    const auto free = std::find_if(lines_.begin(), lines_.end(),
                                   [](const LineState& line) { return line.descriptor < 0; });
    if (free == lines_.end()) return;
    *free = {descriptor, 0, false};
    put(CaptureKind::Opened, *free, bytesOf(path));
  }
  void block(int descriptor, std::span<const std::uint8_t> bytes) {
    const std::lock_guard guard(lock_);
    if (LineState* line = find(descriptor)) put(CaptureKind::Block, *line, bytes);
  }
  void timedOut(int descriptor) {
    const std::lock_guard guard(lock_);
    LineState* line = find(descriptor);
    if (line != nullptr && line->waits < 0xFFFFU) ++line->waits;
  }
  void hungUp(int descriptor, std::int32_t reason) {
    const std::lock_guard guard(lock_);
    LineState* line = find(descriptor);
    if (line == nullptr || line->hungUp) return;
    line->hungUp = true;
    put(CaptureKind::HungUp, *line, hangUpPayload(reason));
  }
  void closed(int descriptor) {
    const std::lock_guard guard(lock_);
    if (LineState* line = find(descriptor)) put(CaptureKind::Closed, *line, {});
    forget(descriptor);
  }

  void writeQueued() {
    const std::lock_guard guard(writing_);
    if (!finished_) drain();
  }
  bool finish() {
    const std::lock_guard guard(writing_);
    if (!finished_) {
      {
        const std::lock_guard queueGuard(lock_);
        recording_ = false;
      }
      drain();
      if (writer_.failure() == 0) writer_.end(now());
      report();
      finished_ = true;
    }
    return failure() == 0 && lostBlocks() == 0;
  }

  [[nodiscard]] std::uint64_t blocks() const noexcept { return blocks_; }
  [[nodiscard]] std::uint64_t lostBlocks() const noexcept { return allLost_; }
  [[nodiscard]] int failure() const noexcept { return failure_; }

 private:
  struct LineState {
    int descriptor = -1;
    std::uint16_t waits = 0;
    bool hungUp = false;
  };

  [[nodiscard]] std::int64_t now() const noexcept { return clock_.nanoseconds() - start_; }

  LineState* find(int descriptor) noexcept {
    const auto found =
        std::find_if(lines_.begin(), lines_.end(),
                     [descriptor](const LineState& line) { return line.descriptor == descriptor; });
    return descriptor < 0 || found == lines_.end() ? nullptr : &*found;
  }
  void forget(int descriptor) noexcept {
    if (LineState* line = find(descriptor)) *line = {};
  }

  /// Called with lock_ held, so that times never go back in the queue.
  void put(CaptureKind kind, LineState& line, std::span<const std::uint8_t> payload) noexcept {
    if (!recording_) return;
    CaptureRecordHead head;
    head.kind = kind;
    head.line = static_cast<std::uint8_t>(&line - lines_.data());
    head.waits = line.waits;
    head.nanoseconds = now();
    line.waits = 0;
    const bool queued = putLost(head.nanoseconds) && queue_.push(head, payload);
    if (queued && kind == CaptureKind::Block) ++blocks_;
    if (queued) return;
    ++lostBlocks_;
    ++allLost_;
    lostBytes_ += payload.size();
  }
  /// Tells of records lost before, once there is room to tell.
  bool putLost(std::int64_t time) noexcept {
    if (lostBlocks_ == 0) return true;
    CaptureRecordHead head;
    head.kind = CaptureKind::Lost;
    head.nanoseconds = time;
    if (!queue_.push(head, countsPayload(lostBlocks_, lostBytes_))) return false;
    lostBlocks_ = 0;
    lostBytes_ = 0;
    return true;
  }

  /// Called with writing_ held: the disk may be slow, so lock_ is held only to take one record out.
  void drain() {
    CaptureRecordHead head;
    bool wrote = false;
    while (take(head)) {
      writer_.record(head, payload_);
      wrote = true;
    }
    // Without a record the writer is left alone: it may not have begun yet.
    if (!wrote) return;
    writer_.flush();
    report();
  }
  bool take(CaptureRecordHead& head) {
    const std::lock_guard guard(lock_);
    if (queue_.pop(head, payload_)) return true;
    return putLost(now()) && queue_.pop(head, payload_);
  }
  void report() {
    if (failure_ != 0 || writer_.failure() == 0) return;
    failure_ = writer_.failure();
    PrintError(failure_, "Error writing capture %s - ", writer_.name().c_str());
  }

  const Clock& clock_;
  const std::int64_t start_;

  std::mutex lock_;  ///< guards the queue and the lines
  bool recording_ = true;
  std::array<LineState, kMaximumLines> lines_{};
  std::uint64_t lostBlocks_ = 0;  ///< not yet told in the capture
  std::uint64_t lostBytes_ = 0;

  std::mutex writing_;  ///< guards the writer; taken before lock_
  CaptureWriter& writer_;
  bool finished_ = false;
  std::vector<std::uint8_t> payload_;

  CaptureQueue queue_;
  std::atomic<std::uint64_t> blocks_{0};
  std::atomic<std::uint64_t> allLost_{0};
  std::atomic<int> failure_{0};
};

CapturingSerialPorts::CapturingSerialPorts(SerialPorts& lines, const Clock& clock,
                                           CaptureWriter& writer, ThreadLauncher& threads,
                                           std::size_t queueBytes)
    : lines_(lines), recorder_(std::make_shared<Recorder>(clock, writer, queueBytes)) {
  threads.loop("capture", [recorder = recorder_]() -> std::chrono::nanoseconds {
    recorder->writeQueued();
    return kWriteInterval;
  });
}

CapturingSerialPorts::~CapturingSerialPorts() {
  finish();
}

bool CapturingSerialPorts::finish() {
  return recorder_->finish();
}
std::uint64_t CapturingSerialPorts::blocks() const noexcept {
  return recorder_->blocks();
}
std::uint64_t CapturingSerialPorts::lostBlocks() const noexcept {
  return recorder_->lostBlocks();
}
int CapturingSerialPorts::failure() const noexcept {
  return recorder_->failure();
}

std::vector<SerialDevice> CapturingSerialPorts::devices(int* error) {
  return lines_.devices(error);
}

SerialResult CapturingSerialPorts::open(const std::string& path) {
  const SerialResult result = lines_.open(path);
  if (result.error == 0) recorder_->opened(static_cast<int>(result.value), path);
  return result;
}

SerialResult CapturingSerialPorts::claimExclusive(int descriptor) {
  return lines_.claimExclusive(descriptor);
}
SerialResult CapturingSerialPorts::clearNonBlocking(int descriptor) {
  return lines_.clearNonBlocking(descriptor);
}
SerialResult CapturingSerialPorts::getAttributes(int descriptor, SerialAttributes& attributes) {
  return lines_.getAttributes(descriptor, attributes);
}
SerialResult CapturingSerialPorts::setAttributes(int descriptor,
                                                 const SerialAttributes& attributes) {
  return lines_.setAttributes(descriptor, attributes);
}
SerialResult CapturingSerialPorts::assertDTR(int descriptor) {
  return lines_.assertDTR(descriptor);
}
SerialResult CapturingSerialPorts::clearDTR(int descriptor) {
  return lines_.clearDTR(descriptor);
}
SerialResult CapturingSerialPorts::setHandshakeLines(int descriptor, int lines) {
  return lines_.setHandshakeLines(descriptor, lines);
}
SerialResult CapturingSerialPorts::getHandshakeLines(int descriptor) {
  return lines_.getHandshakeLines(descriptor);
}
SerialResult CapturingSerialPorts::setReadLatency(int descriptor, int microseconds) {
  return lines_.setReadLatency(descriptor, microseconds);
}
SerialResult CapturingSerialPorts::setSpeed(int descriptor, int baud) {
  return lines_.setSpeed(descriptor, baud);
}

SerialWait CapturingSerialPorts::waitReadable(int descriptor, int timeoutMilliseconds) {
  const SerialWait found = lines_.waitReadable(descriptor, timeoutMilliseconds);
  if (found == SerialWait::TimedOut) recorder_->timedOut(descriptor);
  if (found == SerialWait::HungUp) recorder_->hungUp(descriptor, CaptureHangUp::kSeenByWait);
  return found;
}

SerialResult CapturingSerialPorts::read(int descriptor, std::span<std::uint8_t> bytes) {
  const SerialResult result = lines_.read(descriptor, bytes);
  if (result.error == 0 && result.value > 0) {
    recorder_->block(descriptor, bytes.first(static_cast<std::size_t>(result.value)));
  } else if (result.error == 0) {
    recorder_->hungUp(descriptor, CaptureHangUp::kReadGaveNothing);
  } else if (result.error != EAGAIN && result.error != EINTR) {
    recorder_->hungUp(descriptor, result.error);
  }
  return result;
}

SerialResult CapturingSerialPorts::write(int descriptor, std::span<const std::uint8_t> bytes) {
  return lines_.write(descriptor, bytes);
}
SerialResult CapturingSerialPorts::drain(int descriptor) {
  return lines_.drain(descriptor);
}

void CapturingSerialPorts::close(int descriptor) {
  // First the record: once closed, the number may stand for another line.
  recorder_->closed(descriptor);
  lines_.close(descriptor);
}

}  // namespace ovka
