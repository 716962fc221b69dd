#include "EngineReader.h"

#include <bit>
#include <cstddef>
#include <span>
#include <utility>

#include "AmplifierModels.h"
#include "AmplifierVariables.h"
#include "BandPowers.h"
#include "BufferVariables.h"
#include "Coherence.h"
#include "FFTVariables.h"

namespace ovka::terminal {
namespace {

/// The number that the outputs give the first coherence pair.
constexpr std::uint32_t kFirstSource = 4;

BandSums sumsOf(std::span<const double> spectrum) {
  const BandValues values =
      bandSums(spectrum.data(), static_cast<std::int32_t>(2 * spectrum.size()));
  return {values.bands, values.total};
}

std::array<PeakSlot, 3> peaksOf(std::size_t channel) {
  const fft::PeakRows& rows = fft::PeakfftPower[channel];
  std::array<PeakSlot, 3> peaks;
  for (std::size_t row = 0; row < peaks.size(); ++row) {
    peaks[row] = {std::bit_cast<float>(rows[4 * row]), std::bit_cast<float>(rows[4 * row + 1]),
                  std::bit_cast<std::int32_t>(rows[4 * row + 2])};
  }
  return peaks;
}

double secondsOf(std::int64_t points) {
  return static_cast<double>(points) / static_cast<double>(buffer::SampleSpeed.get());
}

double binWidth() {
  return static_cast<double>(buffer::SampleSpeed.get()) / static_cast<double>(fft::fftp.get());
}

}  // namespace

std::array<bool, kAnalysisChannels> activeChannels() {
  const std::uint32_t config = buffer::DeviceConfig;
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  const bool text = model != nullptr && model->values == AmplifierValues::Bits12;
  const bool bytes = model != nullptr && model->values == AmplifierValues::Byte;
  // Two-channel text models repeat their pair, the right one negated, for the reversed wave.
  const bool doubled = text && config <= 1 && buffer::ShowReverseWaveX == 1;
  return {true, true, doubled || config == 2 || (config == 3 && !bytes), doubled || config == 3};
}

std::string modelText() {
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  const std::uint32_t config = buffer::DeviceConfig;
  const bool five = config == 3 && model != nullptr && model->values == AmplifierValues::Bits24;
  const char* channels = five ? "5" : config == 3 ? "4" : config == 2 ? "3" : "2";
  return (model != nullptr ? std::string(model->name) : "unknown model") + ", " + channels +
         " channels";
}

namespace {

MusicReading musicOf(MidiDesk& desk) {
  MusicReading music;
  music.on = desk.on();
  if (!music.on) return music;
  constexpr double kMilliseconds = 1e-6;
  MidiEngine& notes = desk.notes();
  music.messages = notes.sendTimes().count();
  music.refused = static_cast<std::uint64_t>(notes.refused().get());
  const LatencyMeter& ages = notes.sampleAges();
  music.median = static_cast<double>(ages.median()) * kMilliseconds;
  music.percent95 = static_cast<double>(ages.percentile(0.95)) * kMilliseconds;
  music.percent99 = static_cast<double>(ages.percentile(0.99)) * kMilliseconds;
  const auto names = notes.portNames();
  for (std::int32_t i = 0; i < notes.portCount(); ++i)
    music.to += (music.to.empty() ? "" : ", ") + names[static_cast<std::size_t>(i)];
  if (music.to.empty()) music.to = "no destination";
  return music;
}

}  // namespace

EngineReader::EngineReader(Engine& engine, std::string source)
    : engine_(engine), source_(std::move(source)), lastPoint_(buffer::ploop) {}

void EngineReader::look(std::int64_t nanoseconds) {
  const std::int64_t point = buffer::ploop;
  std::int64_t advance = point - lastPoint_;
  if (advance < 0)
    advance += static_cast<std::int64_t>(buffer::maxploop.get()) - buffer::ploopStart;
  lastPoint_ = point;
  // A pause and a jump back say nothing about how fast samples arrive.
  if (buffer::setPauseX == 1 || advance < 0) {
    rate_.reset();
    return;
  }
  points_ += advance;
  rate_.take(nanoseconds, points_);
}

void EngineReader::readChannel(std::size_t channel, ChannelReading& reading) {
  engine_.fft().readSpectrum(static_cast<std::int32_t>(channel), spectrum_);
  reading.powers = sumsOf(spectrum_);
  reading.peaks = peaksOf(channel);
}

LiveSnapshot EngineReader::snapshot(std::int64_t nanoseconds) {
  look(nanoseconds);
  LiveSnapshot snapshot;
  snapshot.point = lastPoint_;
  snapshot.seconds = secondsOf(lastPoint_);
  snapshot.sampleSpeed = buffer::SampleSpeed;
  snapshot.measuredRate = rate_.rate();
  snapshot.binWidth = binWidth();
  snapshot.fftPoints = fft::fftp;
  snapshot.source = source_;
  snapshot.model = modelText();
  spectrum_.resize(static_cast<std::size_t>(snapshot.fftPoints) / 2);
  const std::array<bool, kAnalysisChannels> active = activeChannels();
  for (std::size_t channel = 0; channel < snapshot.channels.size(); ++channel) {
    snapshot.channels[channel].active = active[channel];
    readChannel(channel, snapshot.channels[channel]);
  }
  for (const LossCause& cause : kLossCauses)
    snapshot.losses.push_back({cause.name, cause.text, (engine_.losses().*cause.count).get()});
  snapshot.music = musicOf(engine_.midi());
  snapshot.connected = engine_.ports().lineState(1) != AmplifierPorts::LineState::Lost;
  snapshot.recording = buffer::setRecModeX == kRecording;
  snapshot.paused = buffer::setPauseX == 1;
  snapshot.loop = buffer::setLoopModeX == 1;
  snapshot.elapsed = snapshot.seconds;
  snapshot.capacity = secondsOf(static_cast<std::int64_t>(buffer::maxploop.get()));
  snapshot.hint = lossHint(snapshot.losses, amplifier::FixedFramingX == 1);
  return snapshot;
}

void EngineReader::analyse(std::int64_t point, bool coherence, PointAnalysis& analysis) {
  analysis.point = point;
  analysis.fftp = fft::fftp;
  analysis.binWidth = binWidth();
  QZFFT& fft = engine_.fft();
  fft.getAndfftA(point, 0, 0);
  fft.getAndfftB(point, 0, 0);
  fft.getAndfftD(point, 0, 0);
  fft.getAndfftE(point, 0, 0);
  const auto bins = static_cast<std::size_t>(analysis.fftp) / 2;
  std::vector<double> pairs(2 * bins);
  for (std::size_t channel = 0; channel < analysis.channels.size(); ++channel) {
    const auto number = static_cast<std::int32_t>(channel);
    std::vector<double>& spectrum = analysed_[3 * channel];
    std::vector<double>& re = analysed_[3 * channel + 1];
    std::vector<double>& im = analysed_[3 * channel + 2];
    for (std::vector<double>* values : {&spectrum, &re, &im}) values->resize(bins);
    fft.readSpectrum(number, spectrum);
    fft.readCoefficients(number, pairs);
    for (std::size_t bin = 0; bin < bins; ++bin) {
      re[bin] = pairs[2 * bin];
      im[bin] = pairs[2 * bin + 1];
    }
    analysis.channels[channel] = {spectrum, re, im, sumsOf(spectrum), peaksOf(channel)};
  }
  if (coherence) analyseCoherence(analysis);
}

void EngineReader::analyseCoherence(PointAnalysis& analysis) {
  analysis.coherence.clear();
  for (std::uint32_t source = 0; source < kPairOfSource.size(); ++source) {
    const std::size_t number = kPairOfSource[source];
    const CoherencePair& pair = kCoherencePairs[number];
    std::vector<double>& bins = coherence_[source];
    bins.resize(static_cast<std::size_t>(analysis.fftp) / 2);
    for (std::size_t bin = 0; bin < bins.size(); ++bin) {
      bins[bin] = pairCoherence(engine_.fft(), number, bin, static_cast<double>(analysis.fftp));
    }
    PairCoherence& result = analysis.coherence.emplace_back();
    result.name = std::string(kChannelNames[pair.first]) + kChannelNames[pair.second] +
                  (pair.opposite ? "_opposite" : "");
    result.bins = bins;
    for (std::size_t band = 0; band < kBands.size(); ++band) {
      result.bands[band] = engine_.fft().peakAVCoherenceBand(
          kFirstSource + source, static_cast<float>(kBands[band].low),
          static_cast<float>(kBands[band].high), 1);
    }
  }
}

}  // namespace ovka::terminal
