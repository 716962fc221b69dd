#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "DecodeRig.h"

// What each way of framing loses of a faultless line: the frames of ten minutes at 230400 baud,
// read every 15 ms and decoded four reads at a time. A stored frame counts when its values are
// those of the next frames sent; one that no frame sent explains is false.

namespace {

using namespace ovka;
using namespace ovka::bench;

constexpr double kSeconds = 600.0;
constexpr double kPoll = 0.015;              // s
constexpr double kBytesPerSecond = 23040.0;  // 230400 baud, ten bits a byte

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

/// Bytes that have arrived by a time: a frame is sent when its sample is due and the line is free.
std::size_t arrived(double seconds, double samplesPerSecond, std::size_t total) {
  constexpr double kFrame = SampleLine::kLineBytes;
  const double whole = std::floor(seconds * samplesPerSecond);
  const double part = (seconds - whole / samplesPerSecond) * kBytesPerSecond;
  const double bytes = whole * kFrame + std::min(part, kFrame);
  return std::min(total, static_cast<std::size_t>(bytes));
}

struct Tally {
  std::size_t intact = 0;
  std::size_t wrong = 0;
};

/// Matches what is stored with what was sent, in order.
Tally compare(const DecodeRig& rig, std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kReach = 64;  // frames that one fault may cost
  const SampleLine decoding = SampleLine::current();
  std::vector<Frame> sent;
  for (std::size_t at = 0; at < bytes.size(); at += SampleLine::kLineBytes) {
    sent.push_back(decoding.decode(bytes.data() + at));
  }
  const auto equals = [&](const Frame& frame, std::int64_t point) {
    for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
      const auto c = static_cast<std::size_t>(channel);
      if (frame.present[c] && rig.store.storedValue(channel, point) != frame.values[c]) {
        return false;
      }
    }
    return true;
  };
  Tally tally;
  std::size_t next = 0;
  for (std::int64_t point = 0; point < rig.decoder.framesStored(); ++point) {
    std::size_t n = next;
    while (n < sent.size() && n < next + kReach && !equals(sent[n], point)) ++n;
    if (n < sent.size() && n < next + kReach) {
      ++tally.intact;
      next = n + 1;
    } else {
      ++tally.wrong;
    }
  }
  return tally;
}

void measure(const Kind& kind, double samplesPerSecond, bool fixed) {
  const auto count = static_cast<std::size_t>(kSeconds * samplesPerSecond);
  const Bytes bytes = frames(kind.model, kind.config, kind.values, count, samplesPerSecond);
  DecodeRig rig(count + 10, kind.model, kind.config, fixed);
  std::size_t read = 0;
  for (std::int64_t poll = 1; read < bytes.size(); ++poll) {
    const std::size_t now =
        arrived(static_cast<double>(poll) * kPoll, samplesPerSecond, bytes.size());
    rig.decoder.stageRead(1, std::span(bytes).subspan(read, now - read));
    read = now;
  }
  // Empty reads do not count towards a batch: the end of a text line flushes the last one.
  const std::array<std::uint8_t, 1> end{13};
  for (std::int32_t i = 0; i < StreamDecoder::kReadsPerBatch; ++i) rig.decoder.stageRead(1, end);
  const Tally tally = compare(rig, bytes);
  const double lost =
      100.0 * static_cast<double>(count - tally.intact) / static_cast<double>(count);
  std::printf("%-24s %6.0f %-12s %9zu %9zu %6zu %10.4f%%\n", kind.name, samplesPerSecond,
              fixed ? "fixed" : "line rules", count, tally.intact, tally.wrong, lost);
  std::fflush(stdout);
}

}  // namespace

int main() {
  std::printf("%-24s %6s %-12s %9s %9s %6s %11s\n", "stream", "per s", "framing", "sent", "intact",
              "false", "lost");
  for (const Kind& kind : kKinds) {
    for (const double speed : {120.0, 960.0, 1440.0}) {
      for (const bool fixed : {false, true}) measure(kind, speed, fixed);
    }
  }
  return 0;
}
