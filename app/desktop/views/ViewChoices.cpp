#include "ViewChoices.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ovka::desktop {
namespace {

constexpr std::array<OfferedValue, 10> kGains{{{0.1, "× 0.1"},
                                               {0.2, "× 0.2"},
                                               {0.5, "× 0.5"},
                                               {1, "× 1"},
                                               {2, "× 2"},
                                               {5, "× 5"},
                                               {10, "× 10"},
                                               {20, "× 20"},
                                               {50, "× 50"},
                                               {100, "× 100"}}};
constexpr std::array<OfferedValue, 8> kHighs{{{15, "to 15 Hz"},
                                              {30, "to 30 Hz"},
                                              {45, "to 45 Hz"},
                                              {60, "to 60 Hz"},
                                              {130, "to 130 Hz"},
                                              {250, "to 250 Hz"},
                                              {500, "to 500 Hz"},
                                              {1000, "to 1000 Hz"}}};
constexpr std::array<OfferedValue, 6> kLows{{{0, "from 0 Hz"},
                                             {1, "from 1 Hz"},
                                             {2, "from 2 Hz"},
                                             {4, "from 4 Hz"},
                                             {7, "from 7 Hz"},
                                             {13, "from 13 Hz"}}};
constexpr std::array<OfferedValue, 12> kSeconds{{{2, "2 s"},
                                                 {4, "4 s"},
                                                 {8, "8 s"},
                                                 {15, "15 s"},
                                                 {30, "30 s"},
                                                 {60, "1 min"},
                                                 {120, "2 min"},
                                                 {180, "3 min"},
                                                 {600, "10 min"},
                                                 {1800, "30 min"},
                                                 {3600, "1 h"},
                                                 {14400, "4 h"}}};
constexpr std::array<OfferedValue, 10> kTops{{{0, "automatic"},
                                              {5, "5"},
                                              {10, "10"},
                                              {20, "20"},
                                              {50, "50"},
                                              {100, "100"},
                                              {200, "200"},
                                              {500, "500"},
                                              {1000, "1000"},
                                              {5000, "5000"}}};
constexpr std::array<OfferedValue, 2> kUnits{{{0, "microvolts r.m.s."}, {1, "levels"}}};
constexpr std::array<OfferedValue, 2> kScales{{{0, "linear"}, {1, "decibels"}}};
constexpr std::array<OfferedValue, 5> kPalettes{
    {{0, "Ember"}, {1, "Sea"}, {2, "Blue to yellow"}, {3, "Grey"}, {4, "Paper"}}};
constexpr std::array<OfferedValue, 1> kOn{{{1, "on"}}};

constexpr std::array<ChoiceRow, 13> kRows{{
    {"gain", "Gain", "Magnifies what is drawn; the axis follows.", kGains},
    {"top", "Full scale", "The greatest value of the vertical axis.", kTops},
    {"lowF", "First frequency", "The lowest frequency shown.", kLows},
    {"highF", "Last frequency", "The highest frequency shown.", kHighs},
    {"seconds", "Time", "How much time the view shows.", kSeconds},
    {"unit", "Unit",
     "Microvolts at the electrode, or the levels that notes and outputs are set by.", kUnits},
    {"scale", "Scale", "Decibels show weak rhythms beside strong ones.", kScales},
    {"palette", "Colours", "The colour scale of heights.", kPalettes},
    {"bands", "Band shading", "Tints the brain-wave bands and prints their edges.", kOn},
    {"average", "Average", "Adds the average of the last seconds.", kOn},
    {"hold", "Peak hold", "Keeps the greatest value seen until it is started anew.", kOn},
    {"peaks", "Peak marks", "Marks the strongest peaks with their frequency.", kOn},
    {"freeze", "Freeze", "Holds the picture; recording and outputs go on.", kOn},
}};

}  // namespace

std::span<const ChoiceRow> choiceRows() {
  return kRows;
}

const ChoiceRow* choiceRow(std::string_view field) {
  const auto row = std::ranges::find(kRows, field, &ChoiceRow::field);
  return row != kRows.end() ? &*row : nullptr;
}

const display::ViewField& viewField(std::string_view name) {
  return *std::ranges::find_if(display::kViewFields,
                               [name](const display::ViewField& f) { return name == f.name; });
}

int nearestOffer(const ChoiceRow& row, double value) {
  const auto nearest = std::ranges::min_element(
      row.values, {}, [value](const OfferedValue& offer) { return std::abs(offer.value - value); });
  return static_cast<int>(nearest - row.values.begin());
}

}  // namespace ovka::desktop
