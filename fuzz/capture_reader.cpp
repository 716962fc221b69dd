#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "CaptureReader.h"
#include "CaptureWriter.h"
#include "Clock.h"
#include "Crc32.h"
#include "LittleEndian.h"
#include "MemoryBytes.h"
#include "ReplaySerialPorts.h"

using namespace ovka;

namespace {

class HandClock final : public Clock {
 public:
  std::int64_t nanoseconds() const noexcept override { return now; }
  std::int64_t wallNanoseconds() const noexcept override { return now; }
  std::int64_t now = 0;
};

/// Puts the right checksums in, record by record, so that the fuzzer gets behind them.
void mend(std::vector<std::uint8_t>& bytes) {
  using namespace captureformat;
  const std::span<std::uint8_t> all(bytes);
  if (bytes.size() < kFileHeadBytes + 4) return;
  std::copy(kMagic.begin(), kMagic.end(), bytes.begin());
  putLittleEndian(all.subspan(8), kVersion);
  std::size_t at = kFileHeadBytes + getLittleEndian<std::uint32_t>(all.subspan(12));
  if (at + 4 > bytes.size()) return;
  putLittleEndian(all.subspan(at), crc32(all.first(at)));
  at += 4;
  while (at + kRecordHeadBytes <= bytes.size()) {
    const auto length = getLittleEndian<std::uint32_t>(all.subspan(at + 4));
    putLittleEndian(all.subspan(at + 16), crc32(all.subspan(at, 16)));
    at += kRecordHeadBytes;
    if (bytes.size() - at < std::size_t{length} + 4) return;
    putLittleEndian(all.subspan(at + length), crc32(all.subspan(at, length)));
    at += length + 4;
  }
}

void readThrough(std::span<const std::uint8_t> bytes) {
  MemorySource source(bytes);
  CaptureReader reader(source);
  if (!reader.begin()) return;
  CaptureRecord record;
  std::int64_t last = 0;
  while (reader.next(record)) {
    if (record.head.nanoseconds < last || record.payload.size() != record.head.length) std::abort();
    last = record.head.nanoseconds;
  }
  if (reader.ended() != reader.error().empty()) std::abort();
}

void replayThrough(std::span<const std::uint8_t> bytes) {
  MemorySource source(bytes);
  CaptureReader reader(source);
  if (!reader.begin()) return;
  HandClock clock;
  const bool moves = !bytes.empty() && bytes.back() % 2 == 0;
  ReplaySerialPorts lines(reader, clock,
                          moves ? ReplaySerialPorts::AdvanceTo([&clock](std::int64_t to) {
                            clock.now = std::max(clock.now, to);
                          })
                                : ReplaySerialPorts::AdvanceTo{});
  std::array<int, 3> open{-1, -1, -1};
  std::array<std::uint8_t, 64> piece{};
  for (int round = 0; round < 100 && !lines.finished(); ++round) {
    for (int& line : open) {
      if (line < 0) {
        const SerialResult result = lines.open(lines.firstPath());
        line = result.error == 0 ? static_cast<int>(result.value) : -1;
        continue;
      }
      const SerialWait found = lines.waitReadable(line, round % 3 == 0 ? 50 : 0);
      const SerialResult result =
          found == SerialWait::Ready ? lines.read(line, piece) : SerialResult{};
      const bool gone = found == SerialWait::Ready && result.value == 0;
      if (!gone && found != SerialWait::HungUp) continue;
      lines.close(line);
      line = -1;
    }
    if (const auto due = lines.nextDue(); due && round % 2 == 0) clock.now = *due;
    clock.now += 15'000'000;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span input(data, size);
  readThrough(input);
  std::vector<std::uint8_t> mended(input.begin(), input.end());
  mend(mended);
  readThrough(mended);
  replayThrough(mended);
  return 0;
}
