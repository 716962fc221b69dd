#include "AmplifierCommands.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>

#include "AmplifierModels.h"
#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "Print.h"

namespace ovka {

std::string sampleSpeedCommand(std::int32_t samplesPerSecond) {
  return "SR " + std::to_string(samplesPerSecond) + "\r";
}

std::string filterCommand(float ratio) {
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), ratio,
                                 std::chars_format::fixed, 4);
  return "FR " + std::string(digits.data(), end.ptr) + "\r";
}

std::string printable(std::string_view bytes, std::size_t most) {
  std::string text;
  for (const char c : bytes.substr(0, most)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 32 && byte < 127) {
      text += c;
    } else if (c == '\r') {
      text += "\\r";
    } else if (c == '\n') {
      text += "\\n";
    } else if (c == '\t') {
      text += "\\t";
    } else {
      std::array<char, 8> escape{};
      std::snprintf(escape.data(), escape.size(), "\\%03o", byte);
      text += escape.data();
    }
  }
  if (bytes.size() > most) text += "...";
  return text;
}

AmplifierCommands::Way AmplifierCommands::way() const {
  if (amplifier::setNoPortAccess != 0) return Way::Nowhere;
  const AmplifierModel* model = amplifierModel(buffer::SelectDevice);
  if (amplifier::openPort == 1 && model != nullptr && model->commands) return Way::Serial;
  const bool bluetooth = amplifier::openBluetooth != 0 && bluetooth_.load() != nullptr;
  return bluetooth ? Way::Bluetooth : Way::Nowhere;
}

SerialResult AmplifierCommands::writeLine(std::int32_t descriptor,
                                          std::span<const std::uint8_t> bytes) {
  return lines_.writing(descriptor, [&](std::int32_t line) { return serial_.write(line, bytes); })
      .value_or(SerialResult{0, EBADF});
}

bool AmplifierCommands::writeCommand(std::string_view command, const char* name, bool loud) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(command.data());
  SerialResult result = writeLine(amplifier::fileDescriptorBAK, {bytes, command.size()});
  const bool whole = result.value == static_cast<std::int64_t>(command.size());
  if (result.error == 0 && !whole) result.error = EIO;
  if (result.error != 0 && loud) PrintError(result.error, "Error writing to modem%s - ", name);
  return result.error == 0;
}

std::int32_t AmplifierCommands::SampleSpeedSet(std::int32_t samplesPerSecond) {
  if (const std::string why = explainSampleSpeed(samplesPerSecond); !why.empty()) {
    Print("Error setting the sample speed - %s.\n", why.c_str());
    return static_cast<std::int32_t>(buffer::SampleSpeed.get());
  }
  sendSampleSpeed(samplesPerSecond, true);
  return samplesPerSecond;
}

void AmplifierCommands::sendSampleSpeed(std::int32_t samplesPerSecond, bool loud) {
  const Way to = way();
  if (to == Way::Bluetooth) {
    bluetooth_.load()->sendSampleSpeedBluetooth(samplesPerSecond);
    if (loud) Print("Wrote SampleSpeedSet\n");
  }
  if (to != Way::Serial) return;
  const std::string command = sampleSpeedCommand(samplesPerSecond);
  const std::string shown = printable(command);
  if (loud) Print("sampling speed = %s\n", shown.c_str());
  const bool written = writeCommand(command, "", loud);
  if (!written || !loud) return;
  Print("Wrote %d bytes \"%s\"\n", static_cast<int>(command.size()), shown.c_str());
  Print("Speed set for \"%s\"\n", shown.c_str());
}

float AmplifierCommands::FilterHCRatioSet(float ratio) {
  const Way to = way();
  if (to == Way::Bluetooth) bluetooth_.load()->sendFilterBluetooth(ratio);
  if (to != Way::Serial) return ratio;
  const std::string command = filterCommand(ratio);
  const std::string shown = printable(command);
  Print("ratio = %s\n", shown.c_str());
  if (writeCommand(command, "", true)) Print("FilterHCRatioSet \"%s\"\n", shown.c_str());
  return ratio;
}

void AmplifierCommands::sendBL() {
  const Way to = way();
  if (to == Way::Bluetooth) bluetooth_.load()->sendBLBluetooth();
  if (to == Way::Serial) writeCommand("BL\r", " sendBL", true);
}

}  // namespace ovka
