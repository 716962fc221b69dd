#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "BandPowers.h"

namespace ovka {
class Engine;
}

namespace ovka::desktop {

class WavePyramid;
class BandHistory;
class SpectrumRows;

inline constexpr std::size_t kChannels = 4;  ///< A, B, D, E
inline constexpr std::size_t kPairs = 8;     ///< sources 4 to 11 of the outputs
inline constexpr std::array<const char*, kChannels> kChannelNames{"A", "B", "D", "E"};
/// The pairs by the names of their channels; the last two compare in opposite phase.
inline constexpr std::array<const char*, kPairs> kPairNames{"A-B", "D-E", "A-D",  "B-E",
                                                            "A-E", "B-D", "A-B*", "D-E*"};

struct FramePeak {
  double value = 0;      ///< level
  double frequency = 0;  ///< Hz
};

/// What a frame holds of an analysis channel. Values are levels: what the outputs work with.
struct FrameChannel {
  bool active = false;           ///< the amplifier fills it
  double levelPerMicrovolt = 1;  ///< level of a sine of 1 microvolt r.m.s. in its bin
  double displayGain = 1;        ///< `displayGainX`; not in the values here, applied when drawn
  double offset = 0;             ///< what raw waves are corrected by (microvolts)
  std::vector<double> spectrum;  ///< a bin an entry, `Frame::bins` of them
  BandValues sums, shares, strongest;
  std::array<FramePeak, 3> peaks;
};

/// What a frame holds of a coherence pair; filled while a view asks for it.
struct FramePair {
  std::vector<double> coherence;  ///< 0 to 100 a bin, up to `Frame::pairBins`
  std::array<double, 8> bands{};  ///< mean over each band
};

/// Everything that the views of one frame show, pulled at one moment.
struct Frame {
  bool alive = false;        ///< an engine is there
  std::uint64_t number = 0;  ///< counts frames
  std::uint64_t ticks = 0;   ///< passes of the engine so far
  bool fresh = false;        ///< spectra are newer than those of the frame before
  double time = 0;           ///< s since the feed began
  std::int64_t point = 0;    ///< the "now" of every reader
  /// Where a scrolling picture ends: follows `point` evenly, although samples arrive in batches;
  /// never beyond it, and less than a fifth of a second behind.
  double smoothPoint = 0;
  std::int64_t pointStart = 0;
  std::int64_t capacity = 0;  ///< points
  std::uint32_t sampleSpeed = 120;
  std::int32_t fftPoints = 0;
  std::int32_t bins = 0;
  double binWidth = 1;  ///< Hz
  bool logScale = false;
  bool recording = false, playing = false, paused = false, loop = false;
  bool wrapped = false;  ///< in loop mode: before `pointStart` lies the end of the buffer
  std::array<FrameChannel, kChannels> channels;
  std::int32_t pairBins = 0;
  std::array<FramePair, kPairs> pairs;

  [[nodiscard]] double secondsOf(std::int64_t points) const {
    return static_cast<double>(points) / static_cast<double>(sampleSpeed);
  }
};

/// Pulls what the views show from the engine, once a frame for all of them. It only reads, holds no
/// lock that the engine waits for, and no thread of the engine knows of it. The GUI thread.
class Feed : public QObject {
  Q_OBJECT

 public:
  explicit Feed(QObject* parent = nullptr);
  ~Feed() override;

  /// The engine to look at; nullptr: none, the views show that nothing is connected. Whoever closes
  /// an engine takes it away here first.
  void setEngine(Engine* engine);
  [[nodiscard]] Engine* engine() const { return engine_; }

  /// Starts and stops the frame timer. Views that are not visible cost nothing.
  void start();
  void stop();
  [[nodiscard]] bool running() const { return timer_.isActive(); }
  /// Pulls one frame now and hands it to the views. The timer does this; while nothing moves that
  /// the views show (paused, standing recordings) it does so every few seconds only.
  void pull();
  /// Something else changed that views show (a setting): frames come again for a while.
  void lookAgain();
  /// Nothing moves that the views show, and has not for a while.
  [[nodiscard]] bool rests() const { return timer_.interval() == kStillLook; }
  /// What the last pull left.
  [[nodiscard]] const Frame& frame() const { return frame_; }
  /// Frames a second over the last second or so.
  [[nodiscard]] double framesPerSecond() const { return rate_; }

  /// Pairs cost time a bin: a visible view that shows them says so, up to a frequency (Hz), before
  /// every frame.
  void wantPairs(double upTo);

  /// Samples first, first + 1, ... of analysis channel 0 to 3 as readers get them (microvolts),
  /// without the frame's offset.
  void readWave(std::size_t channel, std::int64_t first, std::span<double> out) const;
  /// Least and greatest sample of long stretches.
  [[nodiscard]] WavePyramid& wave() { return *wave_; }
  /// The bands and spectra of the past minutes.
  [[nodiscard]] const BandHistory& bands() const { return *bands_; }
  [[nodiscard]] const SpectrumRows& rows() const { return *rows_; }
  /// In how many of the last spectra a bin of channel 0 to 3 or pair 4 to 11 stood above its
  /// threshold; 0 without an engine. Asking makes the engine follow it.
  [[nodiscard]] std::int32_t switchCount(std::int32_t source, std::uint64_t bin) const;

 Q_SIGNALS:
  /// A frame was pulled.
  void pulled();
  /// Another engine, or none.
  void engineChanged();
  /// A document or preset brought display settings.
  void settingsBrought();

 private:
  /// Between looks whether something moves again (ms).
  static constexpr int kStillLook = 100;

  void pullState();
  void pullPositions(double elapsed);
  void followWave(std::int64_t before);
  void pullSpectra();
  void pullChannel(std::size_t channel);
  void pullPairs();
  void pace(double busySeconds);
  [[nodiscard]] bool standsStill();
  void every(int milliseconds);

  Engine* engine_ = nullptr;
  Frame frame_;
  QTimer timer_;
  QElapsedTimer clock_;
  std::unique_ptr<WavePyramid> wave_;
  std::unique_ptr<BandHistory> bands_;
  std::unique_ptr<SpectrumRows> rows_;
  std::vector<double> pairs_;  ///< scratch
  std::uint32_t brought_ = 0;
  std::uint64_t generation_ = 0;    ///< of the store, at the last frame
  std::uint64_t readSettings_ = 0;  ///< what readers' values depend on, as one number
  double sinceStarved_ = 0;         ///< s since the picture last waited for samples
  const void* window_ = nullptr;    ///< the tables that the window's gain was taken from
  double windowGain_ = 0.5;         ///< mean of the window
  double pairsUpTo_ = 0;            ///< asked for since the last frame (Hz)
  double rate_ = 0;
  double rateSince_ = 0;
  int rateFrames_ = 0;
  double busy_ = 0;                      ///< s a frame costs, smoothed
  std::array<std::uint64_t, 8> seen_{};  ///< what moves while samples come or are played
  double stillSince_ = -1;               ///< s; below 0: looks anew
};

}  // namespace ovka::desktop
