#include <QFileDialog>
#include <QSettings>
#include <algorithm>

#include "AmplifierModels.h"
#include "Banner.h"
#include "BufferVariables.h"
#include "LinuxSerialPorts.h"
#include "MainWindow.h"
#include "SetupWindow.h"
#include "TransportRow.h"

// Where the samples come from: what is chosen, remembered, and why it does not work.

namespace ovka::desktop {
namespace {

/// The source used last, as long as its ports are there.
SourceChoice rememberedSource() {
  SourceChoice demo;
  demo.kind = SourceChoice::Kind::Demo;
  const QSettings settings;
  SourceChoice choice;
  choice.kind = SourceChoice::Kind::Serial;
  choice.model = settings.value(QStringLiteral("source/model"), -1).toInt();
  if (amplifierModel(static_cast<std::uint32_t>(choice.model)) == nullptr) choice.model = -1;
  LinuxSerialPorts serial;
  const std::vector<SerialDevice> devices = serial.devices(nullptr);
  for (const QString& path : settings.value(QStringLiteral("source/ports")).toStringList()) {
    choice.paths.push_back(path.toStdString());
    if (std::ranges::find(devices, choice.paths.back(), &SerialDevice::path) == devices.end())
      return demo;
  }
  const bool some = !choice.paths.empty() && choice.paths.size() <= AmplifierPorts::kInputs;
  return some ? choice : demo;
}

}  // namespace

void MainWindow::connectSource() {
  connect(transport_, &TransportRow::sourceChosen, this, &MainWindow::useSource);
  connect(transport_, &TransportRow::documentWanted, &documents_, &DocumentFace::openWithDialog);
  connect(transport_, &TransportRow::captureWanted, this, &MainWindow::chooseCapture);
  connect(transport_, &TransportRow::performWanted, this, &MainWindow::performAction);
}

void MainWindow::chooseCapture() {
  auto* dialog = new QFileDialog(this, QStringLiteral("Open a capture"), {},
                                 QStringLiteral("Captures (*.cap);;All files (*)"));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& path) {
    SourceChoice choice;
    choice.kind = SourceChoice::Kind::Capture;
    choice.paths = {path.toStdString()};
    useSource(choice);
  });
  dialog->open();
}

void MainWindow::start(const StartChoice& choice) {
  SourceChoice source = choice.source;
  if (source.kind == SourceChoice::Kind::None) source = rememberedSource();
  bench_.feed().start();
  const QString document = choice.document;
  const bool play = choice.play;
  bench_.openSource(source, [this, document, play, source](const QString& problem) {
    transport_->listSources();
    if (!problem.isEmpty()) showSourceProblem(source, problem);
    if (!document.isEmpty()) openFile(document);
    if (play) music_.play();
    offerRecovery();
  });
}

void MainWindow::useSource(const SourceChoice& choice) {
  SourceChoice plain = choice;
  plain.settings.clear();
  documents_.guard(QStringLiteral("another source is started"), [this, plain] {
    bench_.openSource(plain, [this, plain](const QString& problem) {
      transport_->listSources();
      documents_.refresh();
      banner_->withdraw(QStringLiteral("source"));
      banner_->withdraw(QStringLiteral("line"));
      lineLost_ = captureEnded_ = false;
      if (problem.isEmpty())
        rememberSource(plain);
      else
        showSourceProblem(plain, problem);
    });
  });
}

/// A capture is looked at once; ports and the demo are what one works with.
void MainWindow::rememberSource(const SourceChoice& choice) const {
  if (choice.kind == SourceChoice::Kind::Capture) return;
  QSettings settings;
  QStringList ports;
  if (choice.kind == SourceChoice::Kind::Serial) {
    for (const std::string& path : choice.paths) ports << QString::fromStdString(path);
    settings.setValue(QStringLiteral("source/model"), buffer::SelectDevice.get());
  }
  settings.setValue(QStringLiteral("source/ports"), ports);
}

void MainWindow::showSourceProblem(const SourceChoice& choice, const QString& problem) {
  banner_->show({Banner::Level::Problem,
                 QStringLiteral("The source could not be started."),
                 problem,
                 {{QStringLiteral("Try again"), [this, choice] { useSource(choice); }}},
                 QStringLiteral("source")});
}

/// The system's own way to a port: its preset, then the line. It begins in a session without input,
/// since the port takes the place of any other source.
void MainWindow::switchPort(const QString& selector) {
  documents_.guard(QStringLiteral("the port is switched on"), [this, selector] {
    const SourceChoice before = bench_.source();
    const std::string chosen = before.kind == SourceChoice::Kind::Serial && !before.paths.empty()
                                   ? before.paths.front()
                                   : std::string();
    bench_.openSource({}, [this, selector, chosen](const QString& problem) {
      if (!problem.isEmpty()) showSourceProblem({}, problem);
      bench_.switchPort(selector.toStdString(), chosen, [this] {
        transport_->listSources();
        documents_.refresh();
        lineLost_ = false;
        if (bench_.source().kind == SourceChoice::Kind::Serial) rememberSource(bench_.source());
      });
    });
  });
}

}  // namespace ovka::desktop
