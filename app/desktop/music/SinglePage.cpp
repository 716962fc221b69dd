#include "SinglePage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "Look.h"
#include "NoteBox.h"

namespace ovka::desktop {
namespace {

QLabel* strong(const QString& text) {
  auto* label = new QLabel(text);
  label->setFont(look::font(look::Type::Strong));
  return label;
}

QLabel* quiet(const QString& text) {
  auto* label = new QLabel(text);
  label->setProperty("quiet", true);
  return label;
}

struct Role {
  const char* text;
  const char* f;
  const char* v;
};
constexpr Role kRoles[] = {
    {"note", "setMIDInoteF:", "setMIDInoteV:"},
    {"loudness of the note", "setMIDIvelocityF:", "setMIDIvelocityV:"},
    {"channel", "setMIDIchannelF:", "setMIDIchannelV:"},
    {"program (instrument)", "setMIDIprogramchangeF:", "setMIDIprogramchangeV:"},
    {"pitch bend", "setMIDIpitchbendF:", "setMIDIpitchbendV:"},
    {"controller number", "setMIDIcontrolchangeVF:", "setMIDIcontrolchangeVV:"},
    {"controller value", "setMIDIcontrolchangeNF:", "setMIDIcontrolchangeNV:"},
};

/// Of one side: the four edges and what is now.
struct Edges {
  const char* sliders[4];
  const char* fields[4];
  const char* input;
  const char* inputField;
  const char* output;
};
constexpr Edges kF{
    {"changeLowFSlider:", "changeHighFSlider:", "changeLowFNSlider:", "changeHighFNSlider:"},
    {"sendTextLowFSliderField:", "sendTextHighFSliderField:", "sendTextLowFNSliderField:",
     "sendTextHighFNSliderField:"},
    "changeInputFSlider:",
    "sendTextInputFSliderField:",
    "changeOutputFSlider:"};
constexpr Edges kV{
    {"changeLowVSlider:", "changeHighVSlider:", "changeLowVNSlider:", "changeHighVNSlider:"},
    {"sendTextLowVSliderField:", "sendTextHighVSliderField:", "sendTextLowVNSliderField:",
     "sendTextHighVNSliderField:"},
    "changeInputVSlider:",
    "sendTextInputVSliderField:",
    "changeOutputVSlider:"};

}  // namespace

SinglePage::SinglePage(Workbench& bench) : SetupsPage(bench, Mapping::Singles) {
  auto* own = new QWidget;
  auto* column = new QVBoxLayout(own);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2 * look::kGrid);
  column->addWidget(makeInput());
  column->addWidget(makeMapping());
  auto* below = new QHBoxLayout;
  below->setSpacing(4 * look::kGrid);
  below->addWidget(makeRoles(), 0, Qt::AlignTop);
  below->addWidget(makeNotes(), 1);
  column->addLayout(below);
  assemble(QStringLiteral("Single value MIDI"),
           QStringLiteral("One frequency (F) and one level (V) become a note and its loudness, or "
                          "whatever roles they are given."),
           own);
}

QWidget* SinglePage::makeInput() {
  auto* part = new QWidget;
  auto* column = new QVBoxLayout(part);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(look::kGrid);
  auto* first = new QHBoxLayout;
  first->setSpacing(2 * look::kGrid);
  for (const char* selector : {"selectUsePeakMode:", "selectOVKAchannel:", "selectSendMIDItiming:"})
    first->addWidget(labelled(selector));
  first->addStretch(1);
  auto* second = new QHBoxLayout;
  second->setSpacing(2 * look::kGrid);
  second->addWidget(controls().make("setPlay3Peaks:"));
  second->addWidget(controls().make("setPeakPower:"));
  second->addWidget(controls().make("setONInput:"));
  second->addWidget(labelled("setBSchannel:"));
  second->addStretch(1);
  column->addLayout(first);
  column->addLayout(second);
  return part;
}

QWidget* SinglePage::makeMapping() {
  auto* part = new QWidget;
  auto* grid = new QGridLayout(part);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setHorizontalSpacing(look::kGrid);
  grid->setVerticalSpacing(look::kGrid / 2);
  int column = 1;
  for (const char* text : {"from", "to", "becomes, from", "to", "now", "has become"}) {
    grid->addWidget(quiet(QString::fromUtf8(text)), 0, column);
    column += 2;
  }
  addSide(*grid, true);
  addSide(*grid, false);
  for (const int wide : {1, 3, 5, 7, 9, 11}) grid->setColumnStretch(wide, 1);
  return part;
}

void SinglePage::addSide(QGridLayout& grid, bool frequency) {
  const Edges& edges = frequency ? kF : kV;
  const int line = frequency ? 1 : 2;
  auto* name = strong(frequency ? QStringLiteral("F") : QStringLiteral("V"));
  name->setToolTip(frequency ? QStringLiteral("The frequency, in Hz.")
                             : QStringLiteral("The level, in the units of its source."));
  grid.addWidget(name, line, 0);
  int column = 1;
  for (std::size_t i = 0; i < 4; ++i) {
    grid.addWidget(controls().make(edges.sliders[i]), line, column++);
    grid.addWidget(controls().make(edges.fields[i]), line, column++);
  }
  grid.addWidget(controls().make(edges.input), line, column++);
  grid.addWidget(controls().make(edges.inputField), line, column++);
  grid.addWidget(controls().make(edges.output), line, column++);
  auto* figure = new QLabel;
  figure->setMinimumWidth(76);
  (frequency ? outputF_ : outputV_) = figure;
  grid.addWidget(figure, line, column);
}

QWidget* SinglePage::makeRoles() {
  auto* part = new QWidget;
  auto* grid = new QGridLayout(part);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setHorizontalSpacing(3 * look::kGrid);
  grid->setVerticalSpacing(look::kGrid / 2);
  grid->addWidget(strong(QStringLiteral("What they are")), 0, 0);
  grid->addWidget(strong(QStringLiteral("F")), 0, 1, Qt::AlignHCenter);
  grid->addWidget(strong(QStringLiteral("V")), 0, 2, Qt::AlignHCenter);
  int line = 1;
  for (const Role& role : kRoles) {
    grid->addWidget(new QLabel(QString::fromUtf8(role.text)), line, 0);
    int column = 1;
    for (const char* selector : {role.f, role.v}) {
      auto* box = static_cast<QCheckBox*>(controls().make(selector));
      box->setText({});  // the table says it
      grid->addWidget(box, line, column++, Qt::AlignHCenter);
    }
    ++line;
  }
  return part;
}

QWidget* SinglePage::makeNotes() {
  auto* part = new QWidget;
  auto* column = new QVBoxLayout(part);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(look::kGrid);
  column->addWidget(strong(QStringLiteral("Notes and destination")));
  auto* styles = new QHBoxLayout;
  styles->setSpacing(look::kGrid / 2);
  styles->addWidget(controls().make("setNoteOffOn:"));
  styles->addWidget(controls().make("setNoteOnOff:"));
  styles->addStretch(1);
  column->addLayout(styles);
  column->addWidget(controls().make("setPlayOnlyNoteChanged:"));
  const auto line = [&](std::initializer_list<const char*> selectors) {
    auto* row = new QHBoxLayout;
    row->setSpacing(2 * look::kGrid);
    for (const char* selector : selectors) row->addWidget(labelled(selector));
    row->addStretch(1);
    column->addLayout(row);
  };
  line({"selectScale:", "selectScaleRoot:", "selectMIDIchannel:"});
  line({"selectMIDIport:"});
  column->addWidget(controls().make("setUseQTMIDI:"));
  auto* learn = new QPushButton(QStringLiteral("Knobs and faders …"));
  learn->setToolTip(QStringLiteral("Binds the input ranges to a MIDI controller."));
  learn->setAutoDefault(false);
  connect(learn, &QPushButton::clicked, this, &SetupsPage::controllersWanted);
  column->addWidget(learn, 0, Qt::AlignLeft);
  column->addStretch(1);
  return part;
}

void SinglePage::refresh() {
  SetupsPage::refresh();
  if (bench().engine() == nullptr) return;
  const auto show = [this](QLabel* label, std::string_view field, bool note) {
    const double value = controls().value(field);
    QString text = QString::number(value, 'f', 1);
    if (note && value >= 0 && value < 128)
      text += QStringLiteral("  ") + noteName(static_cast<int>(value));
    if (label->text() != text) label->setText(text);
  };
  show(outputF_, "OutputFX", controls().value("MIDInoteFX") != 0);
  show(outputV_, "OutputVX", controls().value("MIDInoteVX") != 0);
}

}  // namespace ovka::desktop
