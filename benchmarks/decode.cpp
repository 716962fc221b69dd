#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "DecodeRig.h"
#include "Interleaved.h"

// Decoding into the sample store beside a memcpy of the same bytes: a stream that stays in the
// cache (one full staging buffer over and over), and ten minutes of five channels at 1920 samples
// per second, staging buffer after staging buffer. The two framings and the memcpy of a stream run
// in turns, a staging buffer each.

namespace {

using namespace ovka;
using namespace ovka::bench;

constexpr double kGoal = 60.0;  // times the memcpy
constexpr double kSpeed = 1920.0;
constexpr std::size_t kLongFrames = 600 * 1920;
constexpr std::size_t kBatch = StreamDecoder::kBufferBytes;

struct Kind {
  const char* name;
  std::uint32_t model, config;
  Values values;
};
constexpr std::array<Kind, 5> kKinds{{
    {"text 12 bits, random", 0, 3, Values::Random},
    {"text 24 bits, random", 6, 1, Values::Random},
    {"text 12 bits, EEG", 0, 3, Values::Eeg},
    {"binary 24 bits, random", 6, 3, Values::Random},
    {"binary 24 bits, EEG", 6, 3, Values::Eeg},
}};

/// Hands out a stream batch by batch, over and over.
class Batches {
 public:
  Batches(std::span<const std::uint8_t> bytes, std::size_t first) : bytes_(bytes), at_(first) {}
  std::span<const std::uint8_t> next() {
    if (at_ + kBatch > bytes_.size()) at_ = 0;
    at_ += kBatch;
    return bytes_.subspan(at_ - kBatch, kBatch);
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t at_;
};

void measure(const char* title, std::size_t count, std::uint64_t capacity, int rounds,
             double slice) {
  std::printf("\n%s: %zu bytes, capacity %llu points\n", title, count * SampleLine::kLineBytes,
              static_cast<unsigned long long>(capacity));
  std::printf("%-24s %-12s %9s %12s %8s %6s %9s\n", "stream", "framing", "MB/s", "memcpy, MB/s",
              "ratio", "goal", "stored");
  for (const Kind& kind : kKinds) {
    const Bytes bytes = frames(kind.model, kind.config, kind.values, count, kSpeed);
    Bytes copy(bytes.size());
    DecodeRig rig(capacity, kind.model, kind.config, false);
    std::array<std::int64_t, 2> sent{};
    std::array<std::int64_t, 2> stored{};
    // Each goes through the stream a third of it apart, so that none finds what another fetched.
    const std::size_t third = bytes.size() / kBatch / 3 * kBatch;
    Batches copied(bytes, 0);
    std::array<Batches, 2> decoded{Batches(bytes, third), Batches(bytes, 2 * third)};
    Interleaved work;
    work.add("memcpy", [&] {
      const auto batch = copied.next();
      std::uint8_t* to = copy.data() + (batch.data() - bytes.data());
      std::memcpy(to, batch.data(), batch.size());
      asm volatile("" : : "r"(to) : "memory");  // somebody may look at the copy
    });
    for (const std::size_t fixed : {0U, 1U}) {
      work.add(fixed == 0 ? "line rules" : "fixed", [&, fixed] {
        DecodeRig::use(kind.model, kind.config, fixed == 1);
        rig.decoder.resetInput();
        const std::int64_t before = rig.decoder.framesStored();
        rig.decoder.printNumberSTR(decoded[fixed].next());
        sent[fixed] += static_cast<std::int64_t>(kBatch / SampleLine::kLineBytes);
        stored[fixed] += rig.decoder.framesStored() - before;
      });
    }
    work.run(rounds, slice);
    const auto megabytes = [&](std::size_t i) {
      return static_cast<double>(kBatch) / work.median(i) / 1e6;
    };
    for (std::size_t i = 1; i < work.size(); ++i) {
      const double times = work.median(i) / work.median(0);
      std::printf("%-24s %-12s %9.0f %12.0f  1/%-5.1f 1/%-4.0f %8.3f%% %s\n", kind.name,
                  work.name(i).c_str(), megabytes(i), megabytes(0), times, kGoal,
                  100.0 * static_cast<double>(stored[i - 1]) / static_cast<double>(sent[i - 1]),
                  times <= kGoal ? "" : "MISSED");
    }
    std::fflush(stdout);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 306;  // three times round
  measure("one staging buffer, in cache", kBatch / SampleLine::kLineBytes, 432000, rounds, 300e-6);
  measure("ten minutes at 1920 samples per second", kLongFrames, kLongFrames + 1, rounds, 0.0);
  return 0;
}
