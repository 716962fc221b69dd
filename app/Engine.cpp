#include "Engine.h"

#include <chrono>

#include "AmplifierModels.h"
#include "AmplifierVariables.h"
#include "AppVariables.h"
#include "BufferVariables.h"
#include "DisplayVariables.h"
#include "DocumentDesk.h"
#include "DocumentVariables.h"
#include "FFTVariables.h"
#include "MidiVariables.h"
#include "Print.h"
#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"
#include "ThreadVariables.h"
#include "TickGrid.h"

namespace ovka {
namespace {

std::atomic<Engine*> theEngine{nullptr};

}  // namespace

void resetAllVariables() {
  buffer::resetVariables();
  amplifier::resetVariables();
  fft::resetVariables();
  threads::resetVariables();
  document::resetVariables();
  display::resetVariables();
  midi::resetVariables();
  setmidiband::resetVariables();
  setmidi::resetVariables();
  app::resetVariables();
}

Engine* Engine::current() {
  return theEngine.load();
}

Engine::Engine(const Machine& machine)
    : machine_((resetAllVariables(), machine)),
      application_(notifications_),
      annotations_(machine.clock),
      serialPort_(machine.space, {machine.serial, notifications_, losses_, machine.clock,
                                  annotations_, application_, application_, application_}),
      bluetooth_(machine.bluetooth != nullptr ? *machine.bluetooth : noBluetooth_, nullptr,
                 serialPort_),
      guard_(serialPort_, losses_, machine.clock),
      polling_(serialPort_),
      documents_(machine.documents == nullptr
                     ? nullptr
                     : std::make_unique<DocumentDesk>(*this, machine_, *machine.documents)),
      inputStream_({machine.threads, notifications_, polling_, application_, quiet_, quiet_,
                    dataBackups(), quiet_, quiet_, quiet_}),
      fft_(std::make_unique<QZFFT>(serialPort_, machine.mainLoop)),
      midi_(std::make_unique<MidiDesk>(*this, machine_)) {
  serialPort_.setBluetoothCommands(&bluetooth_);
  serialPort_.setInitbitrevAndFFT([this] { fft_->fftinit(fft::fftpX, fft::windSape); });
  addSettings();
  midi_->addSettings(settings_);
  addActions();
  midi_->addActions(actions_);
  if (documents_ != nullptr) midi_->useGroups(*documents_);
  theEngine = this;
}

Engine::~Engine() {
  stop();
  theEngine = nullptr;
}

DataBackups& Engine::dataBackups() {
  if (documents_ != nullptr) return documents_->backups();
  return quiet_;
}

std::string Engine::start() {
  if (!serialPort_.initMalloc(buffer::maxploop)) {
    return "there is not enough memory for a recording of " + std::to_string(buffer::maxploop) +
           " points; choose a shorter one with --set MaxTimeActionX=0";
  }
  serialPort_.recCleare();
  fft_->fftinit(fft::fftpX, fft::windSape);
  fft_->fftinit2(fft::fftpX, fft::windSape);
  inputStream_.initializeThred();
  machine_.threads.repeat("lineGuard", LineGuard::kTick, [this] { guard_.tick(); });
  machine_.threads.loop("performancePoll", [this] { return performancePoll(); });
  if (documents_ != nullptr) documents_->start(machine_.threads);
  midi_->start(machine_.threads);
  started_ = true;
  return {};
}

/// The performance profile reads far more often than the system's own poll, which goes on as ever.
std::chrono::nanoseconds Engine::performancePoll() {
  constexpr std::chrono::milliseconds kPoll{2};
  constexpr std::chrono::milliseconds kIdle{250};
  if (buffer::PerformanceProfileX == 0) return kIdle;
  if (buffer::setPauseX != 0) return kRest;
  inputStream_.timerUpdate();
  return kPoll;
}

void Engine::stop() {
  if (stopped_) return;
  stopped_ = true;
  serialPort_.stopWaiting();
  machine_.threads.stopAll();
  midi_->stop();
  if (documents_ != nullptr) documents_->stop();
  bluetooth_.closeConnectonAction();
  for (std::int32_t port = 1; port <= AmplifierPorts::kInputs; ++port) closeAmplifier(port);
}

Engine::Opened Engine::openAmplifier(const std::string& path, std::int32_t port) {
  Opened opened = serialPort_.openInput(port, path);
  if (opened.explanation.empty()) {
    buffer::setRecModeX = kRecording;
    buffer::setPauseX = 0;
    if (documents_ != nullptr && port == 1) documents_->setChosenPort(path);
  }
  return opened;
}

void Engine::closeAmplifier(std::int32_t port) {
  if (serialPort_.lineState(port) != AmplifierPorts::LineState::Closed)
    serialPort_.closeInput(port);
}

std::string Engine::assign(const std::string& nameAndValue) {
  return settings_.assign(nameAndValue);
}

QZSerialPort& QZSerialPort::sharedQZSerialPort() {
  return Engine::current()->serialPort();
}
QZInputStream& QZInputStream::sharedQZInputStream() {
  return Engine::current()->inputStream();
}
QZFFT& QZFFT::sharedQZFFT() {
  return Engine::current()->fft();
}
SetPreSet& SetPreSet::sharedSetPreSet() {
  return Engine::current()->documents()->panel();
}
RFCOMMSPPController& RFCOMMSPPController::sharedRFCOMMSPPController() {
  return Engine::current()->bluetooth();
}

}  // namespace ovka
