#include "DisplayGroups.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "DisplayRows.h"
#include "InformationRows.h"
#include "NumberTexts.h"
#include "srtToLong.h"

namespace ovka::display {
namespace {

std::string textOf(const ViewField& field, double value) {
  return field.whole != nullptr ? integerText(std::lround(value)) : floatText(value);
}

void take(ViewKind kind, const ViewField& field, const std::string& text) {
  const std::optional<double> value = floatOf(text);
  ViewChoice choice = keptChoice(kind);
  if (value && assign(choice, field, *value)) keepChoice(kind, choice);
}

const ViewField& fieldOf(std::string_view name) {
  for (const ViewField& field : kViewFields) {
    if (name == field.name) return field;
  }
  return kViewFields.front();
}

SettingsRows::Row rowOf(ViewKind kind, const ViewField& field) {
  SettingsRows::Row row;
  row.name = "view " + std::to_string(static_cast<int>(kind)) + " " + field.name;
  row.get = [kind, &field] { return textOf(field, valueOf(keptChoice(kind), field)); };
  row.set = [kind, &field](const std::string& text) { take(kind, field, text); };
  return row;
}

std::unique_ptr<SettingsRows> begin() {
  auto rows = std::make_unique<SettingsRows>();
  rows->onPut(tellViews);
  return rows;
}

/// A variable of display/DisplayRows.h.
void addVariable(SettingsRows& rows, std::string_view name) {
  if (const auto* whole = findRow(kWholeRows, name))
    rows.add(name, *whole->variable, whole->minimum, whole->maximum);
  if (const auto* real = findRow(kRealRows, name))
    rows.add(name, *real->variable, real->minimum, real->maximum);
}

void addView(SettingsRows& rows, ViewKind kind) {
  for (const ViewField& field : kViewFields) rows.add(rowOf(kind, field));
}

/// Takes an entry over. An entry that holds what a program without views writes says nothing:
/// documents of such a program must not close windows or change modes.
void bindEntry(InformationList& information, std::size_t index, InformationList::Getter get,
               InformationList::Setter set) {
  information.bind(index, std::move(get), [index, set = std::move(set)](const std::string& text) {
    if (text == kInformationRows[index].initial) return;
    set(text);
    tellViews();
  });
}

void bindField(InformationList& information, std::size_t index, ViewKind kind,
               std::string_view name) {
  const ViewField& field = fieldOf(name);
  bindEntry(
      information, index,
      [kind, &field] { return textOf(field, valueOf(keptChoice(kind), field)); },
      [kind, &field](const std::string& text) { take(kind, field, text); });
}

template <typename T>
void bindVariable(InformationList& information, std::size_t index, Shared<T>& variable,
                  double minimum, double maximum) {
  // A row of a group knows how a variable becomes a text and back.
  SettingsRows rows;
  rows.add("", variable, minimum, maximum);
  const SettingsRows::Row row = rows.rows().front();
  bindEntry(information, index, row.get, row.set);
}

constexpr std::array<ViewKind, 5> kFlatViews{ViewKind::RawWave, ViewKind::Spectrum,
                                             ViewKind::EEGSpectrum, ViewKind::BarGraph,
                                             ViewKind::Newave};
constexpr std::array<ViewKind, 2> kDeepViews{ViewKind::Waterfall, ViewKind::Spectrum3D};

/// A channel's switch in the information list: says whether the first of the views shows it, and
/// switches it in all of them; the groups come afterwards and tell the views apart.
void bindChannel(InformationList& information, std::size_t index, std::size_t channel,
                 std::span<const ViewKind> kinds) {
  const std::int32_t bit = 1 << channel;
  bindEntry(
      information, index,
      [bit, kinds] { return integerText((keptChoice(kinds.front()).channels & bit) != 0 ? 1 : 0); },
      [bit, kinds](const std::string& text) {
        if (text != "0" && text != "1") return;
        for (const ViewKind kind : kinds) {
          ViewChoice choice = keptChoice(kind);
          choice.channels = text == "1" ? choice.channels | bit : choice.channels & ~bit;
          keepChoice(kind, choice);
        }
      });
}

/// The raw wave's vertical scale is a factor on this full scale (microvolts); 0: automatic.
constexpr double kPlainTop = 100;

void bindScale(InformationList& information) {
  bindEntry(
      information, 107,
      [] { return floatText(static_cast<double>(keptChoice(ViewKind::RawWave).top) / kPlainTop); },
      [](const std::string& text) {
        const std::optional<double> factor = floatOf(text);
        if (!factor) return;
        take(ViewKind::RawWave, fieldOf("top"), floatText(*factor * kPlainTop));
      });
}

constexpr double kPixels = 100000;

/// A frame's number; a window that is not open writes the list's own text.
void bindFrame(InformationList& information, std::size_t index, const ViewWindow& shown,
               Shared<std::int32_t>& variable, double minimum) {
  SettingsRows rows;
  rows.add("", variable, minimum, kPixels);
  const SettingsRows::Row row = rows.rows().front();
  bindEntry(
      information, index,
      [index, &shown, get = row.get] {
        return shown.open != 0 ? get() : std::string(kInformationRows[index].initial);
      },
      row.set);
}

void bindWindow(InformationList& information, std::size_t first, ViewKind kind) {
  ViewWindow& shown = window(kind);
  bindFrame(information, first, shown, shown.width, 0);
  bindFrame(information, first + 1, shown, shown.height, 0);
  bindFrame(information, first + 2, shown, shown.x, -kPixels);
  bindFrame(information, first + 3, shown, shown.y, -kPixels);
}

}  // namespace

std::unique_ptr<SettingsRows> makeDisplayGroup() {
  auto rows = begin();
  const char* const gains[]{"displayGainX A", "displayGainX B", "displayGainX D", "displayGainX E"};
  for (std::size_t c = 0; c < displayGainX.size(); ++c) {
    rows->add(gains[c], displayGainX[c], kLeastDisplayGain, kGreatestDisplayGain);
  }
  addVariable(*rows, "textScaleX");
  addVariable(*rows, "frameRateX");
  addVariable(*rows, "useOpenGLX");
  addVariable(*rows, "rawLeftReverseX");
  addVariable(*rows, "rawRightReverseX");
  addVariable(*rows, "barFrequencyX");
  addVariable(*rows, "alpha2DX");
  for (const ViewKind kind : kFlatViews) addView(*rows, kind);
  return rows;
}

std::unique_ptr<SettingsRows> makeDisplayColorGroup() {
  auto rows = begin();
  addVariable(*rows, "themeX");
  const char* const colors[]{"channelColorX A", "channelColorX B", "channelColorX D",
                             "channelColorX E"};
  for (std::size_t c = 0; c < channelColorX.size(); ++c) {
    rows->add(colors[c], channelColorX[c], -1, kGreatestColor);
  }
  return rows;
}

std::unique_ptr<SettingsRows> makeDisplayWaterfallGroup() {
  auto rows = begin();
  addView(*rows, ViewKind::Waterfall);
  return rows;
}

std::unique_ptr<SettingsRows> makeDisplayBSGroup() {
  auto rows = begin();
  addVariable(*rows, "turnX");
  addVariable(*rows, "tiltX");
  addVariable(*rows, "distanceX");
  addVariable(*rows, "alpha3DX");
  addVariable(*rows, "pairsX");
  addVariable(*rows, "showThresholdX");
  addVariable(*rows, "showCountsX");
  addView(*rows, ViewKind::Spectrum3D);
  return rows;
}

std::unique_ptr<SettingsRows> makeFrontDisplayGroup() {
  auto rows = begin();
  for (std::size_t kind = 0; kind < kViewKinds; ++kind) {
    const std::string name = "view " + std::to_string(kind);
    ViewWindow& shown = windows[kind];
    rows->add(name + " open", shown.open, 0, 1);
    rows->add(name + " front", shown.front, 0, 99);
    rows->add(name + " width", shown.width, 0, kPixels);
    rows->add(name + " height", shown.height, 0, kPixels);
    rows->add(name + " x", shown.x, -kPixels, kPixels);
    rows->add(name + " y", shown.y, -kPixels, kPixels);
  }
  rows->add({"layout", keptLayout, keepLayout});
  return rows;
}

void bindDisplayInformation(InformationList& information) {
  // Which windows are open, and where: 22 is the waterfall, 23 the view with the brain switch.
  constexpr std::array<std::pair<std::size_t, ViewKind>, 4> kOpen{{{20, ViewKind::RawWave},
                                                                   {21, ViewKind::BarGraph},
                                                                   {22, ViewKind::Waterfall},
                                                                   {23, ViewKind::Spectrum3D}}};
  for (std::size_t i = 0; i < kOpen.size(); ++i) {
    bindVariable(information, kOpen[i].first, window(kOpen[i].second).open, 0, 1);
    bindWindow(information, 55 + 4 * i, kOpen[i].second);
  }
  for (std::size_t c = 0; c < 4; ++c) {
    bindChannel(information, 24 + c, c, kFlatViews);
    bindChannel(information, 28 + c, c, kDeepViews);
  }
  bindField(information, 32, ViewKind::RawWave, "mode");
  bindField(information, 33, ViewKind::BarGraph, "mode");
  bindField(information, 34, ViewKind::Spectrum, "mode");
  bindField(information, 35, ViewKind::Spectrum3D, "mode");
  bindVariable(information, 36, window(ViewKind::RawWave).front, 0, 99);
  bindVariable(information, 37, window(ViewKind::BarGraph).front, 0, 99);
  bindVariable(information, 38, window(ViewKind::Spectrum).front, 0, 99);
  bindField(information, 40, ViewKind::RawWave, "gain");
  bindField(information, 41, ViewKind::BarGraph, "gain");
  bindVariable(information, 42, alpha2DX, 0, 1);
  bindVariable(information, 43, alpha3DX, 0, 1);
  bindVariable(information, 100, barFrequencyX, 0, 50);
  bindScale(information);
  bindVariable(information, 108, rawLeftReverseX, 0, 1);
  bindVariable(information, 109, rawRightReverseX, 0, 1);
}

DisplayGroups::DisplayGroups() {
  for (std::size_t i = 0; i < groups_.size(); ++i) groups_[i] = kDisplayGroups[i].make();
}

void DisplayGroups::use(SettingsGroups& groups, InformationList& information) {
  for (std::size_t i = 0; i < groups_.size(); ++i)
    static_cast<void>(groups.use(kDisplayGroups[i].key, *groups_[i]));
  bindDisplayInformation(information);
}

}  // namespace ovka::display
