#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "DisplayVariables.h"

namespace ovka::display {

/// A single display variable by name, with its range; documents, presets, the settings registry and
/// the controls of the desktop all take it from here.
template <typename T>
struct DisplayRow {
  std::string_view name;
  Shared<T>* variable;
  double minimum;
  double maximum;
  std::string_view meaning;
};

inline constexpr std::array<DisplayRow<std::int32_t>, 8> kWholeRows{{
    {"themeX", &themeX, 0, 2, "colours of the views: 0 as the desktop, 1 dark, 2 light"},
    {"useOpenGLX", &useOpenGLX, 0, 1, "0: waterfall and 3D spectrum are painted without OpenGL"},
    {"frameRateX", &frameRateX, 10, 120, "most pictures a second of the views"},
    {"rawLeftReverseX", &rawLeftReverseX, 0, 1, "1: left raw waves are drawn upside down"},
    {"rawRightReverseX", &rawRightReverseX, 0, 1, "1: right raw waves are drawn upside down"},
    {"pairsX", &pairsX, 0, 0xFF, "coherence pairs shown, a bit a pair"},
    {"showThresholdX", &showThresholdX, 0, 1, "1: the 3D spectrum shows the switch's threshold"},
    {"showCountsX", &showCountsX, 0, 1, "1: the 3D spectrum shows the switch's counts"},
}};
inline constexpr std::array<DisplayRow<float>, 7> kRealRows{{
    {"textScaleX", &textScaleX, 0.5, 3, "size of the texts in the views (factor)"},
    {"barFrequencyX", &barFrequencyX, 0, 50, "how quickly bars follow (Hz), 0: at once"},
    {"alpha2DX", &alpha2DX, 0, 1, "opacity of fills in the flat views"},
    {"alpha3DX", &alpha3DX, 0, 1, "opacity of surfaces in the 3D spectrum"},
    {"turnX", &turnX, -80, 80, "turn of the 3D spectrum (degrees)"},
    {"tiltX", &tiltX, 5, 85, "tilt of the 3D spectrum (degrees)"},
    {"distanceX", &distanceX, 0.5, 3, "distance of the 3D spectrum (factor)"},
}};

/// Ranges of the tables, an entry a channel: A, B, D, E.
inline constexpr double kLeastDisplayGain = 0.0001, kGreatestDisplayGain = 10000;
inline constexpr double kGreatestColor = 0xFFFFFF;  ///< from -1: the theme's

/// The row of a name; nullptr: none of that kind.
template <typename T, std::size_t N>
[[nodiscard]] constexpr const DisplayRow<T>* findRow(const std::array<DisplayRow<T>, N>& rows,
                                                     std::string_view name) {
  const auto row = std::ranges::find(rows, name, &DisplayRow<T>::name);
  return row != rows.end() ? &*row : nullptr;
}

/// The views look at `broughtX` once a frame: whoever sets a variable from elsewhere calls this.
inline void tellViews() {
  broughtX = broughtX + 1;
}

}  // namespace ovka::display
