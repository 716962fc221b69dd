#include "AppVariables.h"
#include "BufferVariables.h"
#include "SettingsRegistry.h"
#include "SettingsTables.h"
#include "ThreadVariables.h"

namespace ovka {

void addBufferSettings(SettingsRegistry& to) {
  using namespace buffer;  // NOLINT: a table of this room's names
  constexpr auto kLast = static_cast<double>(MAXbuffer);
  to.add("maxploop", maxploop, 1, kLast, "capacity of the recording (points)");
  to.add("ploop", ploop, 0, kLast, "the current point, where the next frame is written");
  to.add("ploopStart", ploopStart, 0, kLast, "the point to which looping returns");
  to.add("SampleSpeed", SampleSpeed, 1, 100000, "samples per second and channel");
  to.add("samplingModeX", samplingModeX, 0, 11,
         "sample speed by menu: 128, 256, 512, 1024, 120, 240, 480, 960, 1200, 1440, 1920, custom");
  to.add("SampleSpeedX", SampleSpeedX, 1, 100000, "the custom sample speed of mode 11");
  to.add("MaxTimeActionX", MaxTimeActionX, 0, 9,
         "recording length by menu: 3, 5, 10, 30 minutes, 1, 2, 4, 8, 16, 24 hours");
  to.add("setLoopModeX", setLoopModeX, 0, 1, "1: recording goes on at ploopStart when it is full");
  to.add("setRecModeX", setRecModeX, 0, 2, "0: playing back, 1: recording, 2: acquiring only");
  to.add("setPauseX", setPauseX, 0, 1, "1: the current point stands still");
  to.add("AutoSaveX", AutoSaveX, 0, 1, "1: save by itself when the recording is full");
  to.add("SelectDevice", SelectDevice, 0, 9, "amplifier model");
  to.add("DeviceConfig", DeviceConfig, 0, 3,
         "channels of the amplifier: 0 and 1 two, 2 three, 3 four or five");
  to.add("ReversPolarityX", ReversPolarityX, 0, 1, "1: right-hand channels are negated");
  to.add("LeftRightReverse", LeftRightReverse, 0, 1, "1: left and right are swapped");
  to.add("ShowReverseWaveX", ShowReverseWaveX, 0, 1,
         "1: right-hand channels are negated whatever the polarity");
  to.add("PerformanceProfileX", PerformanceProfileX, 0, 1,
         "1: every read is handed on at once and outputs follow new data");
  to.add("UploadStartZ", UploadStartZ, 0, 1, "1: the upload copy is made with every frame");
  to.add("ploopRockNet", ploopRockNet, 0, kLast, "first point of the upload copy");
  to.addStatus("loopCount", loopCount, "times the recording began again at ploopStart");
}

void addThreadSettings(SettingsRegistry& to) {
  using namespace threads;  // NOLINT: a table of this room's names
  constexpr double kDay = 24 * 60;
  to.add("timeMX", timeMX, 0, kDay, "minutes between backups of the recording, 0: none");
  to.add("timeMXPreSet", timeMXPreSet, 0, kDay, "minutes between saves of the preset, 0: none");
  to.add("PortNumberX", PortNumberX, 0, 65535, "UDP port of the network receiver, 0: none");
  to.add("setDistributeTimingX", app::setDistributeTimingX, 0, 6,
         "publish rate: 1, 2, 3, 4, 5, 10 or 100 a second");
  to.add("SerialOutTimingPX", app::SerialOutTimingPX, 0, 10,
         "pause between serial outputs: 4, 2, 1, 0.5, 0.333, 0.25, 0.2, 0.1, 0.05, 0.025, 0.01 s");
  to.addStatus("BackupTimer", BackupTimer, "minutes since the last backup");
  to.addStatus("BackupTimerPreSet", BackupTimerPreSet, "minutes since the last preset save");
  to.addStatus("firstTimeRun", firstTimeRun, "1: the acquisition threads are still to be started");
  to.addStatus("firstTimeRunUDP", firstTimeRunUDP, "1: the network thread is still to be started");
  to.addStatus("firstTimePreSet", firstTimePreSet, "1: the first preset save is still due");
  to.addStatus("openPort5", openPort5, "1: the first command-input port is open");
  to.addStatus("openPort6", openPort6, "1: the second command-input port is open");
  to.addStatus("openPort7", openPort7, "1: the third command-input port is open");
}

}  // namespace ovka
