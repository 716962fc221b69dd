// Processor time of the live chain at 1920 samples/s, five channels, 1024 points, as a share of one
// core. The virtual amplifier runs in a process of its own, so that its work is not counted; the
// peer is an engine whose line is silent, which is what threads and timers cost by themselves.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "BufferVariables.h"
#include "LiveSession.h"
#include "Print.h"
#include "Signal.h"

using namespace ovka;

namespace {

constexpr std::chrono::seconds kDuration{10};

double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

[[noreturn]] void serveAmplifier(int pathTo) {
  SimulatorOptions options;
  std::string error;
  VirtualAmplifier amplifier(options, makeSignal(options, error));
  PseudoTerminal terminal;
  error = terminal.open();
  if (!error.empty()) _exit(1);
  const std::string path = terminal.path() + "\n";
  if (::write(pathTo, path.data(), path.size()) < 0) _exit(1);
  SimulatorServer server(amplifier, terminal, options.faults);
  const LinuxClock clock;
  while (getppid() != 1) std::this_thread::sleep_for(server.serveOnce(clock.nanoseconds()));
  _exit(0);
}

/// Share of one core while a session runs; `path` empty: no line is open.
double share(const std::string& path, std::int64_t& frames) {
  LiveSession session;
  LiveChoice choice;
  if (!path.empty()) choice.ports = {path};
  choice.assignments = {"SelectDevice=6", "DeviceConfig=3", "SampleSpeed=1920", "fftp=1024",
                        "FixedFramingX=1"};
  const LiveSession::Opened opened = session.open(choice);
  if (!opened.explanation.empty()) {
    std::fprintf(stderr, "error: %s\n", opened.explanation.c_str());
    std::exit(1);
  }
  std::this_thread::sleep_for(std::chrono::seconds(1));
  const double before = processorSeconds();
  const std::int64_t point = buffer::ploop;
  std::this_thread::sleep_for(kDuration);
  const double used = processorSeconds() - before;
  frames = buffer::ploop - point;
  session.close();
  return used / static_cast<double>(kDuration.count());
}

}  // namespace

int main() {
  int ends[2];
  if (pipe(ends) != 0) return 1;
  const pid_t amplifier = fork();
  if (amplifier == 0) serveAmplifier(ends[1]);
  char text[256] = {};
  const ssize_t length = read(ends[0], text, sizeof text - 1);
  if (length <= 1) return 1;
  const std::string path(text, static_cast<std::size_t>(length) - 1);
  setPrintSink([](std::string_view) {});

  std::int64_t frames = 0;
  const double silent = share("", frames);
  const double live = share(path, frames);
  kill(amplifier, SIGTERM);
  waitpid(amplifier, nullptr, 0);
  std::printf("live at 1920 samples/s, 1024 points: %.2f %% of one core (goal: under 5 %%)\n",
              live * 100);
  std::printf("the same engine without a line:      %.2f %% of one core\n", silent * 100);
  std::printf("frames stored a second:              %.1f\n",
              static_cast<double>(frames) / static_cast<double>(kDuration.count()));
  return 0;
}
