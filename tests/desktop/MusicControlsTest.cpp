#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QListWidget>
#include <QSlider>
#include <QTableWidget>
#include <algorithm>
#include <array>
#include <doctest/doctest.h>

#include "MusicControls.h"
#include "MusicFixture.h"
#include "NoteBox.h"
#include "PacketLists.h"
#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"

using namespace ovka;
using namespace ovka::desktop;
using ovka::testing::MusicFixture;

namespace {

/// Operates a control as a person would; what its variable is to become.
double operate(QWidget* control, const MusicRow& row, double before) {
  if (auto* box = qobject_cast<QComboBox*>(control)) {
    REQUIRE(box->count() > 1);
    QTest::keyClick(box, box->currentIndex() + 1 < box->count() ? Qt::Key_Down : Qt::Key_Up);
    return box->currentIndex();
  }
  if (auto* button = qobject_cast<QAbstractButton*>(control)) {
    button->click();
    return 1 - before;
  }
  if (auto* number = qobject_cast<QDoubleSpinBox*>(control)) {
    number->setValue(before + 1 <= number->maximum() ? before + 1 : before - 1);
    return number->value();
  }
  if (auto* note = qobject_cast<QSpinBox*>(control)) {
    note->setValue(before < 127 ? static_cast<int>(before) + 1 : 0);
    return note->value();
  }
  auto* slider = qobject_cast<QSlider*>(control);
  REQUIRE(slider != nullptr);
  slider->setValue(slider->value() + (slider->value() < slider->maximum() ? 1 : -1));
  return row.lowest + slider->value() * row.step;
}

void operateAll(MusicFixture& shell, Mapping mapping) {
  const std::size_t shown = 4;
  shell.bench.perform(actionName(mapping, "selectSetup:"), static_cast<double>(shown));
  REQUIRE(shell.settle());
  for (const MusicRow& row : musicRows(mapping)) {
    const SetupField& field = fieldOf(mapping, row.field);
    for (std::size_t band = 0; band < field.access.rows; ++band) {
      const std::string name = actionName(mapping, row.selector, band);
      CAPTURE(name);
      auto* control = shell.find<QWidget>(name.c_str());
      REQUIRE(control != nullptr);
      CHECK_FALSE(control->toolTip().isEmpty());
      CHECK_FALSE(control->accessibleName().isEmpty());
      shell.pages().refresh();
      const bool atOnce = field.copy == SetupField::Copy::AtOnce;
      const double live = field.access.live(band, shown);
      const double before = atOnce ? live : field.access.edit(band, shown);
      const double wanted = operate(control, row, before);
      REQUIRE(shell.settle());
      const double now = atOnce ? field.access.live(band, shown) : field.access.edit(band, shown);
      CHECK(now == doctest::Approx(wanted).epsilon(0.001));
      CHECK(now != before);
      const bool mapped = mapping == Mapping::Singles && movesByItself(field);
      if (!atOnce && !mapped) CHECK(field.access.live(band, shown) == live);
      // A set-up that is on would move its own values.
      if (atOnce) static_cast<void>(operate(control, row, now));
      REQUIRE(shell.settle());
      // Whatever was changed here plays nowhere else.
      CHECK(field.access.edit(band, shown + 1) == field.access.live(band, shown + 1));
    }
  }
}

/// Whether every committed field of every set-up is the same in both copies.
bool inForce(Mapping mapping) {
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    if (pending(mapping, setup)) return false;
  }
  return true;
}

}  // namespace

TEST_CASE("every control of both mappings changes the edit copy, Set brings it into force") {
  for (const Mapping mapping : {Mapping::Bands, Mapping::Singles}) {
    CAPTURE(static_cast<int>(mapping));
    MusicFixture shell(SourceChoice::Kind::None);
    shell.show(mapping == Mapping::Bands ? MusicPage::Bands : MusicPage::Singles);
    operateAll(shell, mapping);
    CHECK(pending(mapping, 4));
    shell.pages().refresh();
    auto* set = shell.find<QPushButton>(actionName(mapping, "setSet:").c_str());
    REQUIRE(set->isEnabled());
    std::vector<double> edited;
    for (const SetupField& field : fieldsOf(mapping)) edited.push_back(field.access.edit(0, 4));
    set->click();
    REQUIRE(shell.settle());
    CHECK(inForce(mapping));
    std::size_t next = 0;
    for (const SetupField& field : fieldsOf(mapping)) {
      const double was = edited[next++];
      if (field.copy == SetupField::Copy::Committed && !movesByItself(field))
        CHECK(field.access.live(0, 4) == was);
    }
    shell.pages().refresh();
    CHECK_FALSE(set->isEnabled());
  }
}

TEST_CASE("every action of the system's two set-up windows has its control") {
  MusicFixture shell(SourceChoice::Kind::None);
  const auto look = [&](std::vector<MappingAction> actions, Mapping mapping) {
    for (const MappingAction& action : actions) {
      // One restart for both, on the page of the ports.
      if (action.selector == "sendsetMIDIRestart") continue;
      const std::string name = actionName(mapping, action.selector);
      CAPTURE(name);
      CHECK(shell.find<QWidget>(name.c_str()) != nullptr);
      CHECK(shell.bench.engine()->actions().entries().contains(name));
    }
  };
  look(shell.bench.engine()->midi().bands().actions(), Mapping::Bands);
  look(shell.bench.engine()->midi().singles().actions(), Mapping::Singles);
}

TEST_CASE("changes wait in sight, Cancel drops them, Default asks first") {
  MusicFixture shell(SourceChoice::Kind::None);
  shell.show(MusicPage::Bands);
  const auto pendingText = [&] {
    shell.pages().refresh();
    return shell.find<QLabel>("bandsPending")->text().toStdString();
  };
  CHECK(pendingText() == "Everything shown is in force.");
  auto* chooser = shell.find<QComboBox>("SetMIDIband selectSetup:");
  for (int i = 0; i < 3; ++i) QTest::keyClick(chooser, Qt::Key_Down);
  REQUIRE(shell.settle());
  REQUIRE(setmidiband::SetupBandNX == 3);
  shell.find<QPushButton>("setCHto9to16:")->click();
  REQUIRE(shell.settle());
  for (std::size_t band = 0; band < 8; ++band) {
    CHECK(setmidiband::MIDIchannelXZ[band][3] == static_cast<int>(band) + 8);
    CHECK(setmidiband::MIDIchannelX[band][3] == static_cast<int>(band));
  }
  CHECK(pendingText() == "Changed, not in force until Set: set-up 4");
  CHECK(shell.find<QComboBox>("selectMIDIchannel8:")->currentText() == "16");
  CHECK(shell.find<QWidget>("selectMIDIchannel8:")->property("pending").toBool());
  shell.find<QPushButton>("SetMIDIband setCancel:")->click();
  REQUIRE(shell.settle());
  CHECK(pendingText() == "Everything shown is in force.");
  CHECK(shell.find<QComboBox>("selectMIDIchannel8:")->currentText() == "8");
  shell.find<QPushButton>("setCHto1to8:")->click();
  CHECK(shell.find<QLabel>("mode")->text().contains("loudness"));
  shell.find<QPushButton>("setControl:")->click();
  REQUIRE(shell.settle());
  shell.pages().refresh();
  CHECK(shell.find<QLabel>("mode")->text().contains("controller"));
  CHECK_FALSE(shell.find<QPushButton>("SetMIDIband setNoteOffOn:")->isChecked());
  CHECK(shell.find<NoteBox>("setSetbandNote1:")->text() == "60");
  shell.find<QPushButton>("SetMIDIband setSet:")->click();
  for (const char* answer : {"Cancel", "Default"}) {
    shell.find<QPushButton>("SetMIDIband setSetToDefault:")->click();
    REQUIRE(shell.press("defaults", answer));
    REQUIRE(shell.settle());
    CHECK(setmidiband::ControlEX[3] == (*answer == 'C' ? 1 : 0));
  }
}

TEST_CASE("opening the band page lets the shown set-up alone play, and says so") {
  MusicFixture shell(SourceChoice::Kind::None);
  REQUIRE(setmidiband::setSoloBandX == 1);
  shell.show(MusicPage::Synthesizer);
  CHECK(setmidiband::setSoloBandX == 1);
  shell.show(MusicPage::Bands);
  REQUIRE(shell.settle());
  CHECK(setmidiband::setSoloBandX == 0);
  CHECK(setmidiband::MIDIbandAll == 1);
  shell.pages().refresh();
  CHECK(shell.find<QLabel>("narrowed")->isVisible());
  auto* all = shell.find<QComboBox>("setSoloBand:");
  QTest::keyClick(all, Qt::Key_Down);
  REQUIRE(shell.settle());
  CHECK(setmidiband::setSoloBandX == 1);
  shell.pages().refresh();
  CHECK_FALSE(shell.find<QLabel>("narrowed")->isVisible());
  // Once only: what the user has chosen stays.
  shell.pages().hide();
  shell.show(MusicPage::Bands);
  CHECK(setmidiband::setSoloBandX == 1);
}

TEST_CASE("ports carry the names of their destinations, and a set-up plays where it is sent") {
  MusicFixture shell(SourceChoice::Kind::None);
  shell.show(MusicPage::Bands);
  auto* port = shell.find<QComboBox>("SetMIDIband selectMIDIport:");
  REQUIRE(port->count() == midi::kPorts);
  CHECK(port->itemText(1) == "MIDI port 2 – B");
  CHECK(port->itemText(3) == "MIDI port 4 – OVKA Synthesizer");
  CHECK(port->itemText(23) == "MIDI port 24 – none");
  QTest::keyClick(port, Qt::Key_Down);
  REQUIRE(shell.settle());
  shell.find<QCheckBox>("SetMIDIband setMIDIoutON:")->click();
  REQUIRE(shell.settle());
  shell.pages().refresh();
  shell.find<QPushButton>("SetMIDIband setSet:")->click();
  REQUIRE(shell.waitFor([&] { return shell.music.transport.sounding().size() >= 7; }));
  for (const auto& message : shell.music.transport.sent()) CHECK(message.destination == 2);
  // Closing the pages ends nothing; another source keeps what plays and where.
  shell.pages().close();
  shell.music.transport.forget();
  REQUIRE(shell.waitFor([&] { return shell.music.transport.sent().size() >= 8; }));
  SourceChoice demo;
  demo.kind = SourceChoice::Kind::Demo;
  shell.bench.openSource(demo, {});
  REQUIRE(shell.settle());
  CHECK(setmidiband::MIDIoutONEX[0] == 1);
  CHECK(setmidiband::MIDIportEX[0] == 1);
  shell.music.transport.forget();
  REQUIRE(shell.waitFor([&] { return shell.music.transport.sent().size() >= 8; }));
  shell.window.panic();
  shell.music.transport.addDestination("D");
  shell.show(MusicPage::Ports);
  REQUIRE(shell.waitFor([&] { return shell.find<QListWidget>("ports")->count() == 5; }));
  shell.find<QComboBox>("forAll")->setCurrentIndex(2);
  shell.find<QPushButton>("useForAll")->click();
  REQUIRE(shell.settle());
  CHECK(setmidiband::MIDIportEX[127] == 2);
  CHECK(setmidi::MIDIportXZ[0] == 2);
}

TEST_CASE("a knob is learned, moves its value, and is let go") {
  MusicFixture shell(SourceChoice::Kind::None);
  shell.show(MusicPage::Ports);
  auto* table = shell.find<QTableWidget>("controllers");
  REQUIRE(table->rowCount() == 21);
  struct Row {
    int line;
    const char* text;
    SharedBlock<std::int32_t, midi::kSetups>& binding;
    SharedBlock<float, midi::kSetups>& moved;
    float highest;
  };
  const Row rows[] = {
      {0, "Gain", setmidiband::LearnGainX, setmidiband::gainNoteX, 10},
      {3, "Band 3, low edge", setmidiband::LearnLowFX[2], setmidiband::LowFX[2], 60},
      {16, "Band 8, high edge", setmidiband::LearnHighFX[7], setmidiband::HighFX[7], 60},
      {20, "V to", setmidi::LearnHighVX, setmidi::HighVX, 100},
  };
  std::uint8_t controller = 20;
  for (const Row& row : rows) {
    CAPTURE(row.text);
    REQUIRE(table->item(row.line, 1)->text() == row.text);
    table->selectRow(row.line);
    shell.pages().refresh();
    shell.find<QPushButton>("learn")->click();
    REQUIRE(shell.settle());
    shell.pages().refresh();
    CHECK(shell.find<QLabel>("waiting")->text().startsWith("Move a knob"));
    shell.music.transport.feedVirtualDestination(
        ovka::testing::packetList({{0xB0, controller, 127}}));
    REQUIRE(shell.waitFor([&] { return row.binding.get(0) == 1 + controller; }));
    REQUIRE(shell.waitFor([&] { return row.moved.get(0) == row.highest; }));
    shell.pages().refresh();
    CHECK(table->item(row.line, 2)->text() ==
          QStringLiteral("controller %1 of channel 1").arg(controller));
    table->selectRow(row.line);
    shell.find<QPushButton>("unbind")->click();
    REQUIRE(shell.settle());
    CHECK(row.binding.get(0) == 0);
    ++controller;
  }
  table->selectRow(0);
  shell.pages().refresh();
  shell.find<QPushButton>("learn")->click();
  REQUIRE(shell.settle());
  shell.pages().refresh();
  shell.find<QPushButton>("learn")->click();  // by now it says: stop waiting
  REQUIRE(shell.settle());
  CHECK(shell.bench.engine()->midi().learn().armed().empty());
}

TEST_CASE("notes are read by number and by name") {
  struct Row {
    const char* text;
    int note;
  };
  for (const Row& row : {Row{"60", 60}, Row{"60  C4", 60}, Row{"C4", 60}, Row{"c#4", 61},
                         Row{"Db4", 61}, Row{"A4", 69}, Row{"C-1", 0}, Row{"G9", 127},
                         Row{"128", -1}, Row{"G#9", -1}, Row{"H4", -1}, Row{"", -1}}) {
    CAPTURE(row.text);
    CHECK(noteOf(QLatin1String(row.text)) == row.note);
  }
  CHECK(noteName(61) == "C#4");
}
