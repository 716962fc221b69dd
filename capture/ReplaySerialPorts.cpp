#include "ReplaySerialPorts.h"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace ovka {
namespace {

constexpr int kFirstDescriptor = 1000;
/// Calls closer than this are one run of the reader, without a wait in between.
constexpr std::int64_t kSameMoment = 1'000'000;
/// How far ahead in recorded time a line's next record is looked for.
constexpr std::int64_t kLookAhead = 60'000'000'000;
/// How long after its recorded moment an opening is still waited for.
constexpr std::int64_t kReopening = 5'000'000'000;
/// What may wait in memory for one line that nobody reads, and how many such lines.
constexpr std::size_t kMaximumQueued = 16U * 1024U * 1024U;
constexpr std::size_t kMaximumOpenings = 1024;

}  // namespace

ReplaySerialPorts::ReplaySerialPorts(CaptureReader& reader, const Clock& clock, AdvanceTo advanceTo)
    : reader_(reader), clock_(clock), advanceTo_(std::move(advanceTo)) {
  openingOf_.fill(-1);
}

ReplaySerialPorts::Line* ReplaySerialPorts::find(int descriptor) {
  const auto found = lines_.find(descriptor - kFirstDescriptor);
  if (found == lines_.end() || !found->second.taken || found->second.closed) return nullptr;
  return &found->second;
}

bool ReplaySerialPorts::readAhead() {
  CaptureRecord record;
  if (exhausted_ || !reader_.next(record)) {
    exhausted_ = true;
    for (auto& [number, line] : lines_) line.complete = true;
    return false;
  }
  readUntil_ = record.head.nanoseconds;
  if (record.head.kind == CaptureKind::Opened) {
    addOpening(record);
  } else if (record.head.kind != CaptureKind::Lost) {
    addEvent(record);
  }
  return true;
}

void ReplaySerialPorts::addOpening(const CaptureRecord& record) {
  int& current = openingOf_[record.head.line];
  if (const auto before = lines_.find(current); before != lines_.end()) {
    before->second.complete = true;
  }
  current = openings_++;
  Line& line = lines_[current];
  line.path.assign(record.payload.begin(), record.payload.end());
  line.openedAt = record.head.nanoseconds;
  if (lines_.size() <= kMaximumOpenings) return;
  const auto oldest = std::find_if(lines_.begin(), lines_.end(),
                                   [](const auto& entry) { return !entry.second.taken; });
  if (oldest == lines_.end() || oldest->first == current) return;
  skipped_ += oldest->second.events.size();
  lines_.erase(oldest);
}

void ReplaySerialPorts::addEvent(const CaptureRecord& record) {
  const bool isBlock = record.head.kind == CaptureKind::Block;
  const auto found = lines_.find(openingOf_[record.head.line]);
  if (found == lines_.end() || found->second.closed) {
    if (isBlock) ++skipped_;
    return;
  }
  Line& line = found->second;
  if (record.head.kind == CaptureKind::Closed) {
    line.complete = true;
    openingOf_[record.head.line] = -1;
    return;
  }
  line.events.push_back(
      {record.head, {record.payload.begin(), record.payload.end()}, record.hangUpReason});
  line.queuedBytes += record.payload.size() + sizeof(Event);
  if (line.queuedBytes <= kMaximumQueued) return;
  line.queuedBytes -= line.events.front().payload.size() + sizeof(Event);
  line.events.pop_front();
  line.given = 0;
  ++skipped_;
}

/// The line's next record, looked for up to the recorded time `until`.
const ReplaySerialPorts::Event* ReplaySerialPorts::front(Line& line, std::int64_t until) {
  while (line.events.empty() && !line.complete && readUntil_ <= until && readAhead()) {
  }
  return line.events.empty() ? nullptr : &line.events.front();
}

std::int64_t ReplaySerialPorts::recordedNow() const {
  return base_ ? clock_.nanoseconds() - *base_ : 0;
}

std::string ReplaySerialPorts::firstPath() {
  const Lock guard(lock_);
  while (openings_ == 0 && readAhead()) {
  }
  return lines_.empty() ? std::string() : lines_.begin()->second.path;
}

bool ReplaySerialPorts::finished() {
  const Lock guard(lock_);
  while (readUntil_ <= recordedNow() && readAhead()) {
  }
  return exhausted_ && std::none_of(lines_.begin(), lines_.end(), [this](const auto& entry) {
           const Line& line = entry.second;
           if (!line.taken) return recordedNow() < line.openedAt + kReopening;
           return !line.closed && !line.hungUp && !line.events.empty();
         });
}

std::optional<std::int64_t> ReplaySerialPorts::nextDue() {
  const Lock guard(lock_);
  while (readUntil_ <= recordedNow() && readAhead()) {
  }
  if (!base_) return std::nullopt;
  std::int64_t due = std::numeric_limits<std::int64_t>::max();
  if (!exhausted_) due = readUntil_ + *base_;
  for (const auto& [number, line] : lines_) {
    if (!line.taken) {
      due = std::min(due, line.openedAt + *base_);
    } else if (!line.closed && !line.hungUp && !line.events.empty()) {
      due = std::min(due, line.events.front().head.nanoseconds + line.base);
    }
  }
  if (due == std::numeric_limits<std::int64_t>::max()) return std::nullopt;
  return std::max(due, clock_.nanoseconds());
}

std::uint64_t ReplaySerialPorts::deliveredBlocks() const {
  const Lock guard(lock_);
  return delivered_;
}

std::uint64_t ReplaySerialPorts::skippedBlocks() const {
  const Lock guard(lock_);
  std::uint64_t count = skipped_;
  for (const auto& [number, line] : lines_) {
    if (!line.taken) count += line.events.size();
  }
  return count;
}

std::vector<SerialDevice> ReplaySerialPorts::devices(int* error) {
  if (error != nullptr) *error = 0;
  static_cast<void>(firstPath());
  const Lock guard(lock_);
  std::vector<SerialDevice> found;
  for (const auto& [number, line] : lines_) {
    const bool known = std::any_of(found.begin(), found.end(), [&line = line](const auto& device) {
      return device.path == line.path;
    });
    if (!known) found.push_back({line.path, line.path + " (capture)", line.path});
  }
  return found;
}

/// Number of the first opening of `path` that the replay has not taken, -1 for none; `again` tells
/// whether an earlier one was taken.
int ReplaySerialPorts::findOpening(const std::string& path, std::int64_t until, bool& again) {
  const auto look = [&] {
    again = false;
    for (const auto& [number, line] : lines_) {
      if (line.path != path) continue;
      if (!line.taken) return number;
      again = true;
    }
    return -1;
  };
  int number = look();
  while (number < 0 && readUntil_ <= until && readAhead()) number = look();
  return number;
}

SerialResult ReplaySerialPorts::open(const std::string& path) {
  static_cast<void>(firstPath());
  Lock lock(lock_);
  if (!base_ && !lines_.empty()) readUntil_ = std::max(readUntil_, lines_.begin()->second.openedAt);
  bool again = false;
  const std::int64_t now = base_ ? recordedNow() : readUntil_;
  const int number = findOpening(path, now + kLookAhead, again);
  if (number < 0) return {0, ENOENT};
  Line& line = lines_[number];
  if (again && line.openedAt > now) return {0, ENOENT};
  if (!base_) base_ = clock_.nanoseconds() - line.openedAt;
  line.taken = true;
  // A line that came back is met some moments later than live; its own time starts at that moment.
  line.base = again ? clock_.nanoseconds() - line.openedAt : *base_;
  moveTo(line, line.openedAt, advanceTo_ ? kLookAhead : 0, lock);
  line.lastCall = clock_.nanoseconds();
  return {number + kFirstDescriptor, 0};
}

/// Lets time pass until the recorded time `target`, on the clock for at most `timeout`; what is
/// missing then the line's own time skips.
void ReplaySerialPorts::moveTo(Line& line, std::int64_t target, std::int64_t timeout, Lock& lock) {
  const std::int64_t missing = target + line.base - clock_.nanoseconds();
  if (missing <= 0) return;
  if (advanceTo_ && timeout > 0) {
    const std::int64_t until = clock_.nanoseconds() + std::min(missing, timeout);
    lock.unlock();
    advanceTo_(until);
    lock.lock();
  }
  line.base -= std::max<std::int64_t>(target + line.base - clock_.nanoseconds(), 0);
}

SerialWait ReplaySerialPorts::waitReadable(int descriptor, int timeoutMilliseconds) {
  Lock lock(lock_);
  Line* line = find(descriptor);
  if (line == nullptr || line->hungUp) return SerialWait::HungUp;
  const std::int64_t timeout =
      timeoutMilliseconds < 0 ? kLookAhead : std::int64_t{timeoutMilliseconds} * 1'000'000;
  const std::int64_t now = clock_.nanoseconds();
  const std::int64_t limit = now - line->base + timeout;
  const bool sameMoment = now - line->lastCall < kSameMoment;
  const Event* event = front(*line, sameMoment ? limit + kLookAhead : limit);
  const bool ready =
      event != nullptr && (line->given > 0 || (sameMoment ? line->waits >= event->head.waits
                                                          : event->head.nanoseconds <= limit));
  if (ready) {
    line->hungUp =
        event->head.kind == CaptureKind::HungUp && event->reason == CaptureHangUp::kSeenByWait;
    moveTo(*line, event->head.nanoseconds, timeout, lock);
  } else {
    ++line->waits;
    if (timeout > 0) moveTo(*line, limit, timeout, lock);
  }
  line->lastCall = clock_.nanoseconds();
  if (line->hungUp) return SerialWait::HungUp;
  return ready ? SerialWait::Ready : SerialWait::TimedOut;
}

SerialResult ReplaySerialPorts::read(int descriptor, std::span<std::uint8_t> bytes) {
  if (bytes.empty()) return {0, EINVAL};
  Lock lock(lock_);
  Line* line = find(descriptor);
  if (line == nullptr) return {0, EBADF};
  const Event* event = front(*line, clock_.nanoseconds() - line->base + kLookAhead);
  if (event == nullptr) return {0, EAGAIN};
  moveTo(*line, event->head.nanoseconds, kLookAhead, lock);
  line->lastCall = clock_.nanoseconds();
  // Other threads may have moved the queue while time passed.
  event = front(*line, readUntil_);
  if (event == nullptr) return {0, EAGAIN};
  if (event->head.kind == CaptureKind::HungUp) {
    line->hungUp = true;
    return {0, std::max(event->reason, 0)};
  }
  return giveBlock(*line, *event, bytes);
}

SerialResult ReplaySerialPorts::giveBlock(Line& line, const Event& event,
                                          std::span<std::uint8_t> bytes) {
  const auto rest = std::span<const std::uint8_t>(event.payload).subspan(line.given);
  const std::size_t count = std::min(rest.size(), bytes.size());
  std::copy_n(rest.begin(), count, bytes.begin());
  line.given += count;
  if (count == rest.size()) {
    line.queuedBytes -= event.payload.size() + sizeof(Event);
    line.events.pop_front();
    line.given = 0;
    line.waits = 0;
    ++delivered_;
  }
  return {static_cast<std::int64_t>(count), 0};
}

void ReplaySerialPorts::close(int descriptor) {
  const Lock guard(lock_);
  Line* line = find(descriptor);
  if (line == nullptr) return;
  line->closed = true;
  for (const Event& event : line->events) {
    if (event.head.kind == CaptureKind::Block) ++skipped_;
  }
  line->events.clear();
}

SerialResult ReplaySerialPorts::done(int descriptor) {
  const Lock guard(lock_);
  return {0, find(descriptor) == nullptr ? EBADF : 0};
}

SerialResult ReplaySerialPorts::claimExclusive(int descriptor) {
  return done(descriptor);
}
SerialResult ReplaySerialPorts::clearNonBlocking(int descriptor) {
  return done(descriptor);
}
SerialResult ReplaySerialPorts::getAttributes(int descriptor, SerialAttributes& attributes) {
  attributes = {9600, 9600, SerialControl::kCS8};
  return done(descriptor);
}
SerialResult ReplaySerialPorts::setAttributes(int descriptor, const SerialAttributes&) {
  return done(descriptor);
}
SerialResult ReplaySerialPorts::assertDTR(int descriptor) {
  return done(descriptor);
}
SerialResult ReplaySerialPorts::clearDTR(int descriptor) {
  return done(descriptor);
}
SerialResult ReplaySerialPorts::setHandshakeLines(int descriptor, int) {
  return done(descriptor);
}
SerialResult ReplaySerialPorts::getHandshakeLines(int descriptor) {
  SerialResult result = done(descriptor);
  if (result.error == 0) {
    result.value = SerialLines::kDTR | SerialLines::kRTS | SerialLines::kCTS | SerialLines::kDSR;
  }
  return result;
}
SerialResult ReplaySerialPorts::setReadLatency(int descriptor, int) {
  return done(descriptor);
}
SerialResult ReplaySerialPorts::setSpeed(int descriptor, int) {
  return done(descriptor);
}
SerialResult ReplaySerialPorts::write(int descriptor, std::span<const std::uint8_t> bytes) {
  SerialResult result = done(descriptor);
  if (result.error == 0) result.value = static_cast<std::int64_t>(bytes.size());
  return result;
}
SerialResult ReplaySerialPorts::drain(int descriptor) {
  return done(descriptor);
}

}  // namespace ovka
