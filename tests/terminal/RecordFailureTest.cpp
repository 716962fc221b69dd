#include <chrono>
#include <csignal>
#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "OwnMounts.h"
#include "TerminalHome.h"

// The whole program on disks that fail, and killed: a recording always ends up somewhere.

using namespace ovka::testing;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

/// Points of a document; 0 when it cannot be read.
int pointsOf(Home& home, const std::string& file) {
  if (home.run({"info", file}) != 0) return 0;
  const std::size_t at = home.out.find(" points at ");
  return at == std::string::npos ? 0 : std::atoi(home.out.c_str() + home.out.rfind('\n', at) + 1);
}

std::vector<std::string> recordLine(const std::string& file, const std::string& seconds) {
  return {"record", file, "--demo", "--speed", "1920", "--seconds", seconds, "--interval", "0.2"};
}

/// Points that the running program told of last.
int toldPoints(const Home& home) {
  const std::string said = contentsOf(home.at("err"));
  const std::size_t last = said.rfind(" points, journal");
  return last == std::string::npos ? 0 : std::atoi(said.c_str() + said.rfind("  ", last) + 2);
}

/// Waits until the running program said something.
bool waitFor(const std::string& path, const std::string& text) {
  for (int i = 0; i < 1000; ++i) {
    if (holds(contentsOf(path), text)) return true;
    std::this_thread::sleep_for(10ms);
  }
  return false;
}

/// Lets the recording begin, changes something, and ends it when `text` was said and enough came.
void under(Home& home, const std::function<void()>& change, const std::string& text = {}) {
  waitFor(home.at("err"), " points, journal");
  change();
  waitFor(home.at("err"), text);
  for (int i = 0; i < 1000 && toldPoints(home) < 2000; ++i) std::this_thread::sleep_for(10ms);
  ::kill(::getpid(), SIGINT);
}

struct Case {
  const char* what;
  const char* placeSize;  ///< of the disk that the document goes to; nullptr: large
  const char* homeSize;   ///< of the disk of journals and backups
  void (*before)(Home&);  ///< nullptr, or what else is wrong
  void (*during)(Home&);  ///< nullptr, or what a second person does
  int code;
  std::vector<const char*> says;
  const char* document;  ///< where the recording is afterwards
};

void readOnly(const std::string& folder) {
  ::mount("none", folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
}

/// Everything beside the document's folder is full too.
void fillTheRest(Home& home) {
  mountSmallDisk("/var/tmp", "4k");
  ::setenv("HOME", home.at("home").c_str(), 1);
  ::setenv("TMPDIR", home.at("home").c_str(), 1);
}

const std::vector<Case> kCases{
    {"the document's disk is full",
     "64k",
     nullptr,
     nullptr,
     nullptr,
     5,
     {"No space left on device", "the recording is saved as "},
     "home/Shared/OVKADocuments/a.ovkanote"},
    {"the disk of journals and backups is full",
     nullptr,
     "16k",
     nullptr,
     nullptr,
     0,
     {"recording goes on in memory", "No space left on device", "Error writing the backup"},
     "place/a.ovkanote"},
    {"every disk is full until somebody makes room",
     "64k",
     "16k",
     fillTheRest,
     [](Home& home) {
       if (waitFor(home.at("err"), "in memory only: no disk takes it"))
         resizeDisk(home.at("place"), "64m");
     },
     0,
     {"tries again every 5 seconds"},
     "place/a.ovkanote"},
    {"no disk takes the document, but the journal holds it",
     "64k",
     "64k",
     fillTheRest,
     nullptr,
     5,
     {"kept in its journal, 'ovka recover FILE' saves it"},
     "place/b.ovkanote"},
    {"journals and backups are on a disk that may only be read",
     nullptr,
     "1m",
     [](Home& home) { readOnly(home.at("home")); },
     nullptr,
     0,
     {"Read-only file system", "recording goes on in memory"},
     "place/a.ovkanote"},
    {"the document's disk turns read-only under the recording",
     "1m",
     nullptr,
     nullptr,
     [](Home& home) { under(home, [&] { readOnly(home.at("place")); }); },
     5,
     {"Read-only file system", "the recording is saved as "},
     "home/Shared/OVKADocuments/a.ovkanote"},
    {"the folder of journals and backups vanishes",
     nullptr,
     nullptr,
     nullptr,
     [](Home& home) {
       under(
           home, [&] { fs::remove_all(home.at("home/Shared")); }, "No such file or directory");
     },
     0,
     {"No such file or directory"},
     "place/a.ovkanote"},
    {"the document's folder vanishes",
     nullptr,
     nullptr,
     nullptr,
     [](Home& home) { under(home, [&] { fs::remove_all(home.at("place")); }); },
     5,
     {"No such file or directory", "the recording is saved as "},
     "home/Shared/OVKADocuments/a.ovkanote"},
};

/// In the child: 0, or which step failed.
int runCase(Home& home, const Case& now) {
  for (const char* name : {"home", "place"}) {
    fs::create_directories(home.at(name));
    fs::permissions(home.at(name), fs::perms::all);
  }
  if (now.placeSize != nullptr && !mountSmallDisk(home.at("place"), now.placeSize)) return 90;
  if (now.homeSize != nullptr && !mountSmallDisk(home.at("home"), now.homeSize)) return 91;
  if (now.before != nullptr) now.before(home);
  std::thread other([&] {
    if (now.during != nullptr) now.during(home);
  });
  const bool interrupted = now.during != nullptr && now.before == nullptr;
  const int code = home.run(recordLine(home.at("place/a.ovkanote"), interrupted ? "60" : "1.5"));
  other.join();
  const std::string said = home.err;
  if (holds(said, "'ovka recover FILE'")) {
    resizeDisk(home.at("place"), "64m");
    home.run({"recover", home.at("place/b.ovkanote")});
  }
  const int points = pointsOf(home, home.at(now.document));
  home.run({"recover"});
  write(home.at("result"), "code " + std::to_string(code) + ", points " +
                               (points > 1920 ? "enough" : std::to_string(points)) + "\n" +
                               home.out + said);
  return 0;
}

}  // namespace

TEST_CASE("record on disks that are full, read-only or gone") {
  for (const Case& now : kCases) {
    CAPTURE(now.what);
    Home home;
    const int ran = inOwnMounts([&] { return runCase(home, now); });
    if (ran == -1) {
      MESSAGE("skipped: no mounts of one's own are permitted here");
      return;
    }
    CHECK(ran == 0);
    const std::string result = contentsOf(home.at("result"));
    CAPTURE(result);
    CHECK(holds(result, "code " + std::to_string(now.code) + ", points enough\n"));
    // The document holds all of it: nothing waits to be recovered.
    CHECK(holds(result, "No recording waits to be recovered."));
    for (const char* text : now.says) CHECK_MESSAGE(holds(result, text), text);
  }
}

TEST_CASE("record killed: recover brings back all but the last second") {
  Home home;
  std::mt19937 random(std::random_device{}());
  for (int round = 0; round < 3; ++round) {
    const std::string file = home.at("a.ovkanote");
    const pid_t child = ::fork();
    REQUIRE(child >= 0);
    if (child == 0) {
      home.run({"record", file, "--force", "--demo", "--speed", "1920", "--seconds", "60",
                "--interval", "0.2"});
      ::_exit(0);
    }
    REQUIRE(waitFor(home.at("err"), " points, journal"));
    std::this_thread::sleep_for(std::chrono::milliseconds(800 + random() % 500));
    ::kill(child, SIGKILL);
    int status = 0;
    REQUIRE(::waitpid(child, &status, 0) == child);
    REQUIRE(WIFSIGNALED(status));
    const int told = toldPoints(home);
    CHECK(told > 0);
    CHECK(home.run({"recover", file, "--force", "--number", "2"}) == 2);
    REQUIRE(home.run({"recover", file, "--force"}) == 0);
    CHECK(pointsOf(home, file) >= told - 1920);
    home.run({"recover"});
    CHECK(home.out == "No recording waits to be recovered.\n");
    fs::remove(home.at("err"));
  }
}

TEST_CASE("a looping recording is saved whole, in the order of time") {
  Home home;
  const std::string file = home.at("a.ovkanote");
  REQUIRE(home.run({"record", file, "--demo", "--speed", "512", "--signal", "sequence", "--set",
                    "FixedFramingX=1", "--set", "setLoopModeX=1", "--set", "maxploop=700",
                    "--seconds", "2.5"}) == 0);
  CHECK(pointsOf(home, file) == 700);
  REQUIRE(home.run({"convert", file, home.at("a.csv")}) == 0);
  const std::string rows = contentsOf(home.at("a.csv"));
  // Channel 1 carries the frame's number, scaled by 1.25: it rises by 1 or 2 from row to row.
  int wrong = 0;
  int before = 0;
  std::size_t at = rows.find('\n') + 1;
  for (int row = 0; row < 700; ++row, at = rows.find('\n', at) + 1) {
    const std::size_t comma = rows.find(',', rows.find(',', at) + 1);
    const int value = std::atoi(rows.c_str() + comma + 1);
    wrong += row > 0 && value - before != 1 && value - before != 2 ? 1 : 0;
    before = value;
  }
  CHECK(wrong == 0);
  home.run({"recover"});
  CHECK(home.out == "No recording waits to be recovered.\n");
}
