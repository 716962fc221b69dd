#include <array>
#include <atomic>
#include <doctest/doctest.h>
#include <thread>

#include "CaptureReader.h"
#include "CapturingSerialPorts.h"
#include "FakeLines.h"
#include "LinuxClock.h"
#include "LinuxThreadLauncher.h"
#include "MemoryBytes.h"

using namespace ovka;

namespace {

/// Lines that give eight bytes to every read: the number of the read on this line.
class CountingLines final : public FakeLines {
 public:
  explicit CountingLines(ManualTime& time) : FakeLines(time, {}) {}
  SerialResult open(const std::string& path) override { return {path.back() - '0', 0}; }
  SerialResult read(int descriptor, std::span<std::uint8_t> bytes) override {
    const std::uint64_t number = next_[static_cast<std::size_t>(descriptor)]++;
    for (std::size_t i = 0; i < 8; ++i) bytes[i] = static_cast<std::uint8_t>(number >> (8 * i));
    return {8, 0};
  }

 private:
  std::array<std::atomic<std::uint64_t>, 10> next_{};
};

}  // namespace

TEST_CASE("four threads read while one writes: every block once, in order, on its line") {
  constexpr std::uint64_t kReads = 5000;
  ManualTime unused;
  CountingLines lines(unused);
  const LinuxClock clock;
  LinuxThreadLauncher threads;
  MemorySink sink;
  CaptureWriter writer(sink);
  REQUIRE(writer.begin(0, {}));
  CapturingSerialPorts capturing(lines, clock, writer, threads);
  std::vector<std::thread> readers;
  for (int line = 0; line < 4; ++line) {
    readers.emplace_back([&capturing, line] {
      const SerialResult opened = capturing.open("/dev/" + std::to_string(line));
      std::array<std::uint8_t, 16> bytes{};
      for (std::uint64_t i = 0; i < kReads; ++i) {
        static_cast<void>(capturing.read(static_cast<int>(opened.value), bytes));
      }
    });
  }
  for (std::thread& reader : readers) reader.join();
  CHECK(capturing.finish());
  threads.stopAll();

  MemorySource source(sink.bytes);
  CaptureReader reader(source);
  REQUIRE(reader.begin());
  std::array<std::uint64_t, 4> next{};
  CaptureRecord record;
  bool inOrder = true;
  while (reader.next(record)) {
    if (record.head.kind != CaptureKind::Block) continue;
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < 8; ++i) number |= std::uint64_t{record.payload[i]} << (8 * i);
    inOrder = inOrder && number == next.at(record.head.line)++;
  }
  CHECK(inOrder);
  CHECK(reader.ended());
  CHECK(reader.blocks() == 4 * kReads);
}
