#include "Feed.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>

#include "AmplifierModels.h"
#include "BufferVariables.h"
#include "Coherence.h"
#include "DisplayVariables.h"
#include "Engine.h"
#include "FFTVariables.h"
#include "Histories.h"
#include "WavePyramid.h"

namespace ovka::desktop {
namespace {

constexpr double kSqrtHalf = 0.70710678118654752;
/// The scrolling picture may be this far behind (s): a little more than the longest batch.
constexpr double kMostBehind = 0.2;
/// What follows slowly (averages, scales, bars) gets this long to settle (s); then a frame now and
/// then shows what nobody announces.
constexpr double kSettle = 2;
constexpr double kStillFrame = 6;

/// Which analysis channels the present model and configuration fill.
std::array<bool, kChannels> activeChannels() {
  const std::uint32_t config = buffer::DeviceConfig;
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  const bool text = model != nullptr && model->values == AmplifierValues::Bits12;
  const bool bytes = model != nullptr && model->values == AmplifierValues::Byte;
  // Two-channel text models repeat their pair, the right one negated, for the reversed wave.
  const bool doubled = text && config <= 1 && buffer::ShowReverseWaveX == 1;
  return {true, true, doubled || config == 2 || (config == 3 && !bytes), doubled || config == 3};
}

std::uint64_t readSettings() {
  return static_cast<std::uint64_t>(buffer::LeftRightReverse & 0xF) |
         static_cast<std::uint64_t>(buffer::ShowReverseWaveX & 0xF) << 4 |
         static_cast<std::uint64_t>(buffer::ReversPolarityX & 0xF) << 8 |
         static_cast<std::uint64_t>(buffer::SelectDevice & 0xFF) << 12 |
         static_cast<std::uint64_t>(buffer::SampleSpeed) << 20;
}

}  // namespace

Feed::Feed(QObject* parent)
    : QObject(parent),
      wave_(std::make_unique<WavePyramid>(
          [this](std::size_t channel, std::int64_t first, std::span<double> out) {
            readWave(channel, first, out);
          })),
      bands_(std::make_unique<BandHistory>()),
      rows_(std::make_unique<SpectrumRows>()) {
  clock_.start();
  timer_.setTimerType(Qt::PreciseTimer);
  connect(&timer_, &QTimer::timeout, this, [this] {
    if (standsStill()) return every(kStillLook);
    const double began = static_cast<double>(clock_.nsecsElapsed()) * 1e-9;
    pull();
    // Runs after the repaints that the frame has caused.
    QTimer::singleShot(0, this, [this, began] {
      pace(static_cast<double>(clock_.nsecsElapsed()) * 1e-9 - began);
    });
  });
}

Feed::~Feed() = default;

void Feed::setEngine(Engine* engine) {
  engine_ = engine;
  frame_ = {};
  wave_->forget();
  bands_->forget();
  rows_->forget();
  Q_EMIT engineChanged();
}

void Feed::start() {
  timer_.start(1000 / std::clamp<int>(display::frameRateX, 10, 120));
}

void Feed::stop() {
  timer_.stop();
}

/// Leaves the rest of the program at least a third of the thread's time.
void Feed::pace(double busySeconds) {
  busy_ += 0.1 * (busySeconds - busy_);
  const int wanted = 1000 / std::clamp<int>(display::frameRateX, 10, 120);
  const int possible = static_cast<int>(std::min(busy_ * 1.5, 0.2) * 1000);
  const int interval = std::max(wanted, possible);
  every(interval);
}

void Feed::every(int milliseconds) {
  if (timer_.isActive() && std::abs(milliseconds - timer_.interval()) > 1)
    timer_.setInterval(milliseconds);
}

void Feed::lookAgain() {
  stillSince_ = -1;
  if (rests()) every(1000 / std::clamp<int>(display::frameRateX, 10, 120));
}

/// Most of what a window costs is painting, and a musician's pause is long.
bool Feed::standsStill() {
  const std::array<std::uint64_t, 8> now{engine_ != nullptr ? std::uint64_t{1} : 0,
                                         static_cast<std::uint64_t>(buffer::ploop.get()),
                                         static_cast<std::uint64_t>(buffer::ploopStart.get()),
                                         static_cast<std::uint64_t>(buffer::setRecModeX.get()),
                                         static_cast<std::uint64_t>(buffer::setPauseX.get()),
                                         static_cast<std::uint64_t>(fft::fftp.get()),
                                         readSettings(),
                                         display::broughtX};
  const double time = static_cast<double>(clock_.nsecsElapsed()) * 1e-9;
  if (now != seen_ || stillSince_ < 0) {
    seen_ = now;
    stillSince_ = time;
  }
  return time - stillSince_ > kSettle && time - frame_.time < kStillFrame;
}

void Feed::pull() {
  const double now = static_cast<double>(clock_.nsecsElapsed()) * 1e-9;
  const double elapsed = now - frame_.time;
  frame_.time = now;
  ++frame_.number;
  ++rateFrames_;
  if (now - rateSince_ >= 1) {
    rate_ = rateFrames_ / (now - rateSince_);
    rateSince_ = now;
    rateFrames_ = 0;
  }
  frame_.alive = engine_ != nullptr;
  if (engine_ != nullptr) {
    pullState();
    pullPositions(elapsed);
    pullSpectra();
    pullPairs();
    bands_->take(frame_);
    rows_->take(frame_);
  }
  pairsUpTo_ = 0;
  if (const std::uint32_t brought = display::broughtX; brought != brought_) {
    brought_ = brought;
    Q_EMIT settingsBrought();
  }
  Q_EMIT pulled();
}

void Feed::pullState() {
  frame_.sampleSpeed = std::max<std::uint32_t>(buffer::SampleSpeed, 1);
  frame_.pointStart = buffer::ploopStart;
  frame_.capacity = static_cast<std::int64_t>(buffer::maxploop.get());
  const std::int32_t mode = buffer::setRecModeX;
  frame_.recording = mode == 1;
  frame_.playing = mode == 0;
  frame_.paused = buffer::setPauseX != 0;
  frame_.loop = buffer::setLoopModeX == 1;
  frame_.logScale = fft::LOGpowerONed != 0;
}

void Feed::pullPositions(double elapsed) {
  const std::int64_t before = frame_.point;
  frame_.point = buffer::ploop;
  followWave(before);
  const auto point = static_cast<double>(frame_.point);
  const auto speed = static_cast<double>(frame_.sampleSpeed);
  const double behind = point - frame_.smoothPoint;
  if (behind < 0 || behind > kMostBehind * speed || frame_.paused) {
    frame_.smoothPoint = point;
    sinceStarved_ = 0;
    return;
  }
  // Catches up by a hundredth while there is slack, so that it stays as close as batches allow.
  const double pace = sinceStarved_ > 1 ? 1.01 : 1.0;
  const double next = frame_.smoothPoint + std::min(elapsed, 0.1) * speed * pace;
  sinceStarved_ = next >= point ? 0 : sinceStarved_ + elapsed;
  frame_.smoothPoint = std::min(next, point);
}

void Feed::followWave(std::int64_t before) {
  const std::uint64_t generation = engine_->store().writeGeneration();
  const std::uint64_t settings = readSettings();
  const bool jumped = frame_.point < before;
  const bool wrapping = jumped && frame_.loop && !frame_.playing;
  if (settings != readSettings_ || (frame_.playing && generation != generation_) ||
      (jumped && !frame_.playing && !wrapping)) {
    wave_->forget();
    if (!frame_.playing) bands_->forget();
    frame_.wrapped = false;
  } else if (wrapping) {
    wave_->written(before, frame_.capacity);
    wave_->written(frame_.pointStart, frame_.point);
    frame_.wrapped = true;
  } else if (!frame_.playing) {
    wave_->written(before, frame_.point);
  }
  frame_.wrapped = frame_.wrapped && frame_.loop && !frame_.playing;
  wave_->wrap(frame_.pointStart, frame_.wrapped ? frame_.capacity - frame_.pointStart : 0);
  wave_->limit(frame_.playing || frame_.wrapped ? frame_.capacity : frame_.point);
  generation_ = generation;
  readSettings_ = settings;
}

void Feed::pullSpectra() {
  const std::uint64_t ticks = engine_->fft().ticksComputed();
  const std::int32_t points = fft::fftp;
  frame_.fresh = ticks != frame_.ticks || points != frame_.fftPoints;
  frame_.ticks = ticks;
  frame_.fftPoints = points;
  frame_.bins = points / 2;
  frame_.binWidth = static_cast<double>(frame_.sampleSpeed) / std::max(points, 1);
  const AnalysisTableSet* tables = engine_->fft().tables();
  if (tables != nullptr && tables != window_ && !tables->windowValue.empty()) {
    window_ = tables;
    const std::vector<double>& window = tables->windowValue;
    windowGain_ = std::accumulate(window.begin(), window.end(), 0.0) /
                  (32768.0 * static_cast<double>(window.size()));
  }
  const std::array<bool, kChannels> active = activeChannels();
  for (std::size_t c = 0; c < kChannels; ++c) {
    frame_.channels[c].active = active[c];
    pullChannel(c);
  }
}

void Feed::pullChannel(std::size_t channel) {
  FrameChannel& shown = frame_.channels[channel];
  const auto number = static_cast<std::int32_t>(channel);
  // A sine of amplitude a gives scalerX * gain * mean of the window * a / 2 in its bin.
  shown.levelPerMicrovolt =
      fft::scalerX * engine_->fft().settingsOf(number).gain * windowGain_ * kSqrtHalf;
  if (!(shown.levelPerMicrovolt > 0)) shown.levelPerMicrovolt = 1;
  shown.displayGain = static_cast<double>(display::displayGainX[channel].get());
  shown.offset = fft::AutoZeroRawDataONed != 0 ? fft::autoZeroState(number).offset / -1.5 : 0.0;
  const fft::PeakRows& rows = fft::PeakfftPower[channel];
  for (std::size_t row = 0; row < shown.peaks.size(); ++row) {
    shown.peaks[row] = {std::bit_cast<float>(rows[4 * row]),
                        std::bit_cast<float>(rows[4 * row + 1])};
  }
  if (!frame_.fresh) return;
  shown.spectrum.resize(static_cast<std::size_t>(frame_.bins));
  engine_->fft().readSpectrum(number, shown.spectrum);
  const std::int32_t points = 2 * frame_.bins;
  if (points <= 0) return;
  shown.sums = bandSums(shown.spectrum.data(), points);
  shown.shares = bandShares(shown.spectrum.data(), points);
  shown.strongest = bandPeaks(shown.spectrum.data(), points);
  for (double& share : shown.shares.bands) share = std::isfinite(share) ? share : 0.0;
}

void Feed::pullPairs() {
  if (pairsUpTo_ <= 0) {
    frame_.pairBins = 0;
    for (FramePair& pair : frame_.pairs) pair.coherence.clear();
    return;
  }
  const auto wanted = static_cast<std::int32_t>(std::min(pairsUpTo_ / frame_.binWidth + 2, 1e6));
  const std::int32_t bins = std::min(frame_.bins, wanted);
  if (!frame_.fresh && bins == frame_.pairBins) return;
  frame_.pairBins = bins;
  for (std::size_t p = 0; p < kPairs; ++p) {
    std::vector<double>& values = frame_.pairs[p].coherence;
    values.resize(static_cast<std::size_t>(bins));
    for (std::size_t bin = 0; bin < values.size(); ++bin) {
      values[bin] = pairCoherence(engine_->fft(), kPairOfSource[p], bin, frame_.fftPoints);
    }
    for (std::size_t b = 0; b < kBands.size(); ++b) {
      frame_.pairs[p].bands[b] = static_cast<double>(engine_->fft().peakAVCoherenceBand(
          static_cast<std::uint32_t>(4 + p), static_cast<float>(kBands[b].low),
          static_cast<float>(kBands[b].high), 1));
    }
  }
}

void Feed::wantPairs(double upTo) {
  pairsUpTo_ = std::max(pairsUpTo_, upTo);
}

void Feed::readWave(std::size_t channel, std::int64_t first, std::span<double> out) const {
  if (engine_ == nullptr) {
    std::ranges::fill(out, 0.0);
    return;
  }
  engine_->store().readBlock(static_cast<std::int32_t>(channel) + 1, first, out);
}

std::int32_t Feed::switchCount(std::int32_t source, std::uint64_t bin) const {
  return engine_ != nullptr ? engine_->fft().countOf(source, bin) : 0;
}

}  // namespace ovka::desktop
