#include <array>
#include <string>
#include <utility>

#include "AmplifierVariables.h"
#include "SettingsRegistry.h"
#include "SettingsTables.h"

namespace ovka {

void addAmplifierSettings(SettingsRegistry& to) {
  using namespace amplifier;           // NOLINT: a table of this room's names
  constexpr double kOffset = 8388608;  // half the range of a 24-bit code
  to.add("HighSpeedX", HighSpeedX, 0, 1, "1: models 5 to 9 run at 921600 baud");
  to.add("FixedFramingX", FixedFramingX, 0, 1,
         "1: frames are cut by their fixed length, so that no line is lost");
  to.add("oldBluetooth", oldBluetooth, 0, 1, "1: the old Bluetooth head set with 20-byte records");
  to.add("setNoPortAccess", setNoPortAccess, 0, 1, "1: nothing is read, decoded or written");
  to.add("hardwareGainCH1", hardwareGainCH1, -1000, 1000,
         "gain of the left channels: 0 none, +1 doubles, -1 halves");
  to.add("hardwareGainCH2", hardwareGainCH2, -1000, 1000, "gain of the right channels");
  to.add("DCoffSetCH1X1000", DCoffSetCH1X1000, -kOffset, kOffset, "left DC offset, fine (steps)");
  to.add("DCoffSetCH1X10000", DCoffSetCH1X10000, -kOffset, kOffset, "left DC offset, middle");
  to.add("DCoffSetCH1X100000", DCoffSetCH1X100000, -kOffset, kOffset, "left DC offset, coarse");
  to.add("DCoffSetCH2X1000", DCoffSetCH2X1000, -kOffset, kOffset, "right DC offset, fine (steps)");
  to.add("DCoffSetCH2X10000", DCoffSetCH2X10000, -kOffset, kOffset, "right DC offset, middle");
  to.add("DCoffSetCH2X100000", DCoffSetCH2X100000, -kOffset, kOffset, "right DC offset, coarse");
  to.add("GainOr", GainOr, -1e6, 1e6, "scale of the byte decode of model 1");
  to.add("SelectLSFset", SelectLSFset, 0, 20, "filter set-up of the amplifier").choices =
      "0 1 2 3 4 5 6 10 20";
  to.add("speedX", speedX, 1, 100000, "sample speed sent once a Bluetooth channel is open");
}

namespace {

using Flag = std::pair<const char*, Shared<std::int32_t>*>;

/// What the amplifier acknowledged last; the name says which set-up.
constexpr std::array<Flag, 21> kAcknowledgements{{
    {"print2channelMode", &amplifier::print2channelMode},
    {"print4channelMode", &amplifier::print4channelMode},
    {"printLSFset0OK", &amplifier::printLSFset0OK},
    {"printLSFset1OK", &amplifier::printLSFset1OK},
    {"printLSFset2OK", &amplifier::printLSFset2OK},
    {"printLSFset3OK", &amplifier::printLSFset3OK},
    {"printLSFset4OK", &amplifier::printLSFset4OK},
    {"printLSFset5OK", &amplifier::printLSFset5OK},
    {"printLSFset6OK", &amplifier::printLSFset6OK},
    {"printLSFset10OK", &amplifier::printLSFset10OK},
    {"printLSFset20OK", &amplifier::printLSFset20OK},
    {"printElectrodeSelect0OK", &amplifier::printElectrodeSelect0OK},
    {"printElectrodeSelect1OK", &amplifier::printElectrodeSelect1OK},
    {"printElectrodeSelect2OK", &amplifier::printElectrodeSelect2OK},
    {"printElectrodeSelect3OK", &amplifier::printElectrodeSelect3OK},
    {"printElectrodeSelect4OK", &amplifier::printElectrodeSelect4OK},
    {"printOSCFSelect0OK", &amplifier::printOSCFSelect0OK},
    {"printOSCFSelect1OK", &amplifier::printOSCFSelect1OK},
    {"printOSCFSelect2OK", &amplifier::printOSCFSelect2OK},
    {"printOSCPowerSelect0", &amplifier::printOSCPowerSelect0},
    {"printOSCPowerSelect1", &amplifier::printOSCPowerSelect1},
}};

}  // namespace

void addAmplifierStatus(SettingsRegistry& to) {
  using namespace amplifier;  // NOLINT: a table of this room's names
  to.addStatus("fileDescriptor1", fileDescriptor1, "descriptor of port 1, -1: closed");
  to.addStatus("fileDescriptor2", fileDescriptor2, "descriptor of port 2, -1: closed");
  to.addStatus("fileDescriptor3", fileDescriptor3, "descriptor of port 3, -1: closed");
  to.addStatus("fileDescriptor4", fileDescriptor4, "descriptor of port 4, -1: closed");
  to.addStatus("fileDescriptorBAK", fileDescriptorBAK, "descriptor that commands are written to");
  to.addStatus("openPort", openPort, "1: port 1 is open");
  to.addStatus("openPort2", openPort2, "1: port 2 is open");
  to.addStatus("openPort3", openPort3, "1: port 3 is open");
  to.addStatus("openPort4", openPort4, "1: port 4 is open");
  to.addStatus("openBluetooth", openBluetooth, "1: the Bluetooth channel is open");
  to.addStatus("PortONActionX", PortONActionX, "1: the port is switched on");
  to.addStatus("gotoStartAndRecNotificationActive", gotoStartAndRecNotificationActive,
               "1: the port closed near the end of the recording");
  to.addStatus("newBlueToothAmpGain", newBlueToothAmpGain, "gain of the chosen model");
  to.addStatus("ploopRock", ploopRock, "model 1: the point at which port 1 began");
  to.addStatus("batteryMonitor", batteryMonitor, "battery voltage of the amplifier (V)");
  to.addStatus("rsMonitor", rsMonitor, "sample speed that the amplifier reported");
  to.addStatus("ovMonitor", ovMonitor, "overflow count that the amplifier reported");
  for (const auto& [name, variable] : kAcknowledgements) {
    to.addStatus(name, *variable, "1: the amplifier acknowledged this set-up last");
  }
}

}  // namespace ovka
