#include "PortsPage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QVBoxLayout>

#include "ControlBinding.h"
#include "Look.h"
#include "MusicControls.h"
#include "QuietLabel.h"
#include "ShippedPreset.h"

namespace ovka::desktop {
namespace {

struct LearnRow {
  Mapping mapping;
  std::string_view binding;
  const char* selector;
  const char* text;  ///< %1 stands for the band
};
constexpr LearnRow kLearnRows[] = {
    {Mapping::Bands, "LearnGainX", "learnGainNote:", "Gain"},
    {Mapping::Bands, "LearnLowF%X", "learnLowF:", "Band %1, low edge"},
    {Mapping::Bands, "LearnHighF%X", "learnHighF:", "Band %1, high edge"},
    {Mapping::Singles, "LearnLowFX", "learnInputLowF:", "F from"},
    {Mapping::Singles, "LearnHighFX", "learnInputHighF:", "F to"},
    {Mapping::Singles, "LearnLowVX", "learnInputLowV:", "V from"},
    {Mapping::Singles, "LearnHighVX", "learnInputHighV:", "V to"},
};

struct SwitchRow {
  const char* name;
  const char* text;
  const char* tip;
};
constexpr SwitchRow kSwitches[] = {
    {"MIDIuseX", "Send MIDI", "Off, nothing at all is sent; sounding notes end."},
    {"coreMidi", "To MIDI systems, too", "Off, only the synthesizer plays."},
    {"TimeStampON", "Time stamps", "Messages carry the time at which they were made."},
};

QLabel* heading(const QString& text) {
  auto* label = new QLabel(text);
  label->setFont(look::font(look::Type::Strong));
  label->setContentsMargins(0, look::kGrid, 0, 0);
  return label;
}

QPushButton* makeButton(const char* name, const QString& text, const QString& tip) {
  auto* button = new QPushButton(text);
  button->setObjectName(QLatin1String(name));
  button->setToolTip(tip);
  button->setAccessibleDescription(tip);
  button->setAutoDefault(false);
  return button;
}

QHBoxLayout* line(std::initializer_list<QWidget*> widgets) {
  auto* row = new QHBoxLayout;
  row->setSpacing(look::kGrid);
  for (QWidget* widget : widgets) row->addWidget(widget);
  row->addStretch(1);
  return row;
}

}  // namespace

QString controllerText(std::int32_t binding) {
  if (binding <= 0) return QStringLiteral("–");
  return QStringLiteral("controller %1 of channel %2")
      .arg((binding - 1) % 128)
      .arg((binding - 1) / 128 + 1);
}

PortsPage::PortsPage(Workbench& bench, MusicFace& music) : bench_(bench), music_(music) {
  setObjectName(QStringLiteral("page"));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(24, 20, 24, 24);
  column->setSpacing(look::kGrid);
  auto* title = new QLabel(QStringLiteral("Ports and controllers"));
  title->setFont(look::font(look::Type::Title));
  column->addWidget(title);
  column->addWidget(quietLabel(QStringLiteral(
      "Where messages go, and which knobs and faders of a MIDI controller move what.")));
  addSystems(*column);
  addPorts(*column);
  addSwitches(*column);
  addControllers(*column);
}

void PortsPage::addSystems(QVBoxLayout& column) {
  column.addWidget(heading(QStringLiteral("MIDI systems")));
  systems_ = new QLabel;
  systems_->setObjectName(QStringLiteral("systems"));
  systems_->setWordWrap(true);
  systems_->setTextFormat(Qt::RichText);
  systems_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  column.addWidget(systems_);
}

void PortsPage::addPorts(QVBoxLayout& column) {
  column.addWidget(heading(QStringLiteral("Destinations")));
  ports_ = new QListWidget;
  ports_->setObjectName(QStringLiteral("ports"));
  ports_->setAccessibleName(QStringLiteral("Destinations"));
  ports_->setMaximumHeight(104);
  column.addWidget(ports_);
  QPushButton* restart = makeButton("SetMIDIband sendsetMIDIRestart", QStringLiteral("Look again"),
                                    QStringLiteral("Takes the MIDI systems down and up; set-ups "
                                                   "keep their destinations."));
  connect(restart, &QPushButton::clicked, this,
          [this] { bench_.perform("SetMIDIband sendsetMIDIRestart"); });
  forAll_ = new QComboBox;
  forAll_->setObjectName(QStringLiteral("forAll"));
  forAll_->setAccessibleName(QStringLiteral("Destination of all set-ups"));
  forAll_->setMinimumWidth(260);
  QPushButton* use = makeButton("useForAll", QStringLiteral("Use for all set-ups"),
                                QStringLiteral("Every set-up of both pages plays there from now."));
  connect(use, &QPushButton::clicked, this, &PortsPage::useForAll);
  column.addLayout(line({restart, forAll_, use}));
}

void PortsPage::addSwitches(QVBoxLayout& column) {
  auto* row = new QHBoxLayout;
  row->setSpacing(3 * look::kGrid);
  for (const SwitchRow& each : kSwitches) {
    auto* box = new QCheckBox(QString::fromUtf8(each.text));
    box->setObjectName(QLatin1String(each.name));
    box->setToolTip(QString::fromUtf8(each.tip));
    box->setAccessibleDescription(box->toolTip());
    connect(box, &QCheckBox::clicked, this, [this, &each](bool on) {
      bench_.assign(QStringLiteral("%1=%2").arg(QLatin1String(each.name)).arg(on ? 1 : 0));
    });
    refreshes_.emplace_back([this, box, &each] {
      if (const ControlBinding binding = bindControl(bench_, each.name))
        box->setChecked(binding.get() != 0);
    });
    row->addWidget(box);
  }
  row->addStretch(1);
  column.addLayout(row);
}

void PortsPage::addControllers(QVBoxLayout& column) {
  column.addWidget(heading(QStringLiteral("Knobs and faders")));
  auto* channel = new QComboBox;
  channel->setObjectName(QStringLiteral("gChannel"));
  channel->setAccessibleName(QStringLiteral("Incoming channel"));
  channel->setToolTip(QStringLiteral("Whatever comes in is taken as if it came on this channel."));
  for (int i = 1; i <= midi::kChannels; ++i) channel->addItem(QString::number(i));
  connect(channel, &QComboBox::activated, this,
          [this](int index) { bench_.assign(QStringLiteral("gChannel=%1").arg(index)); });
  auto* input = new QComboBox;
  input->setObjectName(QStringLiteral("inputPortX"));
  input->setAccessibleName(QStringLiteral("Needs a destination at"));
  input->setToolTip(QStringLiteral(
      "Messages of connected devices are taken while there is a destination at this port."));
  for (int i = 1; i <= midi::kPorts; ++i) input->addItem(QStringLiteral("MIDI port %1").arg(i));
  connect(input, &QComboBox::activated, this, [this](int index) {
    bench_.assign(QStringLiteral("inputPortX[%1]=%2").arg(midi::Channel.get()).arg(index));
  });
  refreshes_.emplace_back([channel, input] {
    channel->setCurrentIndex(midi::gChannel);
    input->setCurrentIndex(
        midi::inputPortX.get(static_cast<std::size_t>(midi::Channel.get() & 15)));
  });
  column.addLayout(line({new QLabel(QStringLiteral("Incoming messages count as channel")), channel,
                         new QLabel(QStringLiteral("and need a destination at")), input}));
  table_ = new QTableWidget(0, 3);
  table_->setObjectName(QStringLiteral("controllers"));
  table_->setAccessibleName(QStringLiteral("Knobs and faders"));
  table_->setHorizontalHeaderLabels(
      {QStringLiteral("Set-up"), QStringLiteral("Moves"), QStringLiteral("Moved by")});
  table_->verticalHeader()->hide();
  table_->horizontalHeader()->setStretchLastSection(true);
  table_->setColumnWidth(0, 150);
  table_->setColumnWidth(1, 200);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setMinimumHeight(180);
  column.addWidget(table_, 1);
  learn_ = makeButton("learn", QStringLiteral("Learn"),
                      QStringLiteral("The next knob or fader that is moved is bound to the chosen "
                                     "line."));
  unbind_ = makeButton("unbind", QStringLiteral("Unbind"),
                       QStringLiteral("No controller moves the chosen line any more."));
  waiting_ = quietLabel();
  waiting_->setObjectName(QStringLiteral("waiting"));
  waiting_->setMinimumWidth(320);
  connect(learn_, &QPushButton::clicked, this, &PortsPage::learn);
  connect(unbind_, &QPushButton::clicked, this, &PortsPage::unbind);
  column.addLayout(line({learn_, unbind_, waiting_}));
}

/// All of the shown set-ups, then whatever is bound in others.
std::vector<PortsPage::Target> PortsPage::targets() const {
  std::vector<Target> result;
  for (const bool others : {false, true}) {
    for (const LearnRow& each : kLearnRows) {
      const SetupField& field = fieldOf(each.mapping, each.binding);
      const auto shown = static_cast<std::size_t>(shownOf(each.mapping).get());
      for (std::size_t i = 0; i < field.access.rows * midi::kSetups; ++i) {
        const std::size_t setup = i % midi::kSetups;
        const std::size_t row = i / midi::kSetups;
        if (others == (setup == shown) || (others && field.access.live(row, setup) == 0)) continue;
        QString text = QString::fromUtf8(each.text);
        const bool family = text.contains(QLatin1String("%1"));
        if (family) text = text.arg(row + 1);
        result.push_back({each.mapping, &field, row, setup, each.selector,
                          family ? static_cast<int>(row + 1) : 0, text});
      }
    }
  }
  return result;
}

void PortsPage::learn() {
  Engine* engine = bench_.engine();
  if (engine == nullptr) return;
  if (!engine->midi().learn().armed().empty()) {
    bench_.perform("learnCancel:");
    return;
  }
  const int line = table_->currentRow();
  if (line < 0 || line >= static_cast<int>(shown_.size())) return;
  const Target& target = shown_[static_cast<std::size_t>(line)];
  // The action learns for the shown set-up.
  if (static_cast<std::size_t>(shownOf(target.mapping).get()) != target.setup)
    bench_.perform(actionName(target.mapping, "selectSetup:"), static_cast<double>(target.setup));
  bench_.perform(target.selector, target.sender);
}

void PortsPage::unbind() {
  const int line = table_->currentRow();
  if (line < 0 || line >= static_cast<int>(shown_.size())) return;
  const Target& target = shown_[static_cast<std::size_t>(line)];
  bench_.assign(QStringLiteral("%1[%2]=0")
                    .arg(QString::fromStdString(target.binding->nameOf(target.row)))
                    .arg(target.setup));
}

void PortsPage::useForAll() {
  const std::int32_t port = forAll_->currentIndex();
  if (bench_.engine() == nullptr || port < 0) return;
  bench_.desk().post([port] { useDestination(port); });
}

void PortsPage::refresh() {
  QString text;
  if (bench_.music() == nullptr) {
    text = music_.missing();
  } else {
    const look::Colors colors = look::colors(look::theme());
    for (const MusicFinding& each : bench_.music()->findings()) {
      text += QStringLiteral(
                  "<div style='margin-bottom:3px'><span style='color:%1'>●</span> "
                  "<b>%2</b>: %3")
                  .arg((each.there ? colors.good : colors.warn).name(),
                       QString::fromStdString(each.subject).toHtmlEscaped(),
                       QString::fromStdString(each.text).toHtmlEscaped());
      if (!each.mend.empty())
        text += QStringLiteral("<br>&nbsp;&nbsp;&nbsp;&nbsp;to mend it: <code>%1</code>, then %2")
                    .arg(QString::fromStdString(each.mend).toHtmlEscaped(),
                         each.again ? QStringLiteral("<i>Look again</i>")
                                    : QStringLiteral("start this program again"));
      text += QStringLiteral("</div>");
    }
  }
  if (systems_->text() != text) systems_->setText(text);
  setEnabled(bench_.engine() != nullptr);
  if (bench_.engine() == nullptr || bench_.desk().busy()) return;
  for (const auto& each : refreshes_) each();
  refreshPorts();
  refreshControllers();
}

void PortsPage::refreshPorts() {
  const QStringList texts = portTexts(bench_).mid(0, std::max(midi::findPortCountE.get(), 0));
  QStringList before;
  for (int i = 0; i < ports_->count(); ++i) before << ports_->item(i)->text();
  if (texts == before) return;
  const int chosen = std::max(forAll_->currentIndex(), 0);
  ports_->clear();
  ports_->addItems(texts);
  forAll_->clear();
  forAll_->addItems(texts);
  forAll_->setCurrentIndex(std::min(chosen, static_cast<int>(texts.size()) - 1));
}

void PortsPage::refreshControllers() {
  shown_ = targets();
  table_->setRowCount(static_cast<int>(shown_.size()));
  for (int line = 0; line < table_->rowCount(); ++line) {
    const Target& target = shown_[static_cast<std::size_t>(line)];
    const bool bands = target.mapping == Mapping::Bands;
    const QString texts[] = {
        (bands ? QStringLiteral("Bands, %1") : QStringLiteral("Single value, %1"))
            .arg(target.setup + 1),
        target.text,
        controllerText(
            static_cast<std::int32_t>(target.binding->access.live(target.row, target.setup)))};
    for (int column = 0; column < 3; ++column) {
      if (table_->item(line, column) == nullptr)
        table_->setItem(line, column, new QTableWidgetItem);
      if (table_->item(line, column)->text() != texts[column])
        table_->item(line, column)->setText(texts[column]);
    }
  }
  const std::string armed = bench_.engine()->midi().learn().armed();
  learn_->setText(armed.empty() ? QStringLiteral("Learn") : QStringLiteral("Stop waiting"));
  learn_->setEnabled(table_->currentRow() >= 0 || !armed.empty());
  unbind_->setEnabled(table_->currentRow() >= 0);
  const QString words = armed.empty()
                            ? QStringLiteral("Choose a line, press Learn, then move a knob.")
                            : QStringLiteral("Move a knob or fader now: it will move %1.")
                                  .arg(QString::fromStdString(armed));
  if (waiting_->text() != words) waiting_->setText(words);
}

}  // namespace ovka::desktop
