#include "ShippedPreset.h"

#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"
#include "ShippedPresetText.h"

namespace ovka {

std::string shippedPresetPath() {
  static const int kMemory = [] {
    const int memory = memfd_create("ovka-preset", MFD_CLOEXEC);
    std::string_view left = kShippedPresetText;
    while (memory >= 0 && !left.empty()) {
      const ssize_t written = write(memory, left.data(), left.size());
      if (written <= 0) break;
      left.remove_prefix(static_cast<std::size_t>(written));
    }
    return memory;
  }();
  return kMemory < 0 ? std::string() : "/proc/self/fd/" + std::to_string(kMemory);
}

void useDestination(std::int32_t port) {
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    setmidiband::MIDIportEX.set(setup, port);
    setmidiband::MIDIportEXZ.set(setup, port);
    setmidi::MIDIportX.set(setup, port);
    setmidi::MIDIportXZ.set(setup, port);
  }
}

}  // namespace ovka
