#include "JournalWriter.h"

#include <algorithm>
#include <utility>

#include "JournalNumbers.h"
#include "Print.h"

namespace ovka {
namespace {

using journalformat::Annotation;
using journalformat::MarkKind;

/// Chunks written on one look: late points wait for the next one, so that the newest come first.
constexpr std::uint64_t kBudgetPoints = 400'000;
constexpr std::uint64_t kNoBudget = ~std::uint64_t{0};
constexpr std::uint64_t kNewestPoints = 65'536;
constexpr std::size_t kMostPieces = 64;
constexpr std::int32_t kRecording = 1, kAcquiring = 2;  // of setRecModeX
constexpr std::uint32_t kOnePortAChannel = 1;           // the amplifier model
constexpr std::size_t kMostAnnotations = 10'000;
constexpr std::int64_t kCheckInterval = 1 * journalnumbers::kSecond;
constexpr std::int64_t kSpaceInterval = 5 * journalnumbers::kSecond;

}  // namespace

JournalWriter::JournalWriter(const JournalServices& services, std::function<std::string()> settings,
                             std::function<std::vector<Annotation>()> annotations)
    : at_(services), settings_(std::move(settings)), allAnnotations_(std::move(annotations)) {
  cursor_.reset(positions());
}

void JournalWriter::start(ThreadLauncher& threads) {
  {
    const std::scoped_lock guard(lock_);
    cursor_.reset(positions());
  }
  threads.repeat("journal", kWriteInterval, [this] { writeNow(); });
  threads.repeat("journalSync", kSyncInterval, [this] { syncNow(); });
}

void JournalWriter::stop() {
  const std::scoped_lock oneAtATime(syncing_);
  const std::scoped_lock guard(lock_);
  look();
  endSession(true);
  stopped_ = true;
}

void JournalWriter::newRecording() {
  const std::scoped_lock oneAtATime(syncing_);
  const std::scoped_lock guard(lock_);
  look();
  endSession(false);
  cursor_.reset(positions());
  acquired_ = false;
}

void JournalWriter::writeNow() {
  const std::scoped_lock guard(lock_);
  look();
  work(kBudgetPoints);
}

int JournalWriter::flush() {
  {
    const std::scoped_lock guard(lock_);
    look();
    retryAt_ = at_.clock.nanoseconds();
    work(kNoBudget);
  }
  syncNow();
  const std::scoped_lock guard(lock_);
  return error_;
}

JournalPositions JournalWriter::positions() const {
  JournalPositions now;
  now.ploop = buffer::ploop;
  now.generation = at_.store.writeGeneration();
  now.ploopStart = buffer::ploopStart;
  now.capacity =
      static_cast<std::int64_t>(std::min<std::uint64_t>(buffer::maxploop, buffer::MAXbuffer));
  now.looping = buffer::setLoopModeX != 0;
  return now;
}

void JournalWriter::look() {
  if (stopped_) return;
  const std::int32_t mode = buffer::setRecModeX;
  const bool acquiring = mode == kRecording || (mode == kAcquiring && session_ != 0);
  // The frames before the end of acquiring belong to it.
  if (acquiring || acquired_) {
    const JournalCursor::Found found = cursor_.look(positions());
    for (const PointRange& range : late_) backfill_.push_back({range, false});
    take(found);
    // With one port a channel the other channels' bytes come beside those of the first one later.
    late_ = buffer::SelectDevice == kOnePortAChannel && session_ != 0 ? found.ranges
                                                                      : std::vector<PointRange>();
  } else {
    cursor_.reset(positions());
  }
  acquired_ = acquiring;
}

void JournalWriter::take(const JournalCursor::Found& found) {
  if (found.ranges.empty() && found.apart.empty()) return;
  if (session_ == 0) {
    if (found.ranges.empty()) return;
    beginSession(found.ranges.front().first);
  }
  savedEnd_.reset();
  const auto add = [this](const PointRange& range, bool moves) {
    Piece* last = pending_.empty() ? nullptr : &pending_.back();
    if (last != nullptr && last->moves == moves && last->range.end == range.first) {
      last->range.end = range.end;
    } else {
      pending_.push_back({range, moves});
    }
    lowest_ = std::min(lowest_, range.first);
    highest_ = std::max(highest_, range.end);
  };
  for (const PointRange& range : found.apart) add(range, false);
  for (const PointRange& range : found.ranges) add(range, true);
  if (!found.ranges.empty()) position_ = found.ranges.back().end;
  if (found.wrapped) {
    wrapped_ = true;
    marks_.push_back(
        {MarkKind::Wrapped, found.ranges.back().first, at_.clock.wallNanoseconds(), {}});
  }
  keepNewestFirst();
}

/// After a time without a disk the newest points are written first, the others follow as backfill.
void JournalWriter::keepNewestFirst() {
  std::uint64_t points = 0;
  for (const Piece& piece : pending_) points += journalnumbers::pointsOf(piece.range);
  while (points > kNewestPoints || pending_.size() > kMostPieces) {
    Piece& oldest = pending_.front();
    PointRange late = oldest.range;
    if (pending_.size() <= kMostPieces) {
      late.end = std::min(late.end, late.first + static_cast<std::int64_t>(points - kNewestPoints));
    }
    points -= journalnumbers::pointsOf(late);
    oldest.range.first = late.end;
    if (oldest.range.first == oldest.range.end) pending_.pop_front();
    if (!backfill_.empty() && backfill_.back().range.end == late.first) {
      backfill_.back().range.end = late.end;
    } else {
      backfill_.push_back({late, false});
    }
  }
  if (backfill_.size() > kMostPieces) {
    backfill_.clear();
    backfill_.push_back({{lowest_, highest_}, false});
  }
  if (marks_.size() > kMostPieces) marks_.erase(marks_.begin());
}

void JournalWriter::work(std::uint64_t budget) {
  if (session_ != 0 && (part_ != nullptr || openPart())) {
    const bool done = (at_.clock.nanoseconds() < repeatAt_ || appendSession()) && appendState() &&
                      appendMarks() && appendAnnotations() && appendPieces(pending_, &budget) &&
                      appendPieces(backfill_, &budget);
    if (done)
      cutPart();
    else
      partFailed(appendError_);
  }
  updateStatus();
}

void JournalWriter::updateStatus() {
  JournalStatus now;
  if (part_ != nullptr) now.path = part_->path();
  now.bytes = closedBytes_ + (part_ != nullptr ? part_->bytes() : 0);
  now.frames = frames_;
  for (const auto* pieces : {&pending_, &backfill_}) {
    for (const Piece& piece : *pieces) now.waiting += journalnumbers::pointsOf(piece.range);
  }
  now.error = error_;
  now.wrapped = wrapped_;
  now.whole = session_ == 0 ? endedWhole_ : error_ == 0 && now.waiting == 0;
  const std::scoped_lock guard(queueLock_);
  now.freeBytes = status_.freeBytes;
  now.minutesLeft = status_.minutesLeft;
  now.spaceLow = status_.spaceLow;
  status_ = now;
}

JournalStatus JournalWriter::status() const {
  const std::scoped_lock guard(queueLock_);
  return status_;
}

/// The part that was closed last, then the present one.
void JournalWriter::syncParts(std::int64_t now) {
  Closing closing;
  std::shared_ptr<JournalPart> part;
  std::vector<PointRange> ranges;
  std::size_t number = 0;
  std::uint64_t session = 0;
  bool drops = false;
  {
    const std::scoped_lock guard(lock_);
    session = session_;
    closing = closing_;
    part = part_;
    ranges.swap(unsynced_);
    if (ring_.count() > 0) number = ring_.newest();
    drops = dropDue_ != 0;
  }
  if (part == nullptr) return;
  int error = closing.part != nullptr && closing.part->syncDue() ? closing.part->sync() : 0;
  if (error == 0 && part->syncDue()) error = part->sync();
  const bool lost = error == 0 && now >= checkAt_ && (error = part->check()) != 0;
  if (now >= checkAt_) checkAt_ = now + kCheckInterval;
  const std::scoped_lock guard(lock_);
  if (session != session_) return;
  if (error != 0) {
    auto& again = part == closing_.part ? closing_.unsynced : unsynced_;
    again.insert(again.begin(), ranges.begin(), ranges.end());
    // One that the writing found out about meanwhile failed already.
    lost&& part_ != nullptr ? startOver(error) : partFailed(error);
    updateStatus();
    return;
  }
  if (closing.part != nullptr && closing.part == closing_.part) {
    noteSynced(closing.unsynced, closing.number);
    closing_ = {};
  }
  noteSynced(ranges, number);
  if (drops) removeDropped();
  dropParts();
}

void JournalWriter::syncNow() {
  const std::scoped_lock oneAtATime(syncing_);
  const std::int64_t now = at_.clock.nanoseconds();
  syncParts(now);
  if (now < spaceAt_) return;
  spaceAt_ = now + kSpaceInterval;
  const JournalStatus was = status();
  // Going round, a journal takes no more than it has.
  const bool acquiring = buffer::setRecModeX == kRecording && buffer::setPauseX == 0 &&
                         !(was.wrapped && buffer::setLoopModeX != 0);
  space_.check(at_.files, at_.folders.resolve(kJournalFolder),
               acquiring ? journalnumbers::bytesASecond(was.bytes, was.frames) : 0.0);
  const std::scoped_lock guard(queueLock_);
  status_.freeBytes = space_.freeBytes();
  status_.minutesLeft = space_.minutesLeft();
  status_.spaceLow = space_.low();
}

void JournalWriter::noteCleared() {
  const std::scoped_lock guard(lock_);
  if (session_ != 0) {
    pending_.clear();
    backfill_.clear();
    unsynced_.clear();
    late_.clear();
    const std::int64_t point =
        std::clamp<std::int64_t>(buffer::ploop, 0, static_cast<std::int64_t>(buffer::MAXbuffer));
    marks_.push_back({MarkKind::Cleared, point, at_.clock.wallNanoseconds(), {}});
    lowest_ = highest_ = position_ = point;
    wrapped_ = false;
    savedEnd_ = point;  // nothing is left that a document could miss
  }
  look();
}

void JournalWriter::noteRewritten(std::int64_t first, std::int64_t end) {
  const std::scoped_lock guard(lock_);
  if (session_ == 0) return;
  const PointRange range{std::max(first, lowest_), std::min(end, highest_)};
  if (range.end <= range.first) return;
  savedEnd_.reset();
  backfill_.push_back({range, false});
}

void JournalWriter::annotate(Annotation change) {
  const std::scoped_lock guard(queueLock_);
  if (annotations_.size() >= kMostAnnotations) {
    // The disk has been away for long: the whole track is asked for later.
    annotations_.clear();
    wantAllAnnotations_ = true;
  }
  annotations_.push_back(std::move(change));
}

}  // namespace ovka
