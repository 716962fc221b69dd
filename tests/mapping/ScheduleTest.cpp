#include <doctest/doctest.h>
#include <random>

#include "MappingRig.h"

using namespace ovka;
using ovka::testing::MappingRig;

namespace {

using Setups = std::vector<std::int32_t>;

/// The rule as it stands: every tick walks all set-ups and asks each for its time.
struct Walk {
  MarkedBlock<std::int32_t>&on, &timing, &input;
  std::array<double, 128> interval{}, last{};
  std::array<std::int64_t, 128> point{};

  void look(std::size_t i, double now, bool profile, Setups& played) {
    if (on[i] != 1) return;
    const std::int32_t index = timing[i];
    constexpr float kSeconds[] = {0.001F, 0.025F, 0.05F, 0.1F, 0.2F, 0.5F, 1.0F};
    if (index >= 0 && index <= 6) interval[i] = static_cast<double>(kSeconds[index]);
    if (now - last[i] < interval[i]) return;
    const std::int64_t current = buffer::ploop;
    if (profile && input[i] == 1 && point[i] == current && now - last[i] < interval[i] + 0.1)
      return;
    last[i] = now;
    point[i] = current;
    played.push_back(static_cast<std::int32_t>(i));
  }
};

Setups playedOf(testing::RecordingNotes& notes) {
  Setups played;
  for (const auto& [text, cause] : notes.requests) {
    const bool on = text.starts_with("On ");
    if (on && (played.empty() || played.back() != cause.setup)) played.push_back(cause.setup);
  }
  notes.requests.clear();
  return played;
}

}  // namespace

TEST_CASE("a tick plays what a walk over all set-ups would play, after any change") {
  using namespace setmidiband;
  MappingRig rig;
  Walk walk{MIDIoutONEX, SendMIDItimingEX, ONInputEX};
  walk.point.fill(-1);
  std::mt19937 random(17);
  const auto pick = [&](unsigned n) { return static_cast<std::int32_t>(random() % n); };
  long plays = 0;
  for (int step = 0; step < 60000; ++step) {
    const auto setup = static_cast<std::size_t>(pick(128));
    const std::function<void()> changes[] = {
        [&] { MIDIoutONEX.set(setup, pick(5) == 0 ? 2 : pick(2)); },
        [&] { MIDIoutONEX.set(setup, pick(5) == 0 ? 2 : pick(2)); },
        [&] { SendMIDItimingEX.set(setup, pick(10) - 1); },  // some are no interval
        [&] { ONInputEX.set(setup, pick(2)); },
        [&] { setSoloBandX = pick(3) != 0 ? 1 : 0; },
        [&] { SetupBandNX = pick(128); },
        [&] { mapping::PerformanceProfileX = pick(2); },
        [&] { tsaveEX.set(setup, walk.last[setup] = rig.notes.now - 0.05 * pick(20)); },
        [&] { tlongEX.set(setup, walk.interval[setup] = 0.03 * pick(20)); },
        [&] { rig.notes.now -= pick(200) == 0 ? 0.3 : 0; },  // somebody set the clock
    };
    const auto change = static_cast<std::size_t>(pick(40));
    if (change < std::size(changes)) changes[change]();
    if (pick(15) == 0) buffer::ploop = buffer::ploop + 1;
    rig.notes.now += 0.001 * (1 + pick(2)) + 1e-5 * pick(10);
    Setups expected;
    const bool profile = mapping::PerformanceProfileX != 0;
    if (setSoloBandX != 0) {
      for (std::size_t i = 0; i < 128; ++i) walk.look(i, rig.notes.now, profile, expected);
    } else {
      walk.look(static_cast<std::size_t>(SetupBandNX.get()), rig.notes.now, profile, expected);
    }
    rig.band.timerUpdate();
    const Setups played = playedOf(rig.notes);
    plays += static_cast<long>(played.size());
    if (played == expected) continue;
    FAIL("step " << step << ": played " << played.size() << " of " << expected.size());
  }
  CHECK(plays > 20000);
}

TEST_CASE("in the performance profile a message follows the newest sample within a tick") {
  using namespace setmidiband;
  MappingRig rig;
  mapping::PerformanceProfileX = 1;
  MIDIoutONEX.set(40, 1);
  ONInputEX.set(40, 1);
  SendMIDItimingEX.set(40, 2);  // 50 ms
  CHECK(rig.tick().size() == 8);
  std::vector<int> sent;  // ms
  for (int ms = 1; ms <= 400; ++ms) {
    if (ms % 17 == 0 && ms < 200) buffer::ploop = ms;  // a line that falls silent
    if (!rig.tick(0.001).empty()) sent.push_back(ms);
  }
  // With the first samples once the interval has passed; without any, 0.1 s later than that.
  CHECK(sent == std::vector<int>{51, 102, 153, 204, 355});
}
