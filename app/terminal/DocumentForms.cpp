#include "DocumentForms.h"

namespace ovka::terminal {
namespace {

const Option kJson = Option::flag("json", "One JSON object a line, for scripts.");
const Option kForce = Option::flag("force", "Overwrite a file of that name.");

CommandForm recordForm() {
  CommandForm form;
  form.name = "record";
  form.summary = "Record an amplifier into a document.";
  form.description =
      "Records until the time is over or it is interrupted, then saves the document. Everything "
      "that arrives is also written to a journal within a second, so that a crash, a power cut or "
      "a full disk costs a second at most: 'ovka recover' brings such a recording back. The "
      "recording grows as long as there is memory. Where the document cannot be written, it is "
      "written elsewhere, and that is said.";
  form.positionals = {{"FILE", "The document to write."}};
  form.groups = withDemoGroups(
      {sourceGroup(),
       amplifierGroup(),
       {"The start", startOptions()},
       {"The recording",
        {Option::number("seconds", "S", 0.01, 1e8, "End after so many seconds."), kForce,
         Option::number("interval", "S", 0.2, 3600,
                        "Seconds between two lines of progress when standard error is no terminal.")
             .orElse("10")}},
       chainGroup()});
  form.exclusives = {{{"port", "demo"}, false}, {{"remember", "demo"}, false}};
  form.examples = {"ovka record night.ovkanote --port /dev/ttyUSB0 --model 6 --config 3",
                   "ovka record demo.ovkanote --demo --seconds 60"};
  return form;
}

CommandForm infoForm() {
  CommandForm form;
  form.name = "info";
  form.summary = "Tell what a file of the system holds.";
  form.description =
      "Prints length and channels of a document, capture, journal, backup, CSV file or file of an "
      "older program, and the information list and settings of those that have them.";
  form.positionals = {{"FILE", "The file to look at."}};
  form.groups = {{"What is shown", {kJson, Option::flag("all", "Also entries that are 0.")}}};
  form.examples = {"ovka info night.ovkanote"};
  return form;
}

CommandForm convertForm() {
  CommandForm form;
  form.name = "convert";
  form.summary = "Turn recordings of one kind into another.";
  form.description =
      "Reads a document, a capture (by replaying it), CSV columns as 'ovka decode' prints them, a "
      "journal, a folder of backups (or one of CH0DATA.ovka to CH4DATA.ovka) or a file of an older "
      "program (.dat, .data, .txt). Writes by the ending of OUT: .csv columns, .cap or .ovcap a "
      "capture whose replay gives the same samples (what the lines of the model cannot carry is "
      "said), .pdf or .tiff the drawing, anything else a document. Journals, backups and files of "
      "older programs are never written. CSV, backups and old files do not say their sample speed, "
      "model and "
      "configuration: give them.";
  form.positionals = {{"IN", "The file to read."}, {"OUT", "The file to write."}};
  form.groups = {
      amplifierGroup(),
      {"The file",
       {kForce, Option::flag("salvage", "Take what stands before the damage of a document.")}},
      chainGroup()};
  form.examples = {"ovka convert night.cap night.ovkanote", "ovka convert night.ovkanote night.csv",
                   "ovka convert samples.csv samples.ovkanote --speed 256 --model 6",
                   "ovka convert --salvage broken.ovkanote rest.ovkanote"};
  return form;
}

CommandForm playForm() {
  CommandForm form;
  form.name = "play";
  form.summary = "Play a document through the live chain.";
  form.description =
      "Plays a document at the speed at which it was recorded and shows what 'live' shows.";
  form.positionals = {{"FILE", "The document."}};
  form.groups = {
      {"What is shown",
       {kJson, Option::flag("plain", "Lines of text, also in a terminal."),
        Option::number("interval", "S", 0.01, 3600, "Seconds between two lines of output.")
            .orElse("1"),
        Option::number("from", "S", 0, 1e8, "Begin so many seconds behind the start."),
        Option::number("seconds", "S", 0.01, 1e8, "End after so many seconds of playing."),
        Option::number("loop-from", "S", 0, 1e8,
                       "Repeat what lies between here and --loop-to (or the end), for ever."),
        Option::number("loop-to", "S", 0, 1e8, "Go back to --loop-from (or the start) here."),
        Option::flag("fast", "As fast as it goes.")}},
      chainGroup()};
  form.exclusives = {{{"json", "plain"}, false}};
  form.examples = {"ovka play night.ovkanote --fast --json --interval 60",
                   "ovka play night.ovkanote --loop-from 60 --loop-to 75"};
  return form;
}

CommandForm presetForm() {
  CommandForm form;
  form.name = "preset";
  form.summary = "Show, save or load a preset.";
  form.description =
      "'show' prints what a preset holds. 'save' writes the settings in force, that is those of "
      "the preset, if it is there, then those of the line. 'load' checks a preset, names what "
      "cannot be taken and makes it the default preset. Without a NAME it is the default preset; "
      "a name without '/' lies in the folder of presets.";
  form.positionals = {{"WHAT", "show, save or load."}, {"NAME", "The preset.", true}};
  form.groups = {{"What is shown", {kJson}}, amplifierGroup(), chainGroup()};
  form.examples = {"ovka preset save sleep.plist --model 6 --config 3 --set fftp=2048",
                   "ovka preset show sleep.plist", "ovka preset load sleep.plist"};
  return form;
}

CommandForm recoverForm() {
  CommandForm form;
  form.name = "recover";
  form.summary = "Bring back a recording that was never saved.";
  form.description =
      "Lists the recordings whose program ended before their document was saved. With a FILE it "
      "saves one of them there; its journal goes once the document is safely on disk.";
  form.positionals = {{"FILE", "The document to write.", true}};
  form.groups = {
      {"Which recording",
       {Option::integer("number", "N", 1, 1e6,
                        "Its number in the list; without it the newest one."),
        Option::flag("remove", "Remove the recording; it cannot be brought back then."), kForce}}};
  form.examples = {"ovka recover", "ovka recover night.ovkanote --number 1"};
  return form;
}

}  // namespace

std::vector<CommandForm> documentForms() {
  return {recordForm(), infoForm(), convertForm(), playForm(), presetForm(), recoverForm()};
}

}  // namespace ovka::terminal
