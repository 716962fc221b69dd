#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstdio>

#include "JournalNumbers.h"
#include "JournalWriter.h"
#include "Print.h"

namespace ovka {
namespace {

/// A disk with less room than this is not tried again.
constexpr std::uint64_t kRoomToGoOn = 1'000'000;
constexpr std::int64_t kNewestPoints = 65'536;
constexpr int kMostNames = 10'000;

/// Spreads its argument over all bits (the finalizer of SplitMix64).
[[nodiscard]] std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
  value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
  return value ^ (value >> 31U);
}

[[nodiscard]] std::uint64_t numberOf(const std::string& mark, std::int64_t wall,
                                     std::int64_t clock) {
  std::uint64_t number = mixed(static_cast<std::uint64_t>(wall));
  for (const char letter : mark) number = mixed(number ^ static_cast<unsigned char>(letter));
  number = mixed(number ^ static_cast<std::uint64_t>(clock));
  return number != 0 ? number : 1;
}

}  // namespace

void JournalWriter::beginSession(std::int64_t first) {
  forgetSession();
  wrapped_ = false;
  startWall_ = at_.clock.wallNanoseconds();
  session_ = numberOf(at_.locks.processMark(), startWall_, at_.clock.nanoseconds());
  const LocalTime date = at_.host.localTime(startWall_);
  std::array<char, 64> name{};
  std::snprintf(name.data(), name.size(), "%04d%02d%02d-%02d%02d%02d", date.year, date.month,
                date.day, date.hour, date.minute, date.second);
  sessionName_ = name.data();
  lowest_ = highest_ = first;
  // What lies before belongs to the recording: a document that is continued, an earlier session.
  if (first > 0) {
    lowest_ = 0;
    backfill_.push_back({{0, first}, false});
  }
  const std::scoped_lock guard(queueLock_);
  if (!allAnnotations_) return;
  annotations_.clear();
  wantAllAnnotations_ = true;
}

void JournalWriter::forgetSession() {
  part_.reset();
  failedPart_.reset();
  session_ = 0;
  parts_.clear();
  partNumber_ = 0;
  sequence_ = frames_ = closedBytes_ = 0;
  lowest_ = highest_ = position_ = 0;
  savedEnd_.reset();
  pending_.clear();
  backfill_.clear();
  unsynced_.clear();
  ring_.clear();
  closing_ = {};
  dropDue_ = rewritten_ = 0;
  late_.clear();
  marks_.clear();
  lastState_.reset();
  retryAt_ = cutAt_ = 0;
  error_ = 0;
}

void JournalWriter::endSession(bool waitsForDocument) {
  if (session_ == 0) return;
  retryAt_ = at_.clock.nanoseconds();
  work(~std::uint64_t{0});
  if (closing_.part != nullptr) {
    if (const int error = closing_.part->sync(); error != 0) partFailed(error);
  }
  if (part_ != nullptr) {
    const bool ended = append(journalformat::ChunkKind::End,
                              journalformat::End{frames_, std::max<std::int64_t>(position_, 0)});
    const int error = ended ? part_->sync() : appendError_;
    if (error != 0) partFailed(error);
  } else if (!savedEnd_) {
    Print("Error: the end of this recording is in no journal; save its document.\n");
  }
  const std::vector<std::string> parts = parts_;
  const std::int64_t end = heldEnd();
  endedWhole_ = part_ != nullptr;
  const bool saved = savedEnd_.has_value();
  forgetSession();
  if (saved) {
    removeParts(parts);
  } else if (waitsForDocument) {
    keep(parts, end);
  }
  updateStatus();
}

void JournalWriter::keep(const std::vector<std::string>& parts, std::int64_t end) {
  if (parts.empty()) return;
  Kept kept;
  kept.parts = parts;
  kept.end = end;
  for (const std::string& path : parts) {
    int error = 0;
    kept.locks.push_back(at_.locks.lock(path, &error));
  }
  kept_.push_back(std::move(kept));
}

void JournalWriter::adopt(const std::vector<std::string>& parts, std::int64_t end) {
  const std::scoped_lock guard(lock_);
  keep(parts, end);
}

void JournalWriter::removeParts(const std::vector<std::string>& parts) {
  for (const std::string& path : parts) {
    const int error = at_.files.remove(path);
    if (error != 0 && error != ENOENT) {
      PrintError(error, "Error removing the journal %s - ", path.c_str());
    }
  }
}

int JournalWriter::documentSaved(const std::string& path, std::int64_t end) {
  int error = 0;
  const std::unique_ptr<FileReader> document = at_.files.read(path, &error);
  if (document == nullptr) return error != 0 ? error : ENOENT;
  if (document->size() == 0) return ENODATA;
  const std::scoped_lock guard(lock_);
  look();
  for (auto kept = kept_.begin(); kept != kept_.end();) {
    if (end >= kept->end) {
      kept->locks.clear();
      removeParts(kept->parts);
      kept = kept_.erase(kept);
    } else {
      ++kept;
    }
  }
  if (session_ == 0) return 0;
  marks_.push_back({journalformat::MarkKind::Saved,
                    std::clamp<std::int64_t>(end, 0, static_cast<std::int64_t>(buffer::MAXbuffer)),
                    at_.clock.wallNanoseconds(), path});
  // Annotations queued until now are in the document or not: only what comes later counts.
  work(400'000);
  if (end == position_ && end == heldEnd()) savedEnd_ = end;
  return 0;
}

void JournalWriter::discard() {
  const std::scoped_lock guard(lock_);
  const std::vector<std::string> parts = parts_;
  forgetSession();
  acquired_ = false;
  removeParts(parts);
  for (Kept& kept : kept_) {
    kept.locks.clear();
    removeParts(kept.parts);
  }
  kept_.clear();
  cursor_.reset(positions());
  updateStatus();
}

std::shared_ptr<JournalPart> JournalWriter::createPart(int* error) {
  const std::string folder = at_.folders.resolve(kJournalFolder);
  *error = at_.files.makeFolder(folder);
  if (*error != 0) return nullptr;
  for (int number = 1; number < kMostNames; ++number) {
    const std::string path = folder + "/" + sessionName_ + "-" + std::to_string(number) + ".part" +
                             std::to_string(partNumber_ + 1) + std::string(kJournalEnding);
    std::shared_ptr<JournalPart> part = JournalPart::create(at_.files, at_.locks, path, error);
    if (part != nullptr || *error != EEXIST) return part;
  }
  return nullptr;
}

bool JournalWriter::openPart() {
  const std::int64_t now = at_.clock.nanoseconds();
  if (now < retryAt_) return false;
  std::uint64_t free = 0;
  if (error_ != 0 && at_.files.freeBytes(at_.folders.resolve(kJournalFolder), &free) == 0 &&
      free < kRoomToGoOn) {
    retryAt_ = now + std::chrono::nanoseconds(kRetryInterval).count();
    return false;
  }
  int error = 0;
  part_ = createPart(&error);
  if (part_ == nullptr) {
    partFailed(error);
    return false;
  }
  const std::uint64_t sequence = sequence_;
  ++partNumber_;
  lastState_.reset();
  if (!appendSession()) {
    const std::string path = part_->path();
    closedBytes_ -= part_->bytes();  // partFailed counts them
    partFailed(appendError_);
    static_cast<void>(at_.files.remove(path));
    --partNumber_;
    sequence_ = sequence;
    return false;
  }
  parts_.push_back(part_->path());
  ring_.begin(frames_);
  failedPart_.reset();
  if (error_ != 0) {
    Print("The journal of this recording goes on in %s.\n", part_->path().c_str());
  }
  error_ = 0;
  return true;
}

void JournalWriter::partFailed(int error) {
  if (error == 0) error = EIO;
  const std::string path = part_ != nullptr ? part_->path() : at_.folders.resolve(kJournalFolder);
  if (error != error_) {
    PrintError(error,
               "Error writing the journal %s; recording goes on in memory and the journal is tried "
               "again every 5 seconds - ",
               path.c_str());
  }
  error_ = error;
  retryAt_ = at_.clock.nanoseconds() + std::chrono::nanoseconds(kRetryInterval).count();
  if (part_ != nullptr) {
    closedBytes_ += part_->bytes();
    failedPart_ = std::move(part_);
    part_.reset();
  }
  // What was not synced may not be on the disk.
  unsynced_.insert(unsynced_.begin(), closing_.unsynced.begin(), closing_.unsynced.end());
  closing_ = {};
  dropDue_ = 0;
  for (auto range = unsynced_.rbegin(); range != unsynced_.rend(); ++range) {
    pending_.push_front({*range, true});
  }
  unsynced_.clear();
}

/// A file of the session went away: all of it is journaled again from memory, as another session.
void JournalWriter::startOver(int error) {
  partFailed(error);
  failedPart_.reset();
  retryAt_ = at_.clock.nanoseconds();
  session_ = numberOf(at_.locks.processMark(), startWall_, retryAt_);
  sequence_ = frames_ = closedBytes_ = 0;
  partNumber_ = 0;
  ring_.countAnew();
  pending_.clear();
  backfill_.clear();
  const std::int64_t newest = std::max(lowest_, position_ - kNewestPoints);
  if (position_ > newest) pending_.push_back({{newest, position_}, true});
  backfill_.push_back({{lowest_, highest_}, false});
  const std::scoped_lock guard(queueLock_);
  if (allAnnotations_) wantAllAnnotations_ = true;
}

}  // namespace ovka
