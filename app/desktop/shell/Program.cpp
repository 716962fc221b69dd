#include "Program.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QSettings>
#include <QSocketNotifier>
#include <QTimer>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <malloc.h>
#include <memory>
#include <unistd.h>

#include "LiveMusic.h"
#include "Look.h"
#include "MainWindow.h"
#include "MusicMemory.h"
#include "PictureSeries.h"

namespace ovka::desktop {
namespace {

constexpr std::chrono::seconds kSettled{8};

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

/// A terminal's Ctrl-C and the end of the desktop session end the program in order. Nobody may be
/// there to answer a question: what is unsaved is in the journal, which the next start offers.
void closeOnSignals(MainWindow& window) {
  if (pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
  auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &window);
  QObject::connect(notifier, &QSocketNotifier::activated, &window, [&window, notifier] {
    notifier->setEnabled(false);
    window.closeUnasked();
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
  parser.addOption(
      {QStringLiteral("midi"),
       QStringLiteral("MIDI system to use: auto (the first that is there), alsa, jack, "
                      "all or none."),
       QStringLiteral("system"), QStringLiteral("auto")});
  parser.addOption({QStringLiteral("no-midi"),
                    QStringLiteral("Play nothing: no MIDI system and no synthesizer.")});
  parser.addOption({QStringLiteral("play"),
                    QStringLiteral("Play the brain waves with the set-ups that come with the "
                                   "program, on the synthesizer.")});
  parser.addOption({QStringLiteral("audio"),
                    QStringLiteral("Sound output of the synthesizer: pulseaudio, jack or alsa; "
                                   "without it the first that works."),
                    QStringLiteral("driver")});
  parser.addOption({QStringLiteral("sound-font"),
                    QStringLiteral("Sounds of the synthesizer (.sf2, .sf3, .dls)."),
                    QStringLiteral("file")});
  parser.addOption({QStringLiteral("picture"),
                    QStringLiteral("Save a picture of the window after five seconds, then end."),
                    QStringLiteral("file.png")});
  QCommandLineOption pictures(QStringLiteral("pictures"),
                              QStringLiteral("Save the pictures of the manual, then end."),
                              QStringLiteral("folder"));
  pictures.setFlags(QCommandLineOption::HiddenFromHelp);
  parser.addOption(pictures);
}

/// What the line says of music, read before there is an application: the guard process of sounding
/// notes is forked while this process has one thread.
struct MusicChoice {
  bool wanted = true;
  QString systems;
};

MusicChoice musicOf(int argc, char** argv) {
  QStringList line;
  for (int i = 0; i < argc; ++i) line << QString::fromLocal8Bit(argv[i]);
  QCommandLineParser parser;
  addOptions(parser);
  // Options of the toolkit are unknown here; what is wrong with the line is said later.
  static_cast<void>(parser.parse(line));
  MusicChoice choice;
  choice.systems = parser.value(QStringLiteral("midi"));
  const bool ends = parser.isSet(QStringLiteral("help")) ||
                    parser.isSet(QStringLiteral("help-all")) ||
                    parser.isSet(QStringLiteral("version"));
  choice.wanted = !ends && !parser.isSet(QStringLiteral("no-midi"));
  return choice;
}

/// One line about an option whose value is none of its choices; empty: all are.
QString wrongChoice(const QCommandLineParser& parser) {
  struct Row {
    const char* option;
    QStringList values;
  };
  const QStringList drivers{QString(), QStringLiteral("pulseaudio"), QStringLiteral("jack"),
                            QStringLiteral("alsa")};
  QStringList systems;
  for (const std::string_view each : kMidiChoices)
    systems << QString::fromUtf8(each.data(), static_cast<qsizetype>(each.size()));
  for (const Row& row : {Row{"midi", systems}, Row{"audio", drivers}}) {
    const QString value = parser.value(QLatin1String(row.option));
    QStringList values = row.values;
    if (values.contains(value)) continue;
    values.removeAll(QString());
    return QStringLiteral("--%1 takes %2, not '%3'")
        .arg(QLatin1String(row.option), values.join(QStringLiteral(", ")), value);
  }
  return {};
}

/// The user's choices, and the line's over them.
SynthesizerSettings soundOf(const QCommandLineParser& parser) {
  SynthesizerSettings sound = storedSound();
  if (parser.isSet(QStringLiteral("audio")))
    sound.driver = parser.value(QStringLiteral("audio")).toStdString();
  if (parser.isSet(QStringLiteral("sound-font")))
    sound.soundFont = parser.value(QStringLiteral("sound-font")).toStdString();
  return sound;
}

StartChoice choiceOf(const QCommandLineParser& parser) {
  StartChoice choice;
  if (parser.isSet(QStringLiteral("demo"))) choice.source.kind = SourceChoice::Kind::Demo;
  if (parser.isSet(QStringLiteral("port"))) {
    choice.source.kind = SourceChoice::Kind::Serial;
    choice.source.paths = {parser.value(QStringLiteral("port")).toStdString()};
  }
  choice.play = parser.isSet(QStringLiteral("play"));
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
  // What opens documents and draws allocates on a few threads, the live road on none: stores of
  // freed memory for every thread would only keep it from being used again.
  mallopt(M_ARENA_MAX, 2);
  // Pictures of a frame come and go: without a limit the allocator keeps more and more for them.
  mallopt(M_TRIM_THRESHOLD, 1'000'000);
  if (!displayNamed()) {
    std::fputs(kNoDisplay, stderr);
    return 1;
  }
  qInstallMessageHandler(onMessage);
  QCoreApplication::setOrganizationName(QStringLiteral("OVKA"));
  QCoreApplication::setApplicationName(QStringLiteral("ovka-desktop"));
  QCoreApplication::setApplicationVersion(QStringLiteral(OVKA_VERSION));
  const MusicChoice music = musicOf(argc, argv);
  std::unique_ptr<LiveMusic> machine;
  if (music.wanted) machine = std::make_unique<LiveMusic>(music.systems.toStdString());
  QApplication application(argc, argv);
  QApplication::setApplicationDisplayName(QStringLiteral("OVKA"));
  QGuiApplication::setDesktopFileName(QStringLiteral("com.lumetrabox.OVKA"));
  QCommandLineParser parser;
  addOptions(parser);
  parser.process(application);
  if (const QString wrong = wrongChoice(parser); !wrong.isEmpty()) {
    std::fprintf(stderr, "ovka-desktop: %s\n", qUtf8Printable(wrong));
    return 1;
  }
  if (machine) machine->begin(soundOf(parser));
  look::apply();
  const LinuxFolders folders;
  Workbench bench(folders, machine.get());
  MainWindow window(bench);
  closeOnSignals(window);
  window.show();
  starting = false;
  window.start(choiceOf(parser));
  // Styles, fonts and first pictures leave much memory behind that nobody uses any more.
  QTimer::singleShot(kSettled, &window,
                     [&bench] { bench.desk().post([] { malloc_trim(0); }, {}); });
  if (parser.isSet(QStringLiteral("picture")))
    savePicture(window, parser.value(QStringLiteral("picture")));
  if (parser.isSet(QStringLiteral("pictures")))
    savePictures(window, parser.value(QStringLiteral("pictures")));
  return QApplication::exec();
}

}  // namespace ovka::desktop
