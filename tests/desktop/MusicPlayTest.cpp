#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSlider>
#include <doctest/doctest.h>

#include "Banner.h"
#include "BufferVariables.h"
#include "FFTVariables.h"
#include "LiveSession.h"
#include "MusicFixture.h"
#include "MusicMemory.h"
#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"
#include "TransportRow.h"

using namespace ovka;
using namespace ovka::desktop;
using ovka::testing::MusicFixture;
using ovka::testing::RecordingMusic;
using ovka::testing::ShellFixture;

namespace {

int notesOn(const std::vector<std::vector<std::uint8_t>>& messages) {
  int count = 0;
  for (const auto& each : messages)
    count += each.size() == 3 && (each[0] & 0xF0) == 0x90 && each[2] > 0 ? 1 : 0;
  return count;
}

}  // namespace

TEST_CASE("one click plays the brain, one more ends it, and nothing of one's own is lost") {
  MusicFixture shell(SourceChoice::Kind::Demo);
  auto* music = shell.window.transport().findChild<QPushButton*>("music");
  shell.window.transport().refresh();
  REQUIRE(shell.waitFor([&] { return music->isEnabled(); }));
  CHECK_FALSE(music->isChecked());
  music->click();
  REQUIRE(shell.settle());
  // What --play of the terminal does.
  for (std::size_t setup = 0; setup < 8; ++setup)
    CHECK(setmidi::MIDIoutONX[setup] == (setup < 6 ? 1 : 0));
  CHECK(setmidi::LowFX[0] == 8.5F);
  CHECK(setmidi::MIDIportX[0] == 3);
  CHECK(fft::fftp == 256);
  REQUIRE(shell.waitFor([&] { return notesOn(shell.music.synthesizer.messages()) > 0; }));
  CHECK(shell.waitFor([&] { return music->isChecked(); }));
  music->click();
  REQUIRE(shell.settle());
  REQUIRE(shell.waitFor([&] { return shell.music.synthesizer.sounding().empty(); }));
  CHECK(midi::MIDIuseX == 0);
  shell.music.synthesizer.forget();
  QTest::qWait(300);
  CHECK(notesOn(shell.music.synthesizer.messages()) == 0);
  // What the user makes of the set-ups stays.
  REQUIRE(shell.bench.engine()->assign("LowFNX[0]=50").empty());
  music->click();
  REQUIRE(shell.waitFor([&] { return notesOn(shell.music.synthesizer.messages()) > 0; }));
  CHECK(setmidi::LowFNX[0] == 50);
  for (int setup = 0; setup < 6; ++setup)
    shell.bench.assign(QStringLiteral("MIDIoutONX[%1]=0").arg(setup));
  REQUIRE(shell.settle());
  shell.window.transport().refresh();
  shell.window.tick();
  music->click();
  REQUIRE(shell.settle());
  CHECK(setmidi::LowFNX[0] == 50);
  CHECK(shell.window.banner().text() == "Your MIDI set-ups are all off.");
  for (QPushButton* button : shell.window.banner().findChildren<QPushButton*>()) {
    if (button->text() == QLatin1String("Take those")) button->click();
  }
  REQUIRE(shell.settle());
  CHECK(setmidi::LowFNX[0] == 64);
  CHECK(setmidi::MIDIoutONX[0] == 1);
}

TEST_CASE("a capture plays as the amplifier did; at its end everything stands and nothing sounds") {
  const testing::TemporaryFolder folder;
  const std::string path = folder.at("alpha.cap");
  {
    testing::needApplication();
    LiveChoice demo;
    demo.demo = true;
    demo.capture = path;
    demo.assignments = {"FixedFramingX=1"};
    LiveSession session;
    REQUIRE(session.open(demo).explanation.empty());
    QTest::qWait(4000);
    REQUIRE(session.close().empty());
  }
  MusicFixture shell(SourceChoice::Kind::None);
  SourceChoice capture;
  capture.kind = SourceChoice::Kind::Capture;
  capture.paths = {path};
  shell.window.useSource(capture);
  REQUIRE(shell.settle());
  REQUIRE(shell.bench.source().kind == SourceChoice::Kind::Capture);
  shell.window.music().play();
  REQUIRE(shell.settle());
  REQUIRE(shell.waitFor([&] { return notesOn(shell.music.synthesizer.messages()) > 0; }));
  REQUIRE(shell.waitFor([&] { return shell.window.banner().key() == "line"; }));
  CHECK(shell.window.banner().text() == "The capture has come to its end.");
  CHECK(buffer::setPauseX == 1);
  CHECK(shell.waitFor([&] { return shell.music.synthesizer.sounding().empty(); }));
  CHECK(buffer::ploop > 300);
}

TEST_CASE("every note has ended when the program has, however it is ended") {
  enum class End { Source, Panic, Close };
  for (const End end : {End::Source, End::Panic, End::Close}) {
    CAPTURE(static_cast<int>(end));
    RecordingMusic music;
    {
      ShellFixture shell(SourceChoice::Kind::None, true, &music);
      REQUIRE(music.looked);
      REQUIRE(shell.bench.engine()->assign("MIDIoutONEX[0]=1").empty());
      REQUIRE(shell.bench.engine()->assign("SendMIDItimingEX[0]=0").empty());
      REQUIRE(shell.waitFor([&] { return music.transport.sounding().size() >= 7; }));
      if (end == End::Panic) {
        REQUIRE(shell.bench.engine()->assign("MIDIoutONEX[0]=0").empty());
        shell.window.panic();
        CHECK(music.transport.sounding().empty());
      } else if (end == End::Source) {
        REQUIRE(shell.bench.engine()->assign("NoteOffOnEX[0]=1").empty());
        shell.bench.openSource({}, {});
        REQUIRE(shell.settle());
      } else {
        shell.window.close();
      }
    }
    CHECK(music.transport.sounding().empty());
    CHECK(music.synthesizer.sounding().empty());
    CHECK_FALSE(music.synthesizer.started());
  }
}

TEST_CASE("set-ups are put aside and come back, channels are kept, notes end") {
  MusicFixture shell(SourceChoice::Kind::None);
  shell.show(MusicPage::Bands);
  const auto click = [&](const char* name) {
    auto* button = shell.find<QPushButton>(name);
    REQUIRE(button->isEnabled());
    button->click();
    REQUIRE(shell.settle());
  };
  for (const char* setting : {"MIDIoutONEX[0]=1", "SendMIDItimingEX[0]=0", "MIDIchannel3X[0]=9"})
    REQUIRE(shell.bench.engine()->assign(setting).empty());
  REQUIRE(shell.waitFor([&] { return !shell.music.transport.sounding().empty(); }));
  click("SetMIDIband sendMidiTemporalyOFF");
  CHECK(setmidiband::MIDIoutONEX[0] == 0);
  CHECK(shell.waitFor([&] { return shell.music.transport.sounding().empty(); }));
  click("SetMIDIband sendMidiBackON");
  CHECK(setmidiband::MIDIoutONEX[0] == 1);
  CHECK_FALSE(shell.find<QPushButton>("MIDIchannelBackCopy")->isEnabled());
  click("MIDIchannelCopy");
  REQUIRE(shell.bench.engine()->assign("MIDIchannel3X[0]=2").empty());
  click("MIDIchannelBackCopy");
  CHECK(setmidiband::MIDIchannelX[2][0] == 9);
  REQUIRE(shell.bench.engine()->assign("MIDIoutONEX[0]=0").empty());
  click("SetMIDIband sendMidiShutDown");
  CHECK(shell.music.transport.sounding().empty());
  shell.show(MusicPage::Singles);
  setmidi::MIDIoutONX.set(5, 1);
  click("SetMIDI sendMidiTemporalyOFF");
  CHECK(setmidi::MIDIoutONX[5] == 0);
  click("SetMIDI sendMidiBackON");
  CHECK(setmidi::MIDIoutONX[5] == 1);
  click("SetMIDI sendMidiShutDown");
}

TEST_CASE("the synthesizer is tried, turned off and on, and set") {
  MusicFixture shell(SourceChoice::Kind::None);
  shell.show(MusicPage::Synthesizer);
  auto& synthesizer = shell.music.synthesizer;
  CHECK(shell.find<QLabel>("synthState")->text() == "Plays: recording synthesizer");
  CHECK(shell.find<QComboBox>("scaleTo")->currentText() == "MIDI port 4 – OVKA Synthesizer");
  synthesizer.forget();
  shell.find<QPushButton>("playScale")->click();
  REQUIRE(shell.waitFor([&] { return notesOn(synthesizer.messages()) == 15; }));
  REQUIRE(shell.waitFor([&] { return synthesizer.sounding().empty(); }));
  CHECK_FALSE(shell.window.music().playsScale());
  // Ended in the middle, no note is left.
  shell.find<QPushButton>("playScale")->click();
  REQUIRE_FALSE(synthesizer.sounding().empty());
  shell.find<QPushButton>("playScale")->click();
  CHECK(synthesizer.sounding().empty());

  shell.find<QSlider>("gain")->setValue(120);
  CHECK(shell.music.sound().gain == 1.2);
  CHECK(storedSound().gain == 1.2);
  shell.find<QDoubleSpinBox>("ceiling")->setValue(-6);
  CHECK(storedSound().ceiling == -6);
  const int starts = synthesizer.starts();
  auto* driver = shell.find<QComboBox>("driver");
  QTest::keyClick(driver, Qt::Key_Down);
  REQUIRE(shell.settle());
  CHECK(shell.music.sound().driver == "pulseaudio");
  CHECK(synthesizer.starts() > starts);

  synthesizer.forget();
  shell.find<QComboBox>("programChannel")->setCurrentIndex(2);
  shell.pages().refresh();
  CHECK(shell.find<QComboBox>("program")->currentIndex() == -1);
  QTest::keyClick(shell.find<QComboBox>("program"), Qt::Key_Down);
  REQUIRE(shell.settle());
  const std::vector<std::uint8_t> program{0xC2, 0};
  const auto messages = synthesizer.messages();
  CHECK(std::count(messages.begin(), messages.end(), program) == 1);

  auto* on = shell.find<QCheckBox>("synthOn");
  shell.pages().refresh();
  for (const bool wanted : {false, true}) {
    on->click();
    REQUIRE(shell.settle());
    CHECK(synthesizer.started() == wanted);
    shell.pages().refresh();
    CHECK(on->isChecked() == wanted);
  }
}

TEST_CASE("what is missing for music is said in words") {
  SUBCASE("no sound output") {
    MusicFixture shell(SourceChoice::Kind::None, false);
    shell.window.music().playShipped();
    REQUIRE(shell.settle());
    CHECK(shell.window.banner().text() == "The set-ups play, but nothing is heard.");
    shell.show(MusicPage::Synthesizer);
    CHECK(shell.find<QLabel>("synthState")->text() == "Silent: no sound: scripted failure");
    shell.show(MusicPage::Ports);
    CHECK(shell.find<QLabel>("systems")->text().contains("sudo mend it"));
  }
  SUBCASE("no music at all") {
    ShellFixture shell(SourceChoice::Kind::None);
    shell.window.music().play();
    CHECK(shell.window.banner().text() == "Nothing can be played now.");
    shell.window.transport().refresh();
    for (int i = 0; i < 3; ++i) shell.window.tick();
    CHECK_FALSE(shell.window.transport().findChild<QPushButton*>("music")->isEnabled());
    CHECK(
        shell.window.transport().findChild<QLabel*>("midiLight")->toolTip().contains("--no-midi"));
    shell.window.musicWindow().showPage(MusicPage::Bands);
    REQUIRE(shell.settle());
    shell.bench.perform("SetMIDIband setMIDIoutON:", 1);
    REQUIRE(shell.settle());
    CHECK(setmidiband::MIDIoutONEXZ[0] == 1);
  }
}
