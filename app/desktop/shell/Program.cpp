#include "Program.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTimer>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "Look.h"
#include "MainWindow.h"
#include "PictureSeries.h"

namespace ovka::desktop {
namespace {

constexpr const char* kNoDisplay =
    "ovka-desktop: no display can be opened here (DISPLAY and WAYLAND_DISPLAY name none that "
    "answers).\nThe terminal view needs none: ovka live --demo\n";

bool displayNamed() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
}

/// Until the window is there, a fatal message means that the display does not answer.
bool starting = true;

void onMessage(QtMsgType type, const QMessageLogContext& /*where*/, const QString& text) {
  if (type == QtFatalMsg && starting) {
    std::fputs(kNoDisplay, stderr);
    std::fflush(stderr);
    _exit(1);
  }
  if (type == QtDebugMsg || type == QtInfoMsg) return;
  // While starting, what the toolkit says about displays is said better above.
  if (starting && text.contains(QLatin1String("could not connect to display"))) return;
  std::fprintf(stderr, "ovka-desktop: %s\n", qUtf8Printable(text));
}

int signalPipe[2] = {-1, -1};

void onSignal(int /*signal*/) {
  const int kept = errno;
  static_cast<void>(!write(signalPipe[1], "x", 1));
  errno = kept;
}

/// A terminal's Ctrl-C and the end of the desktop session close the window in order.
void closeOnSignals(MainWindow& window) {
  if (pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
  auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &window);
  QObject::connect(notifier, &QSocketNotifier::activated, &window, [&window, notifier] {
    notifier->setEnabled(false);
    window.close();
  });
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, onSignal);
}

void addOptions(QCommandLineParser& parser) {
  parser.setApplicationDescription(
      QStringLiteral("Shows the brain waves of an EEG amplifier, records and plays them."));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument(QStringLiteral("file"),
                               QStringLiteral("A document or capture to open."),
                               QStringLiteral("[file]"));
  parser.addOption({QStringLiteral("demo"), QStringLiteral("Start with the virtual amplifier.")});
  parser.addOption({QStringLiteral("port"), QStringLiteral("Start with this serial port."),
                    QStringLiteral("path")});
  parser.addOption({QStringLiteral("picture"),
                    QStringLiteral("Save a picture of the window after five seconds, then end."),
                    QStringLiteral("file.png")});
  QCommandLineOption pictures(QStringLiteral("pictures"),
                              QStringLiteral("Save the pictures of the manual, then end."),
                              QStringLiteral("folder"));
  pictures.setFlags(QCommandLineOption::HiddenFromHelp);
  parser.addOption(pictures);
}

StartChoice choiceOf(const QCommandLineParser& parser) {
  StartChoice choice;
  if (parser.isSet(QStringLiteral("demo"))) choice.source.kind = SourceChoice::Kind::Demo;
  if (parser.isSet(QStringLiteral("port"))) {
    choice.source.kind = SourceChoice::Kind::Serial;
    choice.source.paths = {parser.value(QStringLiteral("port")).toStdString()};
  }
  if (!parser.positionalArguments().isEmpty())
    choice.document = QFileInfo(parser.positionalArguments().front()).absoluteFilePath();
  return choice;
}

void savePicture(MainWindow& window, const QString& path) {
  QTimer::singleShot(5000, &window, [&window, path] {
    const bool saved = window.grab().save(path);
    if (!saved) std::fprintf(stderr, "ovka-desktop: cannot write %s\n", qUtf8Printable(path));
    QApplication::exit(saved ? 0 : 1);
  });
}

void savePictures(MainWindow& window, const QString& folder) {
  auto* series = new PictureSeries(window, folder);
  QObject::connect(series, &PictureSeries::finished, &window,
                   [](bool all) { QApplication::exit(all ? 0 : 1); });
}

}  // namespace

int runProgram(int argc, char** argv) {
  if (!displayNamed()) {
    std::fputs(kNoDisplay, stderr);
    return 1;
  }
  qInstallMessageHandler(onMessage);
  QCoreApplication::setOrganizationName(QStringLiteral("OVKA"));
  QCoreApplication::setApplicationName(QStringLiteral("ovka-desktop"));
  QCoreApplication::setApplicationVersion(QStringLiteral(OVKA_VERSION));
  QApplication application(argc, argv);
  QApplication::setApplicationDisplayName(QStringLiteral("OVKA"));
  QGuiApplication::setDesktopFileName(QStringLiteral("com.lumetrabox.OVKA"));
  QCommandLineParser parser;
  addOptions(parser);
  parser.process(application);
  look::apply();
  const LinuxFolders folders;
  Workbench bench(folders);
  MainWindow window(bench);
  closeOnSignals(window);
  window.show();
  starting = false;
  window.start(choiceOf(parser));
  if (parser.isSet(QStringLiteral("picture")))
    savePicture(window, parser.value(QStringLiteral("picture")));
  if (parser.isSet(QStringLiteral("pictures")))
    savePictures(window, parser.value(QStringLiteral("pictures")));
  return QApplication::exec();
}

}  // namespace ovka::desktop
