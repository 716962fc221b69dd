#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <random>
#include <vector>

#include "Decimation.h"
#include "Feed.h"
#include "HeightRows.h"
#include "Histories.h"
#include "WavePyramid.h"

using namespace ovka::desktop;

namespace {

/// The extent of the line through the values between two positions, looked up one by one.
Extent plainExtent(const std::vector<double>& values, double from, double to) {
  Extent extent;
  const auto height = [&values](double at) {
    const auto left = static_cast<std::size_t>(at);
    const std::size_t right = std::min(left + 1, values.size() - 1);
    const auto a = static_cast<float>(values[left]), b = static_cast<float>(values[right]);
    return a + (b - a) * static_cast<float>(at - static_cast<double>(left));
  };
  const double first = std::max(from, 0.0);
  const double last = std::min(to, static_cast<double>(values.size()) - 1);
  if (first > last) return extent;
  extent.take(height(first));
  extent.take(height(last));
  for (auto i = static_cast<std::size_t>(std::ceil(first)); static_cast<double>(i) <= last; ++i) {
    extent.take(static_cast<float>(values[i]));
  }
  return extent;
}

}  // namespace

TEST_CASE("columns are the exact extents of the line at every density") {
  std::mt19937 random(7);
  std::normal_distribution<double> noise;
  for (const std::size_t count : {1U, 2U, 7U, 64U, 1000U, 32768U}) {
    std::vector<double> values(count);
    for (double& value : values) value = noise(random);
    Pyramid pyramid;
    pyramid.build(std::vector<double>(2 * count, 1e9));  // what was there before leaves no trace
    pyramid.build(values);
    const auto last = static_cast<double>(count) - 1;
    for (const auto& [first, end] : {std::pair{0.0, last}, std::pair{0.3 * last, 0.6 * last + 0.01},
                                     std::pair{-5.5, last + 9}}) {
      for (const std::size_t columns : {1U, 3U, 500U, 1200U}) {
        CAPTURE(count);
        CAPTURE(columns);
        std::vector<double> edges;
        evenEdges(first, end, columns, edges);
        std::vector<Extent> out(columns);
        columnsOf(pyramid, edges, out);
        bool same = true;
        for (std::size_t c = 0; c < columns; ++c) {
          same = same && out[c] == plainExtent(values, edges[c], edges[c + 1]);
        }
        CHECK(same);
      }
    }
  }
}

TEST_CASE("a single peak is seen at every width, and nothing that is not a number is drawn") {
  for (const std::size_t peak : {0U, 1U, 4095U, 16384U, 32767U}) {
    std::vector<double> values(32768, 0.0);
    values[peak] = 5;
    values[(peak + 100) % values.size()] = std::nan("");
    values[(peak + 200) % values.size()] = std::numeric_limits<double>::infinity();
    Pyramid pyramid;
    pyramid.build(values);
    for (const std::size_t columns : {1U, 37U, 640U, 1199U, 3840U}) {
      std::vector<double> edges;
      evenEdges(0, 32767, columns, edges);
      std::vector<Extent> out(columns);
      columnsOf(pyramid, edges, out);
      CHECK(std::ranges::max(out, {}, &Extent::high).high == 5.0F);
      CHECK(std::ranges::all_of(out, [](const Extent& e) { return std::isfinite(e.high); }));
    }
  }
}

TEST_CASE("the wave pyramid keeps every peak while samples come, change and wrap") {
  std::vector<double> store(20000, 0.0);
  WavePyramid wave([&store](std::size_t, std::int64_t first, std::span<double> out) {
    for (std::size_t i = 0; i < out.size(); ++i)
      out[i] = store[static_cast<std::size_t>(first) + i];
  });
  const auto highest = [&wave](double from, double to, std::size_t columns) {
    std::vector<double> edges;
    evenEdges(from, to, columns, edges);
    std::vector<Extent> out(columns);
    wave.columns(0, edges, out);
    Extent all;
    for (const Extent& extent : out) all.take(extent);
    return all;
  };
  wave.limit(10000);
  CHECK(highest(0, 20000, 14) == Extent{0, 0});
  CHECK(highest(10001, 20000, 10).empty());
  // A block that was looked at before is looked at again where it was written.
  store[5000] = 9;
  CHECK(highest(0, 10000, 7).high == 0);
  wave.written(4999, 5001);
  for (const std::size_t columns : {1U, 7U, 333U, 9999U})
    CHECK(highest(0, 10000, columns).high == 9);
  store[10050] = 4;
  wave.written(10000, 10100);
  wave.limit(10100);
  CHECK(highest(9990, 10100, 20).high == 4);
  // In loop mode what lies before the start is the end of the buffer.
  store[19990] = 7;
  wave.limit(20000);
  wave.wrap(1000, 19000);
  CHECK(highest(900, 1100, 50).high == 7);
  wave.wrap(1000, 0);
  CHECK(highest(900, 1100, 50).high == 0);
  store.assign(store.size(), -1);
  wave.forget();
  CHECK(highest(0, 20000, 90) == Extent{-1, -1});
}

TEST_CASE("rows of the spectrum history keep peaks, drop another layout's rows, age out") {
  SpectrumRows rows;
  Frame frame;
  frame.alive = true;
  frame.sampleSpeed = 1920;
  const auto lay = [&frame](std::int32_t points) {
    frame.fftPoints = points;
    frame.bins = points / 2;
    frame.binWidth = 1920.0 / points;
    for (FrameChannel& channel : frame.channels) {
      channel.spectrum.assign(static_cast<std::size_t>(frame.bins), 0.0);
    }
  };
  lay(65536);
  HeightRows heights;
  HeightLayout layout;
  layout.lowF = 5;
  layout.highF = 45;
  layout.columns = 100;
  const auto height = [](double value) { return value / 10; };
  for (std::uint64_t row = 0; row < SpectrumRows::kRows + 50; ++row) {
    std::vector<double>& spectrum = frame.channels[0].spectrum;
    std::ranges::fill(spectrum, 0.0);
    // A bin between 10 and 40 Hz, another one each time.
    const auto bin =
        static_cast<std::size_t>((10 + 30.0 * static_cast<double>(row % 97) / 97) / frame.binWidth);
    spectrum[bin] = 10;
    frame.point = static_cast<std::int64_t>(192 * row);
    rows.take(frame);
    CHECK(rows.taken() == row + 1);
    CHECK(std::ranges::max(rows.row(0, row)) == 10.0F);
    static_cast<void>(heights.follow(rows, layout, height));
    const std::uint16_t* seen = heights.row(row);
    const auto at = std::max_element(seen, seen + 100) - seen;
    CHECK(seen[at] == 65535);
    CHECK(std::abs(static_cast<double>(at) -
                   (static_cast<double>(bin) * frame.binWidth - 5) / 40 * 100) < 1.5);
  }
  CHECK(rows.row(0, 10).empty());
  CHECK(heights.first() == 50);
  lay(1024);
  frame.point += 192;
  rows.take(frame);
  CHECK(rows.row(0, rows.taken() - 2).empty());
  CHECK(heights.follow(rows, layout, height) == rows.taken() - 1);
  CHECK(heights.first() == rows.taken() - 1);
}
