#include "MusicOptions.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

#include "Failure.h"
#include "MidiForms.h"
#include "MidiVariables.h"
#include "ShippedPreset.h"

namespace ovka::terminal {
namespace {

constexpr const char* kWanting[] = {"play", "to", "midi-log", "preset"};

bool asksForMidi(const Arguments& arguments) {
  if (arguments.given("midi") && arguments.text("midi") != "none") return true;
  for (const char* name : kWanting) {
    if (arguments.given(name)) return true;
  }
  return false;
}

std::string portsText(const MidiEngine& notes) {
  std::string text;
  const auto names = notes.portNames();
  for (std::int32_t i = 0; i < notes.portCount() && i < midi::kPorts; ++i)
    text += (text.empty() ? "'" : ", '") + names[static_cast<std::size_t>(i)] + "'";
  return text.empty() ? "there is none at the moment" : "there are " + text;
}

}  // namespace

OptionGroup musicGroup() {
  OptionGroup group{
      "Music",
      {Option::flag("play",
                    "Play the brain waves with the set-ups that come with the program, on the "
                    "software synthesizer unless --to names another destination."),
       midiSystemOption(), destinationOption("Destination of every set-up"),
       Option::flag("performance",
                    "Least latency: every read is handed on at once, messages follow new data, "
                    "frames are cut by their fixed length."),
       Option::text("midi-log", "FILE", "Write every message with its cause as a line of JSON.")}};
  for (Option& option : soundOptions()) group.options.push_back(std::move(option));
  return group;
}

Music::Music(const Arguments& arguments) : arguments_(arguments), wanted_(asksForMidi(arguments)) {
  if (wanted_) midi_ = std::make_unique<LiveMidi>();
}

void Music::openLog(const std::string& path) {
  logFile_ = std::fopen(path.c_str(), "we");
  if (logFile_ == nullptr)
    throw Failure(ExitCode::Output, "cannot write " + path + ": " + std::strerror(errno));
  log_ = path;
  machine_.logLine = [this](std::string_view line) {
    if (logError_ != 0) return;
    const bool written = std::fwrite(line.data(), 1, line.size(), logFile_) == line.size() &&
                         std::fputc('\n', logFile_) != EOF && std::fflush(logFile_) == 0;
    if (!written) logError_ = errno;
  };
}

void Music::prepare(LiveChoice& choice) {
  if (arguments_.given("performance")) {
    for (const char* setting : {"FixedFramingX=1", "PerformanceProfileX=1"})
      choice.assignments.insert(choice.assignments.begin(), setting);
  }
  if (!wanted_) return;
  if (arguments_.given("play"))
    choice.assignments.insert(choice.assignments.begin(), kShippedTransform);
  LiveMidiChoice how;
  how.systems = arguments_.text("midi").value_or("auto");
  how.sound.soundFont = arguments_.text("sound-font").value_or("");
  how.sound.driver = arguments_.text("audio").value_or("");
  machine_ = midi_->choose(how);
  if (const auto path = arguments_.text("midi-log")) openLog(*path);
  choice.midi = &machine_;
  if (arguments_.given("play") && choice.preset.empty()) choice.preset = shippedPresetPath();
}

void Music::started(Engine& engine) {
  if (!wanted_) return;
  MidiEngine& notes = engine.midi().notes();
  std::string to = arguments_.text("to").value_or("");
  if (to.empty() && arguments_.given("play") && !arguments_.given("preset"))
    to = MidiEngine::kSynthesizerName;
  if (to.empty()) return;
  const std::int32_t port = notes.convertPortNameToInt(to);
  if (port < 0 || port >= notes.portCount())
    throw Failure(ExitCode::Port, "there is no MIDI destination '" + to + "'; " + portsText(notes));
  useDestination(port);
}

void Music::finish() {
  if (logFile_ == nullptr) return;
  const bool closed = std::fclose(logFile_) == 0;
  logFile_ = nullptr;
  if (logError_ == 0 && !closed) logError_ = errno;
  if (logError_ != 0)
    throw Failure(ExitCode::Output, "the message log " + log_ + " is not whole: " +
                                        std::strerror(logError_) + "; what is on disk can be read");
}

}  // namespace ovka::terminal
