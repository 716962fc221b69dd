#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace ovka::terminal {

inline constexpr int kBandCount = 8;
/// Keys of the bands in machine-readable output, low to high; their sum is "total".
inline constexpr std::array<const char*, kBandCount> kBandKeys{
    "eye", "delta", "theta", "alpha", "lowbeta", "midbeta", "highbeta", "ac"};
/// The analysis channels, in the order of every array over channels.
inline constexpr int kAnalysisChannels = 4;
inline constexpr std::array<const char*, kAnalysisChannels> kChannelNames{"A", "B", "D", "E"};

struct PeakSlot {
  double value = 0;
  double frequency = 0;  ///< Hz
  std::int64_t bin = 0;
};

/// Band sums of one spectrum.
struct BandSums {
  std::array<double, kBandCount> bands{};
  double total = 0;
};

struct ChannelReading {
  /// False when the amplifier's configuration does not fill the channel; a view may leave it out,
  /// machine-readable output always has all four.
  bool active = true;
  BandSums powers;
  std::array<PeakSlot, 3> peaks;
};

/// How much went lost for one cause.
struct LossCount {
  std::string name;  ///< key of machine-readable output
  std::string text;  ///< a few words for a person
  std::int64_t count = 0;
};

/// What is played.
struct MusicReading {
  bool on = false;             ///< MIDI is open at all
  std::uint64_t messages = 0;  ///< requests that sent something since the start
  std::string to;              ///< names of the destinations, "no destination"
  std::uint64_t refused = 0;   ///< messages that their receiver did not take
  /// From the arrival of the newest sample to the message (ms); 0 before the first.
  double median = 0, percent95 = 0, percent99 = 0;
};

/// Everything that the live outputs show of one moment, taken by the session that runs the chain.
struct LiveSnapshot {
  std::int64_t point = 0;         ///< the newest sample point (`ploop`)
  double seconds = 0;             ///< the same as a time in the recording
  std::uint32_t sampleSpeed = 0;  ///< samples per second that were asked for
  double measuredRate = 0;        ///< samples per second that arrive; 0: not known yet
  double binWidth = 0;            ///< Hz
  std::int32_t fftPoints = 0;
  std::string source;  ///< "/dev/ttyUSB0", "night.cap", "virtual amplifier"
  std::string model;   ///< "model 6: 24-bit, 2 channels"
  std::array<ChannelReading, kAnalysisChannels> channels;
  MusicReading music;
  std::vector<LossCount> losses;  ///< all causes, also those with nothing lost

  bool connected = true;   ///< false: the line hung up and is waited for
  bool recording = false;  ///< `setRecModeX` is 1
  bool paused = false;
  bool loop = false;
  double elapsed = 0;   ///< seconds in the recording, up to the present point
  double capacity = 0;  ///< seconds that the recording can hold

  std::vector<std::string> notices;  ///< the system's last console lines, oldest first
  std::string hint;                  ///< one line of advice (see lossHint), or empty
};

/// The advice that belongs to the losses: names the setting that cures lines lost at batch borders;
/// empty when there are none or when that framing is on already.
[[nodiscard]] std::string lossHint(const std::vector<LossCount>& losses, bool fixedFraming);

}  // namespace ovka::terminal
