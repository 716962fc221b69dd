#include "LiveSession.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "CaptureSettings.h"
#include "Signal.h"
#include "TickGrid.h"

namespace ovka {
namespace {

/// Between looks whether a capture has ended; what was read last has been analysed by then.
constexpr std::chrono::milliseconds kReplayWatch{200};

}  // namespace

LiveSession::LiveSession() = default;

LiveSession::~LiveSession() {
  close();
}

LiveSession::Opened LiveSession::startAmplifier(SimulatorOptions options) {
  options.samplesPerSecond = buffer::SampleSpeed;
  options.config = buffer::DeviceConfig;
  options.model = buffer::SelectDevice;
  options.oldBluetooth = amplifier::oldBluetooth != 0;
  std::string problem = options.validate();
  if (!problem.empty()) return {Problem::Setting, problem};
  std::unique_ptr<Signal> signal = makeSignal(options, problem);
  if (signal == nullptr) return {Problem::Setting, problem};
  problem = terminal_.open(options.link);
  if (!problem.empty()) return {Problem::Port, problem};
  amplifier_ = std::make_unique<VirtualAmplifier>(options, std::move(signal));
  server_ = std::make_unique<SimulatorServer>(*amplifier_, terminal_, options.faults);
  amplifierThreads_.loop("amplifier", [this] {
    const std::chrono::nanoseconds wait = server_->serveOnce(clock_.nanoseconds());
    return buffer::setPauseX != 0 ? std::max(wait, kRest) : wait;
  });
  ports_ = {terminal_.path()};
  source_ = "virtual amplifier on " + terminal_.path();
  return {};
}

LiveSession::Opened LiveSession::startCapture(const LiveChoice& choice) {
  if (const int error = captureFile_.open(choice.capture, choice.overwriteCapture); error != 0) {
    const std::string reason = error == EEXIST
                                   ? "there is a file of that name; choose another or add --force"
                                   : std::generic_category().message(error);
    return {Problem::Output, "cannot write " + choice.capture + ": " + reason};
  }
  writer_ = std::make_unique<CaptureWriter>(captureFile_);
  capturing_ = std::make_unique<CapturingSerialPorts>(lines(), clock_, *writer_, threads_);
  return {};
}

LiveSession::Opened LiveSession::startReplay(const LiveChoice& choice) {
  replay_ = std::make_unique<LiveReplay>(clock_);
  if (std::string problem = replay_->open(choice.replay); !problem.empty())
    return {Problem::File, std::move(problem)};
  ports_ = replay_->inputs();
  source_ = choice.replay;
  return {};
}

SerialPorts& LiveSession::lines() {
  if (capturing_) return *capturing_;
  if (replay_) return replay_->lines();
  return serial_;
}

/// Nothing comes any more: what stands is kept, and what sounds ends.
void LiveSession::watchReplay() {
  if (replayEnded_ || !replay_->ended()) return;
  buffer::setPauseX = 1;
  replayEnded_ = true;
}

std::string LiveSession::replayDamage() const {
  return replayEnded_ ? replay_->damage() : std::string();
}

LiveSession::Opened LiveSession::openPorts() {
  std::int32_t port = 1;
  for (const std::string& path : ports_) {
    Engine::Opened opened = engine_->openAmplifier(path, port++);
    if (!opened.explanation.empty()) return {Problem::Port, std::move(opened.explanation)};
  }
  return {};
}

LiveSession::Opened LiveSession::openRememberedPort(const LiveChoice& choice) {
  DocumentDesk& desk = *engine_->documents();
  desk.setLineSettings(choice.assignments);
  const bool asked = desk.panel().takePortSetup();  // by the preset of this start
  if (!desk.panel().switchPortOnAtStart()) {
    if (!asked)
      return {Problem::NoPort, "no port is named, and none is remembered to be switched on"};
    desk.panel().setPortONAction(1);
  }
  // The desk has told why.
  if (!desk.portProblem().empty()) return {Problem::Port, "the remembered port is not open"};
  source_ = desk.chosenPorts().path;
  return {};
}

/// What a capture needs to be read, then the preset, so that the line has the last word.
LiveSession::Opened LiveSession::applySettings(const LiveChoice& choice) {
  if (replay_) {
    std::string problem = applyCaptureSettings(*engine_, replay_->settings());
    if (!problem.empty()) return {Problem::File, source_ + ": " + problem};
  }
  DocumentError error;
  if (!choice.preset.empty() && !engine_->documents()->panel().openPreset(choice.preset, &error))
    return {Problem::Preset, error.detail.empty() ? error.reason : error.detail};
  for (const std::string& assignment : choice.assignments) {
    std::string problem = engine_->assign(assignment);
    if (!problem.empty()) return {Problem::Setting, std::move(problem)};
  }
  return {};
}

/// While paused nothing is read, and nothing new is analysed until somebody moves the point.
void LiveSession::restWhilePaused() {
  threads_.restWhile({"runSecondarySerialThread:"}, [] { return buffer::setPauseX != 0; });
  mainLoop_.restWhile([seen = std::int64_t{-1}]() mutable {
    const std::int64_t point = buffer::ploop;
    return std::exchange(seen, point) == point && buffer::setPauseX != 0;
  });
}

LiveSession::Opened LiveSession::open(const LiveChoice& choice) {
  restWhilePaused();
  ports_ = choice.ports;
  source_ = ports_.empty() ? std::string() : ports_.front();
  if (!choice.replay.empty()) {
    if (Opened opened = startReplay(choice); opened.problem != Problem::None) return opened;
  }
  if (!choice.capture.empty()) {
    if (Opened opened = startCapture(choice); opened.problem != Problem::None) return opened;
  }
  engine_ = std::make_unique<Engine>(Machine{clock_, threads_, mainLoop_, space_, lines(), nullptr,
                                             choice.documents, choice.midi});
  if (Opened opened = applySettings(choice); opened.problem != Problem::None) return opened;
  if (choice.demo) {
    if (Opened opened = startAmplifier(choice.amplifier); opened.problem != Problem::None) {
      return opened;
    }
  }
  if (writer_ && !writer_->begin(clock_.wallNanoseconds(), captureSettings(*engine_, ports_))) {
    return {Problem::Output, "cannot write " + choice.capture + ": " +
                                 std::generic_category().message(writer_->failure())};
  }
  std::string problem = engine_->start();
  if (!problem.empty()) return {Problem::Memory, std::move(problem)};
  mainThread_ = std::thread([this] { mainLoop_.run(); });
  if (choice.rememberedPort) return openRememberedPort(choice);
  Opened opened = openPorts();
  if (replay_) threads_.repeat("replayEnd", kReplayWatch, [this] { watchReplay(); });
  // A capture may end before a line was opened or greeted: what it holds still comes.
  return replay_ ? Opened{} : opened;
}

std::string LiveSession::close() {
  if (std::exchange(closed_, true)) return {};
  if (replay_) replay_->stop();
  if (engine_) engine_->stop();
  mainLoop_.stop();
  if (mainThread_.joinable()) mainThread_.join();
  threads_.stopAll();
  amplifierThreads_.stopAll();
  if (!capturing_) return {};
  const bool whole = capturing_->finish();
  const int closing = captureFile_.close();
  if (whole && closing == 0) return {};
  const int error = closing != 0 ? closing : capturing_->failure();
  return "the capture " + writer_->name() +
         " is not whole: " + std::generic_category().message(error) +
         "; what is on disk can be read";
}

std::uint64_t LiveSession::captureLostBlocks() const {
  return capturing_ ? capturing_->lostBlocks() : 0;
}

int LiveSession::captureFailure() const {
  return capturing_ ? capturing_->failure() : 0;
}

std::uint64_t LiveSession::captureBytes() const {
  return writer_ ? writer_->bytes() : 0;
}

}  // namespace ovka
