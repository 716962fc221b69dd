#include <array>
#include <doctest/doctest.h>
#include <limits>
#include <vector>

#include "FixedOutputs.h"

using namespace ovka::terminal;

TEST_CASE("live JSON, letter for letter") {
  LiveSnapshot snapshot;
  snapshot.point = 1280;
  snapshot.seconds = 5;
  snapshot.channels[0].powers = {{1, 2, 3, 4.5, 5, 6, 7, 8}, 36.5};
  snapshot.channels[0].peaks = {{{0.1F, 10, 40}, {}, {}}};
  snapshot.channels[1].active = false;
  snapshot.channels[1].powers.total = std::numeric_limits<double>::quiet_NaN();
  snapshot.losses = {{"longLines", "lines", 0}, {"gapPoints", "points", 3}};
  std::string out;
  appendLiveJson(out, snapshot);
  const std::string zero =
      R"({"bands":{"eye":0,"delta":0,"theta":0,"alpha":0,"lowbeta":0,"midbeta":0,"highbeta":0,"ac":0,"total":)";
  const std::string none = R"({"value":0,"frequency":0,"bin":0})";
  const std::string peaks = R"(},"peaks":[)" + none + "," + none + "," + none + "]}";
  // A single-precision value is printed so that it reads back exactly as a double.
  CHECK(
      out ==
      R"({"point":1280,"seconds":5,"channels":{"A":{"bands":{"eye":1,"delta":2,"theta":3,"alpha":4.5,)"
      R"("lowbeta":5,"midbeta":6,"highbeta":7,"ac":8,"total":36.5},"peaks":[)"
      R"({"value":0.10000000149011612,"frequency":10,"bin":40},)" +
          none + "," + none + R"(]},"B":)" + zero + "null" + peaks + R"(,"D":)" + zero + "0" +
          peaks + R"(,"E":)" + zero + "0" + peaks +
          R"(},"lost":{"longLines":0,"gapPoints":3}})"
          "\n");
}

TEST_CASE("decode rows") {
  std::string out;
  appendDecodeHeader(out);
  const std::array<std::int32_t, 5> stored{49, -2147483648, 2147483647, 0, -1};
  appendDecodeRow(out, 7, stored);
  const std::array<double, 5> read{0.1, -16384 / 163.8399990234375, 0, 1e22, -1};
  appendReadRow(out, 130591999, read);
  CHECK(out ==
        "point,ch0,ch1,ch2,ch3,ch4\n"
        "7,49,-2147483648,2147483647,0,-1\n"
        "130591999,0.1,-100.00000059604645,0,1e+22,-1\n");
}

TEST_CASE("analysis JSON, with and without coherence") {
  const std::vector<double> spectrum{0.5, 1};
  const std::vector<double> im{-0.25, 2};
  PointAnalysis analysis;
  analysis.point = 2048;
  analysis.fftp = 4;
  analysis.binWidth = 30;
  for (ChannelAnalysis& channel : analysis.channels) {
    channel.spectrum = channel.re = spectrum;
    channel.im = im;
  }
  std::string out;
  appendAnalysisJson(out, analysis);
  const std::string channel =
      R"({"spectrum":[0.5,1],"re":[0.5,1],"im":[-0.25,2],"bands":{"eye":0,"delta":0,"theta":0,"alpha":0,)"
      R"("lowbeta":0,"midbeta":0,"highbeta":0,"ac":0,"total":0},"peaks":[{"value":0,"frequency":0,"bin":0},)"
      R"({"value":0,"frequency":0,"bin":0},{"value":0,"frequency":0,"bin":0}]})";
  const std::string body = R"({"point":2048,"fftp":4,"binwidth":30,"channels":{"A":)" + channel +
                           R"(,"B":)" + channel + R"(,"D":)" + channel + R"(,"E":)" + channel + "}";
  CHECK(out == body + "}\n");
  analysis.coherence.push_back({"AB", spectrum, {}});
  out.clear();
  appendAnalysisJson(out, analysis);
  CHECK(out ==
        body +
            R"(,"coherence":{"AB":{"bins":[0.5,1],"bands":{"eye":0,"delta":0,"theta":0,"alpha":0,)"
            R"("lowbeta":0,"midbeta":0,"highbeta":0,"ac":0}}}})"
            "\n");
}

TEST_CASE("readable lines") {
  LiveSnapshot snapshot;
  snapshot.seconds = 12.4;
  snapshot.measuredRate = 255.93;
  snapshot.channels[0].powers = {{1, 2, 3, 14, 5, 6, 7, 12}, 50};
  snapshot.channels[0].peaks[0] = {3, 10.25, 41};
  for (std::size_t i = 1; i < 4; ++i) snapshot.channels[i].active = false;
  std::string out;
  appendLiveLine(out, snapshot);
  CHECK(out == "00:00:12  255.9/s  A: alpha 14.00 (28 %) peak 10.25 Hz\n");
  snapshot.losses = {{"a", "lines of wrong length", 2}, {"b", "x", 0}, {"c", "points missing", 9}};
  snapshot.channels[0].powers.total = 0;
  snapshot.measuredRate = 0;
  snapshot.connected = false;
  out.clear();
  appendLiveLine(out, snapshot);
  CHECK(out ==
        "00:00:12  -/s  A: alpha 14.00 peak 10.25 Hz  lost: 2 lines of wrong length, 9 points "
        "missing  (line is down)\n");
}

TEST_CASE("the hint names the cure of cut lines only while it is not in use") {
  const std::vector<LossCount> cut{{"wrongLengthLines", "", 1}};
  const std::vector<LossCount> gaps{{"gapPoints", "", 9}, {"longLines", "", 0}};
  CHECK(lossHint(cut, false).find("FixedFramingX=1") != std::string::npos);
  CHECK(lossHint(cut, true).empty());
  CHECK(lossHint(gaps, false).empty());
}
