#include "SimulatorOptions.h"

#include <algorithm>

namespace ovka {
namespace {

/// False also for what is no number.
bool within(double value, double low, double high) {
  return value >= low && value <= high;
}

std::string validateSignal(const SimulatorOptions& options) {
  if (!within(options.sine.frequency, 0.0, 10000.0)) {
    return "the sine's frequency must be 0 to 10000 Hz";
  }
  const auto allWithin = [](const auto& values, double limit) {
    return std::all_of(values.begin(), values.end(),
                       [limit](double value) { return within(value, -limit, limit); });
  };
  if (!allWithin(options.sine.microvolts, 100000.0)) {
    return "the sine's amplitudes must be -100000 to 100000 microvolts";
  }
  if (!allWithin(options.sine.degrees, 3600.0)) {
    return "the sine's phases must be -3600 to 3600 degrees";
  }
  if (!within(options.eeg.humFrequency, 0.0, 1000.0)) {
    return "the hum's frequency must be 0 (none) to 1000 Hz; mains is 50 or 60";
  }
  if (!within(options.eeg.humMicrovolts, 0.0, 100000.0)) {
    return "the hum's amplitude must be 0 to 100000 microvolts";
  }
  if (options.signal != SignalKind::File) return {};
  if (options.file.path.empty()) return "the file signal needs the path of a file of numbers";
  if (!within(options.file.samplesPerSecond, 0.001, 100000.0)) {
    return "the file signal needs the file's own sample speed, 0.001 to 100000 samples per second";
  }
  return {};
}

std::string validateFaults(const FaultChoice& faults) {
  const double rates[] = {faults.dropRate, faults.duplicateRate, faults.corruptRate};
  for (const double rate : rates) {
    if (!within(rate, 0.0, 1.0)) return "fault rates must be 0 to 1, the share of bytes";
  }
  if (rates[0] + rates[1] + rates[2] > 1.0) {
    return "the rates of dropped, duplicated and corrupted bytes must not add up to more than 1";
  }
  if (!within(faults.stallsPerMinute, 0.0, 6000.0) ||
      !within(faults.burstsPerMinute, 0.0, 6000.0)) {
    return "stalls and bursts must be 0 to 6000 a minute";
  }
  if (!within(faults.stallSeconds, 0.0, 3600.0) || !within(faults.burstSeconds, 0.0, 3600.0)) {
    return "stalls and bursts must last 0 to 3600 seconds";
  }
  if (!within(faults.hangUpEvery, 0.0, 1e6) || !within(faults.hangUpSeconds, 0.0, 1e6)) {
    return "hang-ups must come every 0 (never) to 1000000 seconds and last as long at most";
  }
  if (!within(faults.driftPpm, -500000, 500000)) {
    return "the drift must be -500000 to 500000 parts per million";
  }
  return {};
}

}  // namespace

std::string SimulatorOptions::validate() const {
  if (model > 9)
    return "there is no amplifier model " + std::to_string(model) + "; models are 0 to 9";
  if (config > 3) {
    return "there is no configuration " + std::to_string(config) + "; configurations are 0 to 3";
  }
  if (oldBluetooth && model > 3) {
    return "the old Bluetooth head set sends 12-bit codes: choose model 0 to 3, not " +
           std::to_string(model);
  }
  if (port < 1 || port > 4) return "the port of model 1 must be 1 to 4";
  if (samplesPerSecond < 1 || samplesPerSecond > 16000) {
    return "the sample speed must be 1 to 16000 samples per second, not " +
           std::to_string(samplesPerSecond);
  }
  if (!within(batteryVolts, 0.0, 63.984375)) return "the battery must have 0 to 63.98 volts";
  const std::string text = validateSignal(*this);
  return text.empty() ? validateFaults(faults) : text;
}

}  // namespace ovka
