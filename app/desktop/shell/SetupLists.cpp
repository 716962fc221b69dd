#include "SetupLists.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <memory>
#include <system_error>

#include "DocumentFace.h"
#include "LinuxSerialPorts.h"
#include "Look.h"
#include "QuietLabel.h"
#include "SetupPages.h"
#include "SetupWindow.h"
#include "ShownTimer.h"

namespace ovka::desktop {
namespace {

constexpr int kPathRole = Qt::UserRole;
constexpr int kIdRole = Qt::UserRole;
constexpr int kPointRole = Qt::UserRole + 1;

QString errorText(int error) {
  return QString::fromStdString(std::generic_category().message(error));
}

QPushButton* button(const QString& text, const QString& tip) {
  auto* widget = new QPushButton(text);
  widget->setToolTip(tip);
  return widget;
}

QVBoxLayout* columnOf(QWidget* part) {
  auto* column = new QVBoxLayout(part);
  column->setContentsMargins(0, look::kGrid, 0, 0);
  return column;
}

QHBoxLayout* rowOf(QWidget* first, std::initializer_list<QPushButton*> buttons) {
  auto* row = new QHBoxLayout;
  row->addWidget(first, 1);
  for (QPushButton* each : buttons) row->addWidget(each);
  return row;
}

}  // namespace

// --- ports ---------------------------------------------------------------------------------------

PortList::PortList(SetupWindow& window)
    : window_(window), list_(new QListWidget), hint_(quietLabel()) {
  list_->setObjectName(QStringLiteral("ports"));
  list_->setAccessibleName(QStringLiteral("Serial ports"));
  list_->setMaximumHeight(130);
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  auto* again = button(QStringLiteral("Look again"), QStringLiteral("Lists the ports anew."));
  auto* begin = button(QStringLiteral("Start"), QStringLiteral("Acquires from the chosen ports."));
  connect(again, &QPushButton::clicked, this, [this] { look(); });
  connect(begin, &QPushButton::clicked, this, [this] { start(); });
  QVBoxLayout* column = columnOf(this);
  column->addWidget(list_);
  column->addLayout(rowOf(hint_, {again, begin}));
  look();
}

void PortList::look() {
  const int kept = list_->currentRow();
  list_->clear();
  LinuxSerialPorts serial;
  int error = 0;
  for (const SerialDevice& device : serial.devices(&error)) {
    auto* item = new QListWidgetItem(QString::fromStdString(device.name) + QStringLiteral("   ") +
                                     QString::fromStdString(device.path));
    item->setData(kPathRole, QString::fromStdString(device.path));
    list_->addItem(item);
  }
  list_->setCurrentRow(std::min(std::max(kept, 0), list_->count() - 1));
  if (error != 0) {
    hint_->setText(QStringLiteral("The serial ports cannot be listed: %1").arg(errorText(error)));
  } else if (list_->count() == 0) {
    hint_->setText(QStringLiteral(
        "No serial port is there. Plug the amplifier in and look again, or use the demo."));
  } else {
    hint_->setText(QStringLiteral(
        "Model 1 sends one channel a port: choose up to four ports with the Control key, in the "
        "order of their channels."));
  }
}

void PortList::start() {
  SourceChoice choice;
  choice.kind = SourceChoice::Kind::Serial;
  for (const QListWidgetItem* item : list_->selectedItems())
    choice.paths.push_back(item->data(kPathRole).toString().toStdString());
  if (choice.paths.empty()) {
    hint_->setText(QStringLiteral("Choose a port first."));
  } else if (choice.paths.size() > AmplifierPorts::kInputs) {
    hint_->setText(QStringLiteral("There are four input ports, no more."));
  } else {
    Q_EMIT window_.useSource(choice);
  }
}

// --- annotations ---------------------------------------------------------------------------------

AnnotationList::AnnotationList(Workbench& bench)
    : bench_(bench), field_(new QLineEdit), table_(new QTableWidget(0, 2)) {
  field_->setObjectName(QStringLiteral("annotation"));
  field_->setPlaceholderText(QStringLiteral("A note at the present moment, then Return"));
  field_->setAccessibleName(field_->placeholderText());
  table_->setObjectName(QStringLiteral("annotations"));
  table_->setAccessibleName(QStringLiteral("Annotations"));
  table_->setHorizontalHeaderLabels({QStringLiteral("Time"), QStringLiteral("Text")});
  table_->horizontalHeader()->setStretchLastSection(true);
  table_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft);
  table_->verticalHeader()->hide();
  table_->setShowGrid(false);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setMinimumHeight(320);
  connect(field_, &QLineEdit::returnPressed, this, [this] {
    if (bench_.engine()->annotations().add(field_->text().toStdString())) field_->clear();
  });
  connect(table_, &QTableWidget::itemChanged, this, [this](QTableWidgetItem* item) {
    if (item->column() != 1) return;
    const auto id = table_->item(item->row(), 0)->data(kIdRole).toULongLong();
    bench_.engine()->annotations().edit(id, item->text().toStdString());
    shown_ = ~shown_;  // an empty text is refused: show what holds
  });
  connect(table_, &QTableWidget::cellDoubleClicked, this, [this](int row, int column) {
    if (column == 0) bench_.recorder().seek(table_->item(row, 0)->data(kPointRole).toLongLong());
  });
  auto* remove = button(QStringLiteral("Remove"), QStringLiteral("Removes the chosen notes."));
  connect(remove, &QPushButton::clicked, this, [this] { removeChosen(); });
  new ShownTimer(this, 100, [this] { look(); });
  QVBoxLayout* column = columnOf(this);
  column->addWidget(field_);
  column->addWidget(table_);
  column->addLayout(
      rowOf(quietLabel(QStringLiteral("A double click on a time goes there.")), {remove}));
}

void AnnotationList::look() {
  if (bench_.engine() == nullptr) return;
  // An editor that is open stays open.
  const QWidget* focus = QApplication::focusWidget();
  if (focus != nullptr && table_->viewport()->isAncestorOf(focus)) return;
  const std::uint64_t now = bench_.engine()->annotations().revision();
  if (now == shown_) return;
  shown_ = now;
  fill();
}

void AnnotationList::fill() {
  const QSignalBlocker silent(table_);
  const std::vector<TimedText> texts = bench_.engine()->annotations().list();
  table_->setRowCount(static_cast<int>(texts.size()));
  for (int i = 0; i < table_->rowCount(); ++i) {
    const TimedText& text = texts[static_cast<std::size_t>(i)];
    auto* time = new QTableWidgetItem(pointText(text.point));
    time->setFlags(time->flags() & ~Qt::ItemIsEditable);
    time->setData(kIdRole, static_cast<qulonglong>(text.id));
    time->setData(kPointRole, static_cast<qlonglong>(text.point));
    table_->setItem(i, 0, time);
    table_->setItem(i, 1, new QTableWidgetItem(QString::fromStdString(text.text)));
  }
}

void AnnotationList::removeChosen() {
  for (const QModelIndex& row : table_->selectionModel()->selectedRows())
    bench_.engine()->annotations().remove(table_->item(row.row(), 0)->data(kIdRole).toULongLong());
}

// --- recovery ------------------------------------------------------------------------------------

RecoveryList::RecoveryList(Workbench& bench, DocumentFace& documents)
    : bench_(bench), list_(new QListWidget), hint_(quietLabel()) {
  list_->setObjectName(QStringLiteral("recoverable"));
  list_->setAccessibleName(QStringLiteral("Recordings to recover"));
  list_->setMinimumHeight(220);
  auto* recover = button(QStringLiteral("Recover"), QStringLiteral("Brings the chosen one back."));
  auto* remove = button(QStringLiteral("Remove …"), QStringLiteral("Deletes its journal."));
  auto* again = button(QStringLiteral("Look again"), QStringLiteral("Lists the journals anew."));
  connect(again, &QPushButton::clicked, this, [this] { look(); });
  connect(recover, &QPushButton::clicked, this, [this, &documents] {
    if (const JournalSession* session = chosen()) documents.recover(*session);
  });
  connect(remove, &QPushButton::clicked, this, [this] {
    if (const JournalSession* session = chosen()) ask(*session);
  });
  connect(&documents, &DocumentFace::changed, this, [this] { look(); });
  QVBoxLayout* column = columnOf(this);
  column->addWidget(list_);
  column->addLayout(rowOf(hint_, {again, remove, recover}));
  look();
}

void RecoveryList::look() {
  struct Found {
    std::vector<JournalSession> sessions;
    int error = 0;
  };
  const auto found = std::make_shared<Found>();
  bench_.desk().post(
      [&bench = bench_, found] {
        JournalCatalogue catalogue(bench.files(), bench.locks(), bench.folders());
        found->sessions = catalogue.sessions(&found->error);
      },
      [self = QPointer<RecoveryList>(this), found] {
        if (!self) return;
        self->sessions_ = std::move(found->sessions);
        self->show(found->error);
      });
}

void RecoveryList::show(int error) {
  list_->clear();
  for (const JournalSession& session : sessions_) list_->addItem(journalText(bench_, session));
  hint_->setText(error != 0
                     ? QStringLiteral("The journals cannot be read: %1").arg(errorText(error))
                 : sessions_.empty() ? QStringLiteral("Nothing waits to be recovered.")
                                     : QString());
}

const JournalSession* RecoveryList::chosen() const {
  const int row = list_->currentRow();
  const bool there = row >= 0 && static_cast<std::size_t>(row) < sessions_.size();
  return there ? &sessions_[static_cast<std::size_t>(row)] : nullptr;
}

/// Removing a journal cannot be undone.
void RecoveryList::ask(const JournalSession& session) {
  auto* box =
      new QMessageBox(QMessageBox::Warning, QStringLiteral("Remove a recording"),
                      QStringLiteral("Remove this recording for good?"), QMessageBox::Cancel, this);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setInformativeText(journalText(bench_, session));
  QPushButton* yes = box->addButton(QStringLiteral("Remove"), QMessageBox::DestructiveRole);
  connect(box, &QMessageBox::finished, this, [this, box, yes, gone = session] {
    if (box->clickedButton() != yes) return;
    bench_.desk().post(
        [&bench = bench_, gone] {
          JournalCatalogue catalogue(bench.files(), bench.locks(), bench.folders());
          static_cast<void>(catalogue.remove(gone));
        },
        [self = QPointer<RecoveryList>(this)] {
          if (self) self->look();
        });
  });
  box->open();
}

}  // namespace ovka::desktop
