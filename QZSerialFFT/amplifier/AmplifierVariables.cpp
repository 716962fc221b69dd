#include "AmplifierVariables.h"

namespace ovka::amplifier {

void resetVariables() {
  fileDescriptor1 = -1;
  fileDescriptor2 = -1;
  fileDescriptor3 = -1;
  fileDescriptor4 = -1;
  fileDescriptorBAK = -1;
  openPort = 0;
  openPort2 = 0;
  openPort3 = 0;
  openPort4 = 0;
  openBluetooth = 0;
  speedX = 120;
  setNoPortAccess = 0;
  HighSpeedX = 0;
  PortONActionX = 0;
  gotoStartAndRecNotificationActive = 0;
  hardwareGainCH1 = 0.0F;
  hardwareGainCH2 = 0.0F;
  newBlueToothAmpGain = 1.0F;
  DCoffSetCH1X1000 = 0;
  DCoffSetCH1X10000 = 0;
  DCoffSetCH1X100000 = 0;
  DCoffSetCH2X1000 = 0;
  DCoffSetCH2X10000 = 0;
  DCoffSetCH2X100000 = 0;
  GainOr = 1.0;
  SelectLSFset = 0;
  oldBluetooth = 0;
  FixedFramingX = 0;
  newestReadAt = 0;
  ploopRock = 0;
  batteryMonitor = 0.0;
  rsMonitor = 0;
  ovMonitor = 0;
  print2channelMode = 0;
  print4channelMode = 0;
  printLSFset0OK = 0;
  printLSFset1OK = 0;
  printLSFset2OK = 0;
  printLSFset3OK = 0;
  printLSFset4OK = 0;
  printLSFset5OK = 0;
  printLSFset6OK = 0;
  printLSFset10OK = 0;
  printLSFset20OK = 0;
  printElectrodeSelect0OK = 0;
  printElectrodeSelect1OK = 0;
  printElectrodeSelect2OK = 0;
  printElectrodeSelect3OK = 0;
  printElectrodeSelect4OK = 0;
  printOSCFSelect0OK = 0;
  printOSCFSelect1OK = 0;
  printOSCFSelect2OK = 0;
  printOSCPowerSelect0 = 0;
  printOSCPowerSelect1 = 0;
}

}  // namespace ovka::amplifier
