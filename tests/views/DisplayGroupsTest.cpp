#include <doctest/doctest.h>
#include <memory>
#include <string>
#include <vector>

#include "DisplayGroups.h"
#include "DisplayVariables.h"

using namespace ovka;
using namespace ovka::display;

namespace {

using Make = std::unique_ptr<SettingsRows> (*)();
constexpr std::array<Make, 5> kGroups{makeDisplayGroup, makeDisplayColorGroup,
                                      makeDisplayWaterfallGroup, makeDisplayBSGroup,
                                      makeFrontDisplayGroup};

/// Another valid choice for every field: towards the middle of its range.
ViewChoice changed(std::size_t kind) {
  ViewChoice choice = defaultChoice(static_cast<ViewKind>(kind));
  for (const ViewField& field : kViewFields) {
    const double present = valueOf(choice, field);
    const double other = present > field.minimum ? field.minimum : field.minimum + 1;
    CHECK(assign(choice, field,
                 field.whole != nullptr ? other : other + 0.5 + 0.125 * static_cast<double>(kind)));
    CHECK(valueOf(choice, field) != present);
  }
  return choice;
}

}  // namespace

TEST_CASE("display groups bring every setting back and leave alone what makes no sense") {
  resetVariables();
  for (std::size_t kind = 0; kind < kViewKinds; ++kind) {
    keepChoice(static_cast<ViewKind>(kind), changed(kind));
    windows[kind].open = 1;
    windows[kind].front = static_cast<std::int32_t>(kind);
    windows[kind].x = -40 - static_cast<std::int32_t>(kind);
  }
  displayGainX[2] = 2.5F;
  channelColorX[3] = 0x123456;
  themeX = 2;
  pairsX = 0x81;
  turnX = 17.0F;
  barFrequencyX = 3.5F;
  std::vector<std::vector<std::string>> saved;
  for (const Make make : kGroups) saved.push_back(make()->texts());

  resetVariables();
  const std::uint32_t before = broughtX;
  for (std::size_t i = 0; i < kGroups.size(); ++i) kGroups[i]()->put(saved[i]);
  CHECK(broughtX != before);
  for (std::size_t kind = 0; kind < kViewKinds; ++kind) {
    CAPTURE(kind);
    CHECK(keptChoice(static_cast<ViewKind>(kind)) == changed(kind));
    CHECK(windows[kind].open == 1);
    CHECK(windows[kind].front == static_cast<std::int32_t>(kind));
    CHECK(windows[kind].x == -40 - static_cast<std::int32_t>(kind));
  }
  CHECK(displayGainX[2] == 2.5F);
  CHECK(channelColorX[3] == 0x123456);
  CHECK(themeX == 2);
  CHECK(pairsX == 0x81);
  CHECK(turnX == 17.0F);
  CHECK(barFrequencyX == 3.5F);

  for (const std::string text : {"", "nan", "-1e300", "1e300", "text"}) {
    CAPTURE(text);
    for (std::size_t i = 0; i < kGroups.size(); ++i) {
      std::vector<std::string> broken(saved[i].size(), text);
      broken[0] = saved[i][0];
      const auto group = kGroups[i]();
      group->put(broken);
      for (std::size_t kind = 0; kind < kViewKinds; ++kind) {
        const ViewChoice choice = keptChoice(static_cast<ViewKind>(kind));
        for (const ViewField& field : kViewFields) {
          CHECK(valueOf(choice, field) >= field.minimum);
          CHECK(valueOf(choice, field) <= field.maximum);
        }
      }
      CHECK(displayGainX[0] > 0.0F);
    }
  }
  resetVariables();
}

TEST_CASE("the orders of the display groups that files depend on") {
  // By README.md: number of entries, and what some of them are.
  const std::array<std::size_t, 5> counts{87, 6, 16, 23, 44};
  for (std::size_t i = 0; i < kGroups.size(); ++i) CHECK(kGroups[i]()->count() == counts[i]);
  CHECK(makeDisplayGroup()->rows()[0].name == "displayGainX A");
  CHECK(makeDisplayGroup()->rows()[11].name == "view 0 channels");
  CHECK(makeDisplayGroup()->rows()[71].name == "view 6 channels");
  CHECK(makeDisplayBSGroup()->rows()[7].name == "view 5 channels");
  CHECK(makeDisplayBSGroup()->rows()[21].name == "view 5 freeze");
  CHECK(makeFrontDisplayGroup()->rows()[41].name == "view 6 y");
  CHECK(makeFrontDisplayGroup()->rows()[42].name == "layout");
}
