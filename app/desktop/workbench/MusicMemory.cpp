#include "MusicMemory.h"

#include <QSettings>
#include <algorithm>
#include <cstddef>

#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"

namespace ovka::desktop {
namespace {

constexpr std::size_t kMappings = 2;

MidiMapping& mappingOf(Engine& engine, std::size_t which) {
  if (which == 0) return engine.midi().bands();
  return engine.midi().singles();
}

Shared<std::int32_t>& openedOf(std::size_t which) {
  return which == 0 ? setmidiband::setupOpenedX : setmidi::setupOpenedX;
}

bool isPort(const SetupField& field) {
  return field.name == "MIDIportEX" || field.name == "MIDIportX";
}

/// What follows from the clock is not kept.
bool kept(const SetupField& field) {
  return field.minimum < field.maximum;
}

std::int32_t portNow(const MidiEngine& notes, const MusicMemory& memory, double before) {
  const auto port = static_cast<std::int32_t>(before);
  const std::int32_t now =
      port >= 0 && port < midi::kPorts
          ? notes.convertPortNameToInt(memory.ports[static_cast<std::size_t>(port)])
          : -1;
  return now >= 0 && now < notes.portCount() ? now : port;
}

}  // namespace

MusicMemory keepMusic(Engine& engine) {
  MusicMemory memory;
  memory.ports = engine.midi().notes().portNames();
  for (std::size_t which = 0; which < kMappings; ++which) {
    memory.opened[which] = openedOf(which);
    for (const SetupField& field : mappingOf(engine, which).fields()) {
      for (std::size_t i = 0; kept(field) && i < field.access.rows * midi::kSetups; ++i) {
        const std::size_t row = i / midi::kSetups;
        memory.values[which].push_back(field.access.live(row, i % midi::kSetups));
        memory.values[which].push_back(field.access.edit(row, i % midi::kSetups));
      }
    }
  }
  return memory;
}

void bringMusic(Engine& engine, const MusicMemory& memory) {
  const MidiEngine& notes = engine.midi().notes();
  for (std::size_t which = 0; which < kMappings; ++which) {
    std::size_t next = 0;
    for (const SetupField& field : mappingOf(engine, which).fields()) {
      for (std::size_t i = 0; kept(field) && i < field.access.rows * midi::kSetups; ++i) {
        const std::size_t row = i / midi::kSetups;
        double live = memory.values[which].at(next++);
        double edit = memory.values[which].at(next++);
        if (isPort(field)) {
          live = portNow(notes, memory, live);
          edit = portNow(notes, memory, edit);
        }
        field.access.setLive(row, i % midi::kSetups, live);
        field.access.setEdit(row, i % midi::kSetups, edit);
      }
    }
    openedOf(which) = memory.opened[which];
  }
}

SynthesizerSettings storedSound() {
  const QSettings settings;
  SynthesizerSettings sound;
  sound.soundFont = settings.value(QStringLiteral("music/soundFont")).toString().toStdString();
  sound.driver = settings.value(QStringLiteral("music/driver")).toString().toStdString();
  sound.gain =
      std::clamp(settings.value(QStringLiteral("music/gain"), sound.gain).toDouble(), 0.0, 10.0);
  sound.ceiling = std::clamp(
      settings.value(QStringLiteral("music/ceiling"), sound.ceiling).toDouble(), -24.0, 0.0);
  return sound;
}

void storeSound(const SynthesizerSettings& sound) {
  QSettings settings;
  settings.setValue(QStringLiteral("music/soundFont"), QString::fromStdString(sound.soundFont));
  settings.setValue(QStringLiteral("music/driver"), QString::fromStdString(sound.driver));
  settings.setValue(QStringLiteral("music/gain"), sound.gain);
  settings.setValue(QStringLiteral("music/ceiling"), sound.ceiling);
}

}  // namespace ovka::desktop
