#include "MidiForms.h"

#include <utility>

#include "DocumentForms.h"

namespace ovka::terminal {

Option midiSystemOption() {
  return Option::choice("midi", "SYSTEM", "auto alsa jack all none",
                        "MIDI system to use: the first that is there (auto), one, all, or none.");
}

Option destinationOption(std::string what) {
  return Option::text("to", "NAME",
                      std::move(what) +
                          "; 'ovka midi ports' lists them. 'OVKA Synthesizer' is the "
                          "software synthesizer.");
}

std::vector<Option> soundOptions() {
  return {Option::choice("audio", "DRIVER", "pulseaudio jack alsa",
                         "Sound output of the synthesizer; without it the first that works."),
          Option::text("sound-font", "FILE", "Sounds of the synthesizer (.sf2, .sf3, .dls).")};
}

namespace {

CommandForm midiForm() {
  CommandForm form;
  form.name = "midi";
  form.summary = "List MIDI systems and destinations; try one.";
  form.description =
      "'ovka midi ports' lists the MIDI systems of this machine, what is wrong with those that "
      "cannot be used, and their destinations and sources. 'ovka midi test' plays a scale.";
  form.positionals = {{"WHAT", "'ports' or 'test'."}};
  std::vector<Option> options{midiSystemOption(),
                              destinationOption("Where the scale goes, by default the synthesizer"),
                              Option::integer("channel", "N", 1, 16, "MIDI channel.").orElse("1"),
                              Option::integer("velocity", "N", 1, 127, "Loudness.").orElse("96"),
                              Option::flag("json", "One JSON object a line, for scripts.")};
  for (Option& option : soundOptions()) options.push_back(std::move(option));
  form.groups = {{"Options", std::move(options)}};
  form.examples = {"ovka midi ports", "ovka midi test", "ovka midi test --to 'Midi Through'"};
  return form;
}

CommandForm doctorForm() {
  CommandForm form;
  form.name = "doctor";
  form.summary = "Look whether this machine has what the program needs.";
  form.description =
      "Looks at MIDI systems, synthesizer and sound font, sound outputs, real-time limits, serial "
      "ports and permissions, the folder of recordings and the display, and says for everything "
      "that is missing which command mends it. Nothing is changed. Its exit code is 0 when "
      "nothing is missing that the program cannot do without.";
  form.groups = {{"Options", {Option::flag("json", "One JSON object a line, for scripts.")}}};
  form.examples = {"ovka doctor"};
  return form;
}

CommandForm renderForm() {
  CommandForm form;
  form.name = "render";
  form.summary = "Play a capture or a document into MIDI and sound files.";
  form.description =
      "Plays a recording through the whole chain, faster than real time, into files: a MIDI file "
      "with a track for each destination and channel, the sound of the software synthesizer, and "
      "every message with its cause. The same recording and options give the same bytes on every "
      "run. Of a preset only the set-ups that play are taken; the amplifier and the analysis are "
      "those of the recording. A document brings the set-ups that were saved with it.";
  form.positionals = {{"SOURCE", "The capture or document."}};
  form.groups = {
      {"The music",
       {Option::text("preset", "NAME",
                     "Play with the set-ups of a preset. A name without '/' lies in the folder of "
                     "presets."),
        Option::flag("play", "Play with the set-ups that come with the program."),
        Option::text("to", "NAME",
                     "Destination of every set-up: 'MIDI port 1' to 'MIDI port 23', or 'OVKA "
                     "Synthesizer'."),
        Option::text("sound-font", "FILE", "Sounds of the synthesizer (.sf2, .sf3, .dls)."),
        Option::number("seconds", "S", 0.01, 1e8, "End after so many seconds.")}},
      {"What is written",
       {Option::text("midi-file", "FILE", "A Standard MIDI File."),
        Option::text("wav", "FILE", "The sound: stereo, 48000 samples a second, 24 bits."),
        Option::text("midi-log", "FILE", "Every message with its cause, a line of JSON each."),
        Option::flag("force", "Overwrite files of these names.")}},
      chainGroup()};
  form.exclusives = {{{"preset", "play"}, false}};
  form.examples = {"ovka render night.cap --play --wav night.wav",
                   "ovka render night.ovkanote --preset mine --midi-file night.mid"};
  return form;
}

}  // namespace

std::vector<CommandForm> midiForms() {
  return {midiForm(), renderForm(), doctorForm()};
}

}  // namespace ovka::terminal
