#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Clock.h"
#include "Shell.h"

namespace ovka {

/// A text at a point of the recording.
struct TimedText {
  std::uint64_t id = 0;  ///< never given again while the track lives
  std::int64_t point = 0;
  std::string text;
};

/// The text-annotation track and its playback clock: in playback the current point of the buffer
/// follows it. Any thread; the clock's methods wait for moments only, so acquisition may call them.
class TypeTextHere final : public AnnotationTrack {
 public:
  static constexpr std::size_t kMostTexts = 10'000;
  /// Bytes of one text; a longer one is cut at a character.
  static constexpr std::size_t kLongestText = 1000;

  /// What happened to the track; for Removed and RemovedAll only the number counts.
  enum class Change : std::uint8_t { Set, Removed, RemovedAll };
  using Listener = std::function<void(Change, const TimedText&)>;

  explicit TypeTextHere(Clock& clock) : clock_(clock) {}

  // --- the playback clock
  // --------------------------------------------------------------------------
  /// Goes on from the present point at `SampleSpeed` points a second.
  void play();
  /// Holds the present point.
  void pause();
  /// Moves to a point, playing or not.
  void seek(std::int64_t point);
  /// Plays the points first ... end - 1 over and over once playback reaches `end`; a range of less
  /// than one point ends that.
  void loop(std::int64_t first, std::int64_t end);
  [[nodiscard]] bool playing();

  /// getLengthofTime: the playback time as a sample point.
  [[nodiscard]] std::int64_t getLengthofTime() override;
  /// Back to `ploopStart`, playing or not.
  void gotoStartWhenLoopmodeAndEnd() override;
  /// autoReONport: remembered for whoever reopens ports.
  void autoReONport(std::int32_t on) override;

  // --- the texts
  // -----------------------------------------------------------------------------------
  /// Adds a text at the current point: `ploop` while acquiring, else the playback time. Its number,
  /// or nothing when the text is empty or the track is full. Control characters become spaces.
  std::optional<std::uint64_t> add(std::string_view text);
  std::optional<std::uint64_t> addAt(std::int64_t point, std::string_view text);
  /// False: no text of that number, or an empty one.
  bool edit(std::uint64_t id, std::string_view text);
  bool move(std::uint64_t id, std::int64_t point);
  bool remove(std::uint64_t id);
  void removeAll();
  /// By point; texts of one point in the order of their numbers.
  [[nodiscard]] std::vector<TimedText> list() const;
  /// Those at first ... end - 1.
  [[nodiscard]] std::vector<TimedText> between(std::int64_t first, std::int64_t end) const;
  /// Goes up with every change.
  [[nodiscard]] std::uint64_t revision() const;

  /// The track as documents hold it: the number of entries, itself included, then point and text of
  /// every one.
  [[nodiscard]] std::vector<std::string> texts() const;
  /// Replaces the track by such an array. Entries that make no sense are left out; false when there
  /// were any.
  bool put(const std::vector<std::string>& texts);

  /// Called after every change, one call at a time, on the thread that made it; it may read the
  /// track but not change it. Before any other thread uses the track.
  void setListener(Listener listener) { listener_ = std::move(listener); }

 private:
  [[nodiscard]] std::int64_t present() const;
  std::optional<std::uint64_t> insert(std::int64_t point, std::string_view text);
  [[nodiscard]] std::vector<TimedText>::iterator find(std::uint64_t id);
  void tell(Change change, const TimedText& text);

  Clock& clock_;
  std::mutex lock_;             // guards the clock's part; held for moments only
  std::int64_t point_ = 0;      // where playback stood at startedAt_
  std::int64_t startedAt_ = 0;  // nanoseconds of the clock
  std::int64_t loopFirst_ = 0;
  std::int64_t loopEnd_ = 0;
  bool playing_ = false;

  std::mutex changing_;           // one change with its listener at a time
  mutable std::mutex textsLock_;  // guards what follows; taken after changing_
  std::vector<TimedText> texts_;  // by point and number
  std::uint64_t lastId_ = 0;
  std::uint64_t revision_ = 0;
  Listener listener_;
};

}  // namespace ovka
