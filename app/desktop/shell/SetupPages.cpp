#include "SetupPages.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <memory>
#include <system_error>

#include "BufferVariables.h"
#include "DocumentFace.h"
#include "Look.h"
#include "QuietLabel.h"
#include "SetupLists.h"
#include "SetupWindow.h"
#include "ShownTimer.h"

namespace ovka::desktop {
namespace {

/// Shows the name that holds.
void showPresetName(Workbench& bench, QLineEdit* field) {
  Engine* engine = bench.engine();
  if (engine == nullptr) return;
  const auto text = std::make_shared<std::string>();
  bench.desk().post([engine, text] { *text = engine->documents()->panel().outputPath(); },
                    [text, field = QPointer<QLineEdit>(field)] {
                      if (field) field->setText(QString::fromStdString(*text));
                    });
}

/// The name of the preset file in the folder of presets.
QWidget* makePresetName(Workbench& bench) {
  auto* part = new QWidget;
  auto* row = new QHBoxLayout(part);
  row->setContentsMargins(0, look::kGrid, 0, 0);
  auto* field = new QLineEdit;
  field->setObjectName(QStringLiteral("outputPathChanged:"));
  field->setAccessibleName(QStringLiteral("Name of the preset file"));
  field->setToolTip(QStringLiteral("The preset file that is loaded and saved below."));
  QObject::connect(field, &QLineEdit::editingFinished, field, [&bench, field] {
    Engine* engine = bench.engine();
    if (engine == nullptr || !field->isModified()) return;
    bench.desk().post([engine, text = field->text().toStdString()] {
      engine->documents()->setOutputPathField(text);
      static_cast<void>(engine->actions().perform("outputPathChanged:"));
    });
    showPresetName(bench, field);
  });
  showPresetName(bench, field);
  auto* label = new QLabel(QStringLiteral("Preset file"));
  label->setBuddy(field);
  label->setMinimumWidth(120);
  row->addWidget(label);
  row->addWidget(field, 1);
  return part;
}

QString journalState(Workbench& bench) {
  const JournalStatus status = bench.engine()->documents()->journal().status();
  QString text =
      QStringLiteral(
          "Every recording is written to a journal while it is made, so that a crash "
          "or a power cut costs a second at most. Journals and backups lie in %1.")
          .arg(QString::fromStdString(bench.folders().resolve(std::string(kJournalFolder))));
  if (!status.path.empty())
    text +=
        QStringLiteral("\n\nNow: %1, %2")
            .arg(QString::fromStdString(status.path), sizeText(static_cast<double>(status.bytes)));
  if (status.freeBytes)
    text += QStringLiteral("\nFree: %1").arg(sizeText(static_cast<double>(*status.freeBytes)));
  if (status.error != 0)
    text += QStringLiteral("\nThe journal cannot be written (%1): the recording is in memory only.")
                .arg(QString::fromStdString(std::generic_category().message(status.error)));
  return text;
}

/// Where the running recording is kept, and how long the disk holds out.
QWidget* makeJournal(Workbench& bench) {
  QLabel* label = quietLabel(journalState(bench));
  label->setObjectName(QStringLiteral("journal"));
  new ShownTimer(label, 500, [&bench, label] {
    if (bench.engine() != nullptr) label->setText(journalState(bench));
  });
  return label;
}

}  // namespace

QString pointText(std::int64_t point) {
  const auto speed = static_cast<double>(buffer::SampleSpeed.get());
  const double seconds = static_cast<double>(point) / speed;
  return clockText(seconds) + QStringLiteral(".%1").arg(static_cast<int>(seconds * 10) % 10);
}

QString journalText(Workbench& bench, const JournalSession& session) {
  const LocalTime time = bench.facts().localTime(session.startWall);
  const auto two = [](int value) { return QStringLiteral("%1").arg(value, 2, 10, QChar(u'0')); };
  return QStringLiteral("%1-%2-%3 %4:%5   ")
             .arg(QString::number(time.year), two(time.month), two(time.day), two(time.hour),
                  two(time.minute)) +
         QString::fromStdString(describe(session));
}

QWidget* makeOwnPart(SetupPage page, Workbench& bench, DocumentFace& documents,
                     SetupWindow& window) {
  switch (page) {
    case SetupPage::Device:
      return new PortList(window);
    case SetupPage::Presets:
      return makePresetName(bench);
    case SetupPage::Annotations:
      return new AnnotationList(bench);
    case SetupPage::Backup:
      return makeJournal(bench);
    case SetupPage::Recovery:
      return new RecoveryList(bench, documents);
    default:
      return nullptr;
  }
}

}  // namespace ovka::desktop
