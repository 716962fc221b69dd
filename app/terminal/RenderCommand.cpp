#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "BufferVariables.h"
#include "Chain.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "FileEngine.h"
#include "FileKinds.h"
#include "MusicOptions.h"
#include "RenderSession.h"
#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"
#include "ShippedPreset.h"
#include "SoundFonts.h"

namespace ovka::terminal {
namespace {

using std::chrono::nanoseconds;

/// The place of a rendering's destination in the port list: the synthesizer comes last.
std::int32_t portOf(MidiTransport& transport, const std::string& name) {
  std::int32_t port = 0;
  for (const MidiEndpoint& destination : transport.destinations()) {
    if (destination.name == name) return port;
    ++port;
  }
  if (name == MidiEngine::kSynthesizerName) return port;
  throw Failure(ExitCode::Port, "there is no MIDI destination '" + name +
                                    "'; a rendering has 'MIDI port 1' to 'MIDI port " +
                                    std::to_string(port) + "' and '" +
                                    std::string(MidiEngine::kSynthesizerName) + "'");
}

bool anythingPlays() {
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    if (setmidi::MIDIoutONX[setup] == 1 || setmidiband::MIDIoutONEX[setup] == 1) return true;
  }
  return false;
}

void needSomethingToPlay(const std::string& source) {
  if (anythingPlays()) return;
  throw Failure(ExitCode::Usage, "no set-up is on, so " + source +
                                     " would stay silent; '--play' plays it with those that come "
                                     "with the program, '--preset NAME' with your own");
}

/// The set-ups that play, and the files that take what they play.
class Piece {
 public:
  explicit Piece(const Arguments& arguments) : arguments_(arguments) {}

  /// Throws Failure when the files on the line cannot be written.
  void check(Files& files) {
    for (std::size_t i = 0; i < kOutputs.size(); ++i) {
      const std::string path = output(kOutputs[i]);
      if (path.empty()) continue;
      for (std::size_t before = 0; before < i; ++before) {
        if (path == output(kOutputs[before]))
          throw Failure(ExitCode::Usage, "two outputs cannot share the file " + path);
      }
      if (path == arguments_.positional(0))
        throw Failure(ExitCode::Usage, path + " is what is to be rendered; write another file");
      checkWritable(files, path, arguments_.given("force"));
    }
    const SoundFont font = findSoundFont(arguments_.text("sound-font").value_or(""));
    if (!output("wav").empty() && font.path.empty())
      throw Failure(ExitCode::BadInput, font.explanation);
  }

  /// For the engine; its clock exists by then.
  const MidiMachine* on(const Clock& clock) {
    session_.emplace(clock);
    RenderChoice choice;
    choice.midiFile = output("midi-file");
    choice.soundFile = output("wav");
    choice.logFile = output("midi-log");
    choice.synthesizer.soundFont = arguments_.text("sound-font").value_or("");
    const std::string& source = arguments_.positional(0);
    choice.title = source.substr(source.rfind('/') + 1);
    if (std::string problem = session_->open(choice); !problem.empty())
      throw Failure(ExitCode::Output, problem);
    machine_.transports = {&session_->transport()};
    machine_.synthesizer = &session_->synthesizer();
    if (session_->logs())
      machine_.logLine = [this](std::string_view line) { session_->logLine(line); };
    return &machine_;
  }

  /// The set-ups and destinations of the line; the recording keeps its own settings otherwise, for
  /// a preset may be of another amplifier.
  void choose(Engine& engine) {
    std::string preset = arguments_.text("preset").value_or("");
    if (arguments_.given("play")) preset = shippedPresetPath();
    if (!preset.empty()) openSetups(*engine.documents(), preset);
    std::string to = arguments_.text("to").value_or("");
    if (to.empty() && arguments_.given("play")) to = MidiEngine::kSynthesizerName;
    if (!to.empty()) useDestination(portOf(session_->transport(), to));
  }

  RenderSession& session() { return *session_; }

 private:
  static constexpr std::array<const char*, 3> kOutputs{"midi-file", "wav", "midi-log"};

  [[nodiscard]] std::string output(const char* name) const {
    return arguments_.text(name).value_or("");
  }

  static void openSetups(DocumentDesk& desk, const std::string& preset) {
    setmidi::setDefaults();
    setmidiband::setDefaults();
    SwitchSet& open = desk.switches().open;
    SwitchSet before;
    for (const PresetSwitch& each : kPresetSwitches) before.set(each.which, open.on(each.which));
    open.setAll(false);
    open.set(DocumentSwitch::BrainpeakMIDI, true);
    open.set(DocumentSwitch::BrainrhythmMIDI, true);
    DocumentError error;
    const bool opened = desk.panel().openPreset(preset, &error);
    for (const PresetSwitch& each : kPresetSwitches) open.set(each.which, before.on(each.which));
    if (!opened) throw Failure(ExitCode::BadInput, lineOf(error));
    for (const std::string& note : desk.panel().notes())
      std::fprintf(stderr, "ovka: %s: %s\n", preset.c_str(), note.c_str());
  }

  const Arguments& arguments_;
  std::optional<RenderSession> session_;
  MidiMachine machine_;
};

/// A recording under way on a clock of its own.
class Recording {
 public:
  virtual ~Recording() = default;
  [[nodiscard]] virtual Engine& engine() = 0;
  /// Moves on by that much at most. False at the end.
  virtual bool step(nanoseconds most) = 0;
  /// Empty, or why it ended before its end.
  [[nodiscard]] virtual std::string damage() const { return {}; }
};

class CapturePlayer final : public Recording {
 public:
  CapturePlayer(const Arguments& arguments, const DocumentMachine& documents, Piece& piece)
      : session_(space_, &documents, [&piece](const Clock& clock) { return piece.on(clock); }) {
    const ReplaySession::Opened opened =
        session_.open(arguments.positional(0), assignmentsOf(arguments),
                      [&piece](Engine& engine) { piece.choose(engine); });
    if (opened.problem != ReplaySession::Problem::None) refuse(opened.problem, opened.explanation);
    needSomethingToPlay(arguments.positional(0));
  }
  [[nodiscard]] Engine& engine() override { return session_.engine(); }
  bool step(nanoseconds most) override { return session_.step(most); }
  [[nodiscard]] std::string damage() const override { return session_.damage(); }

 private:
  LinuxAddressSpace space_;
  ReplaySession session_;
};

/// A document has no time of day, so its clock begins at 0: the same log on every run.
class DocumentPlayer final : public Recording {
 public:
  DocumentPlayer(const Arguments& arguments, const DocumentMachine& documents, Piece& piece)
      : files_(documents, 0, [&piece](const Clock& clock) { return piece.on(clock); }) {
    const std::string& path = arguments.positional(0);
    openDocument(files_.desk(), path);
    piece.choose(files_.engine());
    buffer::setLoopModeX = 0;  // a document recorded as a loop still has an end
    assignAll(files_.engine(), assignmentsOf(arguments));
    if (buffer::ploop <= buffer::ploopStart)
      throw Failure(ExitCode::BadInput, path + " holds no samples");
    needSomethingToPlay(path);
    end_ = buffer::ploop;
    const std::int64_t start = buffer::ploopStart;
    buffer::ploop = start;
    files_.desk().playFrom(start);
  }
  [[nodiscard]] Engine& engine() override { return files_.engine(); }
  bool step(nanoseconds most) override {
    files_.time().advance(most);
    return buffer::ploop < end_;
  }

 private:
  FileEngine files_;
  std::int64_t end_ = 0;
};

std::unique_ptr<Recording> recordingOf(const Arguments& arguments, DocumentHost& host,
                                       const DocumentMachine& documents, Piece& piece) {
  const std::string& path = arguments.positional(0);
  switch (kindOfFile(host.files, path)) {
    case FileKind::Capture:
      return std::make_unique<CapturePlayer>(arguments, documents, piece);
    case FileKind::Document:
      return std::make_unique<DocumentPlayer>(arguments, documents, piece);
    default:
      throw Failure(ExitCode::BadInput, path +
                                            " is neither a capture nor a document; 'ovka "
                                            "convert' makes a document of other files");
  }
}

/// Plays up to the end, or to `--seconds`, or to the person's wish.
void play(Recording& recording, RenderSession& session, std::optional<double> seconds,
          const StopSignals& stop) {
  constexpr nanoseconds kStep = std::chrono::milliseconds(10);
  nanoseconds left(static_cast<std::int64_t>(seconds.value_or(9e9) * 1e9));
  std::string problem = session.run([&](nanoseconds most) {
    // Small steps: the end is where the recording ends.
    for (nanoseconds done{0}; done < most; done += kStep) {
      if (stop.stopped() || left <= nanoseconds::zero()) return false;
      const nanoseconds next = std::min(kStep, left);
      left -= next;
      if (!recording.step(next)) return false;
    }
    return true;
  });
  recording.engine().stop();
  if (problem.empty()) problem = session.finish();
  if (!problem.empty()) throw Failure(ExitCode::Output, problem);
}

}  // namespace

void runRender(const Arguments& arguments) {
  if (!arguments.given("midi-file") && !arguments.given("wav") && !arguments.given("midi-log")) {
    throw Failure(ExitCode::Usage,
                  "say what to write: '--midi-file F.mid', '--wav F.wav', '--midi-log F.jsonl'");
  }
  StopSignals stop;
  Console console(arguments.given("verbose") ? Console::Show::All : Console::Show::Important);
  DocumentHost host;
  Piece piece(arguments);
  piece.check(host.files);
  const DocumentMachine documents = host.filesOnly(host.folders);
  const std::unique_ptr<Recording> recording = recordingOf(arguments, host, documents, piece);
  console.started();
  host.progress.begin("rendering " + arguments.positional(0));
  play(*recording, piece.session(), arguments.number("seconds"), stop);
  host.progress.end();
  std::fprintf(stderr, "rendered %.1f s, %zu messages\n",
               std::chrono::duration<double>(piece.session().length()).count(),
               piece.session().messages());
  if (const std::string damage = recording->damage(); !damage.empty() && !stop.stopped()) {
    throw Failure(ExitCode::BadInput,
                  arguments.positional(0) + ": " + damage + "; everything before it was rendered");
  }
}

}  // namespace ovka::terminal
