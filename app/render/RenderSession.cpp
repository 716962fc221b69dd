#include "RenderSession.h"

#include <cmath>
#include <span>

namespace ovka {
namespace {

/// How often what was played is written out.
constexpr std::chrono::nanoseconds kStep = std::chrono::milliseconds(100);

}  // namespace

RenderSession::~RenderSession() = default;

std::string RenderSession::openSound(const RenderChoice& choice) {
  if (choice.soundFile.empty()) return {};
  if (const std::string problem = soundFile_.open(choice.soundFile); !problem.empty())
    return problem;
  sound_ = std::make_unique<OfflineSynthesizer>(choice.synthesizer, clock_,
                                                [this](std::span<const float> interleaved) {
                                                  // The first failure is the one to tell.
                                                  if (failure_.empty())
                                                    failure_ = wav_->write(interleaved);
                                                });
  if (sound_->start() != 0) return sound_->explanation();
  wav_ = std::make_unique<WavWriter>(soundFile_.stream(),
                                     WavWriter::Settings{.sampleRate = static_cast<std::uint32_t>(
                                                             std::lround(sound_->sampleRate())),
                                                         .samples = choice.samples});
  return {};
}

std::string RenderSession::open(const RenderChoice& choice) {
  longestFade_ = choice.longestFade.count();
  std::string problem = openSound(choice);
  if (problem.empty() && !choice.midiFile.empty()) problem = midiFile_.open(choice.midiFile);
  if (problem.empty() && !choice.logFile.empty()) problem = logFile_.open(choice.logFile);
  score_ = std::make_unique<RenderScore>(
      clock_, StandardMidiFileWriter::Settings{.format = choice.format, .title = choice.title},
      sound_.get());
  transport_ = std::make_unique<RenderTransport>(*score_);
  synthesizer_ = std::make_unique<RenderSynthesizer>(*score_);
  return problem;
}

void RenderSession::logLine(std::string_view line) {
  if (logFile_.isOpen()) logFile_.stream() << line << '\n';
}

std::string RenderSession::takeUp() {
  if (sound_ != nullptr) sound_->catchUp();
  if (failure_.empty() && logFile_.isOpen() && !logFile_.good())
    failure_ = "cannot write " + logFile_.path() + ": it does not take any more";
  return failure_;
}

std::string RenderSession::run(const std::function<bool(std::chrono::nanoseconds)>& step) {
  while (step(kStep)) {
    if (const std::string problem = takeUp(); !problem.empty()) return problem;
  }
  return takeUp();
}

std::string RenderSession::finish() {
  if (const std::string problem = takeUp(); !problem.empty()) return problem;
  if (sound_ != nullptr) {
    sound_->fade(longestFade_);
    sound_->stop();
    if (failure_.empty()) failure_ = wav_->finish();
    if (failure_.empty()) failure_ = soundFile_.commit();
  }
  score_->file().lastUntil(score_->time());
  if (failure_.empty() && midiFile_.isOpen()) failure_ = score_->file().write(midiFile_.stream());
  if (failure_.empty() && midiFile_.isOpen()) failure_ = midiFile_.commit();
  if (failure_.empty() && logFile_.isOpen()) failure_ = logFile_.commit();
  return failure_;
}

std::chrono::nanoseconds RenderSession::length() const {
  return std::chrono::nanoseconds(score_->time());
}

}  // namespace ovka
