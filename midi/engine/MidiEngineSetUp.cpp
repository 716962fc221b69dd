#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

#include "MidiEngine.h"
#include "Print.h"

namespace ovka {
namespace {

constexpr MidiCause kShutdown{MidiCause::Source::Shutdown, -1, -1, -1};

/// As much of a name as the system's 256-byte buffer holds, without half a UTF-8 character.
std::string shown(std::string name) {
  constexpr std::size_t kMost = 255;
  if (name.size() <= kMost) return name;
  std::size_t end = kMost;
  while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80) --end;
  return name.substr(0, end);
}

void printNames(const std::vector<std::string>& names) {
  for (const std::string& name : names) Print("name=%s \n", shown(name).c_str());
}

}  // namespace

MidiEngine::MidiEngine(MidiEngineParts parts, const Clock& clock)
    : parts_(std::move(parts)),
      clock_(clock),
      wallAnchor_(clock.wallNanoseconds() - clock.nanoseconds()),
      opened_(parts_.transports.size()),
      changesSeen_(parts_.transports.size()),
      connectedSources_(parts_.transports.size()),
      log_(clock.wallNanoseconds()),
      receivers_(parts_.transports, parts_.synthesizer, parts_.sounding, log_, clock) {
  gDestX_.fill(Receivers::kNowhere);
}

MidiEngine::~MidiEngine() {
  close();
}

int MidiEngine::mainMidi() {
  const std::scoped_lock guard(setupLock_);
  setUpClients();
  return 0;
}

void MidiEngine::setUpClients() {
  if (midi::runMIDI != 0) return;
  {
    const std::scoped_lock guard(sendLock_);
    // What was started since the clients were taken down could not be ended without the books.
    receivers_.endAllNotes(kShutdown);
    books_.clearFirstSlots();
    books_.clearOnRecord();
  }
  if (parts_.clearPortChoices) parts_.clearPortChoices();
  openTransports();
  startSynthesizer();
  logDevices();
  connectAndLogSources();
  static_cast<void>(changed());
  rebuildPorts();
  logDestinations();
  logExternalDevices();
  if (synthesizerOn_) {
    const std::scoped_lock guard(sendLock_);
    voices_.setUp();
  }
  midi::runMIDI = 1;
}

void MidiEngine::openTransports() {
  for (std::size_t i = 0; i < parts_.transports.size(); ++i) {
    MidiTransport& transport = *parts_.transports[i];
    const int error = transport.open({}, {&MyReadProc, &MyReadProcV, this});
    if (error != 0) {
      Print("Error opening %s - %s\n", transport.name().c_str(), transport.explanation().c_str());
      continue;
    }
    opened_[i] = 1;
    anyOpen_ = true;
    const std::scoped_lock guard(sendLock_);
    receivers_.setOpen(i, true);
  }
}

// It is started before the destinations are listed, because it is one of them.
void MidiEngine::startSynthesizer() {
  if (parts_.synthesizer == nullptr || synthesizerOn_) return;
  if (const int error = parts_.synthesizer->start(); error != 0) {
    Print("Error starting the synthesizer - %s\n", parts_.synthesizer->explanation().c_str());
    // It looks for a sound output by itself: what plays to it is heard once there is one.
    if (error != ENODEV) return;
  }
  synthesizerOn_ = true;
  const std::scoped_lock guard(sendLock_);
  receivers_.bind(Receivers::kSynthesizer, 0);
}

void MidiEngine::logDevices() {
  std::vector<MidiDevice> devices;
  for (std::size_t i = 0; i < opened_.size(); ++i) {
    if (opened_[i] == 0) continue;
    for (MidiDevice& device : parts_.transports[i]->devices()) devices.push_back(std::move(device));
  }
  Print("%d Devices\n", static_cast<int>(devices.size()));
  for (const MidiDevice& device : devices) {
    Print("name=%s, manuf=%s, model=%s\n", shown(device.name).c_str(),
          shown(device.manufacturer).c_str(), shown(device.model).c_str());
  }
}

void MidiEngine::connectNewSources(std::vector<std::string>& names) {
  for (std::size_t i = 0; i < opened_.size(); ++i) {
    if (opened_[i] == 0) continue;
    std::vector<std::uint64_t> connected;
    for (const MidiEndpoint& source : parts_.transports[i]->sources()) {
      names.push_back(source.name);
      const bool known =
          std::ranges::find(connectedSources_[i], source.id) != connectedSources_[i].end();
      const int error = known ? 0 : parts_.transports[i]->connectSource(source.id);
      if (error == 0) connected.push_back(source.id);
    }
    connectedSources_[i] = std::move(connected);
  }
}

void MidiEngine::connectAndLogSources() {
  std::vector<std::string> names;
  connectNewSources(names);
  Print("%d sources\n", static_cast<int>(names.size()));
  printNames(names);
}

void MidiEngine::logDestinations() {
  const std::vector<PortList::Slot>& slots = ports_.slots();
  Print("%d Destinations\n", static_cast<int>(slots.size()));
  for (auto slot = slots.rbegin(); slot != slots.rend(); ++slot) {
    if (slot->endpoint.transport >= 0 && slot->endpoint.id == 0) {
      Print("No MIDI destinations present\n");
    } else {
      printNames({slot->endpoint.name});
    }
  }
}

void MidiEngine::logExternalDevices() {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < opened_.size(); ++i) {
    if (opened_[i] == 0) continue;
    for (const MidiDevice& device : parts_.transports[i]->externalDevices()) {
      names.push_back(device.name);
    }
  }
  Print("%d ExternalDevices\n", static_cast<int>(names.size()));
  printNames(names);
}

void MidiEngine::setGetOutMIDIPort() {
  const std::scoped_lock guard(setupLock_);
  setUpNamesAndCount();
}

void MidiEngine::setUpNamesAndCount() {
  std::vector<std::string> names;
  for (const PortList::Slot& slot : ports_.slots()) names.push_back(slot.shown);
  {
    const std::scoped_lock guard(sendLock_);
    const auto count = static_cast<std::int32_t>(names.size());
    // Another port is the last: the virtual source would miss the Note Offs of the old one.
    if (count != midi::findPortCountE) receivers_.endNotes(Receivers::kVirtualSource, kShutdown);
    midi::findPortCountE = count;
  }
  printNames(names);
}

void MidiEngine::setMIDIRestart() {
  const std::scoped_lock guard(setupLock_);
  rescanTransports();
}

void MidiEngine::rescanTransports() {
  if (midi::MIDIuseX == 0 || midi::coreMidi == 0) return;
  for (std::size_t i = 0; i < opened_.size(); ++i) {
    if (opened_[i] != 0) parts_.transports[i]->rescan();
  }
}

void MidiEngine::restart() {
  {
    const std::scoped_lock guard(setupLock_);
    rescanTransports();
    closeTransports();
    midi::runMIDI = 0;
    setUpClients();
    setUpNamesAndCount();
  }
  if (parts_.convertPortNameToInt) parts_.convertPortNameToInt();
}

void MidiEngine::close() {
  const std::scoped_lock guard(setupLock_);
  closeTransports();
  if (synthesizerOn_) stopSynthesizer();
  midi::runMIDI = 0;
  printWaiting();
}

void MidiEngine::closeTransports() {
  {
    const std::scoped_lock guard(sendLock_);
    receivers_.endAllNotes(kShutdown);
    books_.clearOnRecord();
    receivers_.loseDestinations();
    for (std::size_t i = 0; i < opened_.size(); ++i) receivers_.setOpen(i, false);
    gDestX_.fill(Receivers::kNowhere);
  }
  anyOpen_ = false;
  destinationsThere_ = 0;
  for (std::size_t i = 0; i < opened_.size(); ++i) {
    connectedSources_[i].clear();
    if (opened_[i] != 0) parts_.transports[i]->close();
    opened_[i] = 0;
  }
}

void MidiEngine::stopSynthesizer() {
  {
    const std::scoped_lock guard(sendLock_);
    receivers_.endNotes(Receivers::kSynthesizer, kShutdown);
    receivers_.lose(Receivers::kSynthesizer);
  }
  parts_.synthesizer->stop();
  synthesizerOn_ = false;
}

void MidiEngine::setUseQtMidi(std::int32_t channel, std::int32_t on) {
  const std::scoped_lock guard(setupLock_);
  if (midi::AUuse == 0) {
    const std::scoped_lock sending(sendLock_);
    voices_.setUseQtMidi(clampedChannel(channel), on);
    return;
  }
  if (on == 0) {
    if (synthesizerOn_) stopSynthesizer();
  } else {
    startSynthesizer();
    const std::scoped_lock sending(sendLock_);
    if (synthesizerOn_) voices_.setUp();
  }
  if (midi::runMIDI == 0) return;
  rebuildPorts();
  setUpNamesAndCount();
}

void MidiEngine::restartSynthesizer() {
  const std::scoped_lock guard(setupLock_);
  if (midi::runMIDI == 0) return;
  if (synthesizerOn_) stopSynthesizer();
  startSynthesizer();
  if (synthesizerOn_) {
    const std::scoped_lock sending(sendLock_);
    voices_.setUp();
  }
  rebuildPorts();
  setUpNamesAndCount();
}

}  // namespace ovka
