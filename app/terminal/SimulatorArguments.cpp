#include "SimulatorArguments.h"

#include <array>
#include <string>
#include <string_view>

#include "Failure.h"

namespace ovka::terminal {
namespace {

/// Values in the order a person counts channels: 1, 2, 3, 4 and then the auxiliary channel 0.
constexpr std::array<std::size_t, 5> kChannelOrder{1, 2, 3, 4, 0};

/// Reads "50" or "50,40,30,20,10"; a list that ends early goes on with its last value.
std::array<double, 5> readList(const std::string& name, const std::string& list, double minimum,
                               double maximum) {
  std::array<double, 5> values{};
  std::string_view rest = list;
  std::size_t count = 0;
  double last = 0;
  do {
    const std::size_t comma = rest.find(',');
    const auto number = readNumber(rest.substr(0, comma));
    if (!number || *number < minimum || *number > maximum || count == values.size()) {
      throw Failure(ExitCode::Usage,
                    "'--" + name + "' cannot be '" + list +
                        "': it takes one to five numbers with commas between them");
    }
    last = *number;
    values[kChannelOrder[count++]] = last;
    rest = comma == std::string_view::npos ? std::string_view{} : rest.substr(comma + 1);
    if (comma == std::string_view::npos) break;
  } while (true);
  for (; count < values.size(); ++count) values[kChannelOrder[count]] = last;
  return values;
}

template <typename T>
void take(const Arguments& arguments, std::string_view name, T& target) {
  if (const auto number = arguments.number(name)) target = static_cast<T>(*number);
}

void takeSignal(const Arguments& arguments, SimulatorOptions& options) {
  const std::string kind = arguments.text("signal").value_or("eeg");
  options.signal = kind == "sine"       ? SignalKind::Sine
                   : kind == "file"     ? SignalKind::File
                   : kind == "sequence" ? SignalKind::Sequence
                                        : SignalKind::Eeg;
  // By text, not as a double: a seed has 64 bits.
  if (const auto seed = arguments.integer("seed")) options.seed = static_cast<std::uint64_t>(*seed);
  take(arguments, "frequency", options.sine.frequency);
  if (const auto list = arguments.text("microvolts"))
    options.sine.microvolts = readList("microvolts", *list, 0, 100000);
  if (const auto list = arguments.text("phase"))
    options.sine.degrees = readList("phase", *list, -3600, 3600);
  const std::string eyes = arguments.text("eyes").value_or("alternating");
  options.eeg.eyes = eyes == "open"     ? Eyes::Open
                     : eyes == "closed" ? Eyes::Closed
                                        : Eyes::Alternating;
  take(arguments, "hum", options.eeg.humFrequency);
  take(arguments, "hum-microvolts", options.eeg.humMicrovolts);
  options.file.path = arguments.text("file").value_or("");
  take(arguments, "file-speed", options.file.samplesPerSecond);
}

void takeFaults(const Arguments& arguments, FaultChoice& faults) {
  take(arguments, "drop", faults.dropRate);
  take(arguments, "duplicate", faults.duplicateRate);
  take(arguments, "corrupt", faults.corruptRate);
  take(arguments, "stalls", faults.stallsPerMinute);
  take(arguments, "stall-seconds", faults.stallSeconds);
  take(arguments, "bursts", faults.burstsPerMinute);
  take(arguments, "burst-seconds", faults.burstSeconds);
  take(arguments, "hang-up-every", faults.hangUpEvery);
  take(arguments, "hang-up-seconds", faults.hangUpSeconds);
  take(arguments, "drift", faults.driftPpm);
}

}  // namespace

std::vector<Option> simulatorDeviceOptions() {
  return {Option::integer("model", "N", 0, 9, "Amplifier model.").orElse("6"),
          Option::integer("config", "N", 0, 3, "Channels: 0 or 1 two, 2 three, 3 four or five.")
              .orElse("3"),
          Option::integer("speed", "N", 1, 16000,
                          "Samples per second until the host asks for another speed.")
              .orElse("120"),
          Option::flag("old-bluetooth", "20-byte records of the old Bluetooth head set."),
          Option::integer("input", "N", 1, 4, "Model 1: the channel that this line carries."),
          Option::number("battery", "V", 0, 63.98, "The battery voltage that it reports.")};
}

std::vector<OptionGroup> signalGroups() {
  const auto rate = [](const char* name, const char* help) {
    return Option::number(name, "RATE", 0, 1, help);
  };
  const auto seconds = [](const char* name, const char* help) {
    return Option::number(name, "S", 0, 3600, help);
  };
  return {
      {"The signal",
       {Option::choice("signal", "KIND", "eeg sine file sequence", "What the electrodes pick up.")
            .orElse("eeg"),
        Option::integer("seed", "N", 0, 9e18, "The same seed gives the same bytes."),
        Option::number("frequency", "HZ", 0, 10000, "Frequency of the sine."),
        Option::text("microvolts", "UV[,UV...]",
                     "Amplitude of the sine: one for all channels, or those of channels 1, 2, 3, 4 "
                     "and 0; the last one goes on."),
        Option::text("phase", "DEG[,DEG...]", "Phase of the sine, in the same way."),
        Option::choice("eyes", "STATE", "open closed alternating",
                       "Alpha waves rise with closed eyes; alternating changes every 15 seconds."),
        Option::choice("hum", "HZ", "0 50 60", "Mains hum in the EEG."),
        Option::number("hum-microvolts", "UV", 0, 100000, "Amplitude of the hum."),
        Option::text("file", "PATH", "Microvolts in columns, for the signal 'file'."),
        Option::number("file-speed", "N", 0.001, 1e6, "Samples per second in that file.")}},
      {"Faults",
       {rate("drop", "Share of bytes that are not sent."),
        rate("duplicate", "Share of bytes that are sent twice."),
        rate("corrupt", "Share of bytes with turned bits."),
        Option::number("stalls", "N", 0, 1000, "Stalls a minute; the frames meanwhile are lost."),
        seconds("stall-seconds", "Length of a stall."),
        Option::number("bursts", "N", 0, 1000, "Hold-ups a minute; then everything comes at once."),
        seconds("burst-seconds", "Length of a hold-up."),
        Option::number("hang-up-every", "S", 0, 1e6, "Seconds between hang-ups, 0 for never."),
        seconds("hang-up-seconds", "How long the line stays away."),
        Option::integer("drift", "PPM", -100000, 100000,
                        "The sample clock runs fast (or slow) by parts per million.")}}};
}

SimulatorOptions simulatorOptionsOf(const Arguments& arguments) {
  SimulatorOptions options;
  take(arguments, "model", options.model);
  take(arguments, "config", options.config);
  take(arguments, "speed", options.samplesPerSecond);
  take(arguments, "input", options.port);
  take(arguments, "battery", options.batteryVolts);
  options.oldBluetooth = arguments.given("old-bluetooth");
  options.link = arguments.text("link").value_or("");
  takeSignal(arguments, options);
  takeFaults(arguments, options.faults);
  if (const std::string problem = options.validate(); !problem.empty())
    throw Failure(ExitCode::Usage, problem);
  return options;
}

void refuseSignalWithoutDemo(const Arguments& arguments) {
  if (arguments.given("demo")) return;
  for (const OptionGroup& group : signalGroups()) {
    for (const Option& option : group.options) {
      if (arguments.given(option.name)) {
        throw Failure(ExitCode::Usage,
                      "'--" + option.name + "' belongs to the virtual amplifier: add --demo");
      }
    }
  }
}

}  // namespace ovka::terminal
