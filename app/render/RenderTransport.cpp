#include "RenderTransport.h"

#include <cerrno>

namespace ovka {
namespace {

std::string nameOf(std::uint64_t destination) {
  return "MIDI port " + std::to_string(destination);
}

}  // namespace

int RenderTransport::open(const MidiNames&, const MidiReaders&) {
  open_ = true;
  return 0;
}

std::vector<MidiEndpoint> RenderTransport::destinations() {
  std::vector<MidiEndpoint> all;
  for (std::uint64_t id = 1; id <= kDestinations; ++id) all.push_back({id, nameOf(id)});
  return all;
}

int RenderTransport::connectSource(std::uint64_t) {
  return ENOENT;
}

int RenderTransport::send(std::uint64_t destination, std::uint64_t,
                          std::span<const std::uint8_t> message) {
  if (destination == 0) return 0;
  if (!open_ || destination > kDestinations ||
      !score_.toDestination(nameOf(destination), message)) {
    ++dropped_;
    return EINVAL;
  }
  return 0;
}

int RenderTransport::received(std::uint64_t, std::span<const std::uint8_t>) {
  return 0;
}

int RenderSynthesizer::start() {
  started_ = true;
  return 0;
}

void RenderSynthesizer::message(std::span<const std::uint8_t> bytes) {
  if (started_) score_.toSynthesizer(bytes);
}

}  // namespace ovka
