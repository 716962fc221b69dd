#include <algorithm>
#include <utility>

#include "MidiEngine.h"
#include "Print.h"

namespace ovka {
namespace {

constexpr MidiCause kShutdown{MidiCause::Source::Shutdown, -1, -1, -1};

}  // namespace

std::array<std::string, midi::kPorts> MidiEngine::portNames() const {
  const std::scoped_lock guard(portsLock_);
  return ports_.names();
}

std::int32_t MidiEngine::convertPortNameToInt(std::string_view name) const {
  const std::scoped_lock guard(portsLock_);
  return ports_.convertPortNameToInt(name);
}

std::vector<PortEndpoint> MidiEngine::destinationsNow() {
  std::vector<PortEndpoint> present;
  for (std::size_t i = 0; i < opened_.size(); ++i) {
    if (opened_[i] == 0 || !parts_.transports[i]->connected()) continue;
    for (MidiEndpoint& endpoint : parts_.transports[i]->destinations()) {
      present.push_back({static_cast<std::int32_t>(i), endpoint.id, std::move(endpoint.name)});
    }
  }
  if (synthesizerOn_) present.push_back({-1, 1, std::string(kSynthesizerName)});
  return present;
}

// Asked before the lists are read, so that a change meanwhile is met at the next tick.
bool MidiEngine::changed() {
  bool any = false;
  for (std::size_t i = 0; i < opened_.size(); ++i) {
    if (opened_[i] == 0) continue;
    const std::uint64_t changes = parts_.transports[i]->changes();
    any |= changes != changesSeen_[i];
    changesSeen_[i] = changes;
  }
  return any;
}

void MidiEngine::rebuildPorts() {
  const std::vector<PortEndpoint> present = destinationsNow();
  std::size_t left = 0;
  {
    const std::scoped_lock guard(portsLock_);
    left = ports_.rebuild(present);
  }
  if (left > 0) {
    Print("%zu MIDI destinations, the port list holds %d: unplug or close what is not needed.\n",
          present.size(), static_cast<int>(midi::kPorts));
  }
  bindPorts();
}

void MidiEngine::bindPorts() {
  const std::scoped_lock guard(sendLock_);
  const std::vector<PortList::Slot>& slots = ports_.slots();
  const auto transportOf = [&](const PortEndpoint& endpoint) {
    return parts_.transports[static_cast<std::size_t>(endpoint.transport)];
  };
  // What listens to the virtual source would miss Note Offs once another destination is the last.
  receivers_.endNotes(Receivers::kVirtualSource, kShutdown);
  for (std::size_t port = 0; port < slots.size(); ++port) {
    const PortEndpoint& endpoint = slots[port].endpoint;
    const Row before = gDestX_[port];
    const bool synthesizer = before == Receivers::kSynthesizer;
    const bool stays =
        endpoint.id != 0 &&
        (endpoint.transport < 0 ? synthesizer
                                : receivers_.isFor(before, transportOf(endpoint), endpoint.name));
    if (stays || before == Receivers::kNowhere) continue;
    if (!synthesizer) receivers_.lose(before);
    gDestX_[port] = Receivers::kNowhere;
  }
  std::uint32_t there = 0;
  for (std::size_t port = 0; port < slots.size(); ++port) {
    const PortEndpoint& endpoint = slots[port].endpoint;
    if (endpoint.id == 0) continue;
    there |= 1U << port;
    Row& row = gDestX_[port];
    if (endpoint.transport < 0) {
      row = Receivers::kSynthesizer;
      continue;
    }
    if (row == Receivers::kNowhere) row = receivers_.take(transportOf(endpoint), endpoint.name);
    receivers_.bind(row, endpoint.id);
  }
  destinationsThere_ = there;
}

void MidiEngine::tick() {
  const std::scoped_lock guard(setupLock_);
  if (midi::runMIDI != 0) {
    if (changed()) {
      std::vector<std::string> names;
      connectNewSources(names);
      rebuildPorts();
      setUpNamesAndCount();
    }
    endWhatSwitchesSilenced();
    const std::scoped_lock sending(sendLock_);
    receivers_.payDebts();
  }
  printWaiting();
}

// A switch that is turned off while notes sound also stops their Note Offs.
void MidiEngine::endWhatSwitchesSilenced() {
  const bool all = midi::MIDIuseX == 0;
  if (!all && midi::coreMidi != 0) return;
  const std::scoped_lock sending(sendLock_);
  for (Row row = 0; row < Receivers::kNowhere; ++row) {
    if (all || row != Receivers::kSynthesizer) receivers_.endNotes(row, kShutdown);
  }
  if (all) books_.clearOnRecord();
}

void MidiEngine::printWaiting() {
  MidiBytes message;
  while (console_.pop(message)) {
    if (message.size == 2) {
      Print("%02X %02X \n", message.bytes[0], message.bytes[1]);
    } else {
      Print("%02X %02X %02X \n", message.bytes[0], message.bytes[1], message.bytes[2]);
    }
  }
}

}  // namespace ovka
