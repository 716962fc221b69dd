#include "RFCOMMSPPController.h"

#include <array>
#include <cstdio>

#include "AmplifierCommands.h"
#include "AmplifierVariables.h"
#include "Print.h"

namespace ovka {
namespace {

const char* selectionMessage(BluetoothSelection selection) {
  switch (selection) {
    case BluetoothSelection::Selected:
      break;
    case BluetoothSelection::Cancelled:
      return "User has cancelled the device selection.\n";
    case BluetoothSelection::NoSelector:
      return "Error - unable to allocate IOBluetoothDeviceSelectorController.\n";
    case BluetoothSelection::NoDevice:
      return "Error - no selected device.  ***This should never happen.***\n";
    case BluetoothSelection::NoService:
      return "Error - no spp service in selected device.  ***This should never happen since the "
             "selector forces the user to select only devices with spp.***\n";
    case BluetoothSelection::NoChannelId:
      return "Error - no spp service in selected device.  ***This should never happen an spp "
             "service must have an rfcomm channel id.***\n";
  }
  return nullptr;
}

}  // namespace

RFCOMMSPPController::RFCOMMSPPController(BluetoothChannel& channel, BluetoothTestWindow* window,
                                         StreamDecoder& decoder)
    : mRFCOMMChannel(channel), mRFCOMMSPPTestWindow(window), decoder_(decoder) {}

RFCOMMSPPController::~RFCOMMSPPController() {
  if (amplifier::openBluetooth != 0) closeConnectonAction();
}

bool RFCOMMSPPController::openSerialPortProfile() {
  const std::scoped_lock guard(control_);
  const BluetoothSelection selection = mRFCOMMChannel.select();
  if (const char* message = selectionMessage(selection)) {
    Print("%s", message);
    return false;
  }
  if (mRFCOMMChannel.openAsync(*this) != 0) {
    Print("Error - open sequence failed.***\n");
    return false;
  }
  return true;
}

void RFCOMMSPPController::openConnectionAction() {
  // Both off while the device is chosen and its channel opens; the outcome switches one on again.
  if (mRFCOMMSPPTestWindow != nullptr) mRFCOMMSPPTestWindow->enableButtons(false, false);
  if (!openSerialPortProfile()) becomeClosed();
}

void RFCOMMSPPController::closeConnectonAction() {
  closeRFCOMMConnectionOnChannel();
  closeDeviceConnectionOnDevice();
  becomeClosed();
}

void RFCOMMSPPController::closeRFCOMMConnectionOnChannel() {
  amplifier::openBluetooth = 0;  // no command starts on a channel that is closing
  const std::scoped_lock guard(writing_);
  mRFCOMMChannel.closeChannel();
}

void RFCOMMSPPController::closeDeviceConnectionOnDevice() {
  mRFCOMMChannel.closeConnection();
}

void RFCOMMSPPController::rfcommChannelOpenComplete(int status) {
  if (status != 0) {
    Print("Error - failed to open the RFCOMM channel with error %d.\n", status);
    rfcommChannelClosed();
    return;
  }
  amplifier::openBluetooth = 1;
  if (mRFCOMMSPPTestWindow != nullptr) mRFCOMMSPPTestWindow->enableButtons(false, true);
  sendSampleSpeedBluetooth(amplifier::speedX);
}

void RFCOMMSPPController::rfcommChannelData(std::span<const std::uint8_t> data) {
  decoder_.decodePacket(data);
  if (mRFCOMMSPPTestWindow == nullptr) return;
  for (const std::uint8_t byte : data) addThisByteToTheLogs(byte);
}

void RFCOMMSPPController::rfcommChannelClosed() {
  becomeClosed();
}

void RFCOMMSPPController::becomeClosed() {
  amplifier::openBluetooth = 0;
  if (mRFCOMMSPPTestWindow != nullptr) mRFCOMMSPPTestWindow->enableButtons(true, false);
}

void RFCOMMSPPController::sendSampleSpeedBluetooth(std::int32_t samplesPerSecond) {
  amplifier::speedX = samplesPerSecond;
  send(sampleSpeedCommand(samplesPerSecond));
}

void RFCOMMSPPController::sendFilterBluetooth(float ratio) {
  send(filterCommand(ratio));
}

void RFCOMMSPPController::sendBLBluetooth() {
  send("BL\r");
}

void RFCOMMSPPController::send(const std::string& command) {
  if (amplifier::setNoPortAccess != 0) return;
  const std::scoped_lock guard(writing_);
  if (amplifier::openBluetooth == 0) return;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(command.data());
  const int error = mRFCOMMChannel.writeSync({bytes, command.size()});
  if (error != 0) PrintError(error, "Error writing to the Bluetooth channel - ");
}

void RFCOMMSPPController::addThisByteToTheLogs(std::uint8_t byte) {
  std::array<char, 4> hex{};
  std::snprintf(hex.data(), hex.size(), "%02x ", byte);
  logString(std::string(1, static_cast<char>(byte)), BluetoothTestWindow::View::Ascii);
  logString(hex.data(), BluetoothTestWindow::View::Hex);
}

void RFCOMMSPPController::logString(const std::string& text, BluetoothTestWindow::View onView) {
  if (mRFCOMMSPPTestWindow != nullptr) mRFCOMMSPPTestWindow->appendLog(onView, text);
}

}  // namespace ovka
