#include "OfflineSynthesizer.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <utility>

#include "FluidVoices.h"
#include "SoundFonts.h"

namespace ovka {
namespace {

constexpr std::size_t kBlock = 1024;
constexpr std::int64_t kSecond = 1'000'000'000;
/// Below one step of 16-bit sound.
constexpr float kFaded = 1.0F / 65536;
/// Time without a voice that must stay below it: longer than the echo's longest gap.
constexpr double kFadedSeconds = 0.25;

}  // namespace

OfflineSynthesizer::OfflineSynthesizer(SynthesizerSettings settings, const Clock& clock, Sink sink)
    : settings_(std::move(settings)),
      clock_(clock),
      sink_(std::move(sink)),
      limiter_({.sampleRate = settings_.sampleRate, .ceiling = settings_.ceiling}),
      left_(kBlock),
      right_(kBlock),
      both_(2 * kBlock) {}

OfflineSynthesizer::~OfflineSynthesizer() = default;

std::string OfflineSynthesizer::name() const {
  return name_.empty() ? FluidVoices::libraryName() : name_;
}

int OfflineSynthesizer::start() {
  if (voices_ != nullptr) return 0;
  explanation_.clear();
  SynthesizerSettings settings = settings_;
  const SoundFont font = findSoundFont(settings_.soundFont);
  settings.soundFont = font.path;
  explanation_ = font.explanation;
  if (font.path.empty()) return ENOENT;
  voices_ = FluidVoices::load(settings, &explanation_);
  if (voices_ == nullptr) return EINVAL;
  name_ = FluidVoices::libraryName() + ", " + std::filesystem::path(font.path).filename().string() +
          ", file";
  limiter_.reset();
  begin_ = clock_.nanoseconds();
  frames_ = 0;
  skip_ = limiter_.delay();
  return 0;
}

void OfflineSynthesizer::message(std::span<const std::uint8_t> bytes) {
  if (voices_ == nullptr) return;
  catchUp();
  voices_->message(bytes);
}

void OfflineSynthesizer::silence() {
  if (voices_ == nullptr) return;
  catchUp();
  voices_->silence();
}

void OfflineSynthesizer::catchUp() {
  if (voices_ == nullptr) return;
  const std::int64_t time = clock_.nanoseconds() - begin_;
  const auto rate = static_cast<std::int64_t>(std::llround(settings_.sampleRate));
  const std::int64_t due = time / kSecond * rate + time % kSecond * rate / kSecond;
  render(due - frames_);
}

void OfflineSynthesizer::render(std::int64_t frames) {
  while (frames > 0) {
    const auto block = std::min(frames, static_cast<std::int64_t>(kBlock));
    renderBlock(static_cast<std::size_t>(block));
    frames -= block;
  }
}

void OfflineSynthesizer::renderBlock(std::size_t frames) {
  const std::span left = std::span(left_).first(frames);
  const std::span right = std::span(right_).first(frames);
  voices_->render(left, right);
  frames_ += static_cast<std::int64_t>(frames);
  limiter_.process(left, right);
  const std::size_t skipped = std::min(skip_, frames);
  skip_ -= skipped;
  loudest_ = 0;
  for (std::size_t i = skipped; i < frames; ++i) {
    both_[2 * i] = left[i];
    both_[2 * i + 1] = right[i];
    loudest_ = std::max({loudest_, std::fabs(left[i]), std::fabs(right[i])});
  }
  if (skipped < frames) sink_(std::span(both_).subspan(2 * skipped, 2 * (frames - skipped)));
}

void OfflineSynthesizer::fade(std::int64_t longest) {
  if (voices_ == nullptr) return;
  catchUp();
  const double rate = settings_.sampleRate;
  const auto end = frames_ + static_cast<std::int64_t>(static_cast<double>(longest) / 1e9 * rate);
  double quiet = 0;
  while (frames_ < end && quiet < kFadedSeconds * rate) {
    const std::int64_t before = frames_;
    render(std::min(end - frames_, static_cast<std::int64_t>(kBlock)));
    const bool faded = voices_->activeVoices() == 0 && loudest_ < kFaded;
    quiet = faded ? quiet + static_cast<double>(frames_ - before) : 0;
  }
}

void OfflineSynthesizer::stop() {
  if (voices_ == nullptr) return;
  catchUp();
  // What the limiter holds comes out while nothing goes in.
  std::vector<float> left(limiter_.delay());
  std::vector<float> right(limiter_.delay());
  limiter_.process(left, right);
  std::vector<float> both;
  for (std::size_t i = std::min(skip_, left.size()); i < left.size(); ++i) {
    both.push_back(left[i]);
    both.push_back(right[i]);
  }
  if (!both.empty()) sink_(both);
  voices_.reset();
}

}  // namespace ovka
