#include <doctest/doctest.h>
#include <functional>

#include "CapturedPrint.h"
#include "CapturingSerialPorts.h"
#include "FakeLines.h"
#include "MemoryBytes.h"
#include "ReplaySerialPorts.h"

using namespace ovka;
using namespace std::chrono_literals;

namespace {

using Bytes = std::vector<std::uint8_t>;
/// What a reader met, in order: the step that met it and the bytes or the event.
using Log = std::vector<std::pair<std::string, std::string>>;

/// A reader that opens a line as the system does: it waits for two greeting lines, sends a command,
/// takes one read at once, and then polls every 15 ms; a line that goes is reopened every second.
class Reader {
 public:
  Reader(SerialPorts& lines, ManualTime& time, std::string path)
      : lines_(lines), path_(std::move(path)) {
    time.repeat("port", 15ms, [this] { poll(); });
    time.repeat("reopen", 1s, [this] {
      if (descriptor_ < 0 && wanted_) open();
    });
  }

  void open() {
    wanted_ = true;
    const SerialResult result = lines_.open(path_);
    if (result.error != 0) return;
    descriptor_ = static_cast<int>(result.value);
    for (int line = 0; line < 2; ++line) {
      while (lines_.waitReadable(descriptor_, 100) == SerialWait::TimedOut) {
        if (++patience_ > 50) return;
      }
      take("greeting");
    }
    const Bytes command{'S', 'R', '\r'};
    static_cast<void>(lines_.write(descriptor_, command));
    look("first");
    polling_ = true;
  }

  Log log;

 private:
  void poll() {
    if (polling_) look("poll");
  }
  void look(const char* step) {
    const SerialWait found = lines_.waitReadable(descriptor_, 0);
    if (found == SerialWait::Ready) take(step);
    if (found == SerialWait::HungUp) end(step, "hung up");
  }
  void take(const char* step) {
    Bytes bytes(4096);
    const SerialResult result = lines_.read(descriptor_, bytes);
    if (result.value <= 0) return end(step, "error " + std::to_string(result.error));
    log.emplace_back(step, std::string(bytes.begin(), bytes.begin() + result.value));
  }
  void end(const char* step, const std::string& why) {
    log.emplace_back(step, why);
    lines_.close(descriptor_);
    descriptor_ = -1;
    polling_ = false;
  }

  SerialPorts& lines_;
  std::string path_;
  int descriptor_ = -1;
  int patience_ = 0;
  bool polling_ = false;
  bool wanted_ = false;
};

/// A capture in memory that has been begun.
struct Capture {
  MemorySink sink;
  CaptureWriter writer{sink};
  explicit Capture(std::int64_t start = 0) { REQUIRE(writer.begin(start, {})); }
};

/// The same, read again.
struct Reading {
  MemorySource source;
  CaptureReader reader{source};
  explicit Reading(const Bytes& capture) : source(capture) { REQUIRE(reader.begin()); }
};

struct Recording {
  Bytes capture;
  Log log;
};

/// Runs the reader against scripted lines for `seconds` and records it.
Recording record(const std::vector<FakeLines::Arrival>& script, int seconds,
                 std::int64_t writeTakes = 0) {
  ManualTime time(1'700'000'000'000'000'000);
  FakeLines lines(time, script);
  lines.writeTakes = writeTakes;
  Capture capture(time.wallNanoseconds());
  time.advance(2345ms);  // the line is opened some time after the start
  Recording result;
  {
    CapturingSerialPorts capturing(lines, time, capture.writer, time);
    Reader reader(capturing, time, "/dev/a");
    time.advance(777ms);
    reader.open();
    time.advance(std::chrono::seconds(seconds));
    CHECK(capturing.finish());
    result.log = reader.log;
    time.stopAll();
  }
  result.capture = capture.sink.bytes;
  return result;
}

Log replay(const Bytes& capture, bool withClock, int seconds) {
  ManualTime time;
  Reading reading(capture);
  ReplaySerialPorts lines(
      reading.reader, time,
      withClock ? ReplaySerialPorts::AdvanceTo([&time](std::int64_t to) { time.advanceTo(to); })
                : ReplaySerialPorts::AdvanceTo{});
  CHECK(lines.firstPath() == "/dev/a");
  Reader host(lines, time, lines.firstPath());
  host.open();
  for (int tenth = 0; tenth < seconds * 10 && !lines.finished(); ++tenth) time.advance(100ms);
  CHECK(lines.finished());
  CHECK(reading.reader.error().empty());
  CHECK(lines.skippedBlocks() == 0);
  time.stopAll();
  return host.log;
}

std::vector<FakeLines::Arrival> steadyStream(std::int64_t from, int blocks) {
  std::vector<FakeLines::Arrival> script;
  for (int i = 0; i < blocks; ++i) {
    // Neither a multiple of the poll nor regular, with a pause now and then.
    const std::int64_t at =
        from + i * 11'300'000LL + (i % 7) * 1'900'000LL + i / 50 * 400'000'000LL;
    script.push_back({at, "block " + std::to_string(i) + ";"});
  }
  return script;
}

constexpr std::int64_t kOpened = 3'122'000'000;

}  // namespace

TEST_CASE("a replay gives the same blocks in the same steps as the recording, on every run") {
  struct Row {
    const char* name;
    std::int64_t firstGreeting, secondGreeting, stream;  // ns after the opening
    std::int64_t writeTakes;
  };
  const Row rows[] = {
      {"at once", 0, 0, 1'000'000, 0},
      {"slow greeting", 350'000'000, 720'000'000, 900'000'000, 0},
      {"bytes there when the command was sent", 5'000'000, 9'000'000, 12'000'000, 80'000'000},
      {"nothing there when the command was sent", 5'000'000, 9'000'000, 500'000'000, 80'000'000},
  };
  for (const Row& row : rows) {
    CAPTURE(row.name);
    auto script = steadyStream(kOpened + row.stream, 400);
    script.insert(script.begin(), {{kOpened + row.firstGreeting, "one\r"},
                                   {kOpened + row.secondGreeting, "two\r"}});
    const Recording recording = record(script, 20, row.writeTakes);
    REQUIRE(recording.log.size() > 200);
    CHECK(replay(recording.capture, true, 30) == recording.log);
    CHECK(replay(recording.capture, false, 30) == recording.log);
    CHECK(replay(recording.capture, true, 30) == recording.log);
  }
}

TEST_CASE("a replay hangs up where the line did and comes back when it came back") {
  for (const int how : {FakeLines::kHangUpByWait, FakeLines::kHangUpByRead, EIO}) {
    auto script = steadyStream(kOpened + 50'000'000, 100);
    script.push_back({kOpened + 4'000'000'000, "", how});
    script.push_back({kOpened + 7'500'000'000, "back\r"});
    const auto more = steadyStream(kOpened + 7'600'000'000, 50);
    script.insert(script.end(), more.begin(), more.end());
    const Recording recording = record(script, 20);
    REQUIRE(recording.log.back().second.find("49;") != std::string::npos);
    CHECK(replay(recording.capture, true, 40) == recording.log);
  }
}

TEST_CASE("blocks come at their recorded times, and small reads get them in pieces") {
  Capture capture;
  CaptureWriter& writer = capture.writer;
  const Bytes path{'p'};
  REQUIRE(writer.record({CaptureKind::Opened, 0, 0, 0, 1'000'000'000}, path));
  REQUIRE(writer.record({CaptureKind::Block, 0, 3, 0, 1'050'000'000}, Bytes{1, 2, 3, 4, 5}));
  REQUIRE(writer.end(2'000'000'000));
  ManualTime time;
  Reading reading(capture.sink.bytes);
  ReplaySerialPorts lines(reading.reader, time);
  CHECK(lines.devices(nullptr).size() == 1);
  CHECK(lines.open("q").error == ENOENT);
  const int line = static_cast<int>(lines.open("p").value);
  CHECK(lines.nextDue() == 50'000'000);
  for (const auto step : {20ms, 20ms}) {
    time.advance(step);
    CHECK(lines.waitReadable(line, 0) == SerialWait::TimedOut);
  }
  time.advance(10ms);
  CHECK(lines.waitReadable(line, 0) == SerialWait::Ready);
  CHECK_FALSE(lines.finished());
  Bytes piece(2);
  CHECK(lines.read(line, piece).value == 2);
  CHECK(lines.read(line, piece).value == 2);
  CHECK(lines.read(line, piece).value == 1);
  CHECK(piece[0] == 5);
  CHECK(lines.deliveredBlocks() == 1);
  CHECK(lines.read(line, piece).error == EAGAIN);
  CHECK(lines.waitReadable(line, 10) == SerialWait::TimedOut);
  CHECK(lines.finished());
  lines.close(line);
  CHECK(lines.read(line, piece).error == EBADF);
}

TEST_CASE("four lines keep their distance in time") {
  Capture capture;
  CaptureWriter& writer = capture.writer;
  std::int64_t at = 0;
  for (std::uint8_t line = 0; line < 4; ++line) {
    REQUIRE(writer.record({CaptureKind::Opened, line, 0, 0, at}, Bytes{'p', line}));
    at += 700'000'000;
  }
  for (std::uint8_t i = 0; i < 8; ++i) {
    const std::uint8_t line = i % 4;
    REQUIRE(writer.record({CaptureKind::Block, line, 1, 0, at}, Bytes{i}));
    at += 100'000'000;
  }
  REQUIRE(writer.end(at));
  ManualTime time;
  Reading reading(capture.sink.bytes);
  ReplaySerialPorts lines(reading.reader, time, [&time](std::int64_t to) { time.advanceTo(to); });
  std::vector<int> descriptors;
  for (char line = 0; line < 4; ++line) {
    descriptors.push_back(static_cast<int>(lines.open(std::string{'p', line}).value));
  }
  CHECK(time.nanoseconds() == 2'100'000'000);
  std::vector<std::pair<std::int64_t, int>> met;
  time.repeat("port", 15ms, [&] {
    for (const int line : descriptors) {
      Bytes byte(1);
      if (lines.waitReadable(line, 0) != SerialWait::Ready) continue;
      REQUIRE(lines.read(line, byte).value == 1);
      met.emplace_back(time.nanoseconds(), byte[0]);
    }
  });
  time.advance(3s);
  REQUIRE(met.size() == 8);
  for (int i = 0; i < 8; ++i) {
    const std::int64_t due = 2'800'000'000 + i * 100'000'000LL;
    CHECK(met[static_cast<std::size_t>(i)].second == i);
    CHECK(met[static_cast<std::size_t>(i)].first >= due);
    CHECK(met[static_cast<std::size_t>(i)].first < due + 15'000'000);
  }
  CHECK(lines.finished());
}

TEST_CASE("a recorder without room drops whole records, says how much, and goes on") {
  ManualTime time;
  std::vector<FakeLines::Arrival> script;
  for (int i = 0; i < 40; ++i) script.push_back({i * 1'000'000LL, std::string(100, 'a')});
  FakeLines lines(time, script);
  Capture capture;
  CapturingSerialPorts capturing(lines, time, capture.writer, time, 1000);
  const int line = static_cast<int>(capturing.open("/dev/a").value);
  Bytes bytes(100);
  // The writing thread comes every 20 ms of the clock; here 20 reads come before it runs.
  for (int i = 0; i < 40; ++i) {
    if (i % 20 == 0) time.advance(i == 0 ? 19ms : 21ms);
    REQUIRE(capturing.read(line, bytes).value == 100);
  }
  CHECK_FALSE(capturing.finish());
  Reading reading(capture.sink.bytes);
  CaptureReader& reader = reading.reader;
  std::uint64_t lost = 0;
  CaptureRecord item;
  while (reader.next(item)) lost += item.lostBlocks;
  CHECK(reader.ended());
  CHECK(reader.blocks() == capturing.blocks());
  CHECK(lost == capturing.lostBlocks());
  CHECK(lost + reader.blocks() == 40);
  CHECK(lost > 10);
  CHECK(reader.blocks() > 10);
}

TEST_CASE("a disk that fills up is told once and the reading goes on") {
  ManualTime time;
  FakeLines lines(time, steadyStream(0, 100));
  Capture capture;
  capture.sink.room = 600;
  testing::CapturedPrint printed;
  {
    CapturingSerialPorts capturing(lines, time, capture.writer, time);
    const int line = static_cast<int>(capturing.open("/dev/a").value);
    Bytes bytes(100);
    for (int i = 0; i < 100; ++i) {
      time.advance(20ms);
      if (capturing.waitReadable(line, 0) == SerialWait::Ready) {
        CHECK(capturing.read(line, bytes).value > 0);
      }
    }
    CHECK_FALSE(capturing.finish());
    CHECK(capturing.failure() == ENOSPC);
  }
  CHECK(printed.take() == "Error writing capture memory - No space left on device(28).\n");
  time.stopAll();
}
