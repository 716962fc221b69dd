#include "MusicTable.h"

#include <algorithm>
#include <array>

#include "SetMIDIVariables.h"
#include "SetMIDIbandVariables.h"

namespace ovka::desktop {
namespace {

using K = MusicKind;

constexpr std::string_view kIntervals =
    "every 0.01 second|every 0.025 second|every 0.05 second|every 0.1 second|every 0.2 "
    "second|every 0.5 second|every 1 second";
constexpr std::string_view kSources =
    "channel A|channel B|channel D|channel E|pair A-B|pair D-E|pair A-D|pair B-E|pair A-E|pair B-D";
constexpr std::string_view kRows = "1|2|3|4|5|6|7|8|9|10|11|12";
constexpr std::string_view kChannels = "1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16";

constexpr std::string_view kOnTip =
    "The set-up takes part in the music: messages go out while it is on.";
constexpr std::string_view kTimingTip =
    "How often the set-up sends. The first entry sends every millisecond, ten times as often as it "
    "says.";
constexpr std::string_view kInputTip =
    "Takes the values anew at every send; off, the set-up repeats what it has.";
constexpr std::string_view kSourceTip =
    "Whose waves the set-up listens to: a channel, or how alike two channels are.";
constexpr std::string_view kPortTip =
    "Where the messages go: a device, a program, the synthesizer.";

constexpr auto kBandRows = std::to_array<MusicRow>({
    {"setMIDIoutON:", "MIDIoutONEX", K::Switch, "On", kOnTip},
    {"selectOVKAchannel:", "OVKAchannelEX", K::Choice, "Listens to", kSourceTip, kSources},
    {"selectSendMIDItiming:", "SendMIDItimingEX", K::Choice, "Sends", kTimingTip, kIntervals},
    {"setONInput:", "ONInputEX", K::Switch, "New values at each send", kInputTip},
    {"setUsePeakMode:", "UsePeakModeEX", K::Choice, "Values",
     "Band powers follow the strength of the rhythm; brain-switch counts tell how often a bin "
     "stood "
     "above its threshold.",
     "band powers|brain-switch counts"},
    {"setBSchannel:", "BSchannelEX", K::Choice, "Brain-switch row",
     "The row of the brain-switch table; kept with the set-up.", kRows},
    {"setPeakPower:", "PeakPowerEX", K::Mode, "Peak", "A band counts by its strongest frequency."},
    {"setAveragePower:", "AveragePowerEX", K::Mode, "Average",
     "A band counts by all of its frequencies together."},
    {"changeGainNoteSlider:",
     "gainNoteX",
     K::Slider,
     "Gain",
     "Every value is multiplied by it before it becomes a MIDI number, 0 to 127.",
     {},
     0,
     10,
     0.1},
    {"setNoteOffOn:", "NoteOffOnEX", K::Mode, "Fixed notes",
     "Each band plays its own note; the value is the loudness."},
    {"setNoteOnOff:", "NoteOnOffEX", K::Mode, "Pitch",
     "The value picks the pitch, its decimals the loudness; the note before ends."},
    {"setControl:", "ControlEX", K::Mode, "Controllers",
     "Each band moves a controller, the number beside it, instead of playing notes."},
    {"selectMIDIport:", "MIDIportEX", K::Port, "Plays on", kPortTip},
    {"setTempo:", "TempoEX", K::Number, "Tempo", "Kept with the set-up; nothing follows from it."},
    {"sendTextLowFSliderField%:",
     "LowF%X",
     K::Number,
     "low edge (Hz)",
     "The lowest frequency of the band.",
     {},
     0,
     0,
     0.5},
    {"changeLowFSlider%:",
     "LowF%X",
     K::Slider,
     "low edge slider",
     "The lowest frequency of the band.",
     {},
     0,
     60,
     0.1},
    {"sendTextHighFSliderField%:",
     "HighF%X",
     K::Number,
     "high edge (Hz)",
     "The highest frequency of the band.",
     {},
     0,
     0,
     0.5},
    {"changeHighFSlider%:",
     "HighF%X",
     K::Slider,
     "high edge slider",
     "The highest frequency of the band.",
     {},
     0,
     60,
     0.1},
    {"setSetbandNote%:", "bandNote%X", K::Note, "note or controller",
     "The note that the band plays, 60 is the middle C; in control mode its controller."},
    {"selectMIDIchannel%:", "MIDIchannel%X", K::Choice, "MIDI channel",
     "The channel of the band, 1 to 16.", kChannels},
    {"changebandSlider%:",
     "bandOut%X",
     K::Slider,
     "value",
     "The band's value now; it moves by itself while the set-up plays.",
     {},
     0,
     100,
     0.1},
});

constexpr auto kSingleRows = std::to_array<MusicRow>({
    {"setMIDIoutON:", "MIDIoutONX", K::Switch, "On",
     "The set-up takes part in the music; it counts at once, without Set."},
    {"selectUsePeakMode:", "UsePeakModeX", K::Choice, "Input",
     "What is measured: the strongest peak, a band, or the counts of the brain switch.",
     "strongest peaks|one band|brain switch, chosen row|brain switch, first rows"},
    {"selectOVKAchannel:", "OVKAchannelX", K::Choice, "Listens to", kSourceTip, kSources},
    {"selectSendMIDItiming:", "SendMIDItimingX", K::Choice, "Sends", kTimingTip, kIntervals},
    {"setONInput:", "ONInputX", K::Switch, "New values at each send", kInputTip},
    {"setBSchannel:", "BSchannelX", K::Choice, "Brain-switch row",
     "The row of the brain-switch table that the input takes.", kRows},
    {"setPeakPower:", "PeakPowerX", K::Switch, "Peak instead of sum",
     "A band counts by its strongest frequency instead of all together."},
    {"sendTextLowFSliderField:", "LowFX", K::Number, "F from (Hz)",
     "The least frequency that plays; below it notes end."},
    {"changeLowFSlider:",
     "LowFX",
     K::Slider,
     "F from slider",
     "The least frequency that plays; below it notes end.",
     {},
     0,
     60,
     0.1},
    {"sendTextHighFSliderField:", "HighFX", K::Number, "F to (Hz)",
     "The greatest frequency that plays; above it notes end."},
    {"changeHighFSlider:",
     "HighFX",
     K::Slider,
     "F to slider",
     "The greatest frequency that plays; above it notes end.",
     {},
     0,
     60,
     0.1},
    {"sendTextLowFNSliderField:", "LowFNX", K::Number, "F becomes, from",
     "What the least frequency becomes; more than the end turns the direction round."},
    {"changeLowFNSlider:",
     "LowFNX",
     K::Slider,
     "F becomes, from slider",
     "What the least frequency becomes; more than the end turns the direction round.",
     {},
     0,
     127,
     1},
    {"sendTextHighFNSliderField:", "HighFNX", K::Number, "F becomes, to",
     "What the greatest frequency becomes."},
    {"changeHighFNSlider:",
     "HighFNX",
     K::Slider,
     "F becomes, to slider",
     "What the greatest frequency becomes.",
     {},
     0,
     127,
     1},
    {"sendTextLowVSliderField:", "LowVX", K::Number, "V from", "The least level that counts."},
    {"changeLowVSlider:",
     "LowVX",
     K::Slider,
     "V from slider",
     "The least level that counts.",
     {},
     0,
     100,
     0.1},
    {"sendTextHighVSliderField:", "HighVX", K::Number, "V to", "The greatest level that counts."},
    {"changeHighVSlider:",
     "HighVX",
     K::Slider,
     "V to slider",
     "The greatest level that counts.",
     {},
     0,
     100,
     0.1},
    {"sendTextLowVNSliderField:", "LowVNX", K::Number, "V becomes, from",
     "What the least level becomes."},
    {"changeLowVNSlider:",
     "LowVNX",
     K::Slider,
     "V becomes, from slider",
     "What the least level becomes.",
     {},
     0,
     127,
     1},
    {"sendTextHighVNSliderField:", "HighVNX", K::Number, "V becomes, to",
     "What the greatest level becomes."},
    {"changeHighVNSlider:",
     "HighVNX",
     K::Slider,
     "V becomes, to slider",
     "What the greatest level becomes.",
     {},
     0,
     127,
     1},
    {"sendTextInputFSliderField:", "InputFX", K::Number, "Input F (Hz)",
     "The frequency now; it moves by itself while the set-up plays."},
    {"changeInputFSlider:",
     "InputFX",
     K::Slider,
     "Input F slider",
     "The frequency now; it moves by itself while the set-up plays.",
     {},
     0,
     60,
     0.1},
    {"changeOutputFSlider:",
     "OutputFX",
     K::Slider,
     "Output F",
     "What the frequency has become.",
     {},
     0,
     127,
     1},
    {"sendTextInputVSliderField:", "InputVX", K::Number, "Input V",
     "The level now; it moves by itself while the set-up plays."},
    {"changeInputVSlider:",
     "InputVX",
     K::Slider,
     "Input V slider",
     "The level now; it moves by itself while the set-up plays.",
     {},
     0,
     100,
     0.1},
    {"changeOutputVSlider:",
     "OutputVX",
     K::Slider,
     "Output V",
     "What the level has become.",
     {},
     0,
     127,
     1},
    {"setMIDInoteF:", "MIDInoteFX", K::Switch, "F: note", "F picks the note, V its loudness."},
    {"setMIDInoteV:", "MIDInoteVX", K::Switch, "V: note", "V picks the note, F its loudness."},
    {"setMIDIvelocityF:", "MIDIvelocityFX", K::Switch, "F: loudness",
     "F is the loudness of a note that V picks."},
    {"setMIDIvelocityV:", "MIDIvelocityVX", K::Switch, "V: loudness",
     "V is the loudness of a note that F picks."},
    {"setMIDIchannelF:", "MIDIchannelFX", K::Switch, "F: channel", "F picks the MIDI channel."},
    {"setMIDIchannelV:", "MIDIchannelVX", K::Switch, "V: channel", "V picks the MIDI channel."},
    {"setMIDIprogramchangeF:", "MIDIprogramchangeFX", K::Switch, "F: program",
     "F picks the instrument."},
    {"setMIDIprogramchangeV:", "MIDIprogramchangeVX", K::Switch, "V: program",
     "V picks the instrument."},
    {"setMIDIpitchbendF:", "MIDIpitchbendFX", K::Switch, "F: pitch bend", "F bends the pitch."},
    {"setMIDIpitchbendV:", "MIDIpitchbendVX", K::Switch, "V: pitch bend", "V bends the pitch."},
    {"setMIDIcontrolchangeVF:", "MIDIcontrolchangeVFX", K::Switch, "F: controller number",
     "F picks the controller, V is its value."},
    {"setMIDIcontrolchangeVV:", "MIDIcontrolchangeVVX", K::Switch, "V: controller number",
     "V picks the controller, F is its value."},
    {"setMIDIcontrolchangeNF:", "MIDIcontrolchangeNFX", K::Switch, "F: controller value",
     "F is the value of the controller that V picks."},
    {"setMIDIcontrolchangeNV:", "MIDIcontrolchangeNVX", K::Switch, "V: controller value",
     "V is the value of the controller that F picks."},
    {"setNoteOnOff:", "NoteOnOffX", K::Mode, "Short: on, then off",
     "Every note ends as soon as it has begun."},
    {"setNoteOffOn:", "NoteOffOnX", K::Mode, "Held: off, then on",
     "A note sounds until the next one begins."},
    {"selectMIDIchannel:", "MIDIchannelX", K::Choice, "MIDI channel",
     "The channel of the set-up, 1 to 16; a channel role overwrites it.", kChannels},
    {"setPlay3Peaks:", "Play3PeaksX", K::Switch, "Three strongest peaks",
     "Plays the three strongest peaks instead of one."},
    {"setPlayOnlyNoteChanged:", "PlayOnlyNoteChangedX", K::Switch, "Only when the note changes",
     "A note that stays the same keeps sounding instead of beginning anew."},
    {"selectScale:", "ScaleX", K::Choice, "Scale",
     "Notes go to the nearest one of the scale, so that they fit other music.",
     "every semitone|major|natural minor|major pentatonic|minor pentatonic|dorian|whole tone"},
    {"selectScaleRoot:", "ScaleRootX", K::Choice, "Root", "The first note of the scale.",
     "C|C#|D|D#|E|F|F#|G|G#|A|A#|B"},
    {"selectMIDIport:", "MIDIportX", K::Port, "Plays on", kPortTip},
    {"setUseQTMIDI:", "UseQTMIDIX", K::Switch, "And on the synthesizer",
     "Plays on the software synthesizer, too; it counts at once, without Set."},
});

constexpr std::array<std::string_view, 8> kOfBoth{
    "setSet:",          "setCancel:",           "setSetToDefault:", "selectSetup:",
    "sendMidiShutDown", "sendMidiTemporalyOFF", "sendMidiBackON",   "sendsetMIDIRestart"};

template <std::size_t N>
bool holds(const std::array<MusicRow, N>& rows, std::string_view selector) {
  return std::any_of(rows.begin(), rows.end(),
                     [&](const MusicRow& row) { return row.selector == selector; });
}

bool ofBoth(std::string_view selector) {
  return std::find(kOfBoth.begin(), kOfBoth.end(), selector) != kOfBoth.end() ||
         (holds(kBandRows, selector) && holds(kSingleRows, selector));
}

}  // namespace

std::span<const MusicRow> musicRows(Mapping mapping) {
  if (mapping == Mapping::Bands) return kBandRows;
  return kSingleRows;
}

const MusicRow& musicRow(Mapping mapping, std::string_view selector) {
  const std::span<const MusicRow> rows = musicRows(mapping);
  return *std::find_if(rows.begin(), rows.end(),
                       [&](const MusicRow& row) { return row.selector == selector; });
}

std::span<const SetupField> fieldsOf(Mapping mapping) {
  return mapping == Mapping::Bands ? setmidiband::fields() : setmidi::fields();
}

const SetupField& fieldOf(Mapping mapping, std::string_view name) {
  const std::span<const SetupField> fields = fieldsOf(mapping);
  return *std::find_if(fields.begin(), fields.end(),
                       [&](const SetupField& field) { return field.name == name; });
}

Shared<std::int32_t>& shownOf(Mapping mapping) {
  return mapping == Mapping::Bands ? setmidiband::SetupBandNX : setmidi::SetupNX;
}

std::string actionName(Mapping mapping, std::string_view selector, std::size_t band) {
  std::string name(selector);
  if (ofBoth(selector)) name = (mapping == Mapping::Bands ? "SetMIDIband " : "SetMIDI ") + name;
  const std::size_t place = name.find('%');
  if (place != std::string::npos) name[place] = static_cast<char>('1' + band);
  return name;
}

bool movesByItself(const SetupField& field) {
  constexpr std::array<std::string_view, 5> kMoving{"bandOut%X", "InputFX", "InputVX", "OutputFX",
                                                    "OutputVX"};
  return std::find(kMoving.begin(), kMoving.end(), field.name) != kMoving.end();
}

bool pending(Mapping mapping, std::size_t setup) {
  for (const SetupField& field : fieldsOf(mapping)) {
    if (field.copy == SetupField::Copy::AtOnce || movesByItself(field)) continue;
    for (std::size_t row = 0; row < field.access.rows; ++row) {
      if (field.access.edit(row, setup) != field.access.live(row, setup)) return true;
    }
  }
  return false;
}

}  // namespace ovka::desktop
