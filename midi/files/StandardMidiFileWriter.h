#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <vector>

namespace ovka {

/// Gathers channel messages with their times and writes them as a Standard MIDI File ("Standard
/// MIDI Files 1.0", RP-001, MIDI Manufacturers Association 1996). One thread.
///
/// One tempo holds for the whole file. With the usual settings a tick lasts 0.5 ms; times are
/// rounded to the nearest tick each for itself, so no error adds up. Messages of one tick keep the
/// order in which they were added.
class StandardMidiFileWriter {
 public:
  enum class Format : std::uint8_t { OneTrack = 0, ManyTracks = 1 };
  struct Settings {
    Format format = Format::ManyTracks;
    std::uint16_t ticksPerQuarter = 1000;           ///< 1 to 32767
    std::uint32_t microsecondsPerQuarter = 500000;  ///< 1 to 16777215: 120 beats a minute
    std::string title;                              ///< UTF-8
  };

  /// Settings out of range are held at their limits.
  explicit StandardMidiFileWriter(Settings settings);

  /// A track that the messages can be added to; its number counts from 0. In a file of one track
  /// the names are left out.
  std::size_t addTrack(std::string name);
  [[nodiscard]] std::size_t tracks() const { return tracks_.size(); }

  /// Adds a channel message (status 0x80 to 0xEF, whole) that sounds `nanoseconds` after the start.
  /// False, and nothing added: another kind of message, wrong length, data bytes above 127, a time
  /// before the start, no such track.
  bool add(std::size_t track, std::int64_t nanoseconds, std::span<const std::uint8_t> message);
  [[nodiscard]] std::size_t messages() const { return added_; }

  /// Lets every track last until then, if its last message is earlier.
  void lastUntil(std::int64_t nanoseconds);

  /// Writes the whole file. Empty when done, else one line that says what failed. May be called
  /// again; the messages stay.
  [[nodiscard]] std::string write(std::ostream& out) const;

 private:
  struct Message {
    std::int64_t tick = 0;
    std::uint32_t order = 0;
    std::uint8_t length = 0;
    std::array<std::uint8_t, 3> bytes{};
  };
  struct Track {
    std::string name;
    std::vector<Message> messages;
  };

  [[nodiscard]] std::int64_t tickOf(std::int64_t nanoseconds) const;
  [[nodiscard]] std::string trackBytes(const std::string& name, bool withTempo,
                                       std::vector<Message> messages) const;

  Settings settings_;
  std::vector<Track> tracks_;
  std::uint32_t added_ = 0;
  std::int64_t lastTick_ = 0;
};

}  // namespace ovka
