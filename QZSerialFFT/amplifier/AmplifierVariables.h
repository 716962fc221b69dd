#pragma once

#include <cstdint>

#include "Shared.h"

/// Ports, gains, monitors and acknowledgements of the amplifier. The model and the channel
/// configuration are the buffer's (`SelectDevice`, `DeviceConfig`).
namespace ovka::amplifier {

// name, default: meaning (unit); writer.

// --- ports -------------------------------------------------------------------------------------
/// Descriptors of the four input ports, -1 when closed; opening and closing.
inline constinit Shared<std::int32_t> fileDescriptor1{-1};
inline constinit Shared<std::int32_t> fileDescriptor2{-1};
inline constinit Shared<std::int32_t> fileDescriptor3{-1};
inline constinit Shared<std::int32_t> fileDescriptor4{-1};
/// Descriptor that commands are written to, -1 before the first port; `InitializeModem:`.
inline constinit Shared<std::int32_t> fileDescriptorBAK{-1};
/// 1: the port is open and polled; opening and closing.
inline constinit Shared<std::int32_t> openPort{0};
inline constinit Shared<std::int32_t> openPort2{0};
inline constinit Shared<std::int32_t> openPort3{0};
inline constinit Shared<std::int32_t> openPort4{0};
/// 1: the Bluetooth channel is open; its controller.
inline constinit Shared<std::int32_t> openBluetooth{0};
/// Sample speed to send once a Bluetooth channel is open (samples per second); its controller.
inline constinit Shared<std::int32_t> speedX{120};
/// 1: nothing is read, decoded or written; the application.
inline constinit Shared<std::int32_t> setNoPortAccess{0};
/// 1: models 5 to 9 run at 921600 baud; the user.
inline constinit Shared<std::int32_t> HighSpeedX{0};
/// 1: the port is switched on; the user, cleared when the port closes.
inline constinit Shared<std::int32_t> PortONActionX{0};
/// 1: "gotoStartAndRecNotification" was posted; closing near the end of the buffer.
inline constinit Shared<std::int32_t> gotoStartAndRecNotificationActive{0};

// --- decoding ----------------------------------------------------------------------------------
/// User gain of the left (channels 1 and 3) and right side (2, 4 and 5); 0 is none, +1 doubles, -1
/// halves; the user.
inline constinit Shared<float> hardwareGainCH1{0.0F};
inline constinit Shared<float> hardwareGainCH2{0.0F};
/// Gain of the model: 0.98 for models 2 and 3, else 1; the choice of the model.
inline constinit Shared<float> newBlueToothAmpGain{1.0F};
/// DC offsets of the left and right side (amplifier steps), subtracted while decoding; calibration.
inline constinit Shared<std::int64_t> DCoffSetCH1X1000{0};
inline constinit Shared<std::int64_t> DCoffSetCH1X10000{0};
inline constinit Shared<std::int64_t> DCoffSetCH1X100000{0};
inline constinit Shared<std::int64_t> DCoffSetCH2X1000{0};
inline constinit Shared<std::int64_t> DCoffSetCH2X10000{0};
inline constinit Shared<std::int64_t> DCoffSetCH2X100000{0};
/// Scale of the byte decode of model 1; calibration.
inline constinit Shared<double> GainOr{1.0};
/// Filter set-up of the amplifier, 0 to 6, 10, 20; the user.
inline constinit Shared<std::int32_t> SelectLSFset{0};
/// 1: the old Bluetooth head set with 20-byte records and a signed 12-bit code; the user.
inline constinit Shared<std::int32_t> oldBluetooth{0};
/// 1: frames are cut by their fixed length instead of the line rules, so that none is lost; the
/// user.
inline constinit Shared<std::int32_t> FixedFramingX{0};
/// Model 1: the point at which the bytes of port 1 began, shared by ports 2 to 4; the decoder.
inline constinit Shared<std::int64_t> ploopRock{0};

/// When the read was made whose bytes completed the newest stored frame (nanoseconds of the clock,
/// 0 before the first); the port thread.
inline constinit Shared<std::int64_t> newestReadAt{0};

// --- status of the amplifier; all written by the decoder -----------------------------------------
/// Battery voltage (V).
inline constinit Shared<double> batteryMonitor{0.0};
/// Sample speed that the amplifier echoed (samples per second).
inline constinit Shared<std::int32_t> rsMonitor{0};
/// Overflow count that the amplifier reported.
inline constinit Shared<std::int32_t> ovMonitor{0};
/// 1: the amplifier runs with two, with four channels.
inline constinit Shared<std::int32_t> print2channelMode{0};
inline constinit Shared<std::int32_t> print4channelMode{0};
/// 1: the filter set-up was acknowledged last.
inline constinit Shared<std::int32_t> printLSFset0OK{0};
inline constinit Shared<std::int32_t> printLSFset1OK{0};
inline constinit Shared<std::int32_t> printLSFset2OK{0};
inline constinit Shared<std::int32_t> printLSFset3OK{0};
inline constinit Shared<std::int32_t> printLSFset4OK{0};
inline constinit Shared<std::int32_t> printLSFset5OK{0};
inline constinit Shared<std::int32_t> printLSFset6OK{0};
inline constinit Shared<std::int32_t> printLSFset10OK{0};
inline constinit Shared<std::int32_t> printLSFset20OK{0};
/// 1: the electrode selection was acknowledged last.
inline constinit Shared<std::int32_t> printElectrodeSelect0OK{0};
inline constinit Shared<std::int32_t> printElectrodeSelect1OK{0};
inline constinit Shared<std::int32_t> printElectrodeSelect2OK{0};
inline constinit Shared<std::int32_t> printElectrodeSelect3OK{0};
inline constinit Shared<std::int32_t> printElectrodeSelect4OK{0};
/// 1: the oscillator frequency was acknowledged last.
inline constinit Shared<std::int32_t> printOSCFSelect0OK{0};
inline constinit Shared<std::int32_t> printOSCFSelect1OK{0};
inline constinit Shared<std::int32_t> printOSCFSelect2OK{0};
/// 1: the oscillator power was acknowledged last.
inline constinit Shared<std::int32_t> printOSCPowerSelect0{0};
inline constinit Shared<std::int32_t> printOSCPowerSelect1{0};

/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::amplifier
