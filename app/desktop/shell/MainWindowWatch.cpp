#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <memory>
#include <system_error>
#include <utility>

#include "Banner.h"
#include "BufferVariables.h"
#include "Look.h"
#include "MainWindow.h"
#include "SetupPages.h"
#include "SetupWindow.h"

// What the main window notices by itself, and what the system asks.

namespace ovka::desktop {
namespace {

constexpr double kWarnBefore = 300;    // s before the maximum time
constexpr std::uint64_t kMore = 3600;  // s that a recording is made longer by

}  // namespace

/// The system's alerts and questions, with its own words and buttons.
void MainWindow::showRequests() {
  if (bench_.dialogs().takeBeep()) QApplication::beep();
  while (const auto request = bench_.dialogs().next()) {
    const bool question = request->number != 0;
    auto* box = new QMessageBox(question ? QMessageBox::Question : QMessageBox::Warning,
                                QStringLiteral("OVKA"), QString::fromStdString(request->message),
                                QMessageBox::NoButton, this);
    box->setObjectName(question ? QStringLiteral("question") : QStringLiteral("alert"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(QString::fromStdString(request->detail));
    QPushButton* yes = box->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    if (question) {
      QPushButton* no = box->addButton(QStringLiteral("CANCEL"), QMessageBox::RejectRole);
      box->setDefaultButton(no);
      box->setEscapeButton(no);
      connect(box, &QMessageBox::finished, this, [this, box, yes, number = request->number] {
        bench_.dialogs().answer(number, box->clickedButton() == yes);
      });
    }
    box->open();
  }
}

void MainWindow::watch() {
  if (bench_.engine() == nullptr) return;
  watchEnd();
  watchLine();
  watchCapture();
  watchJournal();
  documents_.refresh();
}

void MainWindow::watchEnd() {
  const Recorder& recorder = bench_.recorder();
  const double left = recorder.secondsLeft();
  const bool soon = recorder.state() == RecordState::Recording && !recorder.loop() &&
                    left < kWarnBefore && left > 0;
  if (!soon) {
    if (recorder.state() == RecordState::Recording) banner_->withdraw(QStringLiteral("end"));
    return;
  }
  const std::uint64_t longer =
      std::min(buffer::maxploop + kMore * buffer::SampleSpeed, buffer::MAXbuffer);
  banner_->show(
      {Banner::Level::Care,
       QStringLiteral("The recording ends in %1, at its maximum time.").arg(clockText(left).mid(2)),
       {},
       {{QStringLiteral("One hour more"),
         [this, longer] { bench_.assign(QStringLiteral("maxploop=%1").arg(longer)); }}},
       QStringLiteral("end")});
}

void MainWindow::watchLine() {
  const bool lost = bench_.engine()->ports().lineState(1) == AmplifierPorts::LineState::Lost;
  if (lost == lineLost_) return;
  lineLost_ = lost;
  if (!lost) {
    banner_->withdraw(QStringLiteral("line"));
    return;
  }
  banner_->show({Banner::Level::Problem,
                 QStringLiteral("The amplifier's line hung up; the program waits for it to come "
                                "back."),
                 QStringLiteral("%1: check the plug or the radio. What is recorded is safe.")
                     .arg(bench_.sourceText()),
                 {{QStringLiteral("Start again"), [this] { useSource(bench_.source()); }}},
                 QStringLiteral("line")});
}

/// At its end a capture pauses by itself.
void MainWindow::watchCapture() {
  if (bench_.source().kind != SourceChoice::Kind::Capture || captureEnded_ ||
      buffer::setPauseX == 0)
    return;
  bench_.askCaptureEnd([this](const QString& damage) {
    if (std::exchange(captureEnded_, true)) return;
    banner_->withdraw(QStringLiteral("music"));  // it tells what plays
    const bool whole = damage.isEmpty();
    banner_->show(
        {whole ? Banner::Level::Note : Banner::Level::Care,
         whole ? QStringLiteral("The capture has come to its end.")
               : QStringLiteral("The capture ends early; everything before that was used."),
         whole ? QStringLiteral("What is shown stands; nothing of it is lost until it goes on.")
               : damage,
         {{QStringLiteral("Start again"), [this] { useSource(bench_.source()); }}},
         QStringLiteral("line")});
  });
}

void MainWindow::watchJournal() {
  if (bench_.recorder().state() != RecordState::Recording) return;
  const JournalStatus status = bench_.engine()->documents()->journal().status();
  const QString key = QStringLiteral("journal");
  if (status.error != 0) {
    banner_->show(
        {Banner::Level::Problem,
         QStringLiteral("The recording is in memory only: its journal cannot be "
                        "written."),
         QStringLiteral("%1: %2. Make room there or save the recording elsewhere.")
             .arg(QString::fromStdString(bench_.folders().resolve(std::string(kJournalFolder))),
                  QString::fromStdString(std::generic_category().message(status.error))),
         {},
         key});
  } else if (status.spaceLow) {
    banner_->show({Banner::Level::Care,
                   QStringLiteral("The disk is nearly full."),
                   QStringLiteral("%1 free, about %2 minutes of recording.")
                       .arg(sizeText(static_cast<double>(status.freeBytes.value_or(0))))
                       .arg(status.minutesLeft.value_or(0)),
                   {},
                   key});
  } else {
    banner_->withdraw(key);
  }
}

/// Recordings that an earlier run could not save.
void MainWindow::offerRecovery() {
  const auto found = std::make_shared<std::size_t>(0);
  const auto first = std::make_shared<std::string>();
  bench_.desk().post(
      [this, found, first] {
        JournalCatalogue catalogue(bench_.files(), bench_.locks(), bench_.folders());
        int error = 0;
        const std::vector<JournalSession> sessions = catalogue.sessions(&error);
        *found = sessions.size();
        if (!sessions.empty()) *first = journalText(bench_, sessions.back()).toStdString();
      },
      [this, found, first] {
        if (*found == 0) return;
        banner_->show(
            {Banner::Level::Care,
             *found == 1 ? QStringLiteral("A recording was not saved when the program ended.")
                         : QStringLiteral("%1 recordings were not saved when the program ended.")
                               .arg(*found),
             QString::fromStdString(*first),
             {{QStringLiteral("Show"), [this] { setup_->showPage(SetupPage::Recovery); }}},
             QStringLiteral("recovery")});
      });
}

}  // namespace ovka::desktop
