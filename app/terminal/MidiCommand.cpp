#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Json.h"
#include "LinuxClock.h"
#include "LiveMidi.h"
#include "MidiEngine.h"
#include "MidiVariables.h"
#include "Output.h"
#include "SoundFonts.h"
#include "StopSignals.h"

namespace ovka::terminal {
namespace {

struct Listed {
  std::string system;
  std::string kind;  ///< "destination", "source"
  std::string name;
};

void listEndpoints(MidiSystem& system, std::vector<Listed>& to) {
  if (system.transport == nullptr || !system.available) return;
  if (system.transport->open(MidiNames{}, MidiReaders{}) != 0) {
    system.available = false;
    system.trouble.reason = system.transport->explanation();
    return;
  }
  for (const MidiEndpoint& each : system.transport->destinations())
    to.push_back({system.name, "destination", each.name});
  for (const MidiEndpoint& each : system.transport->sources())
    to.push_back({system.name, "source", each.name});
  system.transport->close();
}

void writeSystem(Output& output, const MidiSystem& system, bool json) {
  if (json) {
    JsonWriter line(output.text());
    line.beginObject().key("system").text(system.name);
    line.key("available").boolean(system.available);
    line.key("reason").text(system.trouble.reason).key("mend").text(system.trouble.mend);
    line.endObject();
    output.write("\n");
  } else if (system.available) {
    output.write(system.name + ": there\n");
  } else {
    output.write(system.name + ": not there: " + system.trouble.reason +
                 (system.trouble.mend.empty() ? "" : " (" + system.trouble.mend + ")") + "\n");
  }
}

void writeEndpoint(Output& output, const Listed& listed, bool json) {
  if (json) {
    JsonWriter line(output.text());
    line.beginObject().key("system").text(listed.system).key("kind").text(listed.kind);
    line.key("name").text(listed.name).endObject();
    output.write("\n");
  } else {
    output.write("  " + listed.kind + "  " + listed.name + "\n");
  }
}

void runMidiPorts(const Arguments& arguments) {
  const bool json = arguments.given("json");
  Output output;
  for (MidiSystem& system : openMidiTransports(arguments.text("midi").value_or("all"))) {
    std::vector<Listed> endpoints;
    listEndpoints(system, endpoints);
    writeSystem(output, system, json);
    for (const Listed& each : endpoints) writeEndpoint(output, each, json);
  }
  const SoundFont font = findSoundFont(arguments.text("sound-font").value_or(""));
  MidiSystem synthesizer{"software synthesizer", "", font.explanation.empty(), {}, nullptr};
  synthesizer.trouble.reason = font.explanation;
  writeSystem(output, synthesizer, json);
  if (synthesizer.available)
    writeEndpoint(
        output, {synthesizer.name, "destination", std::string(MidiEngine::kSynthesizerName)}, json);
  output.flush();
}

/// A major scale up and down from the middle C, a quarter of a second a note.
void playScale(MidiEngine& notes, std::int32_t port, const Arguments& arguments,
               StopSignals& stop) {
  constexpr int kScale[] = {60, 62, 64, 65, 67, 69, 71, 72, 71, 69, 67, 65, 64, 62, 60};
  const auto channel = static_cast<std::int32_t>(arguments.integer("channel").value_or(1) - 1);
  const auto velocity = static_cast<std::int32_t>(arguments.integer("velocity").value_or(96));
  notes.because({MidiCause::Source::Test, -1, -1, -1});
  for (const int note : kScale) {
    if (stop.stopped()) break;
    notes.MidiOutOn(note, velocity, 0, channel, port, 0);
    static_cast<void>(stop.wait(std::chrono::milliseconds(230)));
    notes.MidiOutOff(note, 0, channel, port, 0);
    static_cast<void>(stop.wait(std::chrono::milliseconds(20)));
  }
  // What fades away belongs to the last note.
  static_cast<void>(stop.wait(std::chrono::milliseconds(400)));
}

void runMidiTest(const Arguments& arguments) {
  LiveMidi midi;  // before the first thread
  StopSignals stop;
  Console console(Console::Show::Important);
  console.started();
  const LinuxClock clock;
  const std::string to = arguments.text("to").value_or(std::string(MidiEngine::kSynthesizerName));
  LiveMidiChoice choice;
  choice.systems =
      arguments.text("midi").value_or(to == MidiEngine::kSynthesizerName ? "none" : "auto");
  choice.synthesizer = to == MidiEngine::kSynthesizerName;
  choice.sound.soundFont = arguments.text("sound-font").value_or("");
  choice.sound.driver = arguments.text("audio").value_or("");
  const MidiMachine& machine = midi.choose(choice);
  MidiEngine notes({machine.transports, machine.synthesizer, machine.sounding, {}, {}}, clock);
  static_cast<void>(notes.mainMidi());
  notes.setGetOutMIDIPort();
  const std::int32_t port = notes.convertPortNameToInt(to);
  if (port < 0 || port >= notes.portCount()) {
    throw Failure(ExitCode::Port,
                  "there is no MIDI destination '" + to + "'; 'ovka midi ports' lists them");
  }
  if (choice.synthesizer && !machine.synthesizer->started())
    throw Failure(ExitCode::Port, machine.synthesizer->explanation());
  std::fprintf(stderr, "playing a scale to %s\n",
               choice.synthesizer ? machine.synthesizer->name().c_str() : to.c_str());
  playScale(notes, port, arguments, stop);
  notes.close();
}

}  // namespace

void runMidi(const Arguments& arguments) {
  const std::string& what = arguments.positional(0);
  if (what == "ports") return runMidiPorts(arguments);
  if (what == "test") return runMidiTest(arguments);
  throw Failure(ExitCode::Usage, "'" + what + "' is none of ports, test");
}

}  // namespace ovka::terminal
