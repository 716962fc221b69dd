#include "AnalysisTables.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "FFTVariables.h"
#include "Print.h"
#include "RealTransform.h"

namespace ovka {

namespace {

constexpr double kFullScale = 32767.0;
constexpr std::string_view kWindowCodes = "rtmnb";

double windowAt(char window, double step, std::int32_t i, std::int32_t points) {
  switch (window) {
    case 'b':
      return 0.42 - 0.5 * std::cos(i * step) + 0.08 * std::cos(2 * i * step);
    case 'm':
      return 0.54 - 0.46 * std::cos(i * step);
    case 'n':
      return 0.5 * (1.0 - std::cos(i * step));
    default:
      return 2.0 * i / (points - 1);
  }
}

std::int32_t gainWord(char window, std::int32_t points) {
  switch (window) {
    case 'b':
      return static_cast<std::int32_t>(9752.38094848 / points);
    case 'm':
      return static_cast<std::int32_t>(7585.185185185178 / points);
    case 'r':
      return 4096 / points;
    default:
      return static_cast<std::int32_t>(8192.0 / points);
  }
}

}  // namespace

std::vector<std::int32_t> bitReversalTable(std::int32_t bits, bool pairs) {
  const std::size_t points = std::size_t{1} << bits;
  std::vector<std::int32_t> table(points);
  if (points > 1) table[1] = 1;
  for (std::size_t filled = 2; filled < points; filled *= 2) {
    for (std::size_t i = 0; i < filled; ++i) {
      table[filled + i] = 2 * table[i] + 1;
      table[i] *= 2;
    }
  }
  if (!pairs) return table;
  for (std::size_t j = points; j-- > 0;) {
    if (table[j] != 0) table[static_cast<std::size_t>(table[j])] = 0;
  }
  return table;
}

std::vector<std::int32_t> sineTable(std::int32_t bits) {
  const std::int32_t half = (1 << bits) / 2;
  const double step = 3.1415926535 / half;  // ten decimals, on purpose
  std::vector<std::int32_t> table(std::size_t{1} << bits);
  const auto upper = table.begin() + half;
  for (std::int32_t i = 0; i < half; ++i) {
    const auto value = static_cast<std::int32_t>(kFullScale * std::sin(i * step));
    upper[i] = value;
    table[static_cast<std::size_t>(i)] = -value;
  }
  return table;
}

std::vector<std::int32_t> windowTable(std::int32_t bits, char window) {
  if (kWindowCodes.find(window) == std::string_view::npos) return {};
  const std::int32_t points = 1 << bits;
  const double step = 6.283185307 / (points - 1);  // nine decimals, on purpose
  std::vector<std::int32_t> table(static_cast<std::size_t>(points) + 2);
  for (std::int32_t i = 0; i <= (points - 1) / 2; ++i) {
    const std::int32_t value =
        window == 'r' ? 32767
                      : static_cast<std::int32_t>(windowAt(window, step, i, points) * kFullScale);
    table[static_cast<std::size_t>(i)] = value;
    table[static_cast<std::size_t>(points - 1 - i)] = value;
  }
  table[static_cast<std::size_t>(points)] = gainWord(window, points);
  return table;
}

const AnalysisTableSet* AnalysisTables::find(std::int32_t bits, char window) {
  const std::size_t code = std::min(kWindowCodes.find(window), kWindowCodes.size());
  auto& slot = built_[static_cast<std::size_t>(bits) * kWindows + code];
  if (slot) return slot.get();
  auto set = std::make_unique<AnalysisTableSet>();
  set->points = 1 << bits;
  set->window = window;
  set->revs = bitReversalTable(bits, true);
  set->sine = sineTable(bits);
  set->wind = windowTable(bits, window);
  if (!set->wind.empty()) set->windowValue.assign(set->wind.begin(), set->wind.end() - 2);
  slot = std::move(set);
  // The transform's own plan too, so that no pass has to build it.
  RealTransform::forPoints(1 << bits);
  return slot.get();
}

void AnalysisTables::fftinit(std::int32_t bits, char WindowType) {
  if (bits < 1 || bits > 16) return;
  const std::scoped_lock guard(lock_);
  fft::stratFFTinit = 1;
  Print("fftinit\n");
  eeg_.store(find(bits, WindowType), std::memory_order_release);
  for (std::size_t c = 0; c < fft::kEegChannels; ++c) fft::avPeakCount.set(c, 0);
  initCount_.fetch_add(1);
  fft::stratFFTinit = 0;
}

void AnalysisTables::fftinit2(std::int32_t bits, char WindowType) {
  if (bits < 1 || bits > 16) return;
  const std::scoped_lock guard(lock_);
  fft::stratFFTinit = 1;
  Print("fftinit2\n");
  sound_.store(find(bits, WindowType), std::memory_order_release);
  fft::stratFFTinit = 0;
}

const AnalysisTableSet* AnalysisTables::tables(bool sound) const noexcept {
  return (sound ? sound_ : eeg_).load(std::memory_order_acquire);
}

std::int32_t AnalysisTables::windReturn(std::int32_t index) const {
  const AnalysisTableSet* set = tables();
  if (set == nullptr || index < 0 || static_cast<std::size_t>(index) >= set->wind.size()) return 0;
  return set->wind[static_cast<std::size_t>(index)];
}

}  // namespace ovka
