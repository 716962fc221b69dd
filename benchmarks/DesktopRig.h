#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <vector>

#include "LatencyMeter.h"
#include "LinuxClock.h"
#include "MidiTransport.h"
#include "View.h"

// What the benchmark of the windows measures with.
namespace ovka::bench {

/// Takes messages and notes how far apart they come; those of one tick count as one.
struct MeteredTransport final : MidiTransport {
  std::atomic<std::uint64_t> taken{0};
  LatencyMeter intervals;
  std::string name() const override { return "in-memory double"; }
  int open(const MidiNames&, const MidiReaders&) override { return 0; }
  std::string explanation() const override { return {}; }
  std::vector<MidiEndpoint> destinations() override { return {{1, "A"}}; }
  std::vector<MidiEndpoint> sources() override { return {}; }
  std::vector<MidiDevice> devices() override { return {}; }
  std::vector<MidiDevice> externalDevices() override { return {}; }
  int connectSource(std::uint64_t) override { return 0; }
  int send(std::uint64_t, std::uint64_t, std::span<const std::uint8_t>) override {
    const std::int64_t now = clock_.nanoseconds();
    const std::int64_t before = last_.exchange(now);
    if (before != 0 && now - before > kSameTick) intervals.record(now - before);
    taken.fetch_add(1, std::memory_order_relaxed);
    return 0;
  }
  int received(std::uint64_t, std::span<const std::uint8_t>) override { return 0; }
  void rescan() override {}
  std::uint64_t changes() const override { return 0; }
  bool connected() const override { return true; }
  std::uint64_t dropped() const override { return 0; }
  void close() override {}

 private:
  static constexpr std::int64_t kSameTick = 200'000;  // ns
  LinuxClock clock_;
  std::atomic<std::int64_t> last_{0};
};

/// Counts how often each view was really painted.
class Paints final : public QObject {
 public:
  void follow(desktop::View& view) { view.installEventFilter(this); }
  void restart() { counts_.fill(0); }
  [[nodiscard]] int of(display::ViewKind kind) const {
    return counts_[static_cast<std::size_t>(kind)];
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) {
      const auto* view = static_cast<desktop::View*>(watched);
      ++counts_[static_cast<std::size_t>(view->kind())];
    }
    return false;
  }

 private:
  std::array<int, display::kViewKinds> counts_{};
};

inline double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Processor time of the calling thread (s): what a frame costs, however busy the machine is.
inline double threadSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Handles events, waiting for them as a program does.
inline void runFor(double seconds) {
  QElapsedTimer time;
  time.start();
  const auto left = [&] {
    return static_cast<int>(seconds * 1000) - static_cast<int>(time.elapsed());
  };
  while (left() > 0) {
    QEventLoop loop;
    QTimer::singleShot(left(), &loop, &QEventLoop::quit);
    loop.exec();
  }
}

/// False after a minute.
inline bool runUntil(const std::function<bool()>& met) {
  for (int i = 0; i < 3000 && !met(); ++i) runFor(0.02);
  return met();
}

inline double median(std::vector<double> values) {
  std::ranges::sort(values);
  return values.empty() ? 0 : values[values.size() / 2];
}

/// What a process occupies, and how much of it are samples (MB): the open beginnings of the large
/// ranges of addresses in which channels grow.
struct Memory {
  double all = 0;
  double samples = 0;
};
inline Memory memoryOf(long process) {
  constexpr unsigned long long kLarge = 100'000'000;
  Memory memory;
  const std::string path = "/proc/" + std::to_string(process) + "/smaps";
  std::FILE* file = std::fopen(path.c_str(), "r");
  if (file == nullptr) return memory;
  char line[4096];
  double before = 0, here = 0, kilobytes = 0;
  unsigned long long end = 0, first = 0, last = 0;
  char rights[5] = {};
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (std::sscanf(line, "%llx-%llx %4s", &first, &last, rights) == 3) {
      before = here;
      here = 0;
      const bool shut = std::string(rights) == "---p" && last - first > kLarge;
      if (shut && first == end) memory.samples += before;
      end = last;
    } else if (std::sscanf(line, "Rss: %lf kB", &kilobytes) == 1) {
      here = kilobytes / 1000;
      memory.all += here;
    }
  }
  std::fclose(file);
  return memory;
}

}  // namespace ovka::bench
