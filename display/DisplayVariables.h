#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Shared.h"

/// Display settings that other rooms read, or that documents and presets keep.
namespace ovka::display {

// name, default: meaning (unit); writer.
/// Display gain of channels A, B, D, E (factor, above 0): spectra are drawn with it, and the
/// outputs divide by it; the user.
inline constinit std::array<Shared<float>, 4> displayGainX{1.0F, 1.0F, 1.0F, 1.0F};

/// Colours of all views: 0 as the desktop, 1 dark, 2 light; the user.
inline constinit Shared<std::int32_t> themeX{0};
/// Size of all texts in the views (factor, 0.5 to 3); the user.
inline constinit Shared<float> textScaleX{1.0F};
/// Colour of channels A, B, D, E as 0xRRGGBB; -1: the theme's; the user.
inline constinit std::array<Shared<std::int32_t>, 4> channelColorX{-1, -1, -1, -1};
/// 0: waterfall and 3D spectrum are painted, although OpenGL is there; the user.
inline constinit Shared<std::int32_t> useOpenGLX{1};
/// Most frames a second that the views pull (10 to 120); they slow down by themselves on a machine
/// that cannot keep up; the user.
inline constinit Shared<std::int32_t> frameRateX{60};
/// 1: the raw wave of the left or right channels (A and D; B and E) is drawn upside down; the user.
inline constinit Shared<std::int32_t> rawLeftReverseX{0}, rawRightReverseX{0};
/// How quickly bars follow (corner in Hz, 0 to 50); 0: at once; the user.
inline constinit Shared<float> barFrequencyX{0.0F};
/// Opacity of fills in the flat and of surfaces in the 3D spectrum (0 to 1); the user.
inline constinit Shared<float> alpha2DX{1.0F}, alpha3DX{1.0F};
/// The 3D view's camera: turn and tilt (degrees), distance (factor 0.5 to 3); the user's mouse.
inline constinit Shared<float> turnX{-28.0F}, tiltX{32.0F}, distanceX{1.0F};
/// Coherence pairs shown, bit k for source 4 + k of the outputs; the user.
inline constinit Shared<std::int32_t> pairsX{0x3F};
/// Which parts of the brain switch the 3D spectrum shows: thresholds, counts; the user.
inline constinit Shared<std::int32_t> showThresholdX{1}, showCountsX{1};

/// The views, in the order in which every table lists them; documents depend on it.
enum class ViewKind : std::uint8_t {
  RawWave,
  Spectrum,
  EEGSpectrum,
  BarGraph,
  Waterfall,
  Spectrum3D,
  Newave
};
inline constexpr std::size_t kViewKinds = 7;

/// What the user chose for one view. The same for all views; a view leaves out what it has no use
/// for.
struct ViewChoice {
  std::int32_t channels = 0xF;  ///< a bit a channel: 1 A, 2 B, 4 D, 8 E
  std::int32_t mode = 0;        ///< index of the view's own list of modes
  float gain = 1.0F;            ///< factor on what is drawn, 0.01 to 1000
  float lowF = 0.0F;            ///< first frequency shown (Hz)
  float highF = 60.0F;          ///< last frequency shown (Hz), above lowF
  float seconds = 8.0F;         ///< time shown (s)
  float top = 0.0F;             ///< full scale in the view's unit; 0: follows the signal
  std::int32_t unit = 0;        ///< spectra in 0 microvolts r.m.s., 1 the outputs' own levels
  std::int32_t scale = 0;       ///< 0 linear, 1 decibels
  std::int32_t palette = 0;     ///< colour scale of heights, index of heatPalettes()
  std::int32_t bands = 1;       ///< 1: band shading with edges
  std::int32_t average = 0;     ///< 1: the average beside the live spectrum
  std::int32_t hold = 0;        ///< 1: peak hold
  std::int32_t peaks = 1;       ///< 1: the strongest peaks are marked
  std::int32_t freeze = 0;      ///< 1: stands still

  bool operator==(const ViewChoice&) const = default;
};

/// A choice by name, with its range; either `whole` or `real` is set.
struct ViewField {
  const char* name;
  std::int32_t ViewChoice::*whole;
  float ViewChoice::*real;
  double minimum;
  double maximum;
  const char* meaning;
};
/// In the order in which documents hold them; new ones go to the end.
inline constexpr std::array<ViewField, 15> kViewFields{{
    {"channels", &ViewChoice::channels, nullptr, 0, 0xF,
     "channels shown: 1 A, 2 B, 4 D, 8 E, added"},
    {"mode", &ViewChoice::mode, nullptr, 0, 9, "index of the view's list of modes"},
    {"gain", nullptr, &ViewChoice::gain, 0.01, 1000, "factor on what is drawn"},
    {"lowF", nullptr, &ViewChoice::lowF, 0, 100000, "first frequency shown (Hz)"},
    {"highF", nullptr, &ViewChoice::highF, 0.5, 100000, "last frequency shown (Hz)"},
    {"seconds", nullptr, &ViewChoice::seconds, 0.1, 86400, "time shown (s)"},
    {"top", nullptr, &ViewChoice::top, 0, 1e9,
     "full scale in the view's unit, 0: follows the signal"},
    {"unit", &ViewChoice::unit, nullptr, 0, 1, "spectra in 0 microvolts r.m.s., 1 levels"},
    {"scale", &ViewChoice::scale, nullptr, 0, 1, "0 linear, 1 decibels"},
    {"palette", &ViewChoice::palette, nullptr, 0, 9, "colour scale of heights"},
    {"bands", &ViewChoice::bands, nullptr, 0, 1, "1: the bands are shaded"},
    {"average", &ViewChoice::average, nullptr, 0, 1, "1: the average besides"},
    {"hold", &ViewChoice::hold, nullptr, 0, 1, "1: peak hold"},
    {"peaks", &ViewChoice::peaks, nullptr, 0, 1, "1: peaks are marked"},
    {"freeze", &ViewChoice::freeze, nullptr, 0, 1, "1: stands still"},
}};

/// One field of a choice as a number, whatever its type.
[[nodiscard]] double valueOf(const ViewChoice& choice, const ViewField& field);
/// Stores a number; one that is out of range or no number changes nothing and gives false.
bool assign(ViewChoice& choice, const ViewField& field, double value);

/// What a view is set to when nobody chose anything.
[[nodiscard]] ViewChoice defaultChoice(ViewKind kind);
/// The kept choice of a view. Any thread; fields changed meanwhile may be mixed.
[[nodiscard]] ViewChoice keptChoice(ViewKind kind);
/// Keeps the choice of a view. Any thread.
void keepChoice(ViewKind kind, const ViewChoice& choice);

/// The window of a view: whether it is open, its place among the open ones (0: in front), its frame
/// on the desktop; the window's owner.
struct ViewWindow {
  Shared<std::int32_t> open{0};
  Shared<std::int32_t> front{0};
  Shared<std::int32_t> width{0}, height{0}, x{0}, y{0};
};
inline constinit std::array<ViewWindow, kViewKinds> windows{};
[[nodiscard]] inline ViewWindow& window(ViewKind kind) {
  return windows[static_cast<std::size_t>(kind)];
}

/// The arrangement of all view windows, in a text that their owner alone understands (printable
/// ASCII, at most kLongestLayout letters); empty: none. Any thread.
[[nodiscard]] std::string keptLayout();
void keepLayout(std::string layout);
inline constexpr std::size_t kLongestLayout = 65536;

/// Advances when a document or preset brought display settings; the views then take them over.
inline constinit Shared<std::uint32_t> broughtX{0};

/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::display
