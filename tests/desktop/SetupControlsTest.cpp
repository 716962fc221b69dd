#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <doctest/doctest.h>

#include "BufferVariables.h"
#include "ControlBinding.h"
#include "ControlTable.h"
#include "DocumentVariables.h"
#include "PresetSwitches.h"
#include "SetupWindow.h"
#include "ShellFixture.h"

using namespace ovka;
using namespace ovka::desktop;
using ovka::testing::ShellFixture;

namespace {

QString name(const ControlRow& row) {
  return QString::fromUtf8(row.name.data(), static_cast<qsizetype>(row.name.size()));
}

/// Operates a control as a person would and checks the variable behind it.
void operate(ShellFixture& shell, const ControlRow& row, QWidget* control) {
  const ControlBinding binding = bindControl(shell.bench, row.setting);
  REQUIRE(binding);
  if (auto* box = qobject_cast<QComboBox*>(control)) {
    const QString before = binding.text();
    QTest::keyClick(box, box->currentIndex() + 1 < box->count() ? Qt::Key_Down : Qt::Key_Up);
    REQUIRE(shell.settle());
    CHECK(binding.text() != before);
    CHECK(binding.text() == box->currentData().toString());
  } else if (auto* check = qobject_cast<QCheckBox*>(control)) {
    const double before = binding.get();
    check->click();
    REQUIRE(shell.settle());
    CHECK(binding.get() == 1 - before);
  } else if (auto* number = qobject_cast<QDoubleSpinBox*>(control)) {
    const double wanted = std::min(binding.get() + row.step, binding.maximum) == binding.get()
                              ? binding.get() - row.step
                              : std::min(binding.get() + row.step, binding.maximum);
    number->setValue(wanted);
    REQUIRE(shell.settle());
    CHECK(binding.get() == doctest::Approx(wanted));
  } else {
    auto* button = qobject_cast<QPushButton*>(control);
    REQUIRE(button != nullptr);
    button->click();
    REQUIRE(shell.settle());
    CHECK(binding.get() == row.value);
    CHECK(button->isChecked());
  }
}

}  // namespace

TEST_CASE("every control of the table changes its variable, and follows it") {
  ShellFixture shell(SourceChoice::Kind::None);
  SetupWindow& setup = shell.window.setup();
  for (const ControlRow& row : controlRows()) {
    CAPTURE(row.name);
    auto* control = setup.findChild<QWidget*>(name(row));
    REQUIRE(control != nullptr);
    CHECK_FALSE(control->toolTip().isEmpty());
    CHECK_FALSE(control->accessibleName().isEmpty());
    if (row.kind != ControlKind::Button) operate(shell, row, control);
  }
  // What an action, a preset or another window sets shows too.
  shell.bench.assign("FFTpointX=0");
  shell.bench.assign("windSape=b");
  REQUIRE(shell.settle());
  setup.refresh();
  CHECK(setup.findChild<QComboBox*>("FFTpointX")->currentText() == "128");
  CHECK(setup.findChild<QComboBox*>("windSape")->currentText() == "Blackman");
}

TEST_CASE("every switch of both sets follows its box") {
  ShellFixture shell(SourceChoice::Kind::None);
  SetupWindow& setup = shell.window.setup();
  PresetSwitches& switches = shell.bench.engine()->documents()->panel().switches();
  for (const PresetSwitch& row : kPresetSwitches) {
    for (const SwitchSide side : {SwitchSide::Open, SwitchSide::Save}) {
      const std::string selector =
          "select" + std::string(side == SwitchSide::Open ? row.open : row.save);
      CAPTURE(selector);
      auto* box = setup.findChild<QCheckBox*>(QString::fromStdString(selector));
      REQUIRE(box != nullptr);
      setup.refresh();
      const bool before = switches.on(side, row.which);
      CHECK(box->isChecked() == before);
      box->click();
      REQUIRE(shell.settle());
      CHECK(switches.on(side, row.which) != before);
    }
  }
  setup.findChild<QPushButton*>("SevDevConfig2:")->click();
  REQUIRE(shell.settle());
  for (std::int32_t channel = 1; channel <= 4; ++channel) {
    CHECK(shell.bench.engine()->documents()->switches().save.channel(channel) == (channel <= 2));
    CHECK(shell.bench.engine()->documents()->switches().open.channel(channel) == (channel <= 2));
  }
}

TEST_CASE("actions ask with the system's own words and do nothing on CANCEL") {
  ShellFixture shell(SourceChoice::Kind::None);
  struct Row {
    const char* selector;
    const char* text;
  };
  for (const Row& row :
       {Row{"loadPreference:", "Are you sure to load a preference file for current setup ?"},
        Row{"savePreference:", "Are you sure to save a preference file as current setup ?"},
        Row{"setselectSaveAction:",
            "Are you sure to save brain data to back up file ? "
            "(/Users/Shared/OVKABackups/CHnDATA.ovka)  n=0..4 "},
        Row{"setselectOpenAction:",
            "Are you sure to load backup brain data file ? "
            "(/Users/Shared/OVKABackups/CHnDATA.ovka) n=0..4 "}}) {
    CAPTURE(row.selector);
    shell.window.setup().findChild<QPushButton*>(row.selector)->click();
    REQUIRE(shell.waitFor([&] { return shell.box("question") != nullptr; }));
    CHECK(shell.box("question")->text() == row.text);
    REQUIRE(shell.press("question", "CANCEL"));
    REQUIRE(shell.settle());
  }
  const std::string preset =
      shell.folders.resolve("~/Library/Preferences/com.lumetrabox.OVKA.prefs.plist");
  CHECK(ovka::testing::contentsOf(preset).empty());
  shell.window.setup().findChild<QPushButton*>("savePreference:")->click();
  REQUIRE(shell.press("question", "OK"));
  REQUIRE(shell.settle());
  CHECK(ovka::testing::contentsOf(preset).find("OVKA4data") != std::string::npos);
  shell.window.setup().findChild<QPushButton*>("setDataSwap:")->click();
  REQUIRE(shell.settle());
  CHECK(document::setDataSwapX == 1);
}
