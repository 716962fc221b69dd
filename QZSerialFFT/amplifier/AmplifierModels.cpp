#include "AmplifierModels.h"

#include "AmplifierVariables.h"
#include "BufferVariables.h"

namespace ovka {

bool chooseAmplifierModel(std::uint32_t model) noexcept {
  const AmplifierModel* row = amplifierModel(model);
  if (row == nullptr) return false;
  buffer::SelectDevice = model;
  amplifier::newBlueToothAmpGain = row->gain;
  return true;
}

std::string explainAmplifierModel(std::int64_t model) {
  if (model >= 0 && model < static_cast<std::int64_t>(kAmplifierModels.size())) return {};
  return "there is no amplifier model " + std::to_string(model) + "; choose one of 0 to " +
         std::to_string(kAmplifierModels.size() - 1);
}

std::string explainSampleSpeed(std::int64_t samplesPerSecond) {
  if (samplesPerSecond >= 1 && samplesPerSecond <= INT32_MAX) return {};
  return "a sample speed of " + std::to_string(samplesPerSecond) +
         " is not possible; choose 1 sample per second or more (amplifiers offer 120 to 1920)";
}

}  // namespace ovka
