#include "BufferVariables.h"

namespace ovka::buffer {

void resetVariables() {
  maxploop = 432000;
  ploop = 0;
  ploopStart = 0;
  SampleSpeed = 120;
  setLoopModeX = 0;
  setRecModeX = 0;
  setPauseX = 0;
  AutoSaveX = 0;
  loopCount = 0;
  SelectDevice = 0;
  DeviceConfig = 1;
  ReversPolarityX = 0;
  LeftRightReverse = 0;
  ShowReverseWaveX = 0;
  MaxTimeActionX = 4;
  samplingModeX = 4;
  SampleSpeedX = 120;
  UploadStartZ = 0;
  PerformanceProfileX = 0;
  ploopRockNet = 0;
}

}  // namespace ovka::buffer
