#include "LiveMusic.h"

#include <cstring>
#include <utility>

namespace ovka::desktop {

LiveMusic::LiveMusic(std::string systems) : choice_(std::move(systems)) {}

void LiveMusic::look() {
  LiveMidiChoice choice;
  choice.systems = choice_;
  choice.waits = true;
  choice.sound = sound();
  static_cast<void>(midi_.choose(choice));
  std::vector<MusicFinding> found;
  for (const MidiSystem& system : midi_.systems()) {
    const bool used = system.transport != nullptr;
    found.push_back({system.name, system.available,
                     !system.available ? system.trouble.reason
                     : used            ? "in use"
                                       : "there, not in use",
                     system.trouble.mend, used});
  }
  if (const int problem = midi_.guardProblem(); problem != 0)
    found.push_back(
        {"guard of sounding notes", false,
         std::string("notes may hang when the program crashes: ") + std::strerror(problem), ""});
  const std::scoped_lock guard(lock_);
  systems_ = std::move(found);
}

std::vector<MusicFinding> LiveMusic::findings() const {
  std::vector<MusicFinding> all;
  {
    const std::scoped_lock guard(lock_);
    all = systems_;
  }
  if (all.empty()) return all;
  // One that was missing may have come.
  for (std::size_t i = 0; i < midi_.systems().size(); ++i) {
    const MidiSystem& system = midi_.systems()[i];
    if (all[i].there || system.transport == nullptr || !system.transport->connected()) continue;
    all[i] = {system.name, true, "in use", ""};
  }
  const FluidSynthesizer* synthesizer = midi_.synthesizer();
  if (synthesizer == nullptr) return all;
  const bool sounds = synthesizer->started();
  const std::string text = sounds ? synthesizer->name() : synthesizer->explanation();
  if (!text.empty()) all.push_back({"synthesizer", sounds, text, ""});
  return all;
}

SynthesizerSettings LiveMusic::sound() const {
  const std::scoped_lock guard(lock_);
  return sound_;
}

void LiveMusic::setSound(const SynthesizerSettings& sound) {
  {
    const std::scoped_lock guard(lock_);
    sound_ = sound;
  }
  if (FluidSynthesizer* synthesizer = midi_.synthesizer()) synthesizer->setSettings(sound);
}

}  // namespace ovka::desktop
