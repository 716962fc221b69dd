#include <atomic>
#include <csignal>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "JournalBench.h"
#include "LinuxClock.h"
#include "LinuxFileLocks.h"
#include "LinuxFiles.h"
#include "LinuxThreadLauncher.h"
#include "SharedTold.h"
#include "TemporaryFolder.h"

// Real processes, files and times: what a killed program leaves behind.

using namespace ovka;
using namespace ovka::testing;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kSpeed = 1920;
constexpr std::int64_t kFirstFrame = 1000;

/// What the acquiring process tells the one that kills it.
struct Told {
  std::atomic<std::int64_t> frames{0};
  std::atomic<bool> ended{false};
};

/// A looping acquisition whose journal is real.
struct RealJournal : BufferBench {
  RealJournal(std::uint64_t capacity, const std::string& folder)
      : BufferBench(capacity), folders(folder) {
    buffer::SampleSpeed = kSpeed;
    buffer::setLoopModeX = 1;
    buffer::setRecModeX = 1;
    journal.start(threads);
  }
  LinuxFiles files;
  LinuxFileLocks locks;
  LinuxClock clock;
  FixedFolder folders;
  FakeHost host;
  JournalWriter journal{{store, files, locks, folders, host, clock}};
  LinuxThreadLauncher threads;
};

/// Acquires at the real rate until it is killed.
[[noreturn]] void acquireForEver(const std::string& folder, std::uint64_t capacity, Told& told) {
  RealJournal real(capacity, folder);
  const std::int64_t start = real.clock.nanoseconds();
  for (std::int64_t stored = 0;;) {
    const std::int64_t due = (real.clock.nanoseconds() - start) / 1000 * kSpeed / 1'000'000;
    while (stored < due) {
      real.store.storeFrame(frameOf(kFirstFrame + stored));
      told.frames = ++stored;
    }
    ::usleep(5000);
  }
}

std::map<std::string, std::string> filesIn(const fs::path& folder) {
  std::map<std::string, std::string> contents;
  for (const auto& entry : fs::directory_iterator(folder))
    contents[entry.path()] = contentsOf(entry.path());
  return contents;
}

/// Checks that the buffer holds the frames up to some moment, back to the first one or a full
/// round. That moment: frames stored by then.
std::int64_t checkRecovered(const SampleStore& store, std::int64_t capacity) {
  const std::int64_t position = buffer::ploop;
  const std::int64_t newest = (position + capacity - 1) % capacity;
  const std::int64_t frames = store.storedValue(0, newest) - kFirstFrame + 1;
  const std::int64_t held = std::min(frames, capacity);
  std::int64_t wrong = 0;
  for (std::int64_t i = 0; i < held; ++i) {
    const std::int64_t frame = kFirstFrame + frames - 1 - i;
    const std::int64_t point = (newest + capacity - i % capacity) % capacity;
    wrong += wrongPoints(store, point, point + 1, frame);
  }
  CHECK(wrong == 0);
  return frames;
}

/// Returns whether there was anything to recover.
bool killOnce(const std::string& folder, std::uint64_t capacity, std::chrono::milliseconds after,
              std::size_t recordings, std::int64_t* mostLost) {
  const SharedTold<Told> told;
  const auto before = filesIn(folder);
  const pid_t child = ::fork();
  REQUIRE(child >= 0);
  if (child == 0) acquireForEver(folder, capacity, *told);
  std::this_thread::sleep_for(after);
  LinuxFiles files;
  LinuxFileLocks locks;
  const FixedFolder folders(folder);
  int error = 0;
  const auto sessions = [&] {
    return JournalCatalogue(files, locks, folders).sessions(&error).size();
  };
  // A running recording is nobody's to recover.
  const std::size_t waiting = sessions();
  CHECK(waiting == recordings);
  ::kill(child, SIGKILL);
  const std::int64_t stored = told->frames;
  int status = 0;
  REQUIRE(::waitpid(child, &status, 0) == child);
  REQUIRE(WIFSIGNALED(status));

  std::vector<std::string> parts;
  for (const auto& [path, bytes] : filesIn(folder)) {
    const auto old = before.find(path);
    if (old == before.end()) parts.push_back(path);
    if (old != before.end()) CHECK(old->second == bytes);
  }
  CHECK(error == 0);
  // A loop is cut into parts; together they are one recording.
  CHECK(sessions() == waiting + (parts.empty() ? 0 : 1));
  std::int64_t recovered = 0;
  if (!parts.empty()) {
    const Recovered back(files, parts);
    CHECK(back.problem == "");
    CHECK(back.session.damagedPlaces + back.session.missingPoints == 0);
    CHECK(buffer::SampleSpeed == kSpeed);
    recovered = checkRecovered(back.store, static_cast<std::int64_t>(capacity));
  }
  *mostLost = std::max(*mostLost, stored - recovered);
  CHECK(stored - recovered <= kSpeed);
  return !parts.empty();
}

}  // namespace

TEST_CASE("killed while acquiring at 1920 samples a second: at most one second is lost") {
  const TemporaryFolder folder;
  std::random_device seed;
  std::mt19937 random(seed());
  const bool thorough = std::getenv("OVKA_LONG_TESTS") != nullptr;
  std::int64_t mostLost = 0;
  std::size_t recordings = 0;
  for (int round = 0; round < (thorough ? 200 : 10); ++round) {
    CAPTURE(round);
    // Every other round loops over a third of a second.
    const std::uint64_t capacity = round % 2 == 0 ? 432'000 : 640;
    const auto after = std::chrono::milliseconds(random() % (thorough ? 3000 : 1200));
    CAPTURE(after.count());
    if (killOnce(folder.path(), capacity, after, recordings, &mostLost)) ++recordings;
  }
  MESSAGE("most lost: " << mostLost * 1000 / kSpeed << " ms");
}

TEST_CASE(
    "a folder that cannot be made, and one that vanishes: recording goes on, all comes back") {
  const TemporaryFolder place;
  const fs::path folder = place.at("OVKABackups");
  std::ofstream(folder) << "in the way";
  JournalBenchOn<LinuxFiles> bench(432'000, folder);
  bench.acquire(10s);
  CHECK(bench.printed.find(folder.string() + "; recording goes on in memory") != std::string::npos);
  fs::remove(folder);
  bench.acquire(10s);
  CHECK(bench.journal.status().error == 0);
  fs::remove_all(folder);
  bench.printed.clear();
  bench.acquire(10s);
  CHECK(bench.printed.find("No such file or directory(2).\n") != std::string::npos);
  CHECK(bench.printed.find("goes on in " + folder.string()) != std::string::npos);
  bench.journal.stop();
  const auto left = filesIn(folder);
  REQUIRE(left.size() == 1);
  REQUIRE(buffer::ploop == 3600);
  const Recovered back(bench.disk, {left.begin()->first});
  CHECK(buffer::ploop == 3600);
  CHECK(wrongPoints(back.store, 0, 3600, 1000) == 0);
}

TEST_CASE("every call at once on real threads") {
  const TemporaryFolder folder;
  const std::string document = folder.at("note");
  std::ofstream(document) << "{}";
  RealJournal real(2000, folder.path());
  JournalWriter& journal = real.journal;
  std::atomic<bool> done = false;
  std::thread acquisition([&] {
    for (std::int64_t frame = kFirstFrame; !done; ++frame) {
      real.store.storeFrame(frameOf(frame));
      if (frame % 100 == 0) std::this_thread::sleep_for(2ms);
    }
  });
  const auto until = std::chrono::steady_clock::now() + 1500ms;
  for (std::uint64_t round = 1; std::chrono::steady_clock::now() < until; ++round) {
    journal.annotate({journalformat::AnnotationChange::Set, round % 5, 7, "text"});
    if (round % 3 == 0) CHECK(journal.flush() == 0);
    if (round % 5 == 0) CHECK(journal.documentSaved(document, buffer::ploop) == 0);
    if (round % 7 == 0) journal.noteRewritten(0, 100);
    if (round % 11 == 0) journal.newRecording();
    if (round % 13 == 0) journal.noteCleared();
    CHECK(journal.status().error == 0);
    std::this_thread::sleep_for(3ms);
  }
  done = true;
  acquisition.join();
  real.threads.stopAll();
  journal.stop();
  journal.discard();
  int error = 0;
  JournalCatalogue catalogue(real.files, real.locks, real.folders);
  for (const JournalSession& session : catalogue.sessions(&error)) {
    CHECK(session.damagedPlaces + session.missingPoints == 0);
    CHECK(session.endedInOrder);
  }
}

TEST_CASE("locks and process names") {
  const TemporaryFolder folder;
  const std::string path = folder.at("file");
  std::ofstream(path) << "x";
  LinuxFileLocks locks;
  int error = 0;
  auto held = locks.lock(path, &error);
  REQUIRE(held != nullptr);
  CHECK(locks.lock(path, &error) == nullptr);
  CHECK(error == EWOULDBLOCK);
  held.reset();
  CHECK(locks.lock(path, &error) != nullptr);
  CHECK(locks.lock(path + "x", &error) == nullptr);
  CHECK(error == ENOENT);

  const std::string mark = locks.processMark();
  CHECK(locks.isRunning(mark));
  CHECK_FALSE(locks.isRunning(""));
  CHECK_FALSE(locks.isRunning("../self 1 x"));
  CHECK_FALSE(locks.isRunning(mark.substr(0, mark.size() - 1)));  // another boot
}
