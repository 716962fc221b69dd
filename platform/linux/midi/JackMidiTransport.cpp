#include "JackMidiTransport.h"

#include <cerrno>
#include <chrono>
#include <system_error>

#include "JackKeeper.h"
#include "MidiSystems.h"
#include "QuietThread.h"

namespace ovka {

using namespace std::chrono_literals;

std::unique_ptr<MidiTransport> makeJackMidiTransport() {
  return std::make_unique<JackMidiTransport>();
}

JackMidiTransport::JackMidiTransport() : status_(std::make_shared<JackStatus>()) {}

int JackMidiTransport::open(const MidiNames& names, const MidiReaders& readers) {
  close();
  explanation_.clear();
  status_->dropped.reset();
  // The library prints its failures; they reach the user through explanation() instead.
  ::jack_set_error_function([](const char*) {});
  ::jack_set_info_function([](const char*) {});
  auto keeper = std::make_shared<JackKeeper>(names, readers, status_);
  int result = 0;
  try {
    keeping_ = startQuietThread("jackMidi", [keeper] { keeper->run(); });
    reading_ = startQuietThread("jackMidiIn", [keeper] { keeper->read(); });
    keeper_ = keeper;
    result = keeper->waitOpened(5s);
  } catch (const std::system_error& error) {
    result = error.code().value();
    keeper_ = keeper;
  }
  if (result != 0) {
    const auto trouble = jackTrouble(result);
    explanation_ = "JACK: " + trouble.reason;
    if (!trouble.mend.empty()) explanation_ += "; " + trouble.mend;
    close();
  }
  return result;
}

void JackMidiTransport::close() {
  if (!keeper_) return;
  keeper_->stop();
  if (reading_.joinable()) reading_.join();
  if (keeping_.joinable()) {
    if (keeper_->waitEnded(3s)) {
      keeping_.join();
    } else {
      keeping_.detach();
    }
  }
  keeper_.reset();
}

std::vector<MidiEndpoint> JackMidiTransport::destinations() {
  return keeper_ ? keeper_->destinations.endpoints() : std::vector<MidiEndpoint>{};
}
std::vector<MidiEndpoint> JackMidiTransport::sources() {
  return keeper_ ? keeper_->sources.endpoints() : std::vector<MidiEndpoint>{};
}
std::vector<MidiDevice> JackMidiTransport::devices() {
  return keeper_ ? keeper_->devices() : std::vector<MidiDevice>{};
}
int JackMidiTransport::connectSource(std::uint64_t source) {
  return keeper_ ? keeper_->want(source) : ENOENT;
}
void JackMidiTransport::rescan() {
  if (keeper_) keeper_->lookAgain();
}
std::uint64_t JackMidiTransport::changes() const {
  return status_->changes;
}
bool JackMidiTransport::connected() const {
  return status_->connected;
}
std::uint64_t JackMidiTransport::dropped() const {
  return static_cast<std::uint64_t>(status_->dropped.get());
}

int JackMidiTransport::push(std::size_t slot, std::uint64_t timeStamp,
                            std::span<const std::uint8_t> message) {
  if (keeper_->road.push(outgoing(slot, timeStamp, message))) return 0;
  status_->dropped.add(1);
  return EAGAIN;
}

int JackMidiTransport::send(std::uint64_t destination, std::uint64_t timeStamp,
                            std::span<const std::uint8_t> message) {
  if (destination == 0) return 0;
  if (!wholeMidiMessage(message)) return EINVAL;
  if (!keeper_) return ENODEV;
  JackRoad& road = keeper_->road;
  const auto drop = [&](int error) {
    status_->dropped.add(1);
    return error;
  };
  if (!status_->connected) return drop(ENODEV);
  if (keeper_->destinations.address(destination) == 0) return drop(ENXIO);
  const std::size_t slot = road.slotOf(destination);
  if (slot == JackRoad::kSlots) return drop(ENOSPC);
  const auto state = road.slots[slot].state.load(std::memory_order_acquire);
  if (state == JackRoad::State::Opening) keeper_->wake.post();
  return push(slot, timeStamp, message);
}

int JackMidiTransport::received(std::uint64_t timeStamp, std::span<const std::uint8_t> message) {
  if (!wholeMidiMessage(message)) return EINVAL;
  if (!keeper_) return ENODEV;
  if (!status_->connected) {
    status_->dropped.add(1);
    return ENODEV;
  }
  return push(JackRoad::kVirtualSource, timeStamp, message);
}

}  // namespace ovka
