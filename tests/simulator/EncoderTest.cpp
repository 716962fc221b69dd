#include <cmath>
#include <cstdint>
#include <doctest/doctest.h>
#include <string>
#include <vector>

#include "FrameEncoder.h"

using namespace ovka;

namespace {

/// What a receiver reads, worked out from the protocol's formulas alone: value of a buffer channel
/// in reader's units, with the size of one code step. `step` 0: the frame does not carry it.
struct Reading {
  double value = 0.0;
  double step = 0.0;
};

constexpr double kDivisor = 163.8399990234375;

int hexDigit(std::uint8_t c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1000000;  // no digit: makes any comparison fail
}
int hex3(const WireFrame& frame, std::size_t at) {
  return 256 * hexDigit(frame.bytes[at]) + 16 * hexDigit(frame.bytes[at + 1]) +
         hexDigit(frame.bytes[at + 2]);
}
double gainOf(std::uint32_t model) {
  return model == 2 || model == 3 ? 0.98F : 1.0;
}

Reading decodeOldBluetooth(const WireFrame& frame, std::size_t channel) {
  const int h = hex3(frame, 4 * channel) ^ 0x800;
  return {static_cast<double>(h - 2048), 1.0};
}

Reading decode24(const FrameFormat& format, const WireFrame& frame, std::size_t channel) {
  const double divisor = format.model == 4 ? 1.0 : kDivisor;
  const double step = 1.25 / divisor;
  if (format.config == 3) {
    const std::size_t at = channel == 0 ? 12 : 3 * (channel - 1);
    const int v = 65536 * frame.bytes[at] + 256 * frame.bytes[at + 1] + frame.bytes[at + 2];
    return {std::trunc(1.25 * (v - 0x800000)) / divisor, step};
  }
  if (channel == 1 || channel == 2) {
    const std::size_t at = 8 * (channel - 1);
    const int v = 4096 * hex3(frame, at) + hex3(frame, at + 4);
    return {std::trunc(1.25 * (v - 0x800000)) / divisor, step};
  }
  if (channel == 3 && format.config == 2) {
    const int h =
        256 * hexDigit(frame.bytes[3]) + 16 * hexDigit(frame.bytes[7]) + hexDigit(frame.bytes[11]);
    return {2000.0 * 2.0 * (h - 512) / divisor, 4000.0 / divisor};
  }
  return {};
}

Reading decode(const FrameFormat& format, const WireFrame& frame, std::size_t channel) {
  if (format.oldBluetooth) return decodeOldBluetooth(frame, channel);
  if (format.model >= 4) return decode24(format, frame, channel);
  if (format.model == 1) {
    if (channel != format.port) return {};
    int reversed = 0;
    for (int bit = 0; bit < 8; ++bit) reversed |= ((frame.bytes[0] >> bit) & 1) << (7 - bit);
    return {4.0 * (reversed - 128), 4.0};
  }
  const bool carried = channel >= 1 && (channel <= 2 || (channel == 3 && format.config >= 2) ||
                                        (channel == 4 && format.config == 3));
  if (!carried) return {};
  const double gain = gainOf(format.model);
  return {std::trunc(gain * 2 * (hex3(frame, 4 * (channel - 1)) - 512)), 2 * gain};
}

std::vector<FrameFormat> allFormats() {
  std::vector<FrameFormat> formats;
  for (std::uint32_t model = 0; model <= 9; ++model) {
    for (std::uint32_t config = 0; config <= 3; ++config) {
      for (std::uint32_t port = 1; port <= (model == 1 ? 4U : 1U); ++port) {
        formats.push_back({model, config, false, port});
        if (model <= 3 && port == 1) formats.push_back({model, config, true, port});
      }
    }
  }
  return formats;
}

std::string nameOf(const FrameFormat& format) {
  return "model " + std::to_string(format.model) + " config " + std::to_string(format.config) +
         (format.oldBluetooth ? " old Bluetooth" : "") + " port " + std::to_string(format.port);
}

}  // namespace

TEST_CASE("every frame gives a reader the microvolts that went in, to one code step") {
  for (const FrameFormat& format : allFormats()) {
    for (const double scale : {0.0, 0.3, -1.0, 7.0, 40.0}) {
      const Microvolts in{scale * 3, scale * 5, scale * -7, scale * 11, scale * -12.5};
      const WireFrame frame = encodeFrame(format, in);
      for (std::size_t channel = 0; channel < 5; ++channel) {
        const Reading out = decode(format, frame, channel);
        if (out.step == 0.0) continue;
        const double unit = format.model == 4 ? kDivisor : 1.0;
        CAPTURE(nameOf(format));
        CAPTURE(channel);
        // Half a step of rounding, and up to one stored unit of the receiver's own truncation.
        CHECK(std::abs(out.value - in[channel] * unit) <= out.step * 0.5 + 1.0);
      }
    }
  }
}

TEST_CASE("values beyond the range saturate, and what is no number is silence") {
  struct Row {
    FrameFormat format;
    std::size_t channel;
    double low, high;
  };
  const Row rows[] = {
      {{0, 3, false, 1}, 1, -1024, 7166},
      {{2, 3, false, 1}, 4, -1003, 7022},
      {{1, 0, false, 2}, 2, -512, 508},
      {{0, 0, true, 1}, 0, -2048, 2047},
      {{6, 3, false, 1}, 0, -10485760 / kDivisor, 10485758 / kDivisor},
      {{9, 2, false, 1}, 3, -512 * 4000 / kDivisor, 3583 * 4000 / kDivisor},
  };
  for (const Row& row : rows) {
    CAPTURE(nameOf(row.format));
    const auto through = [&row](double value) {
      return decode(row.format, encodeFrame(row.format, {value, value, value, value, value}),
                    row.channel)
          .value;
    };
    CHECK(through(-1e9) == row.low);
    CHECK(through(1e9) == row.high);
    CHECK(through(std::nan("")) == 0.0);
  }
}

TEST_CASE("sequence frames differ from frame to frame and tell their number") {
  const FrameFormat text{0, 3, false, 1};
  const FrameFormat binary{6, 3, false, 1};
  for (const std::uint64_t n : {0ULL, 1ULL, 4095ULL, 4096ULL, 1234567ULL, 16777215ULL}) {
    const WireFrame line = encodeSequence(text, n);
    CHECK(static_cast<std::uint64_t>(hex3(line, 0) + 4096 * hex3(line, 4)) == n);
    CHECK(hex3(line, 8) == hex3(line, 0));
    const WireFrame frame = encodeSequence(binary, n);
    const auto at = [&frame](std::size_t i) { return std::uint64_t{frame.bytes[i]}; };
    CHECK(at(0) * 65536 + at(1) * 256 + at(2) == n);
    CHECK(at(3) * 65536 + at(4) * 256 + at(5) == (n ^ 0xFFFFFFU));
    const WireFrame byte = encodeSequence({1, 0, false, 1}, n);
    CHECK(byte.bytes[0] ==
          encodeFrame({1, 0, false, 1}, {0, (static_cast<double>(n % 256) - 128) * 4, 0, 0, 0})
              .bytes[0]);
  }
}
