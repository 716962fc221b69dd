#pragma once

#include <cstdint>
#include <ostream>
#include <span>
#include <string>

namespace ovka {

/// How a WAV file stores a sample.
enum class WavSamples : std::uint8_t { Pcm16, Pcm24, Float32 };

/// Writes sound as a WAV file ("RIFF WAVE", IBM and Microsoft 1991). A WAV file holds at most 4
/// GiB; more is refused. One thread.
class WavWriter {
 public:
  struct Settings {
    std::uint32_t sampleRate = 48000;  ///< samples a second
    std::uint16_t channels = 2;        ///< 1 to 255
    WavSamples samples = WavSamples::Pcm24;
    /// Length of the file, 1 KiB to 4 GiB - 1; less for readers that take no more.
    std::uint64_t mostBytes = 0xFFFFFFFF;
  };

  /// Writes the header. `out` is at its start, can seek and outlives the writer.
  WavWriter(std::ostream& out, const Settings& settings);

  /// Samples of all channels in turn, 1.0 is full scale. What exceeds it is held at full scale, and
  /// what is not a number becomes 0; a float file keeps finite values, others become 0. Empty when
  /// done, else one line that says what failed, and nothing of these samples is in the file.
  [[nodiscard]] std::string write(std::span<const float> interleaved);
  /// Completes the header. Empty when done, else one line. Called once, last.
  [[nodiscard]] std::string finish();

  /// The samples of one channel that a file may hold.
  [[nodiscard]] std::uint64_t mostFrames() const;
  [[nodiscard]] std::uint64_t frames() const { return dataBytes_ / frameBytes_; }

 private:
  void writeHeader();

  std::ostream& out_;
  Settings settings_;
  std::uint32_t sampleBytes_;
  std::uint32_t frameBytes_;
  std::uint64_t dataBytes_ = 0;
  std::string buffer_;
};

}  // namespace ovka
