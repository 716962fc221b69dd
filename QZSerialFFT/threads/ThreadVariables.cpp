#include "ThreadVariables.h"

namespace ovka::threads {

void resetVariables() {
  firstTimeRun = 1;
  firstTimeRunUDP = 1;
  timeMX = 0;
  timeMXPreSet = 0;
  BackupTimer = 0;
  BackupTimerPreSet = 0;
  firstTimePreSet = 1;
  openPort5 = 0;
  openPort6 = 0;
  openPort7 = 0;
  PortNumberX = 0;
}

}  // namespace ovka::threads
