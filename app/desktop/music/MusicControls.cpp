#include "MusicControls.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>
#include <algorithm>
#include <cmath>

#include "ControlTable.h"
#include "NoteBox.h"
#include "NumberBox.h"

namespace ovka::desktop {
namespace {

constexpr double kMost = 1e6;  // what a person types in
constexpr int kNumberWidth = 70;

QString toQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QStringList portTexts(Workbench& bench) {
  QStringList texts;
  Engine* engine = bench.engine();
  if (engine == nullptr) return texts;
  const auto names = engine->midi().notes().portNames();
  const std::int32_t there = engine->midi().on() ? engine->midi().notes().portCount() : 0;
  for (std::int32_t port = 0; port < midi::kPorts; ++port) {
    texts << QStringLiteral("MIDI port %1 – %2")
                 .arg(port + 1)
                 .arg(port < there ? QString::fromStdString(names[static_cast<std::size_t>(port)])
                                   : QStringLiteral("none"));
  }
  return texts;
}

MusicControls::MusicControls(Workbench& bench, Mapping mapping, QObject* parent)
    : QObject(parent), bench_(bench), mapping_(mapping) {}

QWidget* MusicControls::make(std::string_view selector, std::size_t band) {
  const MusicRow& row = musicRow(mapping_, selector);
  const Part part{&row, &fieldOf(mapping_, row.field), band};
  QWidget* control = nullptr;
  switch (row.kind) {
    case MusicKind::Switch:
      control = makeSwitch(part);
      break;
    case MusicKind::Choice:
      control = makeChoice(part);
      break;
    case MusicKind::Port:
      control = makePort(part);
      break;
    case MusicKind::Number:
      control = makeNumber(part);
      break;
    case MusicKind::Slider:
      control = makeSlider(part);
      break;
    case MusicKind::Note:
      control = makeNote(part);
      break;
    case MusicKind::Mode:
      control = makeMode(part);
      break;
  }
  control->setObjectName(QString::fromStdString(actionName(mapping_, selector, band)));
  control->setToolTip(toQt(row.tip));
  control->setAccessibleDescription(toQt(row.tip));
  const bool family = selector.find('%') != std::string_view::npos;
  control->setAccessibleName(family ? QStringLiteral("Band %1: ").arg(band + 1) + toQt(row.label)
                                    : toQt(row.label));
  if (!movesByItself(*part.field)) markPending(control, part);
  return control;
}

double MusicControls::edited(const Part& part) const {
  const auto setup = static_cast<std::size_t>(shownOf(mapping_).get() & 127);
  return part.field->copy == SetupField::Copy::AtOnce ? part.field->access.live(part.band, setup)
                                                      : part.field->access.edit(part.band, setup);
}

double MusicControls::value(std::string_view field, std::size_t band) const {
  return edited({nullptr, &fieldOf(mapping_, field), band});
}

void MusicControls::perform(std::string_view selector, double value, std::size_t band) {
  bench_.perform(actionName(mapping_, selector, band), value);
}

void MusicControls::refresh() {
  for (const auto& each : moving_) each();
  // What waits to be set would jump back for a moment.
  if (bench_.desk().busy()) return;
  for (const auto& each : settings_) each();
}

/// What is not in force yet has a colour of its own.
void MusicControls::markPending(QWidget* control, const Part& part) {
  settings_.emplace_back([this, control, part] {
    const auto setup = static_cast<std::size_t>(shownOf(mapping_).get() & 127);
    const bool waits = part.field->copy == SetupField::Copy::Committed &&
                       part.field->access.live(part.band, setup) != edited(part);
    if (control->property("pending").toBool() == waits) return;
    control->setProperty("pending", waits);
    control->style()->unpolish(control);
    control->style()->polish(control);
  });
}

QWidget* MusicControls::makeSwitch(const Part& part) {
  auto* box = new QCheckBox(toQt(part.row->label));
  connect(box, &QCheckBox::clicked, this,
          [this, part](bool on) { perform(part.row->selector, on ? 1 : 0, part.band); });
  settings_.emplace_back([this, box, part] { box->setChecked(edited(part) != 0); });
  return box;
}

void MusicControls::follow(QComboBox* box, const Part& part) {
  connect(box, &QComboBox::activated, this,
          [this, part](int index) { perform(part.row->selector, index, part.band); });
  settings_.emplace_back([this, box, part] {
    const int index = static_cast<int>(edited(part));
    if (box->currentIndex() == index || box->view()->isVisible()) return;
    const QSignalBlocker quiet(box);
    box->setCurrentIndex(index);
  });
}

QWidget* MusicControls::makeChoice(const Part& part) {
  auto* box = new QComboBox;
  for (const std::string& label : split(part.row->labels))
    box->addItem(QString::fromStdString(label));
  follow(box, part);
  return box;
}

QWidget* MusicControls::makePort(const Part& part) {
  auto* box = new QComboBox;
  box->setMinimumWidth(240);
  box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  settings_.emplace_back([this, box] {
    const QStringList texts = portTexts(bench_);
    if (box->view()->isVisible()) return;
    const QSignalBlocker quiet(box);
    while (box->count() < texts.size()) box->addItem(QString());
    for (int i = 0; i < texts.size(); ++i) {
      if (box->itemText(i) != texts[i]) box->setItemText(i, texts[i]);
    }
  });
  follow(box, part);
  return box;
}

QWidget* MusicControls::makeNumber(const Part& part) {
  auto* box = new NumberBox;
  box->setMinimumWidth(kNumberWidth);
  box->setMaximumWidth(kNumberWidth);
  box->setButtonSymbols(QAbstractSpinBox::NoButtons);
  box->setKeyboardTracking(false);
  box->setDecimals(part.field->access.real ? 3 : 0);
  box->setRange(std::max(part.field->minimum, -kMost), std::min(part.field->maximum, kMost));
  box->setSingleStep(part.row->step);
  connect(box, &QDoubleSpinBox::valueChanged, this,
          [this, part](double value) { perform(part.row->selector, value, part.band); });
  auto& to = movesByItself(*part.field) ? moving_ : settings_;
  to.emplace_back([this, box, part] {
    const double value = std::round(edited(part) * 1000) / 1000;
    if (box->hasFocus() || box->value() == value) return;
    const QSignalBlocker quiet(box);
    box->setValue(value);
  });
  return box;
}

QWidget* MusicControls::makeSlider(const Part& part) {
  auto* slider = new QSlider(Qt::Horizontal);
  const MusicRow& row = *part.row;
  const auto notch = [&row](double value) {
    return static_cast<int>(
        std::lround((std::clamp(value, row.lowest, row.highest) - row.lowest) / row.step));
  };
  slider->setRange(0, notch(row.highest));
  slider->setPageStep(std::max(1, notch(row.highest) / 10));
  slider->setMinimumWidth(48);
  connect(slider, &QSlider::valueChanged, this, [this, part](int value) {
    perform(part.row->selector, part.row->lowest + value * part.row->step, part.band);
  });
  auto& to = movesByItself(*part.field) ? moving_ : settings_;
  to.emplace_back([this, slider, part, notch] {
    const int value = notch(edited(part));
    if (slider->isSliderDown() || slider->value() == value) return;
    const QSignalBlocker quiet(slider);
    slider->setValue(value);
  });
  return slider;
}

QWidget* MusicControls::makeNote(const Part& part) {
  auto* box = new NoteBox;
  box->setFixedWidth(88);
  connect(box, &QSpinBox::valueChanged, this,
          [this, part](int value) { perform(part.row->selector, value, part.band); });
  settings_.emplace_back([this, box, part] {
    if (box->hasFocus()) return;
    box->showControllers(value("ControlEX") != 0 && value("NoteOffOnEX") == 0 &&
                         value("NoteOnOffEX") == 0);
    const QSignalBlocker quiet(box);
    box->setValue(static_cast<int>(edited(part)));
  });
  return box;
}

QWidget* MusicControls::makeMode(const Part& part) {
  auto* button = new QPushButton(toQt(part.row->label));
  button->setCheckable(true);
  button->setAutoDefault(false);  // Return in a field belongs to the field
  connect(button, &QPushButton::clicked, this,
          [this, part](bool on) { perform(part.row->selector, on ? 1 : 0, part.band); });
  settings_.emplace_back([this, button, part] { button->setChecked(edited(part) != 0); });
  return button;
}

}  // namespace ovka::desktop
