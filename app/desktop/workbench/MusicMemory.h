#pragma once

#include <array>
#include <string>
#include <vector>

#include "Engine.h"
#include "SynthesizerSettings.h"

namespace ovka::desktop {

/// The set-ups of both mappings, live and edited, beyond the engine that held them: another source
/// gets another engine, and what plays is not to change with the amplifier.
struct MusicMemory {
  /// In the order of the mappings' fields, rows and set-ups: live, then edited.
  std::array<std::vector<double>, 2> values;
  /// Names of the ports; a set-up finds its destination by it, whatever its number is by then.
  std::array<std::string, midi::kPorts> ports;
  std::array<std::int32_t, 2> opened{};
};

/// The thread that made the engine.
[[nodiscard]] MusicMemory keepMusic(Engine& engine);
void bringMusic(Engine& engine, const MusicMemory& memory);

/// How the synthesizer sounds, between runs of the program. The GUI thread.
[[nodiscard]] SynthesizerSettings storedSound();
void storeSound(const SynthesizerSettings& sound);

}  // namespace ovka::desktop
