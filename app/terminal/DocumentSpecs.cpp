#include "DocumentSpecs.h"

namespace ovka::terminal {
namespace {

const Option kJson = Option::flag("json", "One JSON object a line, for scripts.");
const Option kForce = Option::flag("force", "Overwrite a file of that name.");

CommandSpec recordSpec() {
  CommandSpec spec;
  spec.name = "record";
  spec.summary = "Record an amplifier into a document.";
  spec.description =
      "Records until the time is over or it is interrupted, then saves the document. Everything "
      "that arrives is also written to a journal within a second, so that a crash, a power cut or "
      "a full disk costs a second at most: 'ovka recover' brings such a recording back. The "
      "recording grows as long as there is memory.";
  spec.positionals = {{"FILE", "The document to write."}};
  spec.groups = withDemoGroups(
      {sourceGroup(),
       amplifierGroup(),
       {"The recording",
        {Option::number("seconds", "S", 0.01, 1e8, "End after so many seconds."), kForce,
         Option::number("interval", "S", 0.2, 3600,
                        "Seconds between two lines of progress when standard error is no terminal.")
             .orElse("10")}},
       chainGroup()});
  spec.exclusives = {{{"port", "demo"}, true}};
  spec.examples = {"ovka record night.ovkanote --port /dev/ttyUSB0 --model 6 --config 3",
                   "ovka record demo.ovkanote --demo --seconds 60"};
  return spec;
}

CommandSpec infoSpec() {
  CommandSpec spec;
  spec.name = "info";
  spec.summary = "Tell what a document, capture, journal or backup holds.";
  spec.description =
      "Prints length and channels of the recording, its information list and its settings.";
  spec.positionals = {{"FILE", "The file to look at."}};
  spec.groups = {{"What is shown", {kJson, Option::flag("all", "Also entries that are 0.")}}};
  spec.examples = {"ovka info night.ovkanote"};
  return spec;
}

CommandSpec convertSpec() {
  CommandSpec spec;
  spec.name = "convert";
  spec.summary = "Turn recordings of one kind into another.";
  spec.description =
      "Reads a document, a capture (by replaying it), CSV columns as 'ovka decode' prints them, a "
      "journal, a folder of backups (or one of CH0DATA.ovka to CH4DATA.ovka) or a file of an older "
      "program (.dat, .data, .txt). Writes by the ending of OUT: .csv columns, .pdf or .tiff the "
      "drawing, anything else a document. Captures, journals, backups and files of older programs "
      "are never written. CSV, backups and old files do not say their sample speed, model and "
      "configuration: give them.";
  spec.positionals = {{"IN", "The file to read."}, {"OUT", "The file to write."}};
  spec.groups = {amplifierGroup(), {"The file", {kForce}}, chainGroup()};
  spec.examples = {"ovka convert night.cap night.ovkanote", "ovka convert night.ovkanote night.csv",
                   "ovka convert samples.csv samples.ovkanote --speed 256 --model 6"};
  return spec;
}

CommandSpec playSpec() {
  CommandSpec spec;
  spec.name = "play";
  spec.summary = "Play a document through the live chain.";
  spec.description =
      "Plays a document at the speed at which it was recorded and shows what 'live' shows.";
  spec.positionals = {{"FILE", "The document."}};
  spec.groups = {
      {"What is shown",
       {kJson, Option::flag("plain", "Lines of text, also in a terminal."),
        Option::number("interval", "S", 0.01, 3600, "Seconds between two lines of output.")
            .orElse("1"),
        Option::number("from", "S", 0, 1e8, "Begin so many seconds behind the start."),
        Option::number("seconds", "S", 0.01, 1e8, "End after so many seconds of the recording."),
        Option::flag("fast", "As fast as it goes.")}},
      chainGroup()};
  spec.exclusives = {{{"json", "plain"}, false}};
  spec.examples = {"ovka play night.ovkanote --fast --json --interval 60"};
  return spec;
}

CommandSpec presetSpec() {
  CommandSpec spec;
  spec.name = "preset";
  spec.summary = "Show, save or load a preset.";
  spec.description =
      "'show' prints what a preset holds. 'save' writes the settings in force, that is those of "
      "the preset, if it is there, then those of the line. 'load' checks a preset, names what "
      "cannot be taken and makes it the default preset. Without a NAME it is the default preset; "
      "a name without '/' lies in the folder of presets.";
  spec.positionals = {{"WHAT", "show, save or load."}, {"NAME", "The preset.", true}};
  spec.groups = {{"What is shown", {kJson}}, amplifierGroup(), chainGroup()};
  spec.examples = {"ovka preset save sleep.plist --model 6 --config 3 --set fftp=2048",
                   "ovka preset show sleep.plist", "ovka preset load sleep.plist"};
  return spec;
}

CommandSpec recoverSpec() {
  CommandSpec spec;
  spec.name = "recover";
  spec.summary = "Bring back a recording that was never saved.";
  spec.description =
      "Lists the recordings whose program ended before their document was saved. With a FILE it "
      "saves one of them there; its journal goes once the document is safely on disk.";
  spec.positionals = {{"FILE", "The document to write.", true}};
  spec.groups = {
      {"Which recording",
       {Option::integer("number", "N", 1, 1e6,
                        "Its number in the list; without it the newest one."),
        Option::flag("remove", "Remove the recording; it cannot be brought back then."), kForce}}};
  spec.examples = {"ovka recover", "ovka recover night.ovkanote --number 1"};
  return spec;
}

}  // namespace

std::vector<CommandSpec> documentSpecs() {
  return {recordSpec(), infoSpec(), convertSpec(), playSpec(), presetSpec(), recoverSpec()};
}

}  // namespace ovka::terminal
