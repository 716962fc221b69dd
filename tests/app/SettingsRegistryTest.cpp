#include <doctest/doctest.h>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "CaptureSettings.h"
#include "CapturedPrint.h"
#include "Engine.h"
#include "FFTVariables.h"
#include "FakeSerialPorts.h"
#include "HeapAddressSpace.h"
#include "ManualTime.h"
#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"

using namespace ovka;

namespace {

/// An engine on manual time and a machine without lines.
struct Bench {
  testing::CapturedPrint print;
  ManualTime time;
  HeapAddressSpace space;
  testing::FakeSerialPorts serial;
  Engine engine{{time, time, time, space, serial}};
};

}  // namespace

TEST_CASE("assignments that do not fit say what is wrong and change nothing") {
  Bench bench;
  struct Row {
    const char* text;
    const char* says;
  };
  const std::vector<Row> rows{
      {"SelectDevice=12", "'12' is no value for SelectDevice: it takes 0 ... 9"},
      {"SampleSpeed=0", "'0' is no value for SampleSpeed: it takes 1 ... 100000"},
      {"SampleSpeed=1e9", "it takes 1 ... 100000"},
      {"fftp=1000", "it takes one of 128 256 512"},
      {"fftp=", "'' is no value for fftp"},
      {"fftp=512x", "'512x' is no value for fftp"},
      {"DeviceConfig=1.5", "'1.5' is no value for DeviceConfig"},
      {"LowFX=nan", "'nan' is no value for LowFX"},
      {"windSape=q", "it takes one of r, t, m, n, b"},
      {"sampleSpeed=256", "did you mean 'SampleSpeed'?"},
      {"fileDescriptor1=3", "'fileDescriptor1' is kept by the system itself"},
      {"fftp", "write NAME=VALUE"},
  };
  const CaptureSettings before = captureSettings(bench.engine, {});
  for (const Row& row : rows) {
    CAPTURE(row.text);
    const std::string problem = bench.engine.assign(row.text);
    CHECK_MESSAGE(problem.find(row.says) != std::string::npos, problem);
    CHECK(problem.find('\n') == std::string::npos);
  }
  CHECK(captureSettings(bench.engine, {}) == before);
}

TEST_CASE("a table is set by index, its rows do not hide variables of the same name") {
  Bench bench;
  const SettingsRegistry& settings = bench.engine.settings();
  CHECK(bench.engine.assign("LowF1X[3]=8.25") == "");
  CHECK(setmidiband::LowFX[0][3] == 8.25F);
  CHECK(setmidiband::LowFXZ[0][3] == 8.25F);
  CHECK(setmidiband::LowFX[0][2] == 0.0F);
  const auto one = settings.value("LowF1X[3]");
  REQUIRE(one.has_value());
  CHECK(SettingsRegistry::format(*one, one->get()) == "8.25");

  for (const char* bad : {"LowF1X=8", "LowF1X[]=8", "LowF1X[128]=8", "LowF1X[-1]=8", "LowF1X[3=8",
                          "LowF1X[3]]=8", "LowF1X[3x]=8"}) {
    CAPTURE(bad);
    const std::string says = bench.engine.assign(bad);
    CHECK(says == "'LowF1X' is a table: write LowF1X[0] to LowF1X[127]");
  }
  CHECK(bench.engine.assign("fftp[0]=512").find("is a single value") != std::string::npos);
  CHECK(bench.engine.assign("LearnGainX[0]=2049").find("it takes 0 ... 2048") != std::string::npos);
  CHECK(bench.engine.assign("LowF1X[3]=-1").find("is no value") != std::string::npos);
  CHECK(setmidiband::LowFX[0][3] == 8.25F);

  CHECK(bench.engine.assign("LowFX=5") == "");  // of the peak search
  CHECK(bench.engine.assign("setmidi::LowFX[7]=6") == "");
  CHECK(fft::LowFX == 5.0);
  CHECK(setmidi::LowFX[7] == 6.0F);
}

TEST_CASE("what depends on a setting follows it") {
  Bench bench;
  Engine& engine = bench.engine;
  CHECK(engine.assign("fftp=4096") == "");
  CHECK(fft::fftpX == 12);
  CHECK(fft::FFTpointX == 5);
  CHECK(engine.assign("windSape=b") == "");
  CHECK(engine.assign("FFTcalculationSelectX=3") == "");
  CHECK(fft::scalerX == 2.380952380952381);
  CHECK(fft::scalerY == 0.9300595238095238);
  CHECK(engine.assign("SelectDevice=3") == "");
  CHECK(amplifier::newBlueToothAmpGain == 0.98F);
  CHECK(engine.assign("samplingModeX=1") == "");
  CHECK(buffer::SampleSpeed == 256);
  CHECK(buffer::maxploop == 256 * 3600);  // the recording keeps its hour
  CHECK(engine.assign("MaxTimeActionX=0") == "");
  CHECK(buffer::maxploop == 256 * 180);
  CHECK(engine.actions().perform("setMaxTime10mAction:"));
  CHECK(buffer::maxploop == 256 * 600);
  CHECK_FALSE(engine.actions().perform("setMaxTime7mAction:"));
}

TEST_CASE(
    "every setting is documented, its default is in its range, and a capture carries it over") {
  CaptureSettings carried;
  {
    Bench bench;
    for (const Setting& setting : bench.engine.settings().entries()) {
      CAPTURE(setting.name);
      CHECK(!setting.meaning.empty());
      if (!setting.writable) continue;
      const std::string name = setting.count == 0 ? setting.name : setting.name + "[0]";
      const auto value = bench.engine.settings().value(name);
      REQUIRE(value.has_value());
      CHECK(value->get() == setting.defaultValue);
      CHECK(bench.engine.assign(name + "=" +
                                SettingsRegistry::format(setting, setting.defaultValue)) == "");
    }
    for (const char* change : {"SampleSpeed=1920", "MaxTimeActionX=2", "SelectDevice=8", "fftp=256",
                               "LowFX=3.3", "windSape=t", "hardwareGainCH2=-0.7", "scalerX=0.3"}) {
      CHECK(bench.engine.assign(change) == "");
    }
    carried = captureSettings(bench.engine, {"/dev/one", "/dev/two"});
  }
  CHECK(capturedInputs(carried) == std::vector<std::string>{"/dev/one", "/dev/two"});
  Bench bench;
  CHECK(applyCaptureSettings(bench.engine, carried) == "");
  CHECK(captureSettings(bench.engine, {"/dev/one", "/dev/two"}) == carried);
  CHECK(buffer::maxploop == 1920 * 600);
}
