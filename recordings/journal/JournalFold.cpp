#include "JournalFold.h"

#include <algorithm>
#include <utility>

namespace ovka {

using namespace journalformat;

namespace {

/// More texts than a person or a program sends; the rest of a hostile file is left out.
constexpr std::size_t kMostAnnotations = 100'000;

}  // namespace

void JournalFold::take(const JournalChunk& chunk) {
  bool sound = true;
  switch (chunk.head.kind) {
    case ChunkKind::Session:
      sound = takeSession(chunk.payload);
      break;
    case ChunkKind::State:
      sound = takeState(chunk.payload);
      break;
    case ChunkKind::Frames:
    case ChunkKind::Backfill:
      sound = takeFrames(chunk.payload, chunk.head.kind == ChunkKind::Frames);
      break;
    case ChunkKind::Mark:
      sound = takeMark(chunk.payload);
      break;
    case ChunkKind::Annotation:
      sound = takeAnnotation(chunk.payload);
      break;
    case ChunkKind::End:
      sound = takeEnd(chunk.payload);
      break;
    case ChunkKind::Dropped:
      sound = takeDropped(chunk.payload);
      break;
    default:  // a kind of a later program
      break;
  }
  if (!sound) ++to_.damagedPlaces;
  ++to_.chunks;
}

bool JournalFold::takeSession(View payload) {
  Session session;
  if (!decode(payload, session)) return false;
  to_.startWall = session.startWall;
  to_.settings = session.settings;
  writer_ = std::move(session);
  return true;
}

bool JournalFold::takeState(View payload) {
  State state;
  if (!decode(payload, state)) return false;
  to_.ploopStart = state.ploopStart;
  to_.capacity = state.maxploop;
  to_.SampleSpeed = state.SampleSpeed;
  to_.SelectDevice = state.SelectDevice;
  to_.DeviceConfig = state.DeviceConfig;
  to_.looping = state.setLoopModeX != 0;
  return true;
}

bool JournalFold::takeFrames(View payload, bool moves) {
  if (!decode(payload, frames_)) return false;
  const std::int64_t end = frames_.first + frames_.count;
  if (!std::exchange(begun_, true)) before_ = frames_.framesBefore;
  if (frames_.framesBefore > journaled_) to_.missingPoints += frames_.framesBefore - journaled_;
  journaled_ = std::max(journaled_, frames_.framesBefore) + frames_.count;
  to_.first = to_.end == 0 ? frames_.first : std::min(to_.first, frames_.first);
  to_.end = std::max(to_.end, end);
  if (moves) to_.ploop = end;
  to_.SampleSpeed = frames_.SampleSpeed;
  to_.SelectDevice = frames_.SelectDevice;
  to_.DeviceConfig = frames_.DeviceConfig;
  if (store_ == nullptr) return true;
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    store_->storeStored(channel, frames_.first, frames_.values[static_cast<std::size_t>(channel)]);
  }
  return true;
}

bool JournalFold::takeMark(View payload) {
  Mark mark;
  if (!decode(payload, mark)) return false;
  if (mark.what == MarkKind::Saved) {
    to_.savedPath = mark.text;
    to_.savedEnd = mark.point;
  }
  if (mark.what == MarkKind::Wrapped) to_.wrapped = true;
  if (mark.what != MarkKind::Cleared) return true;
  to_.wrapped = false;
  to_.first = to_.end = 0;
  to_.ploop = mark.point;
  if (store_ != nullptr) store_->recCleare();
  return true;
}

bool JournalFold::takeAnnotation(View payload) {
  Annotation annotation;
  if (!decode(payload, annotation)) return false;
  if (annotation.change == AnnotationChange::RemoveAll) to_.annotations.clear();
  if (annotation.change == AnnotationChange::Remove) to_.annotations.erase(annotation.id);
  if (annotation.change == AnnotationChange::Set && to_.annotations.size() < kMostAnnotations) {
    const std::uint64_t id = annotation.id;
    to_.annotations[id] = std::move(annotation);
  }
  return true;
}

bool JournalFold::takeEnd(View payload) {
  End end;
  if (!decode(payload, end)) return false;
  if (end.frames > journaled_) to_.missingPoints += end.frames - journaled_;
  journaled_ = std::max(journaled_, end.frames);
  to_.endedInOrder = true;
  return true;
}

/// Parts that were removed on purpose are not missing.
bool JournalFold::takeDropped(View payload) {
  Dropped dropped;
  if (!decode(payload, dropped)) return false;
  const std::uint64_t known = std::min(before_, dropped.frames);
  before_ -= known;
  to_.missingPoints -= known;
  return true;
}

}  // namespace ovka
