#include <cstdlib>
#include <doctest/doctest.h>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "ConvertCapture.h"
#include "FileEngine.h"
#include "FrameEncoder.h"
#include "ReplaySession.h"
#include "SampleLine.h"
#include "TerminalHome.h"

using namespace ovka;
using namespace ovka::terminal;

namespace {

constexpr std::int64_t kPoints = 1001;
using Points = std::vector<std::array<std::int32_t, buffer::kChannels>>;

struct Home : testing::Home {
  testing::CapturedPrint quiet;
};

/// What a decoder of the present settings can give: of random codes, some full of carriage returns
/// and some that spell a status line.
Points decodable(std::uint32_t seed) {
  const SampleLine line = SampleLine::current();
  const FrameFormat format{line.model, line.config, line.oldBluetooth, 1};
  std::mt19937 random(seed);
  Points points(kPoints);
  for (std::size_t i = 0; i < points.size(); ++i) {
    FrameCodes codes;
    for (std::uint32_t& code : codes.channels)
      code = static_cast<std::uint32_t>(random()) & topCode(format);
    if (i % 7 == 3) codes.channels.fill(0x0D0D0D & topCode(format));
    if (i % 11 == 5) codes.channels[0] = codes.channels[4] = 0x0D0D & topCode(format);
    codes.between = codes.channels[3] & 0xFFFU;
    const Frame frame = line.decode(encodeCodes(format, codes).bytes.data());
    points[i] = {49, 0, 0, 0, 0};
    for (std::size_t c = 0; c < points[i].size(); ++c) {
      if (frame.present[c]) points[i][c] = frame.values[c];
    }
  }
  return points;
}

/// Model 1: multiples of 4, at the present scale, of the channels that have a port.
Points decodableBytes() {
  Points points(kPoints);
  for (std::size_t i = 0; i < points.size(); ++i) {
    const auto at = [&](std::size_t c) {
      const double scaled =
          amplifier::GainOr * (static_cast<double>((i * 37 + c * 11) % 256) - 128);
      return 4 * static_cast<std::int32_t>(scaled);
    };
    points[i] = {49, at(1), at(2), 0, 0};
    if (buffer::DeviceConfig >= 2) points[i][buffer::DeviceConfig + 1] = at(3);
  }
  return points;
}

/// Records the points in an engine of these settings and writes the capture; its report.
std::vector<std::string> converted(const std::vector<std::string>& assignments, Points* points,
                                   const std::string& path) {
  DocumentHost host;
  const DocumentMachine machine = host.filesOnly(host.folders);
  FileEngine files(machine, assignments);
  if (points->empty()) *points = buffer::SelectDevice == 1 ? decodableBytes() : decodable(17);
  for (std::size_t i = 0; i < points->size(); ++i) {
    for (std::size_t c = 0; c < buffer::kChannels; ++c)
      files.engine().store().putIntToBuffer(static_cast<std::int32_t>(c),
                                            static_cast<std::int64_t>(i), (*points)[i][c]);
  }
  buffer::ploop = static_cast<std::int64_t>(points->size());
  return writeCapture(files.engine(), host.files, path, 1'000'000'000);
}

Points replayed(const std::string& path) {
  LinuxAddressSpace space;
  ReplaySession session(space);
  const ReplaySession::Opened opened = session.open(path, {});
  REQUIRE_MESSAGE(opened.problem == ReplaySession::Problem::None, opened.explanation);
  session.run();
  CHECK(session.damage().empty());
  CHECK(session.skippedBlocks() == 0);
  Points points(static_cast<std::size_t>(std::max<std::int64_t>(buffer::ploop, 0)));
  for (std::size_t i = 0; i < points.size(); ++i) {
    for (std::size_t c = 0; c < buffer::kChannels; ++c)
      points[i][c] = session.engine().store().storedValue(static_cast<std::int32_t>(c),
                                                          static_cast<std::int64_t>(i));
  }
  return points;
}

}  // namespace

TEST_CASE("a recording becomes a capture that replays to the same samples, in every format") {
  const Home home;
  std::vector<std::vector<std::string>> rows;
  for (const char* model : {"0", "1", "2", "5", "9"}) {
    for (const char* config : {"0", "1", "2", "3"})
      rows.push_back({std::string("SelectDevice=") + model, std::string("DeviceConfig=") + config});
  }
  rows.push_back({"SelectDevice=3", "DeviceConfig=3", "oldBluetooth=1"});
  rows.push_back({"SelectDevice=0", "DeviceConfig=1", "oldBluetooth=1"});
  rows.push_back({"SelectDevice=0", "DeviceConfig=1", "ShowReverseWaveX=1"});
  rows.push_back({"SelectDevice=6", "DeviceConfig=3", "hardwareGainCH1=2", "DCoffSetCH2X1000=777"});
  rows.push_back({"SelectDevice=6", "DeviceConfig=1", "hardwareGainCH1=-1.5", "setLoopModeX=1"});
  rows.push_back({"SelectDevice=6", "DeviceConfig=0", "hardwareGainCH1=-99"});
  rows.push_back({"SelectDevice=1", "DeviceConfig=1", "GainOr=1.7"});
  rows.push_back({"SelectDevice=6", "DeviceConfig=3", "SampleSpeed=7"});
  const std::string path = home.at("a.ovcap");
  for (const std::vector<std::string>& assignments : rows) {
    std::string name;
    for (const std::string& assignment : assignments) name += assignment + " ";
    CAPTURE(name);
    Points points;
    const std::vector<std::string> report = converted(assignments, &points, path);
    CHECK_MESSAGE(report.empty(), report.front());
    const Points back = replayed(path);
    REQUIRE(back.size() == points.size());
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < back.size(); ++i) wrong += back[i] != points[i] ? 1U : 0U;
    CHECK(wrong == 0);
  }
}

TEST_CASE("what a line cannot carry is counted, and the nearest code stands in its place") {
  const Home home;
  Points points(4, {49, 0, 0, 0, 0});
  points[0][1] = 4;              // 24 bits: 3 and 5 have codes, 4 has none
  points[1][2] = 2'000'000'000;  // beyond the codes
  points[2] = {7, 0, 0, 3, 0};   // no such channels in configuration 1
  const std::string path = home.at("b.cap");
  const std::vector<std::string> report =
      converted({"SelectDevice=4", "DeviceConfig=1"}, &points, path);
  const std::vector<std::string> expected{
      "channel 0: 1 samples are lost: lines of this model carry no such channel",
      "channel 1: 1 samples have no code of their own; the nearest is off by 1 at most",
      "channel 2: 1 samples lie beyond the codes of the line and were held at their ends",
      "channel 3: 1 samples are lost: lines of this model carry no such channel",
      "model 4 has no serial line: the capture is one of model 6, the same lines"};
  CHECK(report == expected);
  const Points back = replayed(path);
  REQUIRE(back.size() == points.size());
  CHECK(std::abs(back[0][1] - 4) == 1);
  CHECK(back[1][2] == 10'485'758);
  CHECK(back[3] == points[3]);
}

TEST_CASE("a damaged document gives back what stands before the damage") {
  Home home;
  const auto at = [&](const char* name) { return home.at(name); };
  std::string rows = "point,ch0,ch1,ch2,ch3,ch4\n";
  for (int i = 0; i < 500; ++i) {
    rows += std::to_string(i);
    for (int c = 0; c < 5; ++c) rows += "," + std::to_string(100000 * c + i);
    rows += "\n";
  }
  std::ofstream(at("a.csv")) << rows;
  REQUIRE(home.run({"convert", at("a.csv"), at("a.ovkanote"), "--config", "3", "--model", "6"}) ==
          0);
  const std::string whole = testing::contentsOf(at("a.ovkanote"));
  // In the middle of channel 2: 1 and 0 are whole, of 2 a part is there, 3 and 4 are gone.
  const std::size_t cut = whole.find('<', whole.find("OVKA4dataCH2")) + 1 + 8 * 200 + 5;
  std::ofstream(at("cut.ovkanote")) << whole.substr(0, cut);
  CHECK(home.run({"convert", at("cut.ovkanote"), at("b.csv")}) == 3);
  REQUIRE(home.run({"convert", "--salvage", at("cut.ovkanote"), at("b.csv"), "--config", "3"}) ==
          0);
  const std::string back = testing::contentsOf(at("b.csv"));
  CHECK(back.find("\n199,199,100199,200199,0,0\n") != std::string::npos);
  CHECK(back.find("\n200,200,100200,0,0,0\n") != std::string::npos);
  CHECK(back.ends_with("\n499,499,100499,0,0,0\n"));
  // Nothing of channel 0: nothing to salvage.
  std::ofstream(at("cut.ovkanote")) << whole.substr(0, whole.find("OVKA4dataCH0"));
  CHECK(home.run({"convert", "--salvage", at("cut.ovkanote"), at("c.csv")}) == 3);
  CHECK(home.run({"convert", "--salvage", at("a.csv"), at("c.ovkanote")}) == 2);
  CHECK(home.run({"info", at("a.csv"), "--json"}) == 0);
}
