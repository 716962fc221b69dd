#include "SetupWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "BufferVariables.h"
#include "DocumentFace.h"
#include "Look.h"
#include "NumberBox.h"
#include "PresetSwitches.h"
#include "SetupPages.h"
#include "ShownTimer.h"

namespace ovka::desktop {
namespace {

QString toQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

constexpr int kLabelWidth = 220;

bool isAction(const ControlRow& row) {
  return row.kind == ControlKind::Radio || row.kind == ControlKind::Button;
}

QLabel* heading(const QString& text) {
  auto* label = new QLabel(text);
  label->setFont(look::font(look::Type::Strong));
  label->setContentsMargins(0, 2 * look::kGrid, 0, 0);
  return label;
}

}  // namespace

SetupWindow::SetupWindow(Workbench& bench, DocumentFace& documents, QWidget* parent)
    : QDialog(parent),
      bench_(bench),
      documents_(documents),
      list_(new QListWidget),
      pages_(new QStackedWidget) {
  setWindowTitle(QStringLiteral("Set-up"));
  setObjectName(QStringLiteral("setup"));
  resize(860, 640);
  list_->setObjectName(QStringLiteral("pages"));
  list_->setAccessibleName(QStringLiteral("Pages"));
  list_->setFixedWidth(200);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  row->addWidget(list_);
  row->addWidget(pages_, 1);
  for (std::size_t page = 0; page < kSetupPages; ++page)
    list_->addItem(toQt(pageTitle(static_cast<SetupPage>(page)).title));
  connect(list_, &QListWidget::currentRowChanged, pages_, &QStackedWidget::setCurrentIndex);
  connect(&bench_, &Workbench::engineChanged, this, &SetupWindow::rebuild);
  connect(&bench_, &Workbench::changed, this, &SetupWindow::refresh);
  new ShownTimer(this, 250, [this] { refresh(); });
  rebuild();
  list_->setCurrentRow(0);
}

void SetupWindow::showPage(SetupPage page) {
  list_->setCurrentRow(static_cast<int>(page));
  show();
  // What was laid out before it had its looks is laid out anew.
  list_->doItemsLayout();
  raise();
  activateWindow();
}

void SetupWindow::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  refresh();
}

void SetupWindow::refresh() {
  if (bench_.engine() == nullptr) return;
  for (const Refresh& each : refreshes_) each();
}

/// Controls hold on to the variables of one engine, so another one gets controls of its own.
void SetupWindow::rebuild() {
  const int current = list_->currentRow();
  refreshes_.clear();
  while (pages_->count() > 0) {
    QWidget* page = pages_->widget(0);
    pages_->removeWidget(page);
    delete page;
  }
  for (std::size_t page = 0; page < kSetupPages; ++page) {
    pages_->addWidget(bench_.engine() != nullptr ? makePage(static_cast<SetupPage>(page))
                                                 : new QWidget);
  }
  pages_->setCurrentIndex(std::max(current, 0));
  refresh();
}

QWidget* SetupWindow::makePage(SetupPage page) {
  auto* content = new QWidget;
  content->setObjectName(QStringLiteral("page"));
  auto* column = new QVBoxLayout(content);
  column->setContentsMargins(24, 20, 24, 24);
  column->setSpacing(look::kGrid);
  const PageTitle texts = pageTitle(page);
  auto* title = new QLabel(toQt(texts.title));
  title->setFont(look::font(look::Type::Title));
  auto* subtitle = new QLabel(toQt(texts.subtitle));
  subtitle->setProperty("quiet", true);
  subtitle->setWordWrap(true);
  column->addWidget(title);
  column->addWidget(subtitle);
  // Pages of lists stretch; those of controls end where they end.
  QWidget* own = makeOwnPart(page, bench_, documents_, *this);
  if (own != nullptr) column->addWidget(own);
  addRows(page, column);
  if (page == SetupPage::Presets) addSwitchTable(column);
  column->addStretch(1);
  auto* scroll = new QScrollArea;
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll->setWidget(content);
  return scroll;
}

void SetupWindow::addRows(SetupPage page, QVBoxLayout* to) {
  std::string_view group;
  QFormLayout* form = nullptr;
  QHBoxLayout* buttons = nullptr;
  for (const ControlRow& row : controlRows()) {
    if (row.page != page) continue;
    if (form == nullptr || row.group != group) {
      group = row.group;
      to->addWidget(heading(toQt(group)));
      form = new QFormLayout;
      form->setHorizontalSpacing(3 * look::kGrid);
      form->setVerticalSpacing(look::kGrid);
      form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
      to->addLayout(form);
      buttons = nullptr;
    }
    QWidget* control = makeControl(row);
    if (control == nullptr) continue;
    if (isAction(row)) {
      if (buttons == nullptr) {
        buttons = new QHBoxLayout;
        buttons->setSpacing(look::kGrid / 2);
        buttons->addStretch(1);
        form->addRow(buttons);
      }
      buttons->insertWidget(buttons->count() - 1, control);
      continue;
    }
    // A switch carries its own text, in the column of the controls.
    auto* label = new QLabel(row.kind == ControlKind::Switch ? QString() : toQt(row.label));
    label->setToolTip(toQt(row.tip));
    label->setBuddy(control);
    label->setMinimumSize(kLabelWidth, control->sizeHint().height());
    form->addRow(label, control);
  }
}

QWidget* SetupWindow::makeControl(const ControlRow& row) {
  QWidget* control = nullptr;
  const ControlBinding binding =
      row.setting.empty() ? ControlBinding() : bindControl(bench_, row.setting);
  if (row.kind == ControlKind::Button) {
    control = makeButton(row);
  } else if (!binding) {
    return nullptr;
  } else if (row.kind == ControlKind::Choice) {
    control = makeChoice(row, binding);
  } else if (row.kind == ControlKind::Switch) {
    control = makeSwitch(row, binding);
  } else if (row.kind == ControlKind::Number) {
    control = makeNumber(row, binding);
  } else {
    control = makeRadio(row, binding);
  }
  control->setObjectName(toQt(row.name));
  control->setToolTip(toQt(row.tip));
  control->setAccessibleName(toQt(row.group) + QStringLiteral(": ") + toQt(row.label));
  control->setAccessibleDescription(toQt(row.tip));
  return control;
}

QWidget* SetupWindow::makeChoice(const ControlRow& row, const ControlBinding& binding) {
  auto* box = new QComboBox;
  box->setMinimumWidth(220);
  const std::vector<std::string> labels = split(row.labels);
  const std::vector<std::string> values = split(row.values);
  for (std::size_t i = 0; i < labels.size(); ++i) {
    box->addItem(QString::fromStdString(labels[i]),
                 values.empty() ? QString::number(i) : QString::fromStdString(values[i]));
  }
  connect(box, &QComboBox::activated, this,
          [box, binding](int index) { binding.set(box->itemData(index).toString()); });
  refreshes_.emplace_back([box, binding] {
    const int index = box->findData(binding.text());
    if (box->currentIndex() == index || box->view()->isVisible()) return;
    const QSignalBlocker quiet(box);
    box->setCurrentIndex(index);
  });
  return box;
}

QWidget* SetupWindow::makeSwitch(const ControlRow& row, const ControlBinding& binding) {
  auto* box = new QCheckBox(toQt(row.label));
  connect(box, &QCheckBox::clicked, this,
          [binding](bool on) { binding.set(on ? QStringLiteral("1") : QStringLiteral("0")); });
  refreshes_.emplace_back([box, binding] { box->setChecked(binding.get() != 0); });
  return box;
}

QWidget* SetupWindow::makeNumber(const ControlRow& row, const ControlBinding& binding) {
  auto* box = new NumberBox;
  box->setMinimumWidth(140);
  box->setButtonSymbols(QAbstractSpinBox::NoButtons);
  box->setKeyboardTracking(false);
  box->setDecimals(binding.real ? 3 : 0);
  box->setRange(binding.minimum, binding.maximum);
  box->setSingleStep(row.step);
  box->setGroupSeparatorShown(false);
  connect(box, &QDoubleSpinBox::valueChanged, this, [binding](double value) {
    binding.set(binding.real ? QString::number(value, 'g', 12) : QString::number(qRound64(value)));
  });
  refreshes_.emplace_back([box, binding] {
    if (box->hasFocus() || box->value() == binding.get()) return;
    const QSignalBlocker quiet(box);
    box->setValue(binding.get());
  });
  return box;
}

QWidget* SetupWindow::makeRadio(const ControlRow& row, const ControlBinding& binding) {
  auto* button = new QPushButton(toQt(row.label));
  button->setCheckable(true);
  connect(button, &QPushButton::clicked, this, [this, button, name = toQt(row.name)] {
    button->setChecked(true);
    Q_EMIT perform(name, 0);
  });
  refreshes_.emplace_back(
      [button, binding, value = row.value] { button->setChecked(binding.get() == value); });
  return button;
}

QWidget* SetupWindow::makeButton(const ControlRow& row) {
  auto* button = new QPushButton(toQt(row.label));
  connect(button, &QPushButton::clicked, this,
          [this, name = toQt(row.name)] { Q_EMIT perform(name, 0); });
  return button;
}

/// Both sets of switches side by side: the same rows, opening and saving.
void SetupWindow::addSwitchTable(QVBoxLayout* to) {
  to->addWidget(heading(QStringLiteral("What is taken and kept")));
  auto* grid = new QGridLayout;
  grid->setHorizontalSpacing(3 * look::kGrid);
  grid->setVerticalSpacing(look::kGrid / 2);
  grid->setColumnStretch(0, 1);
  for (int column : {1, 2}) {
    auto* label =
        new QLabel(column == 1 ? QStringLiteral("when opening") : QStringLiteral("when saving"));
    label->setProperty("quiet", true);
    grid->addWidget(label, 0, column, Qt::AlignHCenter);
  }
  int line = 1;
  for (const PresetSwitch& row : kPresetSwitches) {
    QString meaning = toQt(row.meaning);
    meaning[0] = meaning[0].toUpper();
    auto* label = new QLabel(meaning);
    label->setWordWrap(true);
    grid->addWidget(label, line, 0);
    for (const SwitchSide side : {SwitchSide::Open, SwitchSide::Save}) {
      const bool opening = side == SwitchSide::Open;
      auto* box = new QCheckBox;
      const QString name = QStringLiteral("select") + toQt(opening ? row.open : row.save);
      box->setObjectName(name);
      box->setAccessibleName(
          (opening ? QStringLiteral("When opening: ") : QStringLiteral("When saving: ")) + meaning);
      box->setToolTip(box->accessibleName());
      connect(box, &QCheckBox::clicked, this,
              [this, name](bool on) { Q_EMIT perform(name, on ? 1 : 0); });
      refreshes_.emplace_back([this, box, side, which = row.which] {
        box->setChecked(bench_.engine()->documents()->panel().switches().on(side, which));
      });
      grid->addWidget(box, line, opening ? 1 : 2, Qt::AlignHCenter);
    }
    ++line;
  }
  to->addLayout(grid);
}

}  // namespace ovka::desktop
