// Saving and opening a recording of 24 hours at 120 samples/s, five channels, beside the plain work
// of as many bytes on the same disk, in turns; medians. Peers: a buffered write of the document's
// length with the same ending (sync, rename, sync of the folder), a read of the document. Every
// piece of work runs in a process of its own, whose greatest memory (and what of it is not samples)
// and processor time, of all threads, are told as well. Files are read from the page cache, where a
// plain read costs least. Usage: bench_document [folder, "." unless given] [rounds, 7] [points,
// 10368000]

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "BufferVariables.h"
#include "DocumentDesk.h"
#include "Engine.h"
#include "LinuxAddressSpace.h"
#include "LinuxFileLocks.h"
#include "LinuxFiles.h"
#include "LinuxSerialPorts.h"
#include "ManualTime.h"
#include "Print.h"

using namespace ovka;

namespace {

constexpr std::size_t kPieceBytes = 256U << 10U;

struct Choice {
  std::string folder = ".";
  int rounds = 7;
  std::int64_t points = 24 * 3600 * 120;
  [[nodiscard]] std::string at(const char* name) const { return folder + "/" + name; }
};

struct Outcome {
  double seconds = 0;
  double processor = 0;  ///< seconds of all threads
  double peak = 0;       ///< bytes
};

struct QuietDialogs final : Dialogs {
  void alert(std::string_view /*message*/, std::string_view /*detail*/) override {}
  bool confirm(std::string_view /*message*/, std::string_view /*detail*/) override { return false; }
  void beep() override {}
};

struct OneFolder final : Folders {
  explicit OneFolder(std::string backups) : backups_(std::move(backups)) {}
  std::string resolve(std::string_view path) const override {
    return backups_ + std::string(path.substr(path.rfind('/')));
  }
  std::string backups_;
};

/// An engine that works on files. Backups go to a folder; to one that is not there they fail, and
/// the save is made from the memory alone.
class Rig {
 public:
  Rig(const Choice& choice, bool backups)
      : folders_(choice.at(backups ? "bench-backups" : "no-such-folder")) {
    setPrintSink([](std::string_view) {});
    ready(engine_.start().empty());
    for (const char* setting : {"SelectDevice=6", "DeviceConfig=3"})
      ready(engine_.assign(setting).empty());
    desk().switches().save.setAll(true);
    desk().switches().save.set(DocumentSwitch::PreferenceOnly, false);
    desk().switches().open.setAll(true);
    for (const DocumentSwitch off : {DocumentSwitch::BrainDataOnly, DocumentSwitch::PreferenceOnly,
                                     DocumentSwitch::AutoPortSetupWhenOpen}) {
      desk().switches().open.set(off, false);
    }
  }
  static void ready(bool done) {
    if (!done) std::_Exit(2);
  }
  DocumentDesk& desk() { return *engine_.documents(); }

  void record(std::int64_t points) {
    ready(engine_.assign("maxploop=" + std::to_string(points)).empty());
    std::mt19937 random(1);
    std::vector<std::int32_t> piece(kPieceBytes / 4);
    for (std::int64_t at = 0; at < points; at += static_cast<std::int64_t>(piece.size())) {
      for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
        for (std::int32_t& value : piece) value = static_cast<std::int32_t>(random()) >> 8;
        engine_.store().storeStored(channel, at, piece);
      }
    }
    buffer::ploop = points;
  }
  void save(const Choice& choice) {
    DocumentError error;
    ready(desk().save(choice.at("bench.ovkanote"), &error));
  }
  void open(const Choice& choice) {
    DocumentError error;
    ready(desk().open(choice.at("bench.ovkanote"), &error) && buffer::ploop == choice.points);
  }

 private:
  ManualTime time_;
  LinuxAddressSpace space_;
  LinuxSerialPorts serial_;
  LinuxFiles files_;
  LinuxFileLocks locks_;
  OneFolder folders_;
  LinuxHostFacts facts_;
  QuietDialogs dialogs_;
  DocumentMachine documents_{files_, locks_, folders_, facts_, dialogs_, false, false, {}};
  Engine engine_{{time_, time_, time_, space_, serial_, nullptr, &documents_}};
};

void plainWrite(const Choice& choice) {
  const std::uint64_t length = std::filesystem::file_size(choice.at("bench.ovkanote"));
  const std::vector<std::byte> piece(kPieceBytes, std::byte{'5'});
  int error = 0;
  const auto file = LinuxFiles().write(choice.at("bench.plain"), WriteMode::Atomic, &error);
  for (std::uint64_t done = 0; error == 0 && done < length; done += piece.size())
    error =
        file->write(std::span(piece).first(std::min<std::uint64_t>(piece.size(), length - done)));
  Rig::ready(error == 0 && file->commit() == 0);
}

void plainRead(const Choice& choice) {
  int error = 0;
  const auto file = LinuxFiles().read(choice.at("bench.ovkanote"), &error);
  std::vector<std::byte> piece(kPieceBytes);
  std::size_t got = 1;
  for (std::uint64_t at = 0; got > 0; at += got) Rig::ready(file->readAt(at, piece, &got) == 0);
}

double peakBytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::atof(line.c_str() + 6) * 1024;
  }
  return 0;
}

double processorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Times what `prepare` returns, in a process of its own.
Outcome measured(const std::function<std::function<void()>()>& prepare) {
  int ends[2];
  Rig::ready(pipe(ends) == 0);
  const pid_t child = fork();
  if (child == 0) {
    const std::function<void()> work = prepare();
    const double processor = processorSeconds();
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    const Outcome outcome{took.count(), processorSeconds() - processor, peakBytes()};
    _exit(write(ends[1], &outcome, sizeof outcome) == sizeof outcome ? 0 : 1);
  }
  close(ends[1]);
  Outcome outcome;
  const bool told = read(ends[0], &outcome, sizeof outcome) == sizeof outcome;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (!told) {
    std::fprintf(stderr, "a piece of work failed: is there room on the disk?\n");
    std::exit(1);
  }
  return outcome;
}

struct Work {
  const char* name;
  std::size_t peer;  ///< whose time is the unit
  std::function<std::function<void()>()> prepare;
  std::vector<double> seconds{};
  std::vector<double> processor{};
  double peak = 0;
};

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

std::vector<Work> works(const Choice& choice) {
  const auto saving = [&choice](bool backups) {
    return [&choice, backups]() -> std::function<void()> {
      const auto rig = std::make_shared<Rig>(choice, backups);
      rig->record(choice.points);
      return [rig, &choice] { rig->save(choice); };
    };
  };
  const auto opening = [&choice](bool touched) {
    return [&choice, touched]() -> std::function<void()> {
      const auto rig = std::make_shared<Rig>(choice, true);
      if (touched) rig->open(choice);
      return [rig, &choice] { rig->open(choice); };
    };
  };
  const auto plain = [&choice](void (*work)(const Choice&)) {
    return [&choice, work]() -> std::function<void()> { return [&choice, work] { work(choice); }; };
  };
  return {{"plain write", 0, plain(plainWrite)},     {"save, five backups", 0, saving(true)},
          {"save, no backups", 0, saving(false)},    {"plain read", 3, plain(plainRead)},
          {"open, fresh memory", 3, opening(false)}, {"open, used memory", 3, opening(true)}};
}

}  // namespace

int main(int argc, char** argv) {
  Choice choice;
  if (argc > 1) choice.folder = argv[1];
  if (argc > 2) choice.rounds = std::max(1, std::atoi(argv[2]));
  if (argc > 3) choice.points = std::max(1LL, std::atoll(argv[3]));
  std::filesystem::create_directories(choice.at("bench-backups"));
  std::vector<Work> all = works(choice);
  measured(all[1].prepare);  // the document that the others need
  for (int round = 0; round < choice.rounds; ++round) {
    for (Work& work : all) {
      ::sync();  // what the one before left to the disk is not the next one's to wait for
      const Outcome outcome = measured(work.prepare);
      work.seconds.push_back(outcome.seconds);
      work.processor.push_back(outcome.processor);
      work.peak = std::max(work.peak, outcome.peak);
    }
  }
  const double bytes = static_cast<double>(choice.points) * buffer::kChannels;
  const double samples = bytes * 4;
  const auto length = static_cast<double>(std::filesystem::file_size(choice.at("bench.ovkanote")));
  std::printf(
      "%lld points a channel: a document of %.1f MB, samples of %.1f MiB; while recorded the "
      "buffer "
      "holds byte arrays of %.1f MiB besides\n",
      static_cast<long long>(choice.points), length / 1e6, samples / 1048576, bytes / 1048576);
  for (const Work& work : all) {
    const Work& peer = all[work.peer];
    std::printf(
        "%-20s %7.3f s %5.2f x peer | processor %7.3f s %5.2f x peer | peak %6.1f MiB%+.1f\n",
        work.name, median(work.seconds), median(work.seconds) / median(peer.seconds),
        median(work.processor), median(work.processor) / median(peer.processor),
        work.peak / 1048576, (work.peak - samples) / 1048576);
  }
  for (const char* name : {"bench.ovkanote", "bench.plain", "bench-backups"})
    std::filesystem::remove_all(choice.at(name));
}
