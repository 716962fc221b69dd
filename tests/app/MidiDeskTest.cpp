#include <chrono>
#include <random>

#include "DeskFixture.h"
#include "DocumentVariables.h"
#include "MappingVariables.h"
#include "MidiDesk.h"
#include "PacketLists.h"
#include "RecordingSynthesizer.h"
#include "RecordingTransport.h"
#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"

using namespace ovka;
using namespace std::chrono_literals;

namespace {

struct Instruments {
  testing::RecordingTransport transport;
  testing::RecordingSynthesizer synthesizer;
  MidiMachine midi{{&transport}, &synthesizer, nullptr, {}, {}};
  Instruments() {
    for (const char* name : {"A", "B", "C"}) transport.addDestination(name);
  }
};

/// A whole engine on manual time that plays on recorders: destinations A, B and C, and the
/// synthesizer as the fourth and last.
struct Stage : Instruments, testing::Desk {
  testing::HeardNotes virtualNotes;  // sounding on the virtual source

  Stage() : Desk(false, &midi) { REQUIRE(midi::findPortCountE == 4); }

  MidiEngine& notes() { return engine.midi().notes(); }
  /// As acquisition does, with a signal that moves.
  void record(int points) {
    buffer::setRecModeX = kRecording;
    buffer::setPauseX = 0;
    for (int i = 0; i < points; ++i) frame();
  }
  void frame() {
    if (buffer::ploop >= 19'000) buffer::ploop = 0;
    const auto point = static_cast<std::int32_t>(buffer::ploop);
    for (std::int32_t c = 0; c < buffer::kChannels; ++c) {
      const std::int32_t wave = (point * (c + 1) * 37) % 401 - 200 + point % (97 * (c + 1)) * 3;
      engine.store().putIntToBuffer(c, point, wave * 50);
    }
    engine.store().finishFrame();
  }
  /// A Control Change from outside, handed to the main loop.
  void turnKnob(std::uint8_t controller, std::uint8_t value, std::uint8_t status = 0xB0) {
    transport.feedVirtualDestination(testing::packetList({{status, controller, value}}));
    time.advance(1ms);
  }
  /// Reads what was published, so that memory is not the limit of a long run.
  void digest() {
    for (const testing::SentMidi& message : transport.published()) virtualNotes.hear(message.bytes);
    transport.forget();
    synthesizer.forget();
    static_cast<void>(print.take());
  }
  [[nodiscard]] std::string whatSounds() {
    return std::to_string(transport.sounding().size()) + " at the MIDI system, " +
           std::to_string(synthesizer.sounding().size()) + " at the synthesizer, " +
           std::to_string(virtualNotes.size()) + " at the virtual source, " +
           (notes().sounding().anySounds() ? "known" : "unknown") + " to the engine";
  }
  [[nodiscard]] bool quiet() {
    digest();
    return transport.sounding().empty() && synthesizer.sounding().empty() && virtualNotes.empty();
  }
};

/// A person and a machine who do whatever may end, move or forget notes.
class Mischief {
 public:
  Mischief(Stage& stage, unsigned seed) : stage_(stage), random_(seed) {
    actions_ = stage.engine.midi().bands().actions();
    for (MappingAction& action : stage.engine.midi().singles().actions())
      actions_.push_back(std::move(action));
    everybodyPlays();
  }

  void step() {
    const int what = below(1000);
    if (what < 600) {
      for (int i = below(4); i > 0; --i) stage_.frame();
      stage_.time.advance(std::chrono::milliseconds(1 + below(3)));
    } else if (what < 800) {
      static constexpr double kValues[] = {0, 1, 2, 3, 5, 9, 15, 23, 36, 48, 60, 72, 100, 127};
      actions_[index(actions_.size())].perform(kValues[index(std::size(kValues))]);
    } else if (what < 860) {
      stray();
    } else if (what < 940) {
      silence();
    } else if (what < 980) {
      endpoints();
    } else if (what < 984) {
      everybodyPlays();
    } else if (what < 990) {
      stage_.engine.midi().panic();
    } else if (what < 999) {
      stage_.perform(below(2) == 0 ? "SetMIDIband setSet:" : "SetMIDI setSet:");
    } else if (below(4) == 0) {
      documentsDo();
    }
    if (below(50) == 0) stage_.digest();
  }
  void bringAllBack() {
    stage_.transport.setConnected(true);
    for (const std::string& name : gone_) stage_.transport.addDestination(name);
    gone_.clear();
    away_ = false;
    stage_.transport.sendResult = 0;
    stage_.time.advance(300ms);
  }
  [[nodiscard]] int silencesSeen() const { return silencesSeen_; }

 private:
  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::size_t index(std::size_t limit) { return static_cast<std::size_t>(random_()) % limit; }

  void everybodyPlays() {
    using namespace setmidiband;  // NOLINT: a table of this room's names
    setSoloBandX = below(8) == 0 ? 0 : 1;
    for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
      const int mode = below(5);
      const int port = below(5);
      const auto slow = [&] { return below(20) == 0 ? below(3) : 3 + below(4); };
      MIDIoutONEX.set(setup, 1);
      ONInputEX.set(setup, below(2));
      SendMIDItimingEX.set(setup, slow());
      MIDIportEX.set(setup, port);
      NoteOffOnEX.set(setup, mode < 2 ? 1 : 0);
      NoteOnOffEX.set(setup, mode == 2 || mode == 3 ? 1 : 0);
      ControlEX.set(setup, mode == 4 ? 1 : 0);
      setmidi::MIDIoutONX.set(setup, 1);
      setmidi::SendMIDItimingX.set(setup, slow());
      setmidi::MIDIportX.set(setup, below(5));
      setmidi::Play3PeaksX.set(setup, below(2));
      setmidi::PlayOnlyNoteChangedX.set(setup, below(2));
      setmidi::MIDIchannelFX.set(setup, below(6) == 0 ? 1 : 0);
      midi::UseQTMIDIX.set(setup, below(2));
    }
  }
  /// Whatever writes a variable without asking the mapping: settings, other threads.
  void stray() {
    const std::size_t setup = index(midi::kSetups);
    const std::size_t band = index(8);
    const std::function<void()> ways[] = {
        [&] { setmidiband::MIDIportEX.set(setup, below(30)); },
        [&] { setmidi::MIDIportX.set(setup, below(30)); },
        [&] { setmidiband::MIDIchannelX[band].set(setup, below(16)); },
        [&] { setmidiband::bandNoteX[band].set(setup, below(128)); },
        [&] { setmidi::MIDIchannelX.set(setup, below(16)); },
        [&] { setmidiband::MIDIoutONEX.set(setup, below(2)); },
        [&] { setmidi::MIDIoutONX.set(setup, below(2)); },
        [&] { midi::UseQTMIDIX.set(setup, below(2)); },
        [&] { setmidiband::setSoloBandX = below(2); },
    };
    ways[index(std::size(ways))]();
  }
  /// Every reason to be silent: one tick later nothing sounds that can be reached.
  void silence() {
    Shared<std::int32_t>* const reasons[] = {&buffer::setPauseX, &document::savingX,
                                             &document::openingX};
    Shared<std::int32_t>& reason = *reasons[index(3)];
    const bool before = reason != 0;
    reason = 1;
    stage_.time.advance(1ms);
    if (gone_.empty() && !away_ && stage_.transport.sendResult == 0 &&
        stage_.notes().owedNoteOffs() == 0) {
      ++silencesSeen_;
      CHECK_MESSAGE(stage_.quiet(), stage_.whatSounds());
    }
    stage_.time.advance(std::chrono::milliseconds(below(5)));
    if (!before || below(3) == 0) reason = 0;
  }
  void endpoints() {
    const std::string name(1, "ABC"[index(3)]);
    const int what = below(6);
    if (what == 0 && std::ranges::find(gone_, name) == gone_.end()) {
      // A returning one keeps its id: what sounds there can be told from what a new one plays.
      stage_.transport.vanish(name);
      gone_.push_back(name);
    } else if (what == 1) {
      away_ = !away_;
      stage_.transport.setConnected(!away_);
    } else if (what == 2) {
      stage_.transport.sendResult = EAGAIN;
      stage_.time.advance(2ms);
      stage_.transport.sendResult = 0;
    } else {
      bringAllBack();
    }
  }
  /// The person's own commands, and playing on afterwards.
  void documentsDo() {
    const std::string path = stage_.folder.at("a.ovkanote");
    if (!saved_ || below(2) == 0) {
      if (buffer::ploop < 10) return;
      stage_.save(path);
      saved_ = true;
    } else {
      stage_.open(path);
      if (below(2) == 0) stage_.desk.playFrom(0);
      stage_.time.advance(5ms);
      buffer::setRecModeX = kRecording;
      buffer::setPauseX = 0;
    }
  }

  Stage& stage_;
  std::mt19937 random_;
  std::vector<MappingAction> actions_;
  std::vector<std::string> gone_;
  bool away_ = false;
  bool saved_ = false;
  int silencesSeen_ = 0;
};

}  // namespace

TEST_CASE("128 set-ups of each mapping, a hundred thousand mishaps: no note is left sounding") {
  constexpr unsigned kLives = 5;
#ifdef __SANITIZE_THREAD__
  constexpr int kSteps = 2'000;  // it makes each of them twenty times as long
#else
  constexpr int kSteps = 20'000;
#endif
  int silences = 0;
  for (unsigned life = 0; life < kLives; ++life) {
    CAPTURE(life);
    Stage stage;
    stage.record(1200);
    Mischief mischief(stage, life + 1);
    for (int i = 0; i < kSteps; ++i) mischief.step();
    silences += mischief.silencesSeen();
    mischief.bringAllBack();
    CHECK(stage.notes().sendTimes().count() > kSteps / 2);
    stage.engine.stop();
    CHECK(stage.quiet());
    CHECK_FALSE(stage.notes().sounding().anySounds());
    CHECK(stage.notes().owedNoteOffs() == 0);
  }
  CHECK(silences > static_cast<int>(kLives) * kSteps / 50);
}

TEST_CASE("a line that is lost silences the set-ups until it is back") {
  Stage stage;
  auto& device = stage.serial.device("/dev/a");
  device.input = {"OVKA\r", "ready\r"};
  REQUIRE(stage.engine.openAmplifier("/dev/a").explanation == "");
  stage.set("MIDIoutONEX[5]=1");
  stage.set("MIDIoutONX[6]=1");
  stage.time.advance(300ms);
  REQUIRE_FALSE(stage.transport.sounding().empty());

  device.hungUp = true;
  device.errors[testing::FakeSerialPorts::Step::Open] = ENOENT;
  stage.time.advance(1s);
  CHECK(mapping::inputLostX == 1);
  CHECK(stage.quiet());
  stage.time.advance(5s);
  CHECK(stage.transport.sent().empty());

  device.hungUp = false;
  device.errors.clear();
  device.input = {"OVKA\r", "ready\r"};
  stage.time.advance(5s);
  CHECK(mapping::inputLostX == 0);
  CHECK_FALSE(stage.transport.sounding().empty());
  stage.engine.stop();
  CHECK(stage.quiet());
}

TEST_CASE("a controller is learnt, moves its value, and comes back with presets and documents") {
  Stage stage;
  stage.set("gChannel=2");
  MidiLearn& learn = stage.engine.midi().learn();
  stage.turnKnob(20, 64);  // nothing waits, nothing is bound
  CHECK(setmidiband::gainNoteX[0] == 2.0F);

  for (const auto& [target, says] : std::vector<std::pair<const char*, const char*>>{
           {"LowF9X[3]", "did you mean"},
           {"LowF1X[128]", "say which set-up, 0 to 127"},
           {"LowFX", "say which set-up, 0 to 127"},
           {"bandNote1X[3]", "a controller cannot move bandNote1X[3]"}}) {
    CHECK_MESSAGE(learn.arm(target).find(says) != std::string::npos, learn.arm(target));
  }
  CHECK(learn.armed() == "");

  CHECK(learn.arm("LowF3X[12]") == "");
  stage.turnKnob(60, 100, 0x90);  // a note is no controller
  stage.turnKnob(123, 0);         // nor is a channel mode
  CHECK(learn.armed() == "LowF3X[12]");
  stage.turnKnob(20, 127);
  CHECK(learn.armed() == "");
  CHECK(setmidiband::LearnLowFX[2][12] == 1 + 2 * 128 + 20);  // on the channel that input is given
  CHECK(setmidiband::LowFX[2][12] == 60.0F);
  CHECK(setmidiband::LowFXZ[2][12] == 60.0F);
  CHECK(setmidiband::LowFX[2][11] == 4.0F);

  stage.perform("SetMIDIband selectSetup:", 40);
  stage.perform("learnHighF:", 9);
  CHECK(learn.armed() == "");
  stage.perform("learnHighF:", 8);
  CHECK(learn.armed() == "HighF8X[40]");
  stage.perform("learnCancel:");
  stage.perform("learnGainNote:");
  stage.turnKnob(20, 0);  // lets go of the low edge
  CHECK(setmidiband::LearnLowFX[2][12] == 0);
  CHECK(setmidiband::gainNoteX[40] == 0.0F);
  stage.perform("learnInputHighV:");
  stage.turnKnob(7, 127);
  CHECK(setmidi::HighVX[0] == 100.0F);

  REQUIRE(stage.desk.panel().savePreset(stage.folder.at("p.plist")));
  stage.record(20);
  DocumentError error;
  stage.save(stage.folder.at("d.ovkanote"));
  for (const bool preset : {true, false}) {
    CAPTURE(preset);
    setmidiband::setDefaults();
    setmidi::setDefaults();
    stage.turnKnob(20, 127);
    CHECK(setmidiband::gainNoteX[40] == 2.0F);
    if (preset)
      REQUIRE(stage.desk.panel().openPreset(stage.folder.at("p.plist"), &error));
    else
      stage.open(stage.folder.at("d.ovkanote"));
    CHECK(setmidiband::LowFX[2][12] == 60.0F);
    CHECK(setmidi::HighVX[0] == 100.0F);
    stage.turnKnob(20, 127);
    stage.turnKnob(7, 0);
    CHECK(setmidiband::gainNoteX[40] == 10.0F);
    CHECK(setmidi::HighVX[0] == 0.0F);
  }
}
