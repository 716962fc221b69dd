#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "MidiGuardProcess.h"
#include "MidiSystems.h"

namespace ovka {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

/// Longer than a server needs to notice the program's death and to take a new client: one that
/// waits for its clients in each cycle stands still for seconds meanwhile.
constexpr auto kPatience = 15s;

/// A client of the guard's own on a system; it hears nothing and publishes nothing.
std::unique_ptr<MidiTransport> openGuardsOwn(const std::string& name) {
  const auto until = steady_clock::now() + kPatience;
  for (;;) {
    auto transport = makeMidiTransport(name);
    if (!transport) return nullptr;
    if (transport->open({"OVKA MIDI guard", "", "OVKA MIDI guard out", "", ""}, {}) == 0) {
      return transport;
    }
    if (steady_clock::now() > until) return nullptr;
    std::this_thread::sleep_for(200ms);
  }
}

std::uint64_t find(MidiTransport& transport, std::string_view destination) {
  for (const MidiEndpoint& endpoint : transport.destinations()) {
    // The table cuts long names.
    if (endpoint.name == destination ||
        (destination.size() + 1 == SoundingNotes::kDestinationBytes &&
         endpoint.name.starts_with(destination))) {
      return endpoint.id;
    }
  }
  return 0;
}

bool sendPatiently(MidiTransport& transport, std::uint64_t destination, unsigned status,
                   unsigned first) {
  const std::uint8_t bytes[] = {static_cast<std::uint8_t>(status), static_cast<std::uint8_t>(first),
                                0};
  const auto until = steady_clock::now() + kPatience;
  while (transport.send(destination, 0, bytes) == EAGAIN) {
    if (steady_clock::now() > until) return false;
    std::this_thread::sleep_for(2ms);
  }
  return true;
}

int endRow(const SoundingNotes& notes, std::size_t row, MidiTransport& transport) {
  const std::uint64_t destination = find(transport, notes.row(row).destination);
  if (destination == 0) return 0;
  int sent = 0;
  notes.forEachOf(row, [&](std::size_t, unsigned channel, unsigned note) {
    if (sendPatiently(transport, destination, 0x80U | channel, note)) ++sent;
  });
  // A Note Off that had left the table may have died on its way.
  constexpr unsigned kAllNotesOff = 123;
  for (unsigned channel = 0; channel < SoundingNotes::kChannels; ++channel) {
    static_cast<void>(sendPatiently(transport, destination, 0xB0U | channel, kAllNotesOff));
  }
  return sent;
}

}  // namespace

int endSoundingNotes(const SoundingNotes& notes) {
  int sent = 0;
  std::vector<std::string> done;
  for (std::size_t first = 0; first < SoundingNotes::kRows; ++first) {
    const std::string name = notes.row(first).transport;
    const bool used = notes.row(first).used.load(std::memory_order_acquire) != 0;
    if (!used || name.empty() || std::ranges::find(done, name) != done.end()) continue;
    done.push_back(name);
    const auto transport = openGuardsOwn(name);
    if (!transport) continue;
    for (std::size_t row = first; row < SoundingNotes::kRows; ++row) {
      const bool same = notes.row(row).used.load(std::memory_order_acquire) != 0 &&
                        notes.row(row).transport == name;
      if (same) sent += endRow(notes, row, *transport);
    }
    transport->close();  // waits until the last message is delivered
  }
  return sent;
}

}  // namespace ovka
