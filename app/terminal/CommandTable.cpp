#include "Commands.h"
#include "DocumentForms.h"
#include "MidiForms.h"
#include "MusicOptions.h"
#include "SimulatorArguments.h"

namespace ovka::terminal {
namespace {

const Option kSet = Option::text("set", "NAME=VALUE",
                                 "Set a variable of the system by its own name, before the start; "
                                 "'ovka settings' lists them.")
                        .repeated();
const Option kVerbose =
    Option::flag("verbose", "Show the system's own console lines on standard error.");
const Option kJson = Option::flag("json", "One JSON object a line, for scripts.");
const Option kInterval =
    Option::number("interval", "S", 0.01, 3600, "Seconds between two lines of output.").orElse("1");

Option seconds(const std::string& what) {
  return Option::number("seconds", "S", 0.01, 1e8, what);
}

Option portOption() {
  return Option::text("port", "PATH",
                      "A serial port; 'ovka ports' lists them. Model 1 has a port a channel: give "
                      "them in the order of its channels.")
      .repeated();
}

Option demoOption() {
  return Option::flag("demo", "The built-in virtual amplifier; no hardware is needed.");
}

}  // namespace

OptionGroup chainGroup() {
  return {"The chain", {kSet, kVerbose}};
}

OptionGroup amplifierGroup() {
  return {"The amplifier",
          {Option::integer("model", "N", 0, 9, "Amplifier model (SelectDevice)."),
           Option::integer("config", "N", 0, 3,
                           "Channels (DeviceConfig): 0 or 1 two, 2 three, 3 four or five."),
           Option::integer("speed", "N", 1, 16000, "Samples per second (SampleSpeed).")}};
}

OptionGroup sourceGroup() {
  return {"Where the signal comes from", {portOption(), demoOption()}};
}

std::vector<Option> startOptions() {
  return {Option::text("preset", "NAME",
                       "Apply a preset first; options of the line go before it. A name without '/' "
                       "lies in the folder of presets."),
          Option::flag("remember",
                       "From now on this port is the one without '--port', with the settings of "
                       "the amplifier.")};
}

std::vector<OptionGroup> withDemoGroups(std::vector<OptionGroup> groups) {
  for (OptionGroup& group : signalGroups()) {
    group.heading += " (with --demo)";
    groups.push_back(std::move(group));
  }
  return groups;
}

namespace {

CommandForm liveForm() {
  CommandForm form;
  form.name = "live";
  form.summary = "Show the band powers of a living signal.";
  form.description =
      "Takes samples from an amplifier and shows the power of the brain-wave bands, the strongest "
      "peaks, the sample rate and whatever was lost. In a terminal it fills the screen ('?' "
      "explains "
      "the keys); otherwise it prints a line every --interval seconds. A capture plays at the "
      "speed "
      "at which it was recorded.";
  form.groups = withDemoGroups(
      {{"Where the signal comes from",
        {portOption(), Option::text("capture", "FILE", "A capture file."), demoOption()}},
       amplifierGroup(),
       {"The start", startOptions()},
       musicGroup(),
       {"What is shown",
        {kJson, Option::flag("plain", "Lines of text, also in a terminal."), kInterval,
         seconds("End after so many seconds."),
         Option::text("do", "SELECTOR[=VALUE]",
                      "Perform a window action after the start; 'ovka actions' lists them.")
             .repeated()}},
       chainGroup()});
  form.exclusives = {{{"port", "capture", "demo"}, false},
                     {{"remember", "capture", "demo"}, false},
                     {{"preset", "capture"}, false},
                     {{"performance", "capture"}, false},
                     {{"json", "plain"}, false}};
  form.examples = {"ovka live --demo", "ovka live --demo --play",
                   "ovka live --port /dev/ttyUSB0 --model 6 --config 3",
                   "ovka live --demo --signal sine --frequency 10 --json --seconds 10"};
  return form;
}

CommandForm simulateForm() {
  CommandForm form;
  form.name = "simulate";
  form.summary = "Serve a virtual amplifier on a pseudo-terminal.";
  form.description =
      "Makes a serial line that behaves as an amplifier and serves it until it is interrupted. The "
      "first line of its output is the path to open. The same seed gives the same bytes. While it "
      "runs it takes lines on standard input: 'ack LETTER' sends an acknowledgement, 'eyes "
      "closed' and 'eyes open' turn the alpha waves up and down, 'overflow N' reports lost "
      "samples, 'hang-up SECONDS' takes the line away.";
  form.groups = {{"The amplifier", simulatorDeviceOptions()}};
  for (OptionGroup& group : signalGroups()) form.groups.push_back(std::move(group));
  form.groups.push_back(
      {"The line",
       {Option::text("link", "PATH", "Also make a symbolic link of this name to the line."),
        seconds("End after so many seconds."),
        Option::flag("verbose", "Say on standard error when a host comes and goes.")}});
  form.examples = {"ovka simulate --model 0 --config 1 --link /tmp/amplifier",
                   "ovka simulate --signal sine --microvolts 50 --drop 0.001"};
  return form;
}

CommandForm portsForm() {
  CommandForm form;
  form.name = "ports";
  form.summary = "List the serial ports.";
  form.description =
      "Lists the serial ports of this machine, by their stable names where it has them.";
  form.groups = {{"Options", {kJson}}};
  return form;
}

CommandForm captureForm() {
  CommandForm form;
  form.name = "capture";
  form.summary = "Record the raw bytes of an amplifier into a file.";
  form.description =
      "Keeps every received block exactly, with its arrival time, until it is interrupted. "
      "Replaying "
      "the file gives the same samples and the same analysis, bit for bit.";
  form.positionals = {{"FILE", "The capture file to write."}};
  form.groups = withDemoGroups({sourceGroup(),
                                amplifierGroup(),
                                {"The file",
                                 {seconds("End after so many seconds."),
                                  Option::flag("force", "Overwrite a file of that name.")}},
                                chainGroup()});
  form.exclusives = {{{"port", "demo"}, true}};
  form.examples = {"ovka capture night.cap --port /dev/ttyUSB0 --model 6",
                   "ovka capture demo.cap --demo --seconds 60"};
  return form;
}

const Positional kCapture{"CAPTURE", "A file that 'ovka capture' wrote."};

CommandForm replayForm() {
  CommandForm form;
  form.name = "replay";
  form.summary = "Run a capture through the whole chain, faster than real time.";
  form.description =
      "Hands the recorded blocks to the chain at their recorded times on a clock of its own and "
      "prints what 'live' prints, every --interval seconds of the recording. The settings are "
      "those "
      "of the capture, then those of --set.";
  form.positionals = {kCapture};
  form.groups = {{"What is shown", {kJson, kInterval}}, chainGroup()};
  form.examples = {"ovka replay night.cap --interval 60"};
  return form;
}

CommandForm decodeForm() {
  CommandForm form;
  form.name = "decode";
  form.summary = "Turn a capture into columns of samples.";
  form.description =
      "Prints a CSV with the header point,ch0,ch1,ch2,ch3,ch4 and the stored integers of every "
      "sample point.";
  form.positionals = {kCapture};
  form.groups = {
      {"What is shown",
       {Option::flag("read", "The values as readers get them: mapped, signed and scaled.")}},
      chainGroup()};
  form.examples = {"ovka decode night.cap > night.csv"};
  return form;
}

CommandForm analyseForm() {
  CommandForm form;
  form.name = "analyse";
  form.summary = "Spectra, bands and peaks at given points of a capture, as JSON.";
  form.description =
      "Prints a line of JSON a point: the spectrum and the complex coefficients of every channel, "
      "its bands and its peaks, of the samples that end at the point. Numbers read back exactly.";
  form.positionals = {kCapture};
  form.groups = {{"What is analysed",
                  {Option::integer("at", "POINT", 0, 130592000,
                                   "A sample point, at most the number of samples in the capture.")
                       .repeated(),
                   Option::flag("coherence", "Add the coherence of all channel pairs.")}},
                 chainGroup()};
  form.exclusives = {{{"at"}, true}};
  form.examples = {"ovka analyse night.cap --at 4096 --at 8192 --set fftp=2048"};
  return form;
}

CommandForm settingsForm() {
  CommandForm form;
  form.name = "settings";
  form.summary = "List the variables that --set changes.";
  form.description =
      "Lists the process-wide variables of the system by its own names, with default, range and "
      "meaning. Those that the system itself keeps are listed with --all.";
  form.groups = {{"Options",
                  {kJson, Option::flag("all", "Also the variables that cannot be set."),
                   Option::text("find", "WORD", "Only those with this word in name or meaning.")}}};
  return form;
}

CommandForm actionsForm() {
  CommandForm form;
  form.name = "actions";
  form.summary = "List the window actions that 'live --do' performs.";
  form.description = "Lists the window actions of the system by their selectors.";
  form.groups = {{"Options", {kJson}}};
  return form;
}

CommandForm benchForm() {
  CommandForm form;
  form.name = "bench";
  form.summary = "Measure how fast the analysis is on this machine.";
  form.description =
      "Measures the transform on every instruction set of this processor, whole passes and band "
      "queries beside the classic transform of the same length (a plain loop), in turns, and "
      "prints medians. The "
      "ratios hold where the times do not.";
  form.groups = {
      {"Options",
       {kJson, Option::integer("rounds", "N", 3, 1000, "Rounds to measure.").orElse("15")}}};
  return form;
}

}  // namespace

const std::vector<CommandForm>& commandForms() {
  static const std::vector<CommandForm> kForms = [] {
    std::vector<CommandForm> forms{liveForm(),   simulateForm(), portsForm(),  captureForm(),
                                   replayForm(), decodeForm(),   analyseForm()};
    for (CommandForm& form : documentForms()) forms.push_back(std::move(form));
    for (CommandForm& form : midiForms()) forms.push_back(std::move(form));
    for (CommandForm& form : std::vector{settingsForm(), actionsForm(), benchForm()})
      forms.push_back(std::move(form));
    return forms;
  }();
  return kForms;
}

}  // namespace ovka::terminal
