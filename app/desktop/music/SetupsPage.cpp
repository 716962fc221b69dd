#include "SetupsPage.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "Look.h"
#include "QuietLabel.h"

namespace ovka::desktop {
namespace {

constexpr std::size_t kNamed = 8;  // numbers in a line of text

QString toQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QString numbersText(const std::vector<int>& numbers) {
  QStringList named;
  for (std::size_t i = 0; i < std::min(numbers.size(), kNamed); ++i)
    named << QString::number(numbers[i]);
  QString text = named.join(QStringLiteral(", "));
  if (numbers.size() > kNamed) text += QStringLiteral(" and %1 more").arg(numbers.size() - kNamed);
  return text;
}

SetupsPage::SetupsPage(Workbench& bench, Mapping mapping)
    : bench_(bench), mapping_(mapping), controls_(bench, mapping, this) {
  shownOn_.fill(-1);
}

void SetupsPage::assemble(const QString& title, const QString& subtitle, QWidget* own) {
  auto* content = new QWidget;
  content->setObjectName(QStringLiteral("page"));
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(24, 20, 24, 16);
  column->setSpacing(look::kGrid);
  auto* heading = new QLabel(title);
  heading->setFont(look::font(look::Type::Title));
  column->addWidget(heading);
  column->addWidget(quietLabel(subtitle));
  column->addSpacing(look::kGrid);
  column->addWidget(makeChooser());
  column->addWidget(own);
  column->addStretch(1);
  auto* scroll = new QScrollArea;
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setWidget(content);
  auto* all = new QVBoxLayout(this);
  all->setContentsMargins(0, 0, 0, 0);
  all->setSpacing(0);
  all->addWidget(scroll, 1);
  all->addWidget(makeBottom());
}

QWidget* SetupsPage::makeChooser() {
  auto* part = new QWidget;
  auto* row = new QHBoxLayout(part);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(look::kGrid);
  chooser_ = new QComboBox;
  chooser_->setObjectName(QString::fromStdString(actionName(mapping_, "selectSetup:")));
  chooser_->setAccessibleName(QStringLiteral("Set-up"));
  chooser_->setToolTip(QStringLiteral("One of 128 set-ups; each plays by itself."));
  chooser_->setMinimumWidth(140);
  for (int setup = 0; setup < midi::kSetups; ++setup) chooser_->addItem(QString());
  connect(chooser_, &QComboBox::activated, this,
          [this](int setup) { controls_.perform("selectSetup:", setup); });
  auto* label = new QLabel(QStringLiteral("Set-up"));
  label->setFont(look::font(look::Type::Strong));
  label->setBuddy(chooser_);
  QWidget* on = controls_.make("setMIDIoutON:");
  on->setFont(look::font(look::Type::Strong));
  on_ = quietLabel({});
  on_->setObjectName(mapping_ == Mapping::Bands ? QStringLiteral("bandsOn")
                                                : QStringLiteral("singlesOn"));
  row->addWidget(label);
  row->addWidget(chooser_);
  row->addSpacing(look::kGrid);
  row->addWidget(on);
  row->addSpacing(2 * look::kGrid);
  row->addWidget(on_, 1);
  return part;
}

QWidget* SetupsPage::makeBottom() {
  auto* part = new QFrame;
  part->setObjectName(QStringLiteral("pendingBar"));
  auto* row = new QHBoxLayout(part);
  row->setContentsMargins(24, 10, 24, 10);
  row->setSpacing(look::kGrid);
  pending_ = new QLabel;
  pending_->setObjectName(mapping_ == Mapping::Bands ? QStringLiteral("bandsPending")
                                                     : QStringLiteral("singlesPending"));
  auto* defaults = new QPushButton(QStringLiteral("Default …"));
  defaults->setObjectName(QString::fromStdString(actionName(mapping_, "setSetToDefault:")));
  defaults->setToolTip(QStringLiteral("Puts all 128 set-ups back to how they come, after asking."));
  defaults->setAutoDefault(false);
  connect(defaults, &QPushButton::clicked, this, &SetupsPage::askForDefaults);
  cancel_ = button("setCancel:", QStringLiteral("Cancel"),
                   QStringLiteral("Drops what was changed and is not in force yet."));
  set_ = button("setSet:", QStringLiteral("Set"),
                QStringLiteral("Brings what was changed into force, in all set-ups."));
  set_->setMinimumWidth(96);
  row->addWidget(button("sendMidiShutDown", QStringLiteral("End notes"),
                        QStringLiteral("Ends every sounding note of these set-ups.")));
  row->addWidget(button("sendMidiTemporalyOFF", QStringLiteral("All off for now"),
                        QStringLiteral("Silences every set-up and remembers which were on.")));
  row->addWidget(button("sendMidiBackON", QStringLiteral("Back on"),
                        QStringLiteral("Plays again what was off for now.")));
  row->addWidget(pending_, 1);
  row->addWidget(defaults);
  row->addWidget(cancel_);
  row->addWidget(set_);
  return part;
}

QPushButton* SetupsPage::button(std::string_view selector, const QString& text,
                                const QString& tip) {
  auto* made = new QPushButton(text);
  made->setObjectName(QString::fromStdString(actionName(mapping_, selector)));
  made->setToolTip(tip);
  made->setAccessibleDescription(tip);
  made->setAutoDefault(false);
  connect(made, &QPushButton::clicked, this,
          [this, name = std::string(selector)] { controls_.perform(name); });
  return made;
}

QWidget* SetupsPage::labelled(std::string_view selector) {
  const MusicRow& row = musicRow(mapping_, selector);
  QWidget* control = controls_.make(selector);
  auto* part = new QWidget;
  auto* line = new QHBoxLayout(part);
  line->setContentsMargins(0, 0, 0, 0);
  line->setSpacing(look::kGrid);
  auto* label = new QLabel(toQt(row.label));
  label->setToolTip(toQt(row.tip));
  label->setBuddy(control);
  line->addWidget(label);
  line->addWidget(control);
  return part;
}

void SetupsPage::askForDefaults() {
  auto* box = new QMessageBox(QMessageBox::Question, QStringLiteral("OVKA"),
                              QStringLiteral("Put all 128 set-ups back to how they come?"),
                              QMessageBox::NoButton, this);
  box->setObjectName(QStringLiteral("defaults"));
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setInformativeText(QStringLiteral("What they play now ends. It cannot be undone."));
  QPushButton* yes = box->addButton(QStringLiteral("Default"), QMessageBox::AcceptRole);
  QPushButton* no = box->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
  box->setDefaultButton(no);
  box->setEscapeButton(no);
  connect(box, &QMessageBox::finished, this, [this, box, yes] {
    if (box->clickedButton() == yes) controls_.perform("setSetToDefault:");
  });
  box->open();
}

void SetupsPage::refresh() {
  setEnabled(bench_.engine() != nullptr);
  if (bench_.engine() == nullptr) return;
  controls_.refresh();
  refreshChooser();
  refreshBottom();
}

QString SetupsPage::onText() const {
  const std::string_view name = mapping_ == Mapping::Bands ? "MIDIoutONEX" : "MIDIoutONX";
  const SetupField& field = fieldOf(mapping_, name);
  std::vector<int> numbers;
  for (int setup = 0; setup < midi::kSetups; ++setup) {
    if (field.access.live(0, static_cast<std::size_t>(setup)) == 1) numbers.push_back(setup + 1);
  }
  return numbers.empty() ? QStringLiteral("None is on.")
                         : QStringLiteral("On: %1").arg(numbersText(numbers));
}

void SetupsPage::refreshChooser() {
  const std::string_view name = mapping_ == Mapping::Bands ? "MIDIoutONEX" : "MIDIoutONX";
  const SetupField& field = fieldOf(mapping_, name);
  const QSignalBlocker quiet(chooser_);
  for (int setup = 0; setup < midi::kSetups; ++setup) {
    const auto index = static_cast<std::size_t>(setup);
    const int on = field.access.live(0, index) == 1 ? 1 : 0;
    if (shownOn_[index] == on) continue;
    shownOn_[index] = on;
    chooser_->setItemText(
        setup, on != 0 ? QStringLiteral("%1 – on").arg(setup + 1) : QString::number(setup + 1));
  }
  const int shown = shownOf(mapping_);
  if (!bench_.desk().busy() && chooser_->currentIndex() != shown && !chooser_->view()->isVisible())
    chooser_->setCurrentIndex(shown);
  const QString text = onText();
  if (on_->text() != text) on_->setText(text);
}

void SetupsPage::refreshBottom() {
  std::vector<int> numbers;
  for (int setup = 0; setup < midi::kSetups; ++setup) {
    if (pending(mapping_, static_cast<std::size_t>(setup))) numbers.push_back(setup + 1);
  }
  const QString text =
      numbers.empty()
          ? QStringLiteral("Everything shown is in force.")
          : QStringLiteral("Changed, not in force until Set: set-up %1").arg(numbersText(numbers));
  if (pending_->text() == text) return;
  pending_->setText(text);
  pending_->setProperty("quiet", numbers.empty());
  pending_->setStyleSheet(numbers.empty() ? QString()
                                          : QStringLiteral("color: %1; font-weight: 600")
                                                .arg(look::colors(look::theme()).warn.name()));
  set_->setEnabled(!numbers.empty());
  cancel_->setEnabled(!numbers.empty());
}

}  // namespace ovka::desktop
