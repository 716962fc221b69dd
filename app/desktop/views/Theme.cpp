#include "Theme.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "DisplayVariables.h"

namespace ovka::desktop {
namespace {

Theme darkTheme() {
  Theme theme;
  theme.dark = true;
  theme.ground = QColor(0x14171a);
  theme.plot = QColor(0x191d21);
  theme.band = QColor(0x22272d);
  theme.grid = QColor(0x30363d);
  theme.axis = QColor(0x56606a);
  theme.text = QColor(0xeef1f4);
  theme.quietText = QColor(0xa9b3bd);
  theme.warning = QColor(0xffb454);
  theme.channels = {QColor(0x5ec4ff), QColor(0xffb000), QColor(0x3ddc97), QColor(0xf48fcf)};
  theme.pairs = {QColor(0x5ec4ff), QColor(0xffb000), QColor(0x3ddc97), QColor(0xf48fcf),
                 QColor(0xf4f07a), QColor(0xc7a6ff), QColor(0xe4572e), QColor(0xb8c4ce)};
  return theme;
}

Theme lightTheme() {
  Theme theme;
  theme.dark = false;
  theme.ground = QColor(0xf3f4f6);
  theme.plot = QColor(0xffffff);
  theme.band = QColor(0xeef1f5);
  theme.grid = QColor(0xdde2e8);
  theme.axis = QColor(0x8a95a1);
  theme.text = QColor(0x15191d);
  theme.quietText = QColor(0x505b66);
  theme.warning = QColor(0xb45309);
  theme.channels = {QColor(0x0063a8), QColor(0xc25700), QColor(0x00795a), QColor(0x9b2f86)};
  theme.pairs = {QColor(0x0063a8), QColor(0xc25700), QColor(0x00795a), QColor(0x9b2f86),
                 QColor(0x7a6a00), QColor(0x5b3fb8), QColor(0xa3210b), QColor(0x4c5661)};
  return theme;
}

/// Stops at even distances, joined by straight lines.
HeatPalette scaleOf(const QString& name, const std::vector<QRgb>& stops) {
  HeatPalette palette{name, {}};
  for (std::size_t i = 0; i < palette.colors.size(); ++i) {
    const double at = static_cast<double>(i) * static_cast<double>(stops.size() - 1) / 255.0;
    const auto left = std::min(static_cast<std::size_t>(at), stops.size() - 2);
    const double part = at - static_cast<double>(left);
    const auto mix = [part](int a, int b) {
      return static_cast<int>(std::lround(a + (b - a) * part));
    };
    const QRgb a = stops[left], b = stops[left + 1];
    palette.colors[i] =
        qRgb(mix(qRed(a), qRed(b)), mix(qGreen(a), qGreen(b)), mix(qBlue(a), qBlue(b)));
  }
  return palette;
}

}  // namespace

Theme Theme::current(const QPalette& desktop) {
  const std::int32_t choice = display::themeX;
  const bool dark = choice == 1 || (choice != 2 && desktop.window().color().lightness() < 128);
  Theme theme = dark ? darkTheme() : lightTheme();
  for (std::size_t c = 0; c < theme.channels.size(); ++c) {
    const std::int32_t own = display::channelColorX[c];
    if (own >= 0) theme.channels[c] = QColor(static_cast<QRgb>(own));
  }
  return theme;
}

const std::vector<HeatPalette>& heatPalettes() {
  static const std::vector<HeatPalette> all{
      scaleOf("Ember", {0xff06060b, 0xff1b1038, 0xff4a1466, 0xff7d2270, 0xffb03363, 0xffdd5147,
                        0xfff58228, 0xfffabd3c, 0xfffdf6b2}),
      scaleOf("Sea", {0xff08142e, 0xff0c2f57, 0xff17507a, 0xff277389, 0xff3a968c, 0xff5fb882,
                      0xff9dd571, 0xffe9ef6d}),
      scaleOf("Blue to yellow", {0xff001c47, 0xff20386b, 0xff48526e, 0xff6b6d70, 0xff918a75,
                                 0xffb8a86d, 0xffe0c85a, 0xfffdea45}),
      scaleOf("Grey", {0xff0b0b0b, 0xfff7f7f7}),
      scaleOf("Paper", {0xfff8f7f2, 0xffc9d5dc, 0xff86a7be, 0xff45739b, 0xff1a3f68, 0xff081a33}),
  };
  return all;
}

const HeatPalette& heatPalette(int index) {
  const std::vector<HeatPalette>& all = heatPalettes();
  const auto i = static_cast<std::size_t>(index);
  return i < all.size() ? all[i] : all.front();
}

}  // namespace ovka::desktop
