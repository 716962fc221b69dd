#include <algorithm>
#include <cerrno>
#include <jack/midiport.h>
#include <string_view>
#include <utility>

#include "JackKeeper.h"
#include "OutgoingMidi.h"
#include "Uncancelled.h"

// How the keeper makes its client, its ports and their connections. The keeper's thread.

namespace ovka {

using std::chrono::steady_clock;

namespace {

/// Messages wait so long for a connection that does not come about.
constexpr auto kLongestOpening = std::chrono::seconds(2);

/// JACK's microseconds against the monotonic clock: the same on most servers, not on all.
std::int64_t clockOffset() {
  return static_cast<std::int64_t>(monotonicNanoseconds() / 1000) -
         static_cast<std::int64_t>(::jack_get_time());
}

/// A list of names that the library made.
std::vector<std::string> taken(const char** names) {
  std::vector<std::string> all;
  for (const char** name = names; name != nullptr && *name != nullptr; ++name) {
    all.emplace_back(*name);
  }
  if (names != nullptr) ::jack_free(static_cast<void*>(names));
  return all;
}

}  // namespace

/// A colon parts client and port in JACK, so it is not part of either; too long is cut.
std::string JackKeeper::clientName() const {
  std::string name = names_.client;
  std::ranges::replace(name, ':', ' ');
  return name.substr(0, static_cast<std::size_t>(std::max(::jack_client_name_size() - 1, 1)));
}

std::string JackKeeper::portName(const std::string& wanted) const {
  std::string name = wanted;
  std::ranges::replace(name, ':', ' ');
  const int most = ::jack_port_name_size() - ::jack_client_name_size() - 2;
  return name.substr(0, static_cast<std::size_t>(std::max(most, 1)));
}

int JackKeeper::connect() {
  jack_status_t answer{};
  client_ = ::jack_client_open(clientName().c_str(), JackNoStartServer, &answer);
  if (client_ == nullptr) return (answer & JackServerFailed) != 0 ? ENOENT : EIO;
  serverGone_ = false;
  endpointsChanged_ = false;
  road.discard();  // what a sender pushed while the last server died
  road.attach(client_, clockOffset());
  setCallbacks();
  makeOwnPorts();
  if (::jack_activate(client_) != 0) {
    disconnect();
    return EIO;
  }
  enumerate();
  restorePeers();
  serveSlots(true);
  status->connected = true;
  ++status->changes;
  return 0;
}

void JackKeeper::disconnect() {
  destinations.replace({});
  sources.replace({});
  status->connected = false;
  ++status->changes;
  // Cycles run until the client is closed; ports are the client's and go with it.
  ::jack_client_close(std::exchange(client_, nullptr));
  for (auto& slot : road.slots) {
    slot.port = nullptr;
    slot.state = JackRoad::State::Opening;
  }
  openingSince_ = {};
  for (auto& input : road.inputs) input = nullptr;
  road.discard();
  own_.clear();
  for (auto& [port, peers] : peers_) toRestore_[port].merge(peers);
  peers_.clear();
  lookAt_ = rememberAt_ = kNever;
}

void JackKeeper::setCallbacks() {
  ::jack_set_process_callback(client_, &JackRoad::process, &road);
  ::jack_on_info_shutdown(
      client_, [](jack_status_t, const char*, void* self) { tell(self, &JackKeeper::serverGone_); },
      this);
  ::jack_set_port_registration_callback(
      client_, [](jack_port_id_t, int, void* self) { tell(self, &JackKeeper::endpointsChanged_); },
      this);
  ::jack_set_port_connect_callback(
      client_,
      [](jack_port_id_t, jack_port_id_t, int, void* self) {
        tell(self, &JackKeeper::connectionsChanged_);
      },
      this);
}

/// From a thread of the library.
void JackKeeper::tell(void* keeper, std::atomic<bool> JackKeeper::*what) {
  uncancelled([=] {
    auto* self = static_cast<JackKeeper*>(keeper);
    self->*what = true;
    self->wake.post();
  });
}

jack_port_t* JackKeeper::makePort(const std::string& name, bool output) {
  if (name.empty()) return nullptr;
  return ::jack_port_register(client_, portName(name).c_str(), JACK_DEFAULT_MIDI_TYPE,
                              output ? JackPortIsOutput : JackPortIsInput, 0);
}

void JackKeeper::makeOwnPorts() {
  own_ = {{names_.inPort, false, makePort(names_.inPort, false)},
          {names_.virtualDestination, false, makePort(names_.virtualDestination, false)},
          {names_.virtualSource, true, makePort(names_.virtualSource, true)}};
  road.inputs[0] = own_[0].port;
  road.inputs[1] = own_[1].port;
  auto& source = road.slots[JackRoad::kVirtualSource];
  source.port = own_[2].port;
  source.state = JackRoad::State::Ready;
  // The first destination's, there from the start so that the client shows the name it has.
  road.slots[JackRoad::kVirtualSource + 1].port = makePort(names_.outPort, true);
}

std::vector<std::string> JackKeeper::foreignPorts(unsigned long flags) const {
  const std::string ours = std::string(::jack_get_client_name(client_)) + ":";
  auto all = taken(::jack_get_ports(client_, nullptr, JACK_DEFAULT_MIDI_TYPE, flags));
  std::erase_if(all, [&](const std::string& name) {
    // A bridge shows our ALSA client here as well, as a port that carries the client's name.
    const std::size_t port = std::min(name.find(':'), name.size());
    return name.starts_with(ours) ||
           (!names_.client.empty() && name.find(names_.client, port) != std::string::npos);
  });
  return all;
}

void JackKeeper::enumerate() {
  const auto found = [&](unsigned long flags) {
    std::vector<EndpointTable::Found> all;
    for (std::string& name : foreignPorts(flags)) all.push_back({std::move(name), 1});
    return all;
  };
  // Nobody sends to these before the next line; if they are back, their messages are to wait.
  for (auto& slot : road.slots) {
    if (slot.state == JackRoad::State::Gone) slot.state = JackRoad::State::Opening;
  }
  const bool destinationsChanged = destinations.replace(found(JackPortIsInput));
  const bool sourcesChanged = sources.replace(found(JackPortIsOutput));
  if (destinationsChanged || sourcesChanged) ++status->changes;
  readDevices();
}

void JackKeeper::readDevices() {
  std::vector<MidiDevice> devices;
  for (const unsigned long flags : {JackPortIsInput, JackPortIsOutput}) {
    for (const std::string& name : foreignPorts(flags | JackPortIsPhysical)) {
      MidiDevice device{name, "", ""};
      std::string first(static_cast<std::size_t>(::jack_port_name_size()), '\0');
      std::string second = first;
      char* aliases[2] = {first.data(), second.data()};
      jack_port_t* port = ::jack_port_by_name(client_, name.c_str());
      if (port != nullptr && ::jack_port_get_aliases(port, aliases) > 0) device.model = aliases[0];
      devices.push_back(std::move(device));
    }
  }
  const std::scoped_lock guard(lock_);
  devices_ = std::move(devices);
}

bool JackKeeper::connectedTo(jack_port_t* own, const std::string& peer) const {
  const auto peers = taken(::jack_port_get_all_connections(client_, own));
  return std::ranges::find(peers, peer) != peers.end();
}

/// False when it was refused: the peer has just gone, or its client does not run yet.
bool JackKeeper::join(jack_port_t* own, bool output, const std::string& peer) const {
  const char* ours = ::jack_port_name(own);
  const int result =
      ::jack_connect(client_, output ? ours : peer.c_str(), output ? peer.c_str() : ours);
  return result == 0 || result == EEXIST;
}

void JackKeeper::serveSlots(bool again) {
  opening_ = false;
  for (std::size_t i = JackRoad::kVirtualSource + 1; i < JackRoad::kSlots; ++i) {
    auto& slot = road.slots[i];
    const std::uint64_t destination = slot.destination;
    if (destination == 0) return;  // slots are claimed in order
    const auto name = destinations.nameOf(destination);
    if (!name) {
      slot.state = JackRoad::State::Gone;
      openingSince_[i] = {};
    } else if (slot.state != JackRoad::State::Ready || again) {
      // A connection that somebody took apart stays so until the user asks to look again.
      slot.state = serveSlot(i, *name);
    }
  }
}

JackRoad::State JackKeeper::serveSlot(std::size_t index, const std::string& destination) {
  auto& slot = road.slots[index];
  auto& since = openingSince_[index];
  if (slot.port == nullptr) {
    slot.port = makePort(names_.outPort + (index == 1 ? "" : " " + std::to_string(index)), true);
  }
  jack_port_t* port = slot.port;
  if (port == nullptr) return JackRoad::State::Gone;
  if (connectedTo(port, destination)) {
    since = {};
    return JackRoad::State::Ready;
  }
  static_cast<void>(join(port, true, destination));
  // It counts from one of the next cycles on; what is written before is lost.
  const auto now = steady_clock::now();
  if (since == steady_clock::time_point{}) since = now;
  if (now - since > kLongestOpening) return JackRoad::State::Gone;
  opening_ = true;
  return JackRoad::State::Opening;
}

void JackKeeper::restorePeers() {
  {
    const std::scoped_lock guard(lock_);
    for (const std::string& source : wanted_) toRestore_[names_.inPort].insert(source);
    wanted_.clear();
  }
  for (const Own& own : own_) {
    if (own.port == nullptr) continue;
    const auto there = foreignPorts(own.output ? JackPortIsInput : JackPortIsOutput);
    std::erase_if(toRestore_[own.name], [&](const std::string& peer) {
      if (std::ranges::find(there, peer) == there.end()) return false;
      if (join(own.port, own.output, peer)) return true;
      lookAt_ = steady_clock::now() + kPortsSettle;
      return false;
    });
  }
}

void JackKeeper::rememberPeers() {
  peers_.clear();
  for (const Own& own : own_) {
    if (own.port == nullptr) continue;
    for (std::string& peer : taken(::jack_port_get_all_connections(client_, own.port))) {
      peers_[own.name].insert(std::move(peer));
    }
  }
}

}  // namespace ovka
