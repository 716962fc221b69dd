#include "QZAppController.h"

#include "AmplifierVariables.h"
#include "AppVariables.h"
#include "BufferVariables.h"

namespace ovka {

namespace app {
void resetVariables() {
  setDistributeTimingX = 5;
  SerialOutTimingPX = 2;
  SetStartAutoSaveProcessX = 0;
  SetStartAutoSaveMovieX = 0;
  autoReONportX = 0;
}
}  // namespace app

void QZAppController::needupdateNotification() {
  center_.post("needupdateNotification");
}

std::int32_t QZAppController::setDistributeTiming() {
  return app::setDistributeTimingX;
}

void QZAppController::needupdateSerialOutNotification() {
  center_.post("needupdateSerialOutNotification");
}

std::int32_t QZAppController::getSerialOutputTiming() {
  return app::SerialOutTimingPX;
}

void QZAppController::doSomethingSlow(std::int32_t /*argument*/) {
  center_.post("doSomethingSlow");
}

std::int32_t QZAppController::getSetStartAutoSaveProcess() {
  return app::SetStartAutoSaveProcessX;
}

void QZAppController::SetStartAutoSaveProcess(std::int32_t pending) {
  app::SetStartAutoSaveProcessX = pending;
}

std::int32_t QZAppController::getSetStartAutoSaveMovie() {
  return app::SetStartAutoSaveMovieX;
}

void QZAppController::SetStartAutoSaveMovie(std::int32_t pending) {
  app::SetStartAutoSaveMovieX = pending;
}

void QZAppController::PauseMovie() {
  center_.post("PauseMovie");
}

void QZAppController::StopRecord2VideoandBrainwave() {
  if (buffer::setRecModeX == kRecording) buffer::setRecModeX = kAcquiring;
  // In loop mode the next round writes over what a save would take.
  if (buffer::setLoopModeX == 0) AutoSaveWhenRecEnd();
}

void QZAppController::StartRecord2VideoandBrainwave() {
  buffer::setRecModeX = kRecording;
}

void QZAppController::AutoSaveWhenRecEnd() {
  center_.post("AutoSaveWhenRecEnd");
}

void QZAppController::setoffSerialX(std::int32_t off) {
  if (off != 0) amplifier::PortONActionX = 0;
}

}  // namespace ovka
