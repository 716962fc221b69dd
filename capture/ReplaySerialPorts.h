#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "CaptureReader.h"
#include "Clock.h"
#include "SerialPorts.h"

namespace ovka {

/// Serial lines that give the blocks of a capture to the reads that ask for them: one recorded
/// block a read, in order, never joined. All opening steps and writes succeed without effect.
///
/// When a block is there: between two calls on a line at different times the clock decides (the
/// block's recorded distance from the opening has passed); between calls at the same moment (less
/// than 1 ms apart) the number of waits that timed out decides, as it was recorded. So the opening,
/// which takes no time on a manual clock, meets the same blocks in the same calls as live, and the
/// polls meet them at their times. On a manual clock every run gives the same calls the same
/// blocks.
///
/// Waits with a timeout, and the first opening of a later line, take time: `advanceTo` is called
/// with the clock's time to go to (a manual clock moves there and runs what is due; a real one
/// sleeps). Without it the line's own time skips the wait instead. Any thread; the lock is not held
/// during advanceTo.
class ReplaySerialPorts final : public SerialPorts {
 public:
  using AdvanceTo = std::function<void(std::int64_t)>;

  /// `reader` has begun.
  ReplaySerialPorts(CaptureReader& reader, const Clock& clock, AdvanceTo advanceTo = {});

  /// The path of the first line in the capture; empty when it holds none.
  [[nodiscard]] std::string firstPath();
  /// Whether nothing is left to give to the lines that are open, and no line that came back in the
  /// capture was opened again within 5 s of that moment. The reader's error() says why it ended.
  [[nodiscard]] bool finished();
  /// Clock time at which the next record of an open line is due; nothing when there is none left.
  [[nodiscard]] std::optional<std::int64_t> nextDue();
  [[nodiscard]] std::uint64_t deliveredBlocks() const;
  /// Records that no read asked for: of lines not opened, closed early, or left unread too long.
  [[nodiscard]] std::uint64_t skippedBlocks() const;

  [[nodiscard]] std::vector<SerialDevice> devices(int* error) override;
  /// ENOENT for a path that the capture does not hold, and for a line that came back only later.
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
  /// Waits as a blocking read does; EAGAIN when the capture holds nothing more for the line.
  [[nodiscard]] SerialResult read(int descriptor, std::span<std::uint8_t> bytes) override;
  [[nodiscard]] SerialResult write(int descriptor, std::span<const std::uint8_t> bytes) override;
  [[nodiscard]] SerialResult drain(int descriptor) override;
  void close(int descriptor) override;

 private:
  struct Event {
    CaptureRecordHead head;
    std::vector<std::uint8_t> payload;
    std::int32_t reason = 0;
  };
  /// One opening in the capture, up to its closing. Times are recorded ones unless named otherwise.
  struct Line {
    std::string path;
    std::int64_t openedAt = 0;
    bool complete = false;  ///< the capture holds nothing more for it
    bool taken = false;     ///< opened by the replay
    bool closed = false;    ///< by the replay
    bool hungUp = false;
    std::deque<Event> events;
    std::size_t queuedBytes = 0;
    std::size_t given = 0;      ///< bytes of the first block already read
    std::int64_t base = 0;      ///< clock time less recorded time
    std::int64_t lastCall = 0;  ///< clock time of the last wait or read
    std::uint64_t waits = 0;    ///< timed out since the last event
  };
  using Lock = std::unique_lock<std::mutex>;

  [[nodiscard]] Line* find(int descriptor);
  bool readAhead();
  void addOpening(const CaptureRecord& record);
  void addEvent(const CaptureRecord& record);
  [[nodiscard]] const Event* front(Line& line, std::int64_t until);
  [[nodiscard]] int findOpening(const std::string& path, std::int64_t until, bool& again);
  void moveTo(Line& line, std::int64_t target, std::int64_t timeout, Lock& lock);
  [[nodiscard]] std::int64_t recordedNow() const;
  [[nodiscard]] SerialResult done(int descriptor);
  [[nodiscard]] SerialResult giveBlock(Line& line, const Event& event,
                                       std::span<std::uint8_t> bytes);

  CaptureReader& reader_;
  const Clock& clock_;
  AdvanceTo advanceTo_;
  mutable std::mutex lock_;
  std::map<int, Line> lines_;         ///< by number of the opening
  std::array<int, 256> openingOf_{};  ///< by line number in the capture, -1 for none
  int openings_ = 0;
  bool exhausted_ = false;
  std::int64_t readUntil_ = 0;        ///< recorded time of the last record read
  std::optional<std::int64_t> base_;  ///< clock time less recorded time at the first opening
  std::uint64_t delivered_ = 0;
  std::uint64_t skipped_ = 0;
};

}  // namespace ovka
