#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "DeskThread.h"
#include "Engine.h"

namespace ovka::desktop {

/// What the row of recording shows.
enum class RecordState : std::uint8_t {
  NoInput,  ///< nothing is acquired and there is nothing to play
  Live,     ///< the picture lives, nothing is kept
  Recording,
  Paused,  ///< a recording that stands still
  Review,  ///< a recording or document stands, ready to be played
  Playing,
};

/// Recording, pausing, looping and playing back, on top of the system's positions and modes. It
/// knows what was saved, so that no recording gets lost unasked. The thread of the windows; what
/// takes longer goes to the desk thread.
class Recorder {
 public:
  explicit Recorder(DeskThread& desk) : desk_(desk) {}

  /// Another session, or none.
  void attach(Engine* engine, bool acquires);
  [[nodiscard]] RecordState state() const;
  /// Whether samples come in that can be recorded.
  [[nodiscard]] bool acquires() const { return acquires_; }

  /// Begins a new recording: what was there is gone, so ask first when unsaved(). `done` follows.
  void record(const std::function<void()>& done = {});
  /// Ends the recording; it stands at its end for review.
  void stop();
  /// What was just looked at becomes a recording, as long as the buffer reaches back; it stands for
  /// review. Nothing but a living picture can be kept so. `done` follows once it is journaled.
  void keep(const std::function<void()>& done = {});
  void pause(bool paused);
  /// The choice of the user; a running recording takes it over at once.
  void setLoop(bool loop);
  [[nodiscard]] bool loop() const { return loop_; }
  /// Back to the living picture; what was recorded is gone, so ask first when unsaved().
  void goLive(const std::function<void()>& done = {});
  /// An empty recording; acquires as before.
  void clear(const std::function<void()>& done = {});

  void play();
  void pausePlaying();
  void seek(std::int64_t point);
  /// While a recording stands or plays: playback repeats the points first ... end - 1. Less than
  /// one point: it does not. Another recording has no stretch.
  void setStretch(std::int64_t first, std::int64_t end);
  /// First point of the stretch and the one behind its last; equal: none.
  [[nodiscard]] std::int64_t stretchFirst() const { return stretchFirst_; }
  [[nodiscard]] std::int64_t stretchEnd() const { return stretchEnd_; }

  /// Looks for the ends: of playing, of the maximum time. True when a recording ended by itself.
  bool tick();

  /// First point and the one behind the last of what is recorded.
  [[nodiscard]] std::int64_t start() const;
  [[nodiscard]] std::int64_t end() const;
  /// Length of the recording in seconds, and what the maximum time leaves; 0 with a loop.
  [[nodiscard]] double seconds() const;
  [[nodiscard]] double secondsLeft() const;
  /// Whether a recording or annotations would be lost if they went now.
  [[nodiscard]] bool unsaved() const;

  /// While work on a document moves the point by itself.
  void setBusy(bool busy) { busy_ = busy; }
  /// Around a save: the whole recording is what is saved, however far it was played.
  void beforeSave();
  void afterSave();
  /// The recording was saved, a document was opened, a recording was recovered. `changed`: what is
  /// there is in no document yet.
  void noteSaved();
  void noteOpened(bool changed);
  /// The user does not want what is there: nothing is asked about it again, its journal goes.
  void noteDiscarded(bool discarded = true) { discarded_ = discarded; }
  /// Whether the journal of what is there is to outlive it.
  [[nodiscard]] bool keepsJournal() const { return recorded_ && !discarded_; }
  /// Nothing that is there counts any more.
  void forget();

 private:
  void restart(std::int32_t mode, std::int32_t loop, const std::function<void()>& done);
  void restartHere(Engine& engine, std::int32_t mode, std::int32_t loop, bool keepJournal);
  void standAt(std::int64_t point);
  void moveTo(std::int64_t point);
  void repeat();
  void finishRecording(bool looked = false, const std::function<void()>& done = {});

  DeskThread& desk_;
  Engine* engine_ = nullptr;
  bool acquires_ = false;
  bool loop_ = false;
  std::int64_t stretchFirst_ = 0;
  std::int64_t stretchEnd_ = 0;
  bool recorded_ = false;   ///< there is a recording or document, not only a living picture
  bool changed_ = false;    ///< it is in no document
  bool discarded_ = false;  ///< the user said so
  std::int64_t end_ = 0;    ///< while it stands
  std::int64_t savedEnd_ = 0;
  std::uint64_t savedTexts_ = 0;  ///< revision of the annotations in the document
  std::int64_t standing_ = 0;     ///< where a recording stands that is not played
  std::int64_t lastPoint_ = 0;    ///< at the last look, to notice that looping wrapped
  bool wrapped_ = false;
  bool busy_ = false;  ///< a document or a rearrangement moves the point
  bool saving_ = false;
};

}  // namespace ovka::desktop
