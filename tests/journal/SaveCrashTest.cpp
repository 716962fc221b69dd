#include <array>
#include <atomic>
#include <csignal>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "CapturedPrint.h"
#include "DocumentDesk.h"
#include "Engine.h"
#include "HeapAddressSpace.h"
#include "JournalBench.h"
#include "LinuxAddressSpace.h"
#include "LinuxClock.h"
#include "LinuxFileLocks.h"
#include "LinuxFiles.h"
#include "LinuxRunLoop.h"
#include "LinuxSerialPorts.h"
#include "LinuxThreadLauncher.h"
#include "SharedTold.h"
#include "TemporaryFolder.h"

// A real process that records and saves over one document again and again, killed at any moment.

using namespace ovka;
using namespace ovka::testing;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

constexpr std::int64_t kSpeed = 1920;
/// Points that each recording begins with, so that a save takes its time.
constexpr std::int64_t kHead = 20'000;
constexpr std::int64_t kGeneration = 50'000;

std::int64_t firstFrameOf(std::int64_t generation) {
  return 1000 + generation * kGeneration;
}

struct Told {
  std::atomic<std::int64_t> generation{-1};  ///< of the recording that runs
  std::atomic<std::int64_t> frames{0};       ///< of it, behind the head
  std::atomic<std::int64_t> saved{-1};       ///< the newest one whose save returned
  std::atomic<bool> saving{false};
  std::array<std::atomic<std::int64_t>, 100> lengths{};  ///< by generation of this process
};

/// What documents need of this machine; OVKA_HOME says where.
struct Keeping {
  explicit Keeping(bool records)
      : documents{files, locks, folders, host, dialogs, records, records, {}} {
    dialogs.answer = false;
  }
  LinuxFiles files;
  LinuxFileLocks locks;
  LinuxFolders folders;
  LinuxHostFacts host;
  FakeDialogs dialogs;
  DocumentMachine documents;
};

/// Records and saves until it is killed.
class Recorder {
 public:
  explicit Recorder(Told& told) : told_(told) {}

  [[noreturn]] void run(const std::string& document, std::int64_t firstGeneration, unsigned seed) {
    std::mt19937 random(seed);
    bool ready =
        engine_.assign("SampleSpeed=1920").empty() && engine_.assign("DeviceConfig=3").empty();
    ready = engine_.assign("maxploop=50000").empty() && engine_.start().empty() && ready;
    if (!ready) ::_exit(3);
    engine_.documents()->panel().SevDevConfig4();
    buffer::setRecModeX = kRecording;
    for (std::int64_t generation = firstGeneration;; ++generation) {
      record(generation, std::chrono::milliseconds(random() % 60));
      DocumentError error;
      told_.saving = true;
      if (!engine_.documents()->save(document, &error)) ::_exit(4);
      told_.saved = generation;
      told_.saving = false;
    }
  }

 private:
  void record(std::int64_t generation, std::chrono::milliseconds duration) {
    JournalWriter& journal = engine_.documents()->journal();
    buffer::ploop = 0;
    journal.newRecording();
    std::int64_t frame = firstFrameOf(generation);
    for (std::int64_t i = 0; i < kHead; ++i) engine_.store().storeFrame(frameOf(frame++));
    if (journal.flush() != 0) ::_exit(5);
    told_.frames = 0;
    told_.generation = generation;
    const auto start = std::chrono::steady_clock::now();
    std::int64_t stored = 0;
    for (auto past = start - start; past < duration; ::usleep(2000)) {
      past = std::chrono::steady_clock::now() - start;
      const std::int64_t due = past / std::chrono::microseconds(1) * kSpeed / 1'000'000;
      for (; stored < due; told_.frames = ++stored) engine_.store().storeFrame(frameOf(frame++));
    }
    told_.lengths[static_cast<std::size_t>(generation % 100)] = kHead + stored;
  }

  Told& told_;
  Keeping keeping_{true};
  LinuxClock clock_;
  LinuxThreadLauncher threads_;
  LinuxRunLoop mainLoop_;
  LinuxAddressSpace space_;
  LinuxSerialPorts serial_;
  Engine engine_{
      Machine{clock_, threads_, mainLoop_, space_, serial_, nullptr, &keeping_.documents}};
};

/// An engine that only looks at what is on the disk.
struct Reader {
  Keeping keeping{false};
  ManualTime time;
  HeapAddressSpace space;
  LinuxSerialPorts serial;
  Engine engine{Machine{time, time, time, space, serial, nullptr, &keeping.documents}};

  Reader() {
    REQUIRE(engine.assign("maxploop=50000").empty());
    REQUIRE(engine.start().empty());
    engine.documents()->panel().SevDevConfig4();
  }
  /// The generation that the buffer holds from its first point to the current one, and nothing
  /// else.
  std::int64_t generation() {
    const std::int64_t first = engine.store().storedValue(0, 0);
    CHECK(wrongPoints(engine.store(), 0, buffer::ploop, first) == 0);
    CHECK((first - 1000) % kGeneration == 0);
    return (first - 1000) / kGeneration;
  }
};

struct Figures {
  int whileSaving = 0;
  int newContent = 0;                            ///< of those while saving
  std::int64_t mostLost = 0;                     ///< frames
  std::int64_t document = -1;                    ///< generation that the document holds
  std::map<std::int64_t, std::int64_t> lengths;  ///< points by generation; 0: not complete
};

/// Every backup file is the whole block of one recording.
void checkBackups(const std::string& folder, const Figures& figures) {
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    const std::string bytes = contentsOf(folder + "/CH" + std::to_string(channel) + "DATA.ovka");
    if (bytes.empty()) continue;
    REQUIRE(bytes.size() % 4 == 0);
    std::vector<std::int32_t> samples(bytes.size() / 4);
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    const bool known = std::any_of(figures.lengths.begin(), figures.lengths.end(), [&](auto& each) {
      if (each.second != static_cast<std::int64_t>(samples.size())) return false;
      for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::int64_t frame = firstFrameOf(each.first) + static_cast<std::int64_t>(i);
        if (samples[i] != sampleOf(frame, channel)) return false;
      }
      return true;
    });
    CHECK(known);
  }
}

/// Frames of a recording, behind its head, that the journals hold; the journals go.
std::int64_t journaledFrames(Reader& reader, std::int64_t generation) {
  JournalCatalogue& catalogue = reader.engine.documents()->catalogue();
  int error = 0;
  std::int64_t most = 0;
  for (const JournalSession& session : catalogue.sessions(&error)) {
    CHECK(reader.engine.documents()->recover(session, true) == "");
    if (reader.generation() == generation) most = std::max(most, buffer::ploop - kHead);
    CHECK(catalogue.remove(session) == 0);
  }
  CHECK(error == 0);
  return most;
}

void killOnce(const std::string& document, int round, std::chrono::milliseconds after,
              Figures* figures) {
  const SharedTold<Told> told;
  told->saved = figures->document;
  const pid_t child = ::fork();
  REQUIRE(child >= 0);
  if (child == 0) Recorder(*told).run(document, round * 100, static_cast<unsigned>(round));
  std::this_thread::sleep_for(after);
  // Most kills hit a save that has just begun or gone on for a while.
  const auto patience = std::chrono::steady_clock::now() + 20s;
  while (round % 5 != 0 && !told->saving && std::chrono::steady_clock::now() < patience)
    ::usleep(200);
  // 0 to 230 ms, short ones far more often: on a fast disk a save takes a few milliseconds.
  const auto spread = static_cast<useconds_t>(after.count() % 25);
  ::usleep(spread * spread * 400);
  ::kill(child, SIGKILL);
  int status = 0;
  REQUIRE(::waitpid(child, &status, 0) == child);
  REQUIRE(WIFSIGNALED(status));
  const std::int64_t running = told->generation;
  for (std::int64_t each = round * 100; each <= running; ++each)
    figures->lengths[each] = told->lengths[static_cast<std::size_t>(each % 100)];

  Reader reader;
  if (fs::exists(document)) {
    DocumentError error;
    REQUIRE_MESSAGE(reader.engine.documents()->open(document, &error), error.detail);
    figures->document = reader.generation();
    CHECK(buffer::ploop == figures->lengths[figures->document]);
  }
  const bool isNew = figures->document == running;
  figures->whileSaving += told->saving ? 1 : 0;
  figures->newContent += isNew && told->saving ? 1 : 0;
  CHECK((figures->document == told->saved || (isNew && told->saving)));
  const std::int64_t journaled = journaledFrames(reader, running);
  if (!isNew && running >= 0) {
    figures->mostLost = std::max(figures->mostLost, told->frames - journaled);
    CHECK(told->frames - journaled <= kSpeed);
  }
  checkBackups(reader.keeping.folders.resolve(kJournalFolder), *figures);
}

int partsIn(const std::string& folder) {
  int count = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    count += entry.path().extension() == ".part" ? 1 : 0;
  return count;
}

}  // namespace

TEST_CASE("killed while saving: the document is the old one or the new one, a second is lost") {
  const TemporaryFolder folder;
  ::setenv("OVKA_HOME", folder.at("home").c_str(), 1);
  const CapturedPrint quiet;
  const std::string document = folder.at("a.ovkanote");
  const int rounds = std::getenv("OVKA_LONG_TESTS") != nullptr ? 240 : 10;
  std::mt19937 random(std::random_device{}());
  Figures figures;
  int leftovers = 0;
  // Chance decides where a kill falls: a few rounds more until enough of them fell inside a save.
  const auto goesOn = [&](int round) {
    return round <= rounds || (figures.whileSaving < rounds / 4 && round <= 8 * rounds);
  };
  for (int round = 1; goesOn(round); ++round) {
    CAPTURE(round);
    const auto after = std::chrono::milliseconds(100 + random() % 700);
    CAPTURE(after.count());
    killOnce(document, round, after, &figures);
    leftovers = std::max(leftovers, partsIn(folder.path()));
  }
  MESSAGE(rounds << " kills, " << figures.whileSaving << " while saving (" << figures.newContent
                 << " times the new document stood already); most lost: "
                 << figures.mostLost * 1000 / kSpeed << " ms; unfinished files at most "
                 << leftovers);
  CHECK(figures.whileSaving >= rounds / 4);
  // One for the document and one a backup: they do not pile up, and the next save removes them.
  CHECK(leftovers <= 6);
  Reader reader;
  DocumentError error;
  CHECK(reader.engine.documents()->save(document, &error));
  CHECK(partsIn(folder.path()) == 0);
  ::unsetenv("OVKA_HOME");
}
