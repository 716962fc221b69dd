#include "WavWriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>

namespace ovka {
namespace {

constexpr std::uint32_t kPcm = 1;
constexpr std::uint32_t kFloat = 3;
/// More than any header of ours, an even length.
constexpr std::uint64_t kHeaderRoom = 64;

std::uint32_t bytesOf(WavSamples samples) {
  switch (samples) {
    case WavSamples::Pcm16:
      return 2;
    case WavSamples::Pcm24:
      return 3;
    case WavSamples::Float32:
      break;
  }
  return 4;
}

void appendLittleEndian(std::string& out, std::uint32_t value, std::uint32_t bytes) {
  for (std::uint32_t i = 0; i < bytes; ++i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

void appendSample(std::string& out, float sample, WavSamples kind) {
  if (kind == WavSamples::Float32) {
    appendLittleEndian(out, std::bit_cast<std::uint32_t>(std::isfinite(sample) ? sample : 0.0F), 4);
    return;
  }
  const double full = kind == WavSamples::Pcm16 ? 32768.0 : 8388608.0;
  const double scaled = std::isnan(sample) ? 0.0 : static_cast<double>(sample) * full;
  const auto code = static_cast<std::int32_t>(std::lrint(std::clamp(scaled, -full, full - 1)));
  appendLittleEndian(out, static_cast<std::uint32_t>(code), bytesOf(kind));
}

}  // namespace

WavWriter::WavWriter(std::ostream& out, const Settings& settings)
    : out_(out),
      settings_(settings),
      sampleBytes_(bytesOf(settings.samples)),
      frameBytes_(sampleBytes_ * std::clamp<std::uint32_t>(settings.channels, 1, 255)) {
  settings_.channels = static_cast<std::uint16_t>(frameBytes_ / sampleBytes_);
  writeHeader();
}

std::uint64_t WavWriter::mostFrames() const {
  return (std::clamp<std::uint64_t>(settings_.mostBytes, 1024, 0xFFFFFFFF) - kHeaderRoom) /
         frameBytes_;
}

void WavWriter::writeHeader() {
  const bool isFloat = settings_.samples == WavSamples::Float32;
  std::string format;
  appendLittleEndian(format, isFloat ? kFloat : kPcm, 2);
  appendLittleEndian(format, settings_.channels, 2);
  appendLittleEndian(format, settings_.sampleRate, 4);
  appendLittleEndian(format, settings_.sampleRate * frameBytes_, 4);
  appendLittleEndian(format, frameBytes_, 2);
  appendLittleEndian(format, 8 * sampleBytes_, 2);
  if (isFloat) appendLittleEndian(format, 0, 2);

  std::string chunks = "WAVEfmt ";
  appendLittleEndian(chunks, static_cast<std::uint32_t>(format.size()), 4);
  chunks += format;
  if (isFloat) {
    chunks += "fact";
    appendLittleEndian(chunks, 4, 4);
    appendLittleEndian(chunks, static_cast<std::uint32_t>(frames()), 4);
  }
  chunks += "data";
  appendLittleEndian(chunks, static_cast<std::uint32_t>(dataBytes_), 4);
  std::string header = "RIFF";
  const std::uint64_t all = chunks.size() + dataBytes_ + dataBytes_ % 2;
  appendLittleEndian(header, static_cast<std::uint32_t>(all), 4);
  out_ << header << chunks;
}

std::string WavWriter::write(std::span<const float> interleaved) {
  const std::uint64_t more = interleaved.size() / settings_.channels;
  if (more > mostFrames() - frames()) {
    char line[160];
    std::snprintf(line, sizeof line,
                  "this WAV file holds at most %.2f GiB, %.2f hours of sound; write a shorter "
                  "piece or smaller samples",
                  static_cast<double>(settings_.mostBytes) / 1073741824,
                  static_cast<double>(mostFrames()) / std::max(1U, settings_.sampleRate) / 3600);
    return line;
  }
  buffer_.clear();
  for (const float sample : interleaved.first(static_cast<std::size_t>(more * settings_.channels)))
    appendSample(buffer_, sample, settings_.samples);
  out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  if (!out_.good()) return "the sound could not be written whole";
  dataBytes_ += buffer_.size();
  return {};
}

std::string WavWriter::finish() {
  if (dataBytes_ % 2 != 0) out_.put('\0');
  out_.seekp(0);
  writeHeader();
  out_.seekp(0, std::ios::end);
  out_.flush();
  return out_.good() ? std::string() : "the sound could not be written whole";
}

}  // namespace ovka
