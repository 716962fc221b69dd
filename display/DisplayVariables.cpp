#include "DisplayVariables.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>

namespace ovka::display {
namespace {

/// Every field of every view as a number, so that documents and views may meet on any thread.
class Kept {
 public:
  Kept() { reset(); }
  void reset() {
    for (std::size_t kind = 0; kind < kViewKinds; ++kind) {
      put(kind, defaultChoice(static_cast<ViewKind>(kind)));
    }
  }
  void put(std::size_t kind, const ViewChoice& choice) {
    for (std::size_t i = 0; i < kViewFields.size(); ++i) {
      cells_[kind][i].value = valueOf(choice, kViewFields[i]);
    }
  }
  [[nodiscard]] ViewChoice get(std::size_t kind) const {
    ViewChoice choice;
    for (std::size_t i = 0; i < kViewFields.size(); ++i) {
      assign(choice, kViewFields[i], cells_[kind][i].value);
    }
    return choice;
  }

 private:
  struct Cell {
    Shared<double> value{0.0};
  };
  std::array<std::array<Cell, kViewFields.size()>, kViewKinds> cells_{};
};

Kept& kept() {
  static Kept all;
  return all;
}

struct Layout {
  std::mutex lock;
  std::string text;
};

Layout& layout() {
  static Layout one;
  return one;
}

}  // namespace

std::string keptLayout() {
  const std::scoped_lock guard(layout().lock);
  return layout().text;
}

void keepLayout(std::string text) {
  const auto printable = [](char letter) { return letter > ' ' && letter < '\x7F'; };
  if (text.size() > kLongestLayout || !std::ranges::all_of(text, printable)) return;
  const std::scoped_lock guard(layout().lock);
  layout().text = std::move(text);
}

double valueOf(const ViewChoice& choice, const ViewField& field) {
  return field.whole != nullptr ? static_cast<double>(choice.*field.whole)
                                : static_cast<double>(choice.*field.real);
}

bool assign(ViewChoice& choice, const ViewField& field, double value) {
  if (!(value >= field.minimum && value <= field.maximum)) return false;
  if (field.whole != nullptr) {
    choice.*field.whole = static_cast<std::int32_t>(std::lround(value));
  } else {
    choice.*field.real = static_cast<float>(value);
  }
  return true;
}

ViewChoice defaultChoice(ViewKind kind) {
  ViewChoice choice;
  switch (kind) {
    case ViewKind::RawWave:
      choice.top = 100.0F;
      break;
    case ViewKind::Newave:
      choice.top = 100.0F;
      choice.seconds = 180.0F;
      break;
    case ViewKind::Waterfall:
    case ViewKind::Spectrum3D:
      // One channel fills the picture; a second one is a click away.
      choice.channels = 1;
      choice.seconds = kind == ViewKind::Waterfall ? 60.0F : 20.0F;
      choice.highF = 45.0F;
      choice.scale = kind == ViewKind::Waterfall ? 1 : 0;
      break;
    case ViewKind::Spectrum:
    case ViewKind::EEGSpectrum:
    case ViewKind::BarGraph:
      break;
  }
  return choice;
}

ViewChoice keptChoice(ViewKind kind) {
  return kept().get(static_cast<std::size_t>(kind));
}

void keepChoice(ViewKind kind, const ViewChoice& choice) {
  kept().put(static_cast<std::size_t>(kind), choice);
}

void resetVariables() {
  for (auto& gain : displayGainX) gain = 1.0F;
  for (auto& color : channelColorX) color = -1;
  themeX = 0;
  textScaleX = 1.0F;
  useOpenGLX = 1;
  frameRateX = 60;
  rawLeftReverseX = 0;
  rawRightReverseX = 0;
  barFrequencyX = 0.0F;
  alpha2DX = 1.0F;
  alpha3DX = 1.0F;
  turnX = -28.0F;
  tiltX = 32.0F;
  distanceX = 1.0F;
  pairsX = 0x3F;
  showThresholdX = 1;
  showCountsX = 1;
  kept().reset();
  keepLayout({});
  for (ViewWindow& window : windows) {
    for (Shared<std::int32_t>* value :
         {&window.open, &window.front, &window.width, &window.height, &window.x, &window.y}) {
      *value = 0;
    }
  }
}

}  // namespace ovka::display
