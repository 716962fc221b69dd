#include "SynthPage.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

#include "Instruments.h"
#include "Look.h"
#include "MusicControls.h"
#include "MusicMemory.h"
#include "NumberBox.h"
#include "QuietLabel.h"

namespace ovka::desktop {
namespace {

constexpr int kGainSteps = 100;  // a slider's notch is a hundredth
constexpr double kMostGain = 2;
constexpr int kLabelWidth = 150;

template <typename Widget>
Widget* named(Widget* widget, const char* name, const QString& text, const QString& tip) {
  widget->setObjectName(QLatin1String(name));
  widget->setAccessibleName(text);
  widget->setAccessibleDescription(tip);
  widget->setToolTip(tip);
  return widget;
}

void addRow(QFormLayout& form, const QString& text, QWidget* control, QWidget* buddy = nullptr) {
  auto* label = new QLabel(text);
  label->setBuddy(buddy != nullptr ? buddy : control);
  label->setMinimumSize(kLabelWidth, control->sizeHint().height());
  form.addRow(label, control);
}

QWidget* beside(std::initializer_list<QWidget*> widgets) {
  auto* part = new QWidget;
  auto* row = new QHBoxLayout(part);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(look::kGrid);
  for (QWidget* widget : widgets) row->addWidget(widget);
  row->addStretch(1);
  return part;
}

QLabel* heading(const QString& text) {
  auto* label = new QLabel(text);
  label->setFont(look::font(look::Type::Strong));
  label->setContentsMargins(0, look::kGrid, 0, 0);
  return label;
}

}  // namespace

SynthPage::SynthPage(Workbench& bench, MusicFace& music)
    : bench_(bench),
      music_(music),
      on_(new QCheckBox(QStringLiteral("On"))),
      state_(quietLabel()),
      scale_(new QPushButton(QStringLiteral("Play a scale"))),
      scaleTo_(new QComboBox),
      gain_(new QSlider(Qt::Horizontal)),
      gainText_(new QLabel),
      ceiling_(new NumberBox),
      font_(new QLineEdit),
      driver_(new QComboBox),
      backEnd_(new QComboBox),
      channel_(new QComboBox),
      program_(new QComboBox) {
  programs_.fill(-1);
  setObjectName(QStringLiteral("page"));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(24, 20, 24, 24);
  column->setSpacing(look::kGrid);
  auto* title = new QLabel(QStringLiteral("Synthesizer"));
  title->setFont(look::font(look::Type::Title));
  column->addWidget(title);
  column->addWidget(
      quietLabel(QStringLiteral("Plays the music on this machine's sound output; it is the "
                                "destination \"OVKA Synthesizer\".")));
  column->addSpacing(look::kGrid);
  const auto section = [column](const QString& text) {
    if (!text.isEmpty()) column->addWidget(heading(text));
    auto* form = new QFormLayout;
    form->setHorizontalSpacing(3 * look::kGrid);
    form->setVerticalSpacing(look::kGrid);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    column->addLayout(form);
    return form;
  };
  addState(*section({}));
  addSound(*section(QStringLiteral("Sound")));
  addInstruments(*section(QStringLiteral("Instruments")));
  column->addStretch(1);
  connect(&music_, &MusicFace::scaleChanged, this, [this] {
    scale_->setText(music_.playsScale() ? QStringLiteral("End the scale")
                                        : QStringLiteral("Play a scale"));
  });
}

void SynthPage::addState(QFormLayout& form) {
  named(on_, "synthOn", QStringLiteral("Synthesizer on"),
        QStringLiteral("Off, the synthesizer gives its sound output free."));
  connect(on_, &QCheckBox::clicked, this, [this](bool on) {
    Engine* engine = bench_.engine();
    if (engine == nullptr) return;
    bench_.desk().post([engine, on] { engine->midi().notes().setUseQtMidi(0, on ? 1 : 0); });
  });
  addRow(form, QStringLiteral("Synthesizer"), on_);
  state_->setObjectName(QStringLiteral("synthState"));
  state_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  form.addRow(state_);  // over both columns, else a long text is cut
  named(scale_, "playScale", QStringLiteral("Play a scale"),
        QStringLiteral("A major scale up and down, to hear whether sound comes out."));
  scale_->setMinimumWidth(130);
  scale_->setAutoDefault(false);
  connect(scale_, &QPushButton::clicked, this,
          [this] { music_.playScale(scaleTo_->currentIndex()); });
  named(scaleTo_, "scaleTo", QStringLiteral("Destination of the scale"),
        QStringLiteral("Where the scale is played."));
  scaleTo_->setMinimumWidth(280);
  addRow(form, QStringLiteral("Try it"), beside({scale_, scaleTo_}), scale_);
}

void SynthPage::addSound(QFormLayout& form) {
  named(
      gain_, "gain", QStringLiteral("Volume"),
      QStringLiteral("How loud the synthesizer is; what becomes too loud is held by the limiter."));
  gain_->setRange(0, static_cast<int>(kMostGain * kGainSteps));
  gain_->setMinimumWidth(280);
  gainText_->setMinimumWidth(56);
  connect(gain_, &QSlider::valueChanged, this, &SynthPage::changeSound);
  addRow(form, QStringLiteral("Volume"), beside({gain_, gainText_}), gain_);
  named(ceiling_, "ceiling", QStringLiteral("Limiter"),
        QStringLiteral("The limiter lets nothing get louder than this, in dB below full scale. It "
                       "counts from the next start of the synthesizer."));
  ceiling_->setRange(-24, 0);
  ceiling_->setSuffix(QStringLiteral(" dB"));
  ceiling_->setKeyboardTracking(false);
  ceiling_->setButtonSymbols(QAbstractSpinBox::NoButtons);
  connect(ceiling_, &QDoubleSpinBox::valueChanged, this, &SynthPage::changeSound);
  addRow(form, QStringLiteral("Limiter"), ceiling_);
  named(font_, "soundFont", QStringLiteral("Sound font"),
        QStringLiteral("The file with the sounds (.sf2, .sf3, .dls); empty: the first that this "
                       "machine has."));
  font_->setMinimumWidth(280);
  font_->setPlaceholderText(QStringLiteral("the first that this machine has"));
  auto* choose = new QPushButton(QStringLiteral("Choose …"));
  choose->setAutoDefault(false);
  connect(choose, &QPushButton::clicked, this, &SynthPage::chooseFont);
  connect(font_, &QLineEdit::editingFinished, this, [this] {
    if (font_->isModified()) changeSound();
    font_->setModified(false);
  });
  addRow(form, QStringLiteral("Sound font"), beside({font_, choose}), font_);
  named(driver_, "driver", QStringLiteral("Sound output"),
        QStringLiteral("PipeWire is reached through PulseAudio; JACK only when its server runs."));
  driver_->addItem(QStringLiteral("the first that works"), QString());
  driver_->addItem(QStringLiteral("PulseAudio or PipeWire"), QStringLiteral("pulseaudio"));
  driver_->addItem(QStringLiteral("JACK"), QStringLiteral("jack"));
  driver_->addItem(QStringLiteral("ALSA"), QStringLiteral("alsa"));
  connect(driver_, &QComboBox::activated, this, &SynthPage::changeSound);
  addRow(form, QStringLiteral("Sound output"), driver_);
}

void SynthPage::addInstruments(QFormLayout& form) {
  named(backEnd_, "AUuse", QStringLiteral("Voices"),
        QStringLiteral("All channels sound from the start, or each opens with its first note."));
  backEnd_->addItem(QStringLiteral("a voice a channel"));
  backEnd_->addItem(QStringLiteral("all channels at once"));
  connect(backEnd_, &QComboBox::activated, this,
          [this](int index) { bench_.assign(QStringLiteral("AUuse=%1").arg(index)); });
  addRow(form, QStringLiteral("Voices"), backEnd_);
  named(channel_, "programChannel", QStringLiteral("Channel"),
        QStringLiteral("The MIDI channel whose instrument is chosen; channel 10 is percussion."));
  for (int channel = 1; channel <= midi::kChannels; ++channel)
    channel_->addItem(QStringLiteral("channel %1").arg(channel));
  named(program_, "program", QStringLiteral("Instrument"),
        QStringLiteral("What the channel sounds like, until a set-up chooses another program. The "
                       "one of channel 1 is kept."));
  for (std::size_t i = 0; i < kInstruments.size(); ++i)
    program_->addItem(QStringLiteral("%1  %2").arg(i + 1).arg(QLatin1String(kInstruments[i])));
  program_->setPlaceholderText(QStringLiteral("not chosen here"));
  program_->setMinimumWidth(260);
  connect(channel_, &QComboBox::activated, this, [this] { refresh(); });
  connect(program_, &QComboBox::activated, this, &SynthPage::chooseProgram);
  addRow(form, QStringLiteral("Instrument of"), beside({channel_, program_}), channel_);
}

std::int32_t SynthPage::synthesizerPort() const {
  const MidiEngine& notes = bench_.engine()->midi().notes();
  const std::int32_t port = notes.convertPortNameToInt(MidiEngine::kSynthesizerName);
  return port >= 0 && port < notes.portCount() ? port : -1;
}

void SynthPage::chooseProgram(int program) {
  Engine* engine = bench_.engine();
  if (engine == nullptr) return;
  const int channel = channel_->currentIndex();
  programs_[static_cast<std::size_t>(channel)] = program;
  if (channel == 0) bench_.assign(QStringLiteral("mProgram0=%1").arg(program));
  const std::int32_t port = synthesizerPort();
  if (port < 0) return;
  bench_.desk().post([engine, program, channel, port] {
    engine->midi().notes().MidiCprogram(program, 0, channel, port, 0);
  });
}

void SynthPage::chooseFont() {
  auto* dialog = new QFileDialog(this, QStringLiteral("Sound font"), font_->text(),
                                 QStringLiteral("Sound fonts (*.sf2 *.sf3 *.dls);;All files (*)"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
    font_->setText(path);
    changeSound();
  });
  dialog->open();
}

/// The volume counts at once; another font or output takes the synthesizer down and up.
void SynthPage::changeSound() {
  if (bench_.music() == nullptr) return;
  const SynthesizerSettings before = bench_.music()->sound();
  SynthesizerSettings sound = before;
  sound.gain = static_cast<double>(gain_->value()) / kGainSteps;
  sound.ceiling = ceiling_->value();
  sound.soundFont = font_->text().trimmed().toStdString();
  sound.driver = driver_->currentData().toString().toStdString();
  bench_.music()->setSound(sound);
  storeSound(sound);
  gainText_->setText(QStringLiteral("%1 %").arg(gain_->value()));
  Engine* engine = bench_.engine();
  if (engine != nullptr && (sound.soundFont != before.soundFont || sound.driver != before.driver))
    bench_.desk().post([engine] { engine->midi().notes().restartSynthesizer(); });
}

QString SynthPage::stateText() const {
  if (bench_.music() == nullptr) return music_.missing();
  for (const MusicFinding& each : bench_.music()->findings()) {
    if (each.subject == "synthesizer")
      return (each.there ? QStringLiteral("Plays: %1") : QStringLiteral("Silent: %1"))
          .arg(QString::fromStdString(each.text));
  }
  return music_.able() ? QStringLiteral("Off.") : music_.state();
}

void SynthPage::refresh() {
  Engine* engine = bench_.engine();
  setEnabled(engine != nullptr && bench_.music() != nullptr);
  const QString text = stateText();
  if (state_->text() != text) state_->setText(text);
  if (engine == nullptr || bench_.music() == nullptr || bench_.desk().busy()) return;
  const MidiMachine* machine = bench_.music()->machine();
  on_->setChecked(machine->synthesizer != nullptr && machine->synthesizer->started());
  // Voices that open one by one have no switch for the whole.
  on_->setEnabled(machine->synthesizer != nullptr && music_.able() && midi::AUuse != 0);
  scale_->setEnabled(music_.able() && midi::MIDIuseX != 0);
  const SynthesizerSettings sound = bench_.music()->sound();
  const QSignalBlocker quietGain(gain_);
  const QSignalBlocker quietCeiling(ceiling_);
  if (!gain_->isSliderDown()) gain_->setValue(qRound(sound.gain * kGainSteps));
  gainText_->setText(QStringLiteral("%1 %").arg(gain_->value()));
  if (!ceiling_->hasFocus()) ceiling_->setValue(sound.ceiling);
  if (!font_->hasFocus()) font_->setText(QString::fromStdString(sound.soundFont));
  if (!driver_->view()->isVisible())
    driver_->setCurrentIndex(driver_->findData(QString::fromStdString(sound.driver)));
  if (!backEnd_->view()->isVisible()) backEnd_->setCurrentIndex(midi::AUuse != 0 ? 1 : 0);
  if (!program_->view()->isVisible()) {
    const int channel = channel_->currentIndex();
    program_->setCurrentIndex(channel == 0 ? midi::mProgram0.get()
                                           : programs_[static_cast<std::size_t>(channel)]);
  }
  const QStringList ports = portTexts(bench_).mid(0, std::max(midi::findPortCountE.get(), 0));
  if (scaleTo_->count() == ports.size() && !ports.isEmpty() && scaleTo_->itemText(0) == ports[0] &&
      scaleTo_->itemText(scaleTo_->count() - 1) == ports.back())
    return;
  scaleTo_->clear();
  scaleTo_->addItems(ports);
  scaleTo_->setCurrentIndex(std::max(synthesizerPort(), 0));
}

}  // namespace ovka::desktop
