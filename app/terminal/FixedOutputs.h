#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "LiveSnapshot.h"

namespace ovka::terminal {

// The outputs that scripts read. Their shape is fixed: keys, order and header never change; new
// keys may be added behind the old ones. Every function appends to `out` and ends with a line feed.

/// One line of `live --json` and `replay --json`:
/// {"point":,"seconds":,"channels":{"A":{"bands":{...},"peaks":[...]},...},"lost":{cause:count,...}}.
/// All four channels and all causes are always there.
void appendLiveJson(std::string& out, const LiveSnapshot& snapshot);

/// One readable line: time, rate, and per active channel the strongest band with its share and the
/// first peak; then what was lost.
void appendLiveLine(std::string& out, const LiveSnapshot& snapshot);

/// The header and one row of `decode`: the stored integers of buffer channels 0 to 4.
void appendDecodeHeader(std::string& out);
void appendDecodeRow(std::string& out, std::int64_t point, std::span<const std::int32_t, 5> values);
/// A row of `decode --read`: the values as readers of the sample store get them.
void appendReadRow(std::string& out, std::int64_t point, std::span<const double, 5> values);

/// One analysed channel. The spans have fftp / 2 elements and belong to the caller.
struct ChannelAnalysis {
  std::span<const double> spectrum;  ///< what a pass leaves in the spectrum array's real slots
  std::span<const double> re;        ///< and in the coherence array
  std::span<const double> im;
  BandSums powers;
  std::array<PeakSlot, 3> peaks;
};

/// The coherence of one channel pair, 0 to 100.
struct PairCoherence {
  std::string name;                        ///< "AB"; in opposite phase "AB_opposite"
  std::span<const double> bins;            ///< fftp / 2 elements
  std::array<double, kBandCount> bands{};  ///< averages over the bands
};

struct PointAnalysis {
  std::int64_t point = 0;
  std::int64_t fftp = 0;
  double binWidth = 0;  ///< Hz
  std::array<ChannelAnalysis, kAnalysisChannels> channels;
  std::vector<PairCoherence> coherence;  ///< empty: not asked for, the key is left out
};

/// One line of `analyse`: {"point":,"fftp":,"binwidth":,"channels":{"A":{"spectrum":[],"re":[],
/// "im":[],"bands":{},"peaks":[]},...}} and, when asked for, "coherence":{"AB":{"bins":[],
/// "bands":{}},...}.
void appendAnalysisJson(std::string& out, const PointAnalysis& analysis);

}  // namespace ovka::terminal
