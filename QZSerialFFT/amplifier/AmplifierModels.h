#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <string>

namespace ovka {

/// How a line guards itself against overruns.
enum class AmplifierFlow : std::uint8_t { None, Both, InputOnly };

/// What an amplifier sends: a 16-byte text line, a raw byte a sample and port, a 24-bit frame.
enum class AmplifierFrame : std::uint8_t { TextLine, RawByte, Frame24 };

/// How its values are decoded.
enum class AmplifierValues : std::uint8_t { Bits12, Byte, Bits24 };

/// One row of what is known of an amplifier model (`SelectDevice`).
struct AmplifierModel {
  const char* name;        ///< what to show a person
  std::int32_t lineSpeed;  ///< baud; 0: not on a serial line
  AmplifierFlow flow;
  AmplifierFrame frame;
  AmplifierValues values;
  float gain;          ///< `newBlueToothAmpGain` of the model
  bool highSpeed;      ///< may run at kHighSpeed (`HighSpeedX`)
  bool serialRead;     ///< polled on serial lines
  bool commands;       ///< greets and takes commands on its serial line
  bool readersDivide;  ///< readers of the buffer divide by about 163.84
};

/// Line speed of the high-speed option (baud).
inline constexpr std::int32_t kHighSpeed = 921600;

/// All models, by number.
inline constexpr std::array<AmplifierModel, 10> kAmplifierModels{{
    {"model 0: 12-bit, 230400 baud", 230400, AmplifierFlow::Both, AmplifierFrame::TextLine,
     AmplifierValues::Bits12, 1.0F, false, true, true, false},
    {"model 1: 8-bit, 2400 baud, one port a channel", 2400, AmplifierFlow::Both,
     AmplifierFrame::RawByte, AmplifierValues::Byte, 1.0F, false, true, false, false},
    {"model 2: 12-bit, 115200 baud", 115200, AmplifierFlow::None, AmplifierFrame::TextLine,
     AmplifierValues::Bits12, 0.98F, false, true, true, false},
    {"model 3: 12-bit, 230400 baud", 230400, AmplifierFlow::None, AmplifierFrame::TextLine,
     AmplifierValues::Bits12, 0.98F, false, true, true, false},
    {"model 4: 24-bit, Bluetooth", 0, AmplifierFlow::None, AmplifierFrame::Frame24,
     AmplifierValues::Bits24, 1.0F, false, false, true, false},
    {"model 5: 24-bit, 230400 baud", 230400, AmplifierFlow::None, AmplifierFrame::Frame24,
     AmplifierValues::Bits24, 1.0F, true, true, true, true},
    {"model 6: 24-bit, 230400 baud", 230400, AmplifierFlow::None, AmplifierFrame::Frame24,
     AmplifierValues::Bits24, 1.0F, true, true, true, true},
    {"model 7: 24-bit, 230400 baud", 230400, AmplifierFlow::None, AmplifierFrame::Frame24,
     AmplifierValues::Bits24, 1.0F, true, true, true, true},
    {"model 8: 24-bit, 230400 baud, input flow control", 230400, AmplifierFlow::InputOnly,
     AmplifierFrame::Frame24, AmplifierValues::Bits24, 1.0F, true, true, true, true},
    {"model 9: 24-bit, 230400 baud", 230400, AmplifierFlow::None, AmplifierFrame::Frame24,
     AmplifierValues::Bits24, 1.0F, true, true, true, true},
}};
static_assert(std::bit_cast<std::uint32_t>(kAmplifierModels[2].gain) == 0x3F7AE148U);

/// The row of a model; nullptr when there is no such model.
[[nodiscard]] constexpr const AmplifierModel* amplifierModel(std::uint32_t model) noexcept {
  return model < kAmplifierModels.size() ? &kAmplifierModels[model] : nullptr;
}

/// Chooses a model: sets `SelectDevice` and `newBlueToothAmpGain`. False, and nothing changed, when
/// there is no such model. Any thread.
bool chooseAmplifierModel(std::uint32_t model) noexcept;

/// Why a model or a sample speed cannot be had, as one line without a line end; empty when it can.
[[nodiscard]] std::string explainAmplifierModel(std::int64_t model);
[[nodiscard]] std::string explainSampleSpeed(std::int64_t samplesPerSecond);

}  // namespace ovka
