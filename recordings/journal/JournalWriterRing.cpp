#include <algorithm>
#include <cerrno>
#include <utility>

#include "JournalNumbers.h"
#include "JournalWriter.h"

// A recording that goes round: parts are kept short, and those that were written over go.

namespace ovka {

using journalformat::ChunkKind;

namespace {

/// A round of the loop is cut into about so many parts.
constexpr std::int64_t kPartsARound = 8;
/// With more parts than this the oldest one holds points that are not written over: it is written
/// again and goes.
constexpr std::size_t kMostParts = 2 * kPartsARound;

}  // namespace

/// In loop mode another part begins once the present one holds a good part of a round. A part that
/// cannot be begun is tried again later; this one goes on.
void JournalWriter::cutPart() {
  const JournalPositions now = positions();
  const std::int64_t length = std::max<std::int64_t>(
      (now.capacity - std::max<std::int64_t>(now.ploopStart, 0)) / kPartsARound,
      journalformat::kFramePoints);
  if (!now.looping || part_ == nullptr || closing_.part != nullptr || dropDue_ != 0 ||
      frames_ - ring_.framesBefore(ring_.count() - 1) < static_cast<std::uint64_t>(length) ||
      at_.clock.nanoseconds() < cutAt_) {
    return;
  }
  int error = 0;
  std::shared_ptr<JournalPart> next = createPart(&error);
  if (next == nullptr) {
    cutAt_ = at_.clock.nanoseconds() + std::chrono::nanoseconds(kRetryInterval).count();
    return;
  }
  closing_ = {part_, std::exchange(unsynced_, {}), ring_.newest()};
  closedBytes_ += part_->bytes();
  part_ = std::move(next);
  ++partNumber_;
  parts_.push_back(part_->path());
  ring_.begin(frames_);
  // Each part tells by itself what the parts before it did, which may be gone.
  if (wrapped_)
    marks_.push_back({journalformat::MarkKind::Wrapped,
                      std::max<std::int64_t>(position_, 0),
                      at_.clock.wallNanoseconds(),
                      {}});
  {
    const std::scoped_lock guard(queueLock_);
    if (allAnnotations_) wantAllAnnotations_ = true;
  }
  if (!appendSession()) partFailed(appendError_);
}

/// After `ranges` of a part came to the disk: parts that are not needed any more are named in the
/// journal first and removed once that is on the disk, too.
void JournalWriter::noteSynced(const std::vector<PointRange>& ranges, std::size_t part) {
  for (const PointRange& range : ranges) ring_.synced(range, part);
}

void JournalWriter::dropParts() {
  if (part_ == nullptr || session_ == 0 || ring_.count() < 2) return;
  const std::size_t spare = ring_.spare();
  if (dropDue_ == 0 && spare > 0) {
    if (append(ChunkKind::Dropped, journalformat::Dropped{ring_.framesBefore(spare)}))
      dropDue_ = spare;
    else
      partFailed(appendError_);
    return;
  }
  if (dropDue_ == 0 && ring_.count() > kMostParts && rewritten_ != ring_.oldest() + 1) {
    rewritten_ = ring_.oldest() + 1;
    for (const PointRange& range : ring_.left()) backfill_.push_back({range, false});
  }
}

/// A part that cannot be removed is named and tried again with the next sync.
void JournalWriter::removeDropped() {
  for (; dropDue_ > 0; --dropDue_) {
    if (const int error = at_.files.remove(parts_.front()); error != 0 && error != ENOENT) break;
    parts_.erase(parts_.begin());
    ring_.drop(1);
  }
  dropDue_ = 0;
}

void JournalWriter::takeBuffer(std::int64_t end) {
  const std::scoped_lock oneAtATime(syncing_);
  const std::scoped_lock guard(lock_);
  if (stopped_ || session_ != 0 || end <= 0) return;
  beginSession(0);
  pending_.push_back({{0, end}, true});
  highest_ = position_ = end;
  keepNewestFirst();
  cursor_.reset(positions());
  acquired_ = false;
}

}  // namespace ovka
