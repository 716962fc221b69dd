#include "BandPage.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <cmath>

#include "Look.h"
#include "QuietLabel.h"
#include "SetMIDIbandVariables.h"

namespace ovka::desktop {
namespace {

QLabel* head(const QString& text) {
  auto* label = new QLabel(text);
  label->setProperty("quiet", true);
  return label;
}

}  // namespace

BandPage::BandPage(Workbench& bench) : SetupsPage(bench, Mapping::Bands) {
  auto* own = new QWidget;
  auto* column = new QVBoxLayout(own);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(look::kGrid);
  column->addWidget(makeSource());
  column->addWidget(makeMode());
  column->addSpacing(look::kGrid);
  column->addWidget(makeBands());
  assemble(QStringLiteral("MIDI bands"),
           QStringLiteral("Eight frequency bands of a channel become notes, pitches or "
                          "controllers."),
           own);
}

/// What the system does when this window comes up: every set-up played, now the shown one alone.
void BandPage::showEvent(QShowEvent* event) {
  SetupsPage::showEvent(event);
  Engine* engine = bench().engine();
  if (awake_ || engine == nullptr) return;
  awake_ = true;
  bench().desk().post([engine] { engine->midi().bands().awakeFromNib(setmidiband::SetupBandNX); },
                      [this] { refresh(); });
}

QWidget* BandPage::makeSource() {
  auto* part = new QWidget;
  auto* column = new QVBoxLayout(part);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(look::kGrid);
  all_ = new QComboBox;
  all_->setObjectName(QStringLiteral("setSoloBand:"));
  all_->setAccessibleName(QStringLiteral("What plays"));
  all_->setToolTip(QStringLiteral(
      "Whether every set-up that is on plays, or the shown one alone. Opening this page turns to "
      "the shown one."));
  all_->addItem(QStringLiteral("the shown set-up alone plays"));
  all_->addItem(QStringLiteral("every set-up that is on plays"));
  connect(all_, &QComboBox::activated, this,
          [this](int index) { controls().perform("setSoloBand:", index); });
  narrowed_ = quietLabel(QStringLiteral(
      "All set-ups played until this page was opened; now only the shown one does."));
  narrowed_->setObjectName(QStringLiteral("narrowed"));
  auto* first = new QHBoxLayout;
  first->setSpacing(look::kGrid);
  first->addWidget(all_);
  first->addWidget(narrowed_, 1);
  column->addLayout(first);
  auto* second = new QHBoxLayout;
  second->setSpacing(2 * look::kGrid);
  for (const char* selector : {"selectOVKAchannel:", "selectSendMIDItiming:", "selectMIDIport:"})
    second->addWidget(labelled(selector));
  second->addStretch(1);
  column->addLayout(second);
  auto* third = new QHBoxLayout;
  third->setSpacing(2 * look::kGrid);
  third->addWidget(labelled("setUsePeakMode:"));
  auto* power = new QHBoxLayout;
  power->setSpacing(look::kGrid / 2);
  power->addWidget(controls().make("setPeakPower:"));
  power->addWidget(controls().make("setAveragePower:"));
  third->addLayout(power);
  third->addWidget(controls().make("setONInput:"));
  third->addWidget(labelled("setBSchannel:"));
  third->addWidget(labelled("setTempo:"));
  third->addStretch(1);
  column->addLayout(third);
  return part;
}

QWidget* BandPage::makeMode() {
  auto* part = new QWidget;
  auto* row = new QHBoxLayout(part);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(look::kGrid / 2);
  for (const char* selector : {"setNoteOffOn:", "setNoteOnOff:", "setControl:"})
    row->addWidget(controls().make(selector));
  mode_ = quietLabel({});
  mode_->setObjectName(QStringLiteral("mode"));
  row->addSpacing(look::kGrid);
  row->addWidget(mode_, 1);
  QWidget* slider = controls().make("changeGainNoteSlider:");
  slider->setMinimumWidth(140);
  auto* label = new QLabel(QStringLiteral("Gain"));
  label->setBuddy(slider);
  gain_ = new QLabel;
  gain_->setMinimumWidth(56);
  row->addWidget(label);
  row->addWidget(slider);
  row->addWidget(gain_);
  return part;
}

QWidget* BandPage::makeBands() {
  auto* part = new QWidget;
  auto* grid = new QGridLayout(part);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setHorizontalSpacing(look::kGrid);
  grid->setVerticalSpacing(look::kGrid / 2);
  noteHead_ = head(QStringLiteral("Note"));
  grid->addWidget(head(QStringLiteral("Band")), 0, 0);
  grid->addWidget(head(QStringLiteral("Low edge (Hz)")), 0, 1, 1, 2);
  grid->addWidget(head(QStringLiteral("High edge (Hz)")), 0, 3, 1, 2);
  grid->addWidget(noteHead_, 0, 5);
  grid->addWidget(head(QStringLiteral("Channel")), 0, 6);
  grid->addWidget(head(QStringLiteral("Value now")), 0, 7);
  grid->addWidget(head(QStringLiteral("plays as")), 0, 8);
  for (int band = 0; band < 8; ++band) addBand(*grid, band);
  for (const int column : {1, 3, 7}) grid->setColumnStretch(column, 1);
  auto* channels = new QHBoxLayout;
  channels->setSpacing(look::kGrid / 2);
  channels->addWidget(button("setCHto1to8:", QStringLiteral("Channels 1 to 8"),
                             QStringLiteral("Bands 1 to 8 on MIDI channels 1 to 8.")));
  channels->addWidget(button("setCHto9to16:", QStringLiteral("Channels 9 to 16"),
                             QStringLiteral("Bands 1 to 8 on MIDI channels 9 to 16.")));
  channels->addSpacing(look::kGrid);
  QPushButton* keep = button("MIDIchannelCopy", QStringLiteral("Keep channels"),
                             QStringLiteral("Remembers the channels of all set-ups."));
  QPushButton* back = button("MIDIchannelBackCopy", QStringLiteral("Kept channels back"),
                             QStringLiteral("Brings the remembered channels into force."));
  back->setEnabled(false);  // none are remembered yet
  connect(keep, &QPushButton::clicked, back, [back] { back->setEnabled(true); });
  channels->addWidget(keep);
  channels->addWidget(back);
  auto* learn = new QPushButton(QStringLiteral("Knobs and faders …"));
  learn->setToolTip(QStringLiteral("Binds gain and band edges to a MIDI controller."));
  learn->setAutoDefault(false);
  connect(learn, &QPushButton::clicked, this, &SetupsPage::controllersWanted);
  channels->addStretch(1);
  channels->addWidget(learn);
  grid->addLayout(channels, 9, 0, 1, 9);
  return part;
}

void BandPage::addBand(QGridLayout& grid, int band) {
  const auto index = static_cast<std::size_t>(band);
  const int line = band + 1;
  auto* number = new QLabel(QString::number(line));
  number->setFont(look::font(look::Type::Strong));
  grid.addWidget(number, line, 0);
  int column = 1;
  for (const char* selector : {"changeLowFSlider%:", "sendTextLowFSliderField%:",
                               "changeHighFSlider%:", "sendTextHighFSliderField%:",
                               "setSetbandNote%:", "selectMIDIchannel%:", "changebandSlider%:"})
    grid.addWidget(controls().make(selector, index), line, column++);
  values_[index] = new QLabel;
  values_[index]->setMinimumWidth(104);
  values_[index]->setObjectName(QStringLiteral("bandValue%1").arg(line));
  grid.addWidget(values_[index], line, column);
}

QString BandPage::modeText() {
  if (controls().value("NoteOffOnEX") != 0)
    return QStringLiteral("Each band plays its note; its value is the loudness.");
  if (controls().value("NoteOnOffEX") != 0)
    return QStringLiteral("The value picks the pitch, its decimals the loudness.");
  if (controls().value("ControlEX") != 0)
    return QStringLiteral("Each band moves the controller of that number.");
  return QStringLiteral("No mode is chosen: nothing is sent.");
}

void BandPage::refresh() {
  SetupsPage::refresh();
  if (bench().engine() == nullptr) return;
  const bool all = setmidiband::setSoloBandX != 0;
  if (!bench().desk().busy()) {
    const QSignalBlocker quiet(all_);
    all_->setCurrentIndex(all ? 1 : 0);
  }
  narrowed_->setVisible(!all && setmidiband::MIDIbandAll != 0);
  if (mode_->text() != modeText()) mode_->setText(modeText());
  const double gain = controls().value("gainNoteX");
  gain_->setText(QStringLiteral("× %1").arg(gain, 0, 'g', 4));
  const bool controllers = controls().value("ControlEX") != 0;
  noteHead_->setText(controllers ? QStringLiteral("Controller") : QStringLiteral("Note"));
  for (std::size_t band = 0; band < values_.size(); ++band) {
    const double value = controls().value("bandOut%X", band);
    const double played = std::clamp(std::trunc(value * gain), 0.0, 127.0);
    values_[band]->setText(QStringLiteral("%1 → %2").arg(value, 0, 'f', 1).arg(played, 0, 'f', 0));
  }
}

}  // namespace ovka::desktop
