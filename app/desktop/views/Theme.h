#pragma once

#include <QColor>
#include <QPalette>
#include <QRgb>
#include <QString>
#include <array>
#include <cstddef>
#include <vector>

namespace ovka::desktop {

/// The colours of the views. Channels differ in lightness as well as in hue, so that they can be
/// told apart with any kind of colour vision, on dark and on light ground.
struct Theme {
  bool dark = true;
  QColor ground;     ///< behind everything
  QColor plot;       ///< behind the curves
  QColor band;       ///< tint of every second band
  QColor grid;       ///< lines behind the curves
  QColor axis;       ///< frames and ticks
  QColor text;       ///< labels and figures
  QColor quietText;  ///< what is read only when looked for
  QColor warning;    ///< frozen, thresholds
  std::array<QColor, 4> channels;
  std::array<QColor, 8> pairs;  ///< coherence pairs

  /// By `themeX` and `channelColorX`; `desktop` decides when the user left it to it.
  [[nodiscard]] static Theme current(const QPalette& desktop);
};

/// Colour scales for heights: each rises evenly in lightness.
struct HeatPalette {
  QString name;
  std::array<QRgb, 256> colors;  ///< low to high
};
[[nodiscard]] const std::vector<HeatPalette>& heatPalettes();
/// The scale of an index, the first for one that does not exist.
[[nodiscard]] const HeatPalette& heatPalette(int index);

}  // namespace ovka::desktop
