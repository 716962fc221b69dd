#include <algorithm>
#include <bit>
#include <utility>

#include "JournalNumbers.h"
#include "JournalWriter.h"

namespace ovka {

using journalformat::ChunkKind;

namespace {

/// Session and state are written again after this long: a damaged front costs nothing.
constexpr std::int64_t kRepeatInterval = 30 * journalnumbers::kSecond;

[[nodiscard]] std::int64_t asPoint(std::int64_t value) {
  return std::clamp<std::int64_t>(value, 0, static_cast<std::int64_t>(buffer::MAXbuffer));
}

[[nodiscard]] bool sameBesidesTime(const journalformat::State& a, const journalformat::State& b) {
  return a.ploopStart == b.ploopStart && a.maxploop == b.maxploop &&
         a.SampleSpeed == b.SampleSpeed && a.SelectDevice == b.SelectDevice &&
         a.DeviceConfig == b.DeviceConfig && a.setRecModeX == b.setRecModeX &&
         a.setLoopModeX == b.setLoopModeX && a.setPauseX == b.setPauseX;
}

}  // namespace

template <typename Payload>
bool JournalWriter::append(ChunkKind kind, const Payload& payload) {
  journalformat::encode(payload, payload_);
  chunk_.clear();
  journalformat::ChunkHead head;
  head.kind = kind;
  head.part = partNumber_;
  head.session = session_;
  head.sequence = sequence_;
  journalformat::appendChunk(chunk_, head, payload_);
  appendError_ = part_->append(chunk_);
  if (appendError_ != 0) return false;
  ++sequence_;
  return true;
}

template bool JournalWriter::append(ChunkKind kind, const journalformat::End& payload);
template bool JournalWriter::append(ChunkKind kind, const journalformat::Dropped& payload);

bool JournalWriter::appendSession() {
  journalformat::Session session;
  session.startWall = startWall_;
  session.locked = part_->locked();
  session.bigEndian = std::endian::native == std::endian::big;
  session.processMark = at_.locks.processMark();
  if (settings_) session.settings = settings_();
  if (!append(ChunkKind::Session, session)) return false;
  repeatAt_ = at_.clock.nanoseconds() + kRepeatInterval;
  lastState_.reset();
  return true;
}

bool JournalWriter::appendState() {
  journalformat::State state;
  state.wall = at_.clock.wallNanoseconds();
  state.ploop = asPoint(buffer::ploop);
  state.ploopStart = asPoint(buffer::ploopStart);
  state.maxploop = std::min<std::uint64_t>(buffer::maxploop, buffer::MAXbuffer);
  state.SampleSpeed = std::max<std::uint32_t>(buffer::SampleSpeed, 1);
  state.SelectDevice = buffer::SelectDevice;
  state.DeviceConfig = buffer::DeviceConfig;
  state.setRecModeX = buffer::setRecModeX;
  state.setLoopModeX = buffer::setLoopModeX;
  state.setPauseX = buffer::setPauseX;
  if (lastState_ && sameBesidesTime(*lastState_, state)) return true;
  if (!append(ChunkKind::State, state)) return false;
  lastState_ = state;
  return true;
}

bool JournalWriter::appendMarks() {
  while (!marks_.empty()) {
    if (!append(ChunkKind::Mark, marks_.front())) return false;
    marks_.erase(marks_.begin());
  }
  return true;
}

bool JournalWriter::appendAnnotations() {
  std::vector<journalformat::Annotation> changes;
  bool all = false;
  {
    const std::scoped_lock guard(queueLock_);
    all = std::exchange(wantAllAnnotations_, false) && allAnnotations_;
    changes.swap(annotations_);
  }
  if (!changes.empty()) savedEnd_.reset();
  if (all) {
    std::vector<journalformat::Annotation> track = allAnnotations_();
    track.insert(track.begin(), {journalformat::AnnotationChange::RemoveAll, 0, 0, {}});
    // The track holds the queued changes already; doing them again changes nothing.
    track.insert(track.end(), changes.begin(), changes.end());
    changes = std::move(track);
  }
  for (auto change = changes.begin(); change != changes.end(); ++change) {
    change->point = asPoint(change->point);
    if (append(ChunkKind::Annotation, *change)) continue;
    const std::scoped_lock guard(queueLock_);
    annotations_.insert(annotations_.begin(), change, changes.end());
    return false;
  }
  return true;
}

bool JournalWriter::appendPieces(std::deque<Piece>& pieces, std::uint64_t* budget) {
  while (!pieces.empty() && *budget > 0) {
    Piece& piece = pieces.front();
    PointRange range = piece.range;
    range.end = std::min<std::int64_t>(range.end, range.first + journalformat::kFramePoints);
    if (range.end > range.first && !appendFrames(range, piece.moves)) return false;
    *budget -= std::min<std::uint64_t>(*budget, journalformat::kFramePoints);
    piece.range.first = range.end;
    if (piece.range.first >= piece.range.end) pieces.pop_front();
  }
  return true;
}

bool JournalWriter::appendFrames(const PointRange& range, bool moves) {
  block_.first = range.first;
  block_.framesBefore = frames_;
  block_.count = static_cast<std::uint32_t>(range.end - range.first);
  block_.SampleSpeed = std::max<std::uint32_t>(buffer::SampleSpeed, 1);
  block_.SelectDevice = static_cast<std::uint8_t>(buffer::SelectDevice);
  block_.DeviceConfig = static_cast<std::uint8_t>(buffer::DeviceConfig);
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    auto& values = block_.values[static_cast<std::size_t>(channel)];
    values.resize(block_.count);
    at_.store.copyStored(channel, range.first, values);
  }
  if (!append(moves ? ChunkKind::Frames : ChunkKind::Backfill, block_)) return false;
  frames_ += block_.count;
  ring_.wrote(range);
  if (!unsynced_.empty() && unsynced_.back().end == range.first) {
    unsynced_.back().end = range.end;
  } else {
    unsynced_.push_back(range);
  }
  return true;
}

}  // namespace ovka
