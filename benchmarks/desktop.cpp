// The windows, drawn by the processor on an X server without a screen, beside the same engine with
// no window: how often every view is painted, what that takes away from acquisition, analysis and
// MIDI, what a long spectrum costs, memory, and what a paused window costs.
// Usage: bench_desktop [seconds of each round, 5 unless given]
#include <QDockWidget>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

#include "BufferVariables.h"
#include "DesktopRig.h"
#include "FFTVariables.h"
#include "LinuxFiles.h"
#include "MainWindow.h"
#include "MusicMachine.h"
#include "Print.h"
#include "TemporaryFolder.h"
#include "ViewDocks.h"
#include "VirtualDisplay.h"

using namespace ovka;
using namespace ovka::desktop;
using namespace ovka::bench;

namespace {

constexpr QSize kSize(1200, 700);
int roundSeconds = 5;

/// Plays on one MIDI system; there is nothing to look for.
class MeteredMusic final : public MusicMachine {
 public:
  explicit MeteredMusic(const MidiMachine* midi) : midi_(midi) {}
  [[nodiscard]] const MidiMachine* machine() const override { return midi_; }
  void look() override {}
  [[nodiscard]] std::vector<MusicFinding> findings() const override { return {}; }
  [[nodiscard]] SynthesizerSettings sound() const override { return {}; }
  void setSound(const SynthesizerSettings& /*sound*/) override {}

 private:
  const MidiMachine* midi_;
};

/// The main window with all seven views side by side, on the virtual amplifier.
struct Shown {
  explicit Shown(std::vector<std::string> settings, const MidiMachine* midi = nullptr)
      : music(midi), bench(folders, &music), window(bench) {
    for (std::size_t kind = 0; kind < display::kViewKinds; ++kind)
      paints.follow(window.views().view(static_cast<ViewKind>(kind)));
    SourceChoice choice;
    choice.kind = SourceChoice::Kind::Demo;
    choice.settings = std::move(settings);
    bool open = false;
    bench.openSource(choice, [&open](const QString& problem) {
      open = true;
      if (!problem.isEmpty()) std::printf("error: %s\n", qUtf8Printable(problem));
    });
    if (!runUntil([&open] { return open; }) || bench.engine() == nullptr) std::exit(1);
    window.resize(kSize);
    openAll();
  }
  /// Two rows; no view hides another.
  void openAll() {
    using K = ViewKind;
    ViewDocks& views = window.views();
    for (const auto& [beside, kind] :
         {std::pair{K::RawWave, K::Newave}, std::pair{K::Newave, K::EEGSpectrum},
          std::pair{K::Waterfall, K::Spectrum3D}}) {
      views.splitDockWidget(&views.dock(beside), &views.dock(kind), Qt::Horizontal);
      views.dock(kind).show();
    }
  }
  void show() {
    window.show();
    bench.feed().start();
    runFor(1);
  }
  void hide() {
    bench.feed().stop();
    window.hide();
    runFor(0.2);
  }

  LinuxFolders folders;
  MeteredMusic music;
  Workbench bench;
  MainWindow window;
  Paints paints;
};

/// What the engine did in a while.
struct Work {
  double frames = 0, passes = 0, messages = 0;  ///< a second
  double typical = 0, late = 0;                 ///< between messages (ms): median, 99th percentile
  double painted = 0;                           ///< a second: the raw wave, which every frame moves
  double cost = 0;                              ///< of a frame, processor time of the windows (ms)
  std::uint64_t lost = 0;
};

Work measure(Shown& shown, MeteredTransport& midi, bool window) {
  Engine& engine = *shown.bench.engine();
  shown.paints.restart();
  midi.intervals.reset();
  engine.losses().reset();
  const std::int64_t frames = buffer::ploop;
  const std::uint64_t passes = engine.fft().ticksComputed(), messages = midi.taken;
  const double used = threadSeconds();
  QElapsedTimer time;
  time.start();
  if (window)
    runFor(roundSeconds);
  else
    std::this_thread::sleep_for(std::chrono::seconds(roundSeconds));
  const double seconds = static_cast<double>(time.nsecsElapsed()) * 1e-9;
  Work work;
  std::int64_t stored = buffer::ploop - frames;
  if (stored < 0) stored += static_cast<std::int64_t>(buffer::maxploop.get());
  work.frames = static_cast<double>(stored) / seconds;
  work.passes = static_cast<double>(engine.fft().ticksComputed() - passes) / seconds;
  work.messages = static_cast<double>(midi.taken - messages) / seconds;
  work.typical = static_cast<double>(midi.intervals.median()) * 1e-6;
  work.late = static_cast<double>(midi.intervals.percentile(0.99)) * 1e-6;
  work.painted = shown.paints.of(ViewKind::RawWave) / seconds;
  work.cost = (threadSeconds() - used) * 1000 / std::max(shown.paints.of(ViewKind::RawWave), 1);
  for (const LossCause& cause : kLossCauses) work.lost += (engine.losses().*cause.count).get();
  return work;
}

void print(const char* what, const std::vector<Work>& rounds) {
  const auto of = [&rounds](double Work::*value) {
    std::vector<double> values;
    for (const Work& work : rounds) values.push_back(work.*value);
    return median(values);
  };
  std::uint64_t lost = 0;
  for (const Work& work : rounds) lost += work.lost;
  std::printf(
      "%-18s %6.1f frames/s painted  %7.1f samples/s  %6.1f passes/s  %7.1f messages/s, "
      "%.2f ms apart, 99th %.2f ms  lost %llu\n",
      what, of(&Work::painted), of(&Work::frames), of(&Work::passes), of(&Work::messages),
      of(&Work::typical), of(&Work::late), static_cast<unsigned long long>(lost));
}

const std::vector<std::string> kFast{"SelectDevice=6", "DeviceConfig=3", "SampleSpeed=1920",
                                     "fftp=1024", "maxploop=400000"};

/// `timing`: which interval of the MIDI table the set-up has.
void atWork(const std::string& timing) {
  MeteredTransport transport;
  const MidiMachine midi{{&transport}, nullptr, nullptr, {}, {}};
  std::vector<std::string> settings = kFast;
  for (const char* each :
       {"MIDIoutONEX[0]=1", "ONInputEX[0]=1", "NoteOffOnEX[0]=0", "ControlEX[0]=1"})
    settings.emplace_back(each);
  settings.push_back("SendMIDItimingEX[0]=" + timing);
  Shown shown(settings, &midi);
  std::vector<Work> without, with;
  for (int round = 0; round < 5; ++round) {
    shown.hide();
    without.push_back(measure(shown, transport, false));
    shown.show();
    with.push_back(measure(shown, transport, true));
  }
  std::printf(
      "seven views in %dx%d, 1920 samples/s, MIDI interval %s (goal: 30 frames/s, nothing lost, "
      "intervals kept):\n",
      kSize.width(), kSize.height(), timing.c_str());
  print("  no window", without);
  print("  seven views", with);
  std::vector<double> passes, messages;
  for (std::size_t i = 0; i < with.size(); ++i) {
    passes.push_back(with[i].passes / without[i].passes);
    messages.push_back(with[i].messages / without[i].messages);
  }
  std::vector<double> costs;
  for (const Work& work : with) costs.push_back(work.cost);
  std::printf(
      "  with window over without:  passes %.3f  messages %.3f;  a frame costs the windows' "
      "thread %.1f ms\n",
      median(passes), median(messages), median(costs));
}

/// A repaint of all of the spectrum up to half the sample speed.
void longSpectrum() {
  Shown shown(kFast);
  shown.hide();
  const std::unique_ptr<View> view(makeView(ViewKind::Spectrum, shown.bench.feed()));
  view->setRange(0, 960);
  view->resize(kSize);
  view->show();
  runFor(0.5);
  const auto time = [](const std::function<void()>& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) * 1e-6;
  };
  std::vector<double> repaints, frames;
  std::vector<double> shortest;
  for (int round = 0; round < 9; ++round) {
    std::array<double, 2> repaint{}, frame{};
    for (const bool large : {false, true}) {
      if (!shown.bench.engine()->assign(large ? "fftp=65536" : "fftp=1024").empty()) std::exit(1);
      runFor(0.3);
      std::vector<double> once, whole;
      for (int i = 0; i < 40; ++i) {
        whole.push_back(time([&] {
          shown.bench.feed().pull();
          view->repaint();
        }));
        once.push_back(time([&view] { view->repaint(); }));
        QApplication::processEvents();
      }
      repaint[large ? 1 : 0] = median(once);
      frame[large ? 1 : 0] = median(whole);
    }
    shortest.push_back(repaint[0]);
    repaints.push_back(repaint[1] / repaint[0]);
    frames.push_back(frame[1] / frame[0]);
  }
  std::printf(
      "spectrum of 65536 points over one of 1024, %dx%d: repaint %.2f (of %.2f ms; goal: at "
      "most 1.20), with the pull of its frame %.2f\n",
      kSize.width(), kSize.height(), median(repaints), median(shortest), median(frames));
}

/// What a paused window with all views costs, beside the same engine alone.
void idle() {
  Shown shown({});
  shown.show();
  auto* const record = shown.window.findChild<QPushButton*>("record");
  auto* const pause = shown.window.findChild<QPushButton*>("pause");
  Recorder& recorder = shown.bench.recorder();
  if (record == nullptr || pause == nullptr) std::exit(1);
  record->click();
  const bool records = runUntil([&] { return recorder.state() == RecordState::Recording; });
  runFor(2);
  pause->click();
  if (!records || !runUntil([&] { return recorder.state() == RecordState::Paused; })) std::exit(1);
  std::vector<double> with, without;
  for (int round = 0; round < 3; ++round) {
    shown.show();
    runFor(3);  // what follows slowly has settled
    const double before = processorSeconds();
    runFor(roundSeconds);
    with.push_back((processorSeconds() - before) / roundSeconds * 100);
    shown.hide();
    const double between = processorSeconds();
    std::this_thread::sleep_for(std::chrono::seconds(roundSeconds));
    without.push_back((processorSeconds() - between) / roundSeconds * 100);
  }
  std::printf(
      "paused: %.2f %% of one core, of which engine and virtual amplifier take %.2f %% "
      "(goal: under 2 %%)\n",
      median(with), median(without));
  recorder.noteDiscarded();
}

/// The real program, with the arrangement that the window before it kept.
void memory() {
  {
    Shown shown({});
    shown.show();
    shown.window.close();
  }
  const pid_t child = fork();
  if (child == 0) {
    execl(OVKA_DESKTOP_PROGRAM, OVKA_DESKTOP_PROGRAM, "--demo", static_cast<char*>(nullptr));
    _exit(1);
  }
  runFor(15);
  const Memory memory = memoryOf(child);
  kill(child, SIGTERM);
  waitpid(child, nullptr, 0);
  std::printf(
      "the program with all views after 15 s: %.1f MB, of which samples %.1f MB; without "
      "them %.1f MB (goal: at most 200 MB)\n",
      memory.all, memory.samples, memory.all - memory.samples);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) roundSeconds = std::max(1, std::atoi(argv[1]));
  const ovka::testing::VirtualDisplay screen;
  if (!screen.works()) {
    std::printf("skipped: no X server without a screen here (package xvfb)\n");
    return 0;
  }
  screen.use();
  const ovka::testing::TemporaryFolder home;
  setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
  setenv("OVKA_HOME", home.path().c_str(), 1);
  setPrintSink([](std::string_view) {});
  QCoreApplication::setOrganizationName("OVKA");
  QCoreApplication::setApplicationName("ovka-desktop");
  QApplication application(argc, argv);
  atWork("0");  // as fast as the MIDI thread ticks
  atWork("1");  // 25 ms
  longSpectrum();
  idle();
  memory();
  return 0;
}
