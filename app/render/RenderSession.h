#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Clock.h"
#include "OfflineSynthesizer.h"
#include "RenderScore.h"
#include "RenderTransport.h"
#include "StandardMidiFileWriter.h"
#include "SynthesizerSettings.h"
#include "WavWriter.h"
#include "WholeFile.h"

namespace ovka {

/// What is rendered; an empty path leaves that file out.
struct RenderChoice {
  std::string midiFile{};
  std::string soundFile{};
  std::string logFile{};  ///< the message log as JSON lines
  StandardMidiFileWriter::Format format = StandardMidiFileWriter::Format::ManyTracks;
  WavSamples samples = WavSamples::Pcm24;
  SynthesizerSettings synthesizer{};
  std::string title{};                                             ///< of the MIDI file, UTF-8
  std::chrono::nanoseconds longestFade{std::chrono::seconds(10)};  ///< sound after the end
};

/// What an engine on a clock moved by hand plays, as files that take their names when they are
/// whole. The same messages at the same times give the same bytes. One thread.
class RenderSession {
 public:
  /// `clock` outlives it.
  explicit RenderSession(const Clock& clock) : clock_(clock) {}
  /// Without finish() nothing remains.
  ~RenderSession();
  RenderSession(const RenderSession&) = delete;
  RenderSession& operator=(const RenderSession&) = delete;

  /// Opens the files and loads the sounds; the rendering begins where the clock stands. Empty when
  /// done, else one line. Once, before anything else.
  [[nodiscard]] std::string open(const RenderChoice& choice);

  /// For the engine.
  [[nodiscard]] MidiTransport& transport() { return *transport_; }
  [[nodiscard]] Synthesizer& synthesizer() { return *synthesizer_; }

  /// Whether a log is written.
  [[nodiscard]] bool logs() const { return logFile_.isOpen(); }
  /// A line of the engine's message log.
  void logLine(std::string_view line);

  /// Moves on until `step` (which moves the clock by that much, at most) returns false. Empty when
  /// done, else one line about a file that takes no more.
  [[nodiscard]] std::string run(const std::function<bool(std::chrono::nanoseconds)>& step);
  /// After the engine has stopped: lets the sound fade, completes the files, which take their
  /// names. Empty when done, else one line, and no further file takes its name.
  [[nodiscard]] std::string finish();

  /// Length of the music so far.
  [[nodiscard]] std::chrono::nanoseconds length() const;
  /// Messages that were noted.
  [[nodiscard]] std::size_t messages() const { return score_->file().messages(); }

 private:
  [[nodiscard]] std::string openSound(const RenderChoice& choice);
  /// Takes what happened since the last call. Empty, or the failure.
  [[nodiscard]] std::string takeUp();

  const Clock& clock_;
  std::int64_t longestFade_ = 0;
  WholeFile midiFile_;
  WholeFile soundFile_;
  WholeFile logFile_;
  std::unique_ptr<WavWriter> wav_;
  std::unique_ptr<OfflineSynthesizer> sound_;
  std::unique_ptr<RenderScore> score_;
  std::unique_ptr<RenderTransport> transport_;
  std::unique_ptr<RenderSynthesizer> synthesizer_;
  std::string failure_;
};

}  // namespace ovka
