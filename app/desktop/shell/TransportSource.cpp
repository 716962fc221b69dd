#include <QComboBox>
#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <algorithm>

#include "AmplifierModels.h"
#include "BufferVariables.h"
#include "LinuxSerialPorts.h"
#include "Look.h"
#include "TransportRow.h"

// The source in the row: where samples come from, the amplifier's model, port presets.

namespace ovka::desktop {
namespace {

/// What an entry of the source list stands for, beside its path.
enum Entry { Demo, Port, Capture, Document, LookAgain };
/// The amplifier model that sends each channel over a port of its own.
constexpr int kOnePortAChannel = 1;

/// Two of the same kind are told apart by the system's own name.
QString nameOf(const SerialDevice& device) {
  const QString own = QString::fromStdString(device.device).section(QLatin1Char('/'), -1);
  const QString name = QString::fromStdString(device.name);
  return name.isEmpty() || name.contains(own) ? (name.isEmpty() ? own : name)
                                              : QStringLiteral("%1 (%2)").arg(name, own);
}

}  // namespace

QWidget* TransportRow::makeSource() {
  auto* part = new QWidget;
  auto* row = new QHBoxLayout(part);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(look::kGrid);
  sources_->setObjectName(QStringLiteral("source"));
  sources_->setAccessibleName(QStringLiteral("Source"));
  sources_->setToolTip(QStringLiteral("Where the samples come from."));
  sources_->setMinimumHeight(30);
  sources_->setMinimumWidth(210);
  sources_->setMaximumWidth(280);
  sources_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  start_->setObjectName(QStringLiteral("start"));
  start_->setAccessibleName(start_->text());
  start_->setMinimumHeight(40);
  start_->setFocusPolicy(Qt::TabFocus);
  sources_->setFocusPolicy(Qt::TabFocus);
  start_->setToolTip(QStringLiteral("Acquires from the chosen source."));
  connect(start_, &QPushButton::clicked, this, [this] { chooseSource(sources_->currentIndex()); });
  connect(sources_, &QComboBox::activated, this, [this](int index) {
    // Entries that only open something do so at once; sources wait for Start.
    if (sources_->itemData(index).toInt() >= Capture) chooseSource(index);
  });
  connect(sources_, &QComboBox::currentIndexChanged, this, &TransportRow::refreshSource);
  auto* column = new QVBoxLayout;
  column->setSpacing(4);
  column->addWidget(sources_);
  column->addWidget(makeLine());
  row->addLayout(column);
  row->addWidget(start_);
  makePortMenu();
  row->addWidget(portMenu_);
  return part;
}

/// Model and further ports, in sight while a serial port is chosen.
QWidget* TransportRow::makeLine() {
  line_ = new QWidget;
  auto* row = new QHBoxLayout(line_);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(4);
  models_ = new QComboBox;
  models_->setObjectName(QStringLiteral("model"));
  models_->setAccessibleName(QStringLiteral("Amplifier model"));
  models_->setToolTip(QStringLiteral("The amplifier at the other end; Start opens the port so."));
  models_->setFocusPolicy(Qt::TabFocus);
  models_->setMinimumWidth(120);
  models_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  for (std::size_t i = 0; i < kAmplifierModels.size(); ++i) {
    QString name = QString::fromUtf8(kAmplifierModels[i].name);
    name.replace(0, 1, name.at(0).toUpper());
    models_->addItem(name);
    models_->setItemData(static_cast<int>(i), name, Qt::ToolTipRole);
  }
  connect(models_, &QComboBox::currentIndexChanged, this, &TransportRow::refreshSource);
  morePorts_ = new QToolButton;
  morePorts_->setObjectName(QStringLiteral("morePorts"));
  morePorts_->setAccessibleName(QStringLiteral("Further ports"));
  morePorts_->setToolTip(
      QStringLiteral("This model sends one channel a port: choose ports 2 to 4 in their order."));
  morePorts_->setPopupMode(QToolButton::InstantPopup);
  morePorts_->setFocusPolicy(Qt::TabFocus);
  auto* menu = new QMenu(morePorts_);
  connect(menu, &QMenu::aboutToShow, this, &TransportRow::fillMorePorts);
  morePorts_->setMenu(menu);
  row->addWidget(models_, 1);
  row->addWidget(morePorts_);
  return line_;
}

void TransportRow::fillMorePorts() {
  QMenu* menu = morePorts_->menu();
  menu->clear();
  const QString first = sources_->currentData(Qt::UserRole + 1).toString();
  for (int i = 0; i < sources_->count(); ++i) {
    const QString path = sources_->itemData(i, Qt::UserRole + 1).toString();
    if (sources_->itemData(i).toInt() != Port || path.isEmpty() || path == first) continue;
    const auto place = further_.indexOf(path);
    QAction* action = menu->addAction(
        place < 0 ? sources_->itemText(i)
                  : QStringLiteral("Port %1: %2").arg(place + 2).arg(sources_->itemText(i)));
    action->setData(path);
    action->setCheckable(true);
    action->setChecked(place >= 0);
    action->setEnabled(place >= 0 || further_.size() < AmplifierPorts::kInputs - 1);
    connect(action, &QAction::triggered, this, [this, path](bool on) {
      further_.removeAll(path);
      if (on) further_ << path;
      refreshSource();
    });
  }
  if (menu->isEmpty())
    menu->addAction(QStringLiteral("No further port is there"))->setEnabled(false);
}

/// The system's own actions around the port, by their selectors.
void TransportRow::makePortMenu() {
  portMenu_ = new QToolButton;
  portMenu_->setObjectName(QStringLiteral("portMenu"));
  portMenu_->setText(QStringLiteral("Port"));
  portMenu_->setAccessibleName(QStringLiteral("Port presets"));
  portMenu_->setToolTip(QStringLiteral("The remembered port, its preset, and the channels kept."));
  portMenu_->setPopupMode(QToolButton::InstantPopup);
  portMenu_->setMinimumHeight(30);
  portMenu_->setFocusPolicy(Qt::TabFocus);
  struct Row {
    const char* selector;
    int sender;
    const char* text;
    const char* tip;
  };
  auto* menu = new QMenu(portMenu_);
  menu->setToolTipsVisible(true);
  for (const Row& row : {
           Row{"setPortONAction:", 1, "Switch the remembered port on",
               "Reads the port preset and opens its line."},
           Row{"setPortONAction:", 0, "Switch the port off", "Closes the line."},
           Row{"setPortONandLoadPrefAction:", 1, "Switch the port on with its preset …",
               "Offers to remember the chosen port, then loads the preset of the port."},
           Row{"", 0, "", ""},
           Row{"SevDevConfig1:", 1, "Keep channel 1", "Documents save and open channel 1."},
           Row{"SevDevConfig2:", 1, "Keep channels 1 and 2",
               "Documents save and open channels 1 and 2."},
           Row{"SevDevConfig3:", 1, "Keep channels 1 to 3",
               "Documents save and open channels 1 to 3."},
           Row{"SevDevConfig4:", 1, "Keep channels 1 to 4",
               "Documents save and open channels 1 to 4."},
       }) {
    if (*row.selector == '\0') {
      menu->addSeparator();
      continue;
    }
    QAction* action = menu->addAction(QString::fromUtf8(row.text));
    const QString selector = QLatin1String(row.selector);
    action->setObjectName(QStringLiteral("port ") + selector + QString::number(row.sender));
    action->setToolTip(QString::fromUtf8(row.tip));
    connect(action, &QAction::triggered, this,
            [this, selector, sender = row.sender] { Q_EMIT performWanted(selector, sender); });
  }
  portMenu_->setMenu(menu);
}

void TransportRow::refreshSource() {
  if (morePorts_ == nullptr) return;
  const bool port = sources_->currentData().toInt() == Port &&
                    !sources_->currentData(Qt::UserRole + 1).toString().isEmpty();
  line_->setVisible(port);
  morePorts_->setVisible(models_->currentIndex() == kOnePortAChannel);
  further_.removeAll(sources_->currentData(Qt::UserRole + 1).toString());
  const auto ports = further_.size() + 1;
  morePorts_->setText(ports == 1 ? QStringLiteral("1 port")
                                 : QStringLiteral("%1 ports").arg(ports));
}

void TransportRow::listSources() {
  const QSignalBlocker quiet(sources_);
  sources_->clear();
  const auto add = [this](const QString& text, Entry kind, const QString& path = {}) {
    sources_->addItem(text, kind);
    sources_->setItemData(sources_->count() - 1, path, Qt::UserRole + 1);
    if (!path.isEmpty()) sources_->setItemData(sources_->count() - 1, path, Qt::ToolTipRole);
  };
  add(QStringLiteral("Demo: virtual amplifier"), Demo);
  LinuxSerialPorts serial;
  for (const SerialDevice& device : serial.devices(nullptr))
    add(nameOf(device), Port, QString::fromStdString(device.path));
  const SourceChoice& now = bench_.source();
  if (now.kind == SourceChoice::Kind::Capture && !now.paths.empty())
    add(bench_.sourceText().section(QLatin1Char('/'), -1), Capture, bench_.sourceText());
  if (now.kind == SourceChoice::Kind::Serial && !now.paths.empty() &&
      sources_->findData(bench_.sourceText(), Qt::UserRole + 1) < 0)
    add(bench_.sourceText(), Port, bench_.sourceText());
  sources_->insertSeparator(sources_->count());
  add(QStringLiteral("Open a capture …"), Capture);
  add(QStringLiteral("Open a document …"), Document);
  add(QStringLiteral("Look for ports again"), LookAgain);
  const int present =
      now.paths.empty() ? 0 : sources_->findData(bench_.sourceText(), Qt::UserRole + 1);
  sources_->setCurrentIndex(std::max(present, 0));
  if (now.kind == SourceChoice::Kind::Serial) {
    further_.clear();
    for (std::size_t i = 1; i < now.paths.size(); ++i)
      further_ << QString::fromStdString(now.paths[i]);
  }
  refreshSource();
}

void TransportRow::chooseSource(int index) {
  const QString path = sources_->itemData(index, Qt::UserRole + 1).toString();
  const int kind = sources_->itemData(index).toInt();
  if (kind == LookAgain) {
    listSources();
  } else if (kind == Document) {
    listSources();
    Q_EMIT documentWanted();
  } else if (kind == Capture && path.isEmpty()) {
    listSources();
    Q_EMIT captureWanted();
  } else {
    SourceChoice choice;
    choice.kind = kind == Demo   ? SourceChoice::Kind::Demo
                  : kind == Port ? SourceChoice::Kind::Serial
                                 : SourceChoice::Kind::Capture;
    if (!path.isEmpty()) choice.paths = {path.toStdString()};
    if (kind == Port) {
      choice.model = models_->currentIndex();
      for (const QString& more : further_) {
        if (choice.model == kOnePortAChannel) choice.paths.push_back(more.toStdString());
      }
    }
    Q_EMIT sourceChosen(choice);
  }
}

}  // namespace ovka::desktop
