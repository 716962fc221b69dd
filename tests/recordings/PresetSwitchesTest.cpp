#include <doctest/doctest.h>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "BufferVariables.h"
#include "PresetSwitches.h"

using namespace ovka;

namespace {

using S = DocumentSwitch;
using On = std::function<bool(S)>;

bool isMode(S each) {
  return each <= S::PreferenceOnly;
}
/// 1 to 4, 0 for what is no channel.
int channelOf(S each) {
  const bool channel = each >= S::BrainDataCH1 && each <= S::BrainDataCH4;
  return channel ? static_cast<int>(each) - static_cast<int>(S::BrainDataCH1) + 1 : 0;
}
bool isUntouched(S each) {
  return each == S::EEGneurofeedback || each == S::MultiApModeWhenOpen ||
         each == S::SoundSetupWindow;
}

struct Bench {
  Bench() { buffer::resetVariables(); }
  void fill(bool state) {
    switches.open.setAll(state);
    switches.save.setAll(state);
  }
  void check(const On& open, const On& save) const {
    for (const PresetSwitch& row : kPresetSwitches) {
      CHECK_MESSAGE(switches.open.on(row.which) == open(row.which), row.open);
      CHECK_MESSAGE(switches.save.on(row.which) == save(row.which), row.save);
    }
  }
  DocumentSwitches switches;
  PresetSwitches rules{switches};
};

}  // namespace

TEST_CASE("every switch has its place, its two setters, and sets nothing but itself") {
  Bench bench;
  std::set<std::string_view> names;
  for (std::size_t i = 0; i < kPresetSwitches.size(); ++i) {
    const PresetSwitch& row = kPresetSwitches[i];
    CHECK(static_cast<std::size_t>(row.which) == i);
    CHECK(names.insert(row.open).second);
    CHECK(names.insert(row.save).second);
    for (const bool state : {false, true}) {
      if (isMode(row.which)) continue;
      const On turned = [&](S each) { return (each == row.which) == state; };
      const On stayed = [&](S) { return !state; };
      bench.fill(!state);
      CHECK(bench.rules.set(row.open, state));
      bench.check(turned, stayed);
      bench.fill(!state);
      CHECK(bench.rules.set(row.save, state));
      bench.check(stayed, turned);
    }
  }
  for (const char* wrong : {"", "setDisplay", "selectsetDisplay:", "setDisplaysave:"}) {
    CHECK_FALSE(bench.rules.set(wrong, true));
  }
}

TEST_CASE("the modes of both sets, from everything off and on, in every configuration") {
  Bench bench;
  for (int turn = 0; turn < 8; ++turn) {
    const bool before = turn % 2 == 1;
    const int count = turn / 2 + 1;
    CAPTURE(before);
    CAPTURE(count);
    buffer::DeviceConfig = static_cast<std::uint32_t>(count - 1);
    const On stays = [&](S) { return before; };
    // The groups of the open set once the everything switch has taken a state.
    const auto groups = [&](S each, bool state) {
      if (isUntouched(each)) return before;
      if (each == S::Recordingmode || each == S::AutoPortSetupWhenOpen) return false;
      return each == S::Maxrecordingtime || state;
    };
    const auto channels = [&](S each) { return channelOf(each) <= count; };
    const auto preferences = [&](S each) {
      if (isMode(each)) return each == S::PreferenceOnly;
      return before && (channelOf(each) == 0 || channelOf(each) == 4);
    };
    struct Row {
      const char* setter;
      bool state;
      On open;
      On save;
    };
    const auto of = [&](S mode, const On& channel, const On& group) -> On {
      return [=](S each) {
        if (isMode(each)) return each == mode;
        return channelOf(each) > 0 ? channel(each) : group(each);
      };
    };
    const auto off = [&](S each) { return isMode(each) && each != S::All && before; };
    const std::vector<Row> rows{
        {"setAll:", true, of(S::All, channels, [&](S s) { return groups(s, true); }), stays},
        {"setAll:", false,
         [&](S s) { return off(s) || (!isMode(s) && channelOf(s) == 0 && groups(s, false)); },
         stays},
        {"setBrainDataOnly:", true,
         of(S::BrainDataOnly, channels, [&](S s) { return groups(s, false); }), stays},
        {"setPreferenceOnly:", true, preferences, stays},
        {"setAllSave:", true, stays, of(S::All, channels, [](S) { return true; })},
        {"setAllSave:", false, stays, off},
        {"setBrainDataOnlySave:", true, stays,
         of(S::BrainDataOnly, channels, [](S) { return false; })},
        {"setPreferenceOnlySave:", true, stays, preferences},
    };
    for (const Row& row : rows) {
      CAPTURE(row.setter);
      bench.fill(before);
      CHECK(bench.rules.set(row.setter, row.state));
      bench.check(row.open, row.save);
    }
    bench.fill(before);
    bench.rules.startUp(before);
    bench.check(
        [&](S s) {
          return isMode(s)          ? s == S::All
                 : channelOf(s) > 0 ? channels(s)
                                    : !isUntouched(s) && groups(s, true);
        },
        [&](S s) {
          if (s == S::AutoPortSetupWhenOpen) return before;
          return isMode(s) ? s == S::All : channels(s);
        });
  }
}
