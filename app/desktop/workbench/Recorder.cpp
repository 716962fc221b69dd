#include "Recorder.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "BufferVariables.h"

namespace ovka::desktop {
namespace {

/// Holds the position at a point; samples that come meanwhile are not kept. A poll that was under
/// way puts the point back once, so it is set until it stays.
void holdAt(std::int64_t point) {
  buffer::setPauseX = 1;
  for (int i = 0; i < 20; ++i) {
    buffer::ploop = point;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (buffer::ploop == point) return;
  }
}

}  // namespace

void Recorder::attach(Engine* engine, bool acquires) {
  engine_ = engine;
  acquires_ = acquires && engine != nullptr;
  forget();
}

void Recorder::forget() {
  recorded_ = changed_ = discarded_ = wrapped_ = busy_ = saving_ = false;
  end_ = savedEnd_ = standing_ = lastPoint_ = 0;
  savedTexts_ = engine_ != nullptr ? engine_->annotations().revision() : 0;
}

RecordState Recorder::state() const {
  if (engine_ == nullptr) return RecordState::NoInput;
  switch (buffer::setRecModeX) {
    case kPlayback:
      if (!recorded_) return RecordState::NoInput;
      return engine_->annotations().playing() ? RecordState::Playing : RecordState::Review;
    case kRecording:
      return buffer::setPauseX != 0 ? RecordState::Paused : RecordState::Recording;
    default:
      return RecordState::Live;
  }
}

void Recorder::record(const std::function<void()>& done) {
  if (!acquires_) return;
  restart(kRecording, loop_ ? 1 : 0, [this, done] {
    recorded_ = changed_ = engine_ != nullptr;
    if (done) done();
  });
}

void Recorder::goLive(const std::function<void()>& done) {
  restart(acquires_ ? kAcquiring : kPlayback, acquires_ ? 1 : 0, done);
}

void Recorder::clear(const std::function<void()>& done) {
  goLive(done);
}

/// The journal of what was only looked at goes, and of what the user discarded; that of a recording
/// stays until a document holds everything.
void Recorder::restart(std::int32_t mode, std::int32_t loop, const std::function<void()>& done) {
  if (engine_ == nullptr) return;
  Engine* engine = engine_;
  const bool keepJournal = keepsJournal();
  desk_.post(
      [this, engine, mode, loop, keepJournal] { restartHere(*engine, mode, loop, keepJournal); },
      [this, engine, done] {
        if (engine_ == engine) forget();
        if (done) done();
      });
}

void Recorder::restartHere(Engine& engine, std::int32_t mode, std::int32_t loop, bool keepJournal) {
  DocumentDesk& desk = *engine.documents();
  desk.onMainThread([&] {
    engine.annotations().pause();
    engine.annotations().loop(0, 0);
    holdAt(0);
    if (keepJournal) {
      desk.journal().newRecording();
    } else {
      desk.journal().discard();
    }
    buffer::ploopStart = 0;
    buffer::loopCount = 0;
    engine.store().recCleare();
    desk.journal().noteCleared();
    engine.annotations().removeAll();
    engine.annotations().seek(0);
    desk.closeFrontDocument();
    desk.makeNewDocument({});
    desk.information().resetDate();
    buffer::setLoopModeX = loop;
    buffer::setRecModeX = mode;
    engine.losses().reset();
    buffer::setPauseX = mode == kPlayback ? 1 : 0;
  });
}

void Recorder::stop() {
  if (engine_ == nullptr || buffer::setRecModeX == kPlayback) return;
  if (state() == RecordState::Live && !recorded_) return;
  changed_ = changed_ || wrapped_ || buffer::ploop != savedEnd_;
  standAt(buffer::ploop);
  finishRecording();
}

void Recorder::keep(const std::function<void()>& done) {
  if (engine_ == nullptr || state() != RecordState::Live || recorded_ || buffer::ploop <= start())
    return;
  recorded_ = changed_ = true;
  standAt(buffer::ploop);
  finishRecording(true, done);
}

/// The journal takes the last points before the position may move; then a recording that went round
/// comes into the order of time, so that playing and saving it takes all of it. What was only
/// looked at is in no journal yet.
void Recorder::finishRecording(bool looked, const std::function<void()>& done) {
  Engine* engine = engine_;
  const bool wrapped = std::exchange(wrapped_, false);
  busy_ = true;
  desk_.post(
      [engine, wrapped, looked] {
        DocumentDesk& desk = *engine->documents();
        static_cast<void>(desk.journal().flush());
        if (wrapped) desk.straightenRecording();
        if (!looked) return;
        desk.journal().takeBuffer(buffer::ploop);
        static_cast<void>(desk.journal().flush());
      },
      [this, engine, wrapped, done] {
        if (engine_ != engine) return;
        busy_ = false;
        if (wrapped) standAt(static_cast<std::int64_t>(buffer::maxploop.get()));
        if (done) done();
      });
}

void Recorder::standAt(std::int64_t point) {
  engine_->annotations().pause();
  engine_->annotations().seek(point);
  buffer::setPauseX = 1;
  buffer::setRecModeX = kPlayback;
  buffer::setLoopModeX = 0;
  moveTo(point);
  end_ = point;
}

/// The acquisition thread puts a paused point back now and then; tick() sees to it that it gets
/// where it is to stand.
void Recorder::moveTo(std::int64_t point) {
  standing_ = point;
  buffer::ploop = point;
}

void Recorder::pause(bool paused) {
  const RecordState now = state();
  if (now != RecordState::Recording && now != RecordState::Paused) return;
  // At the end of the maximum time there is nothing to go on with.
  if (!paused && secondsLeft() <= 0 && !loop_) return;
  buffer::setPauseX = paused ? 1 : 0;
}

void Recorder::setLoop(bool loop) {
  loop_ = loop;
  if (engine_ == nullptr) return;
  const RecordState now = state();
  if (now == RecordState::Recording || now == RecordState::Paused)
    buffer::setLoopModeX = loop ? 1 : 0;
  if (now == RecordState::Playing || now == RecordState::Review) repeat();
}

/// What playback repeats: the stretch, else with the loop on everything.
void Recorder::repeat() {
  if (stretchFirst_ < stretchEnd_)
    engine_->annotations().loop(stretchFirst_, stretchEnd_);
  else
    engine_->annotations().loop(loop_ ? start() : 0, loop_ ? end_ : 0);
}

void Recorder::setStretch(std::int64_t first, std::int64_t end) {
  const RecordState now = state();
  if (busy_ || (now != RecordState::Review && now != RecordState::Playing)) return;
  stretchFirst_ = std::clamp(first, start(), std::max(start(), end_));
  stretchEnd_ = std::clamp(end, stretchFirst_, std::max(start(), end_));
  repeat();
}

void Recorder::play() {
  if (busy_ || state() != RecordState::Review || end_ <= start()) return;
  const bool stretch = stretchFirst_ < stretchEnd_;
  std::int64_t from = buffer::ploop;
  if (stretch && (from < stretchFirst_ || from >= stretchEnd_)) from = stretchFirst_;
  if (from >= end_) from = start();
  moveTo(from);
  repeat();
  engine_->documents()->playFrom(from);
}

void Recorder::pausePlaying() {
  if (state() != RecordState::Playing) return;
  buffer::setPauseX = 1;
  engine_->annotations().pause();
  moveTo(std::min(engine_->annotations().getLengthofTime(), std::max(start(), end_)));
}

void Recorder::seek(std::int64_t point) {
  const RecordState now = state();
  if (busy_ || (now != RecordState::Review && now != RecordState::Playing)) return;
  const std::int64_t to = std::clamp(point, start(), std::max(start(), end_));
  engine_->annotations().seek(to);
  // While it plays the position follows the clock.
  if (now == RecordState::Review) moveTo(to);
}

bool Recorder::tick() {
  if (busy_ || saving_ || engine_ == nullptr) return false;
  const RecordState now = state();
  const std::int64_t point = buffer::ploop;
  const bool runs = now == RecordState::Recording || now == RecordState::Live;
  if (runs && point < lastPoint_) wrapped_ = true;
  lastPoint_ = point;
  if (now == RecordState::Review && point != standing_) moveTo(standing_);
  if (now != RecordState::Review && now != RecordState::Playing) stretchFirst_ = stretchEnd_ = 0;
  const bool repeats = loop_ || stretchFirst_ < stretchEnd_;
  if (now == RecordState::Playing && !repeats && buffer::ploop >= end_) {
    pausePlaying();
    seek(end_);
  }
  // The system stops at the maximum time by itself; with automatic saving it goes on acquiring.
  const bool full = buffer::setLoopModeX == 0 && buffer::setPauseX != 0 &&
                    buffer::ploop >= static_cast<std::int64_t>(buffer::maxploop.get()) - 1;
  if (!recorded_ || !full || (now != RecordState::Paused && now != RecordState::Live)) return false;
  stop();
  return true;
}

std::int64_t Recorder::start() const {
  return buffer::ploopStart;
}

std::int64_t Recorder::end() const {
  const RecordState now = state();
  return now == RecordState::Review || now == RecordState::Playing ? end_ : buffer::ploop.get();
}

double Recorder::seconds() const {
  return static_cast<double>(std::max<std::int64_t>(end() - start(), 0)) /
         static_cast<double>(buffer::SampleSpeed.get());
}

double Recorder::secondsLeft() const {
  const auto capacity = static_cast<std::int64_t>(buffer::maxploop.get());
  return static_cast<double>(std::max<std::int64_t>(capacity - 1 - buffer::ploop, 0)) /
         static_cast<double>(buffer::SampleSpeed.get());
}

bool Recorder::unsaved() const {
  if (engine_ == nullptr || !recorded_ || discarded_) return false;
  if (engine_->annotations().revision() != savedTexts_) return true;
  const bool runs = buffer::setRecModeX != kPlayback;
  if (runs && buffer::ploop != savedEnd_) return true;
  return changed_ && end() > start();
}

void Recorder::beforeSave() {
  if (state() != RecordState::Review && state() != RecordState::Playing) return;
  pausePlaying();
  saving_ = true;
  engine_->annotations().seek(end_);
  buffer::ploop = end_;
}

void Recorder::afterSave() {
  if (!std::exchange(saving_, false)) return;
  // A recording that was cut to what a document may hold ends there.
  end_ = buffer::ploop;
  standing_ = std::min(standing_, end_);
  engine_->annotations().seek(standing_);
  buffer::ploop = standing_;
}

void Recorder::noteSaved() {
  changed_ = false;
  savedEnd_ = end();
  savedTexts_ = engine_ != nullptr ? engine_->annotations().revision() : 0;
}

void Recorder::noteOpened(bool changed) {
  stretchFirst_ = stretchEnd_ = 0;
  if (engine_ == nullptr) return;
  recorded_ = true;
  changed_ = changed;
  wrapped_ = false;
  if (engine_->annotations().playing() && buffer::setRecModeX == kPlayback) {
    // It was asked to play at once: it ends where the buffer does.
    end_ = static_cast<std::int64_t>(buffer::maxploop.get());
  } else {
    standAt(buffer::ploop);
  }
  savedEnd_ = changed ? start() : end_;
  savedTexts_ = engine_->annotations().revision();
}

}  // namespace ovka::desktop
