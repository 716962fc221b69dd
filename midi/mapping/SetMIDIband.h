#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "MidiMapping.h"

namespace ovka {

/// The band mapping: once per interval each of up to 128 set-ups turns the power of eight frequency
/// bands of one channel, or eight brain-switch counts, into notes, pitches or controllers.
class SetMIDIband final : public MidiMapping {
 public:
  /// +sharedSetMIDIband: the one of this process. Defined by the engine alone.
  static SetMIDIband& sharedSetMIDIband();

  /// `notes` and `analysis` outlive it.
  SetMIDIband(NoteOutput& notes, AnalysisInput& analysis);

  /// init On the first creation in the process (`firstTimeRunX`): the set-ups take their defaults.
  void init();
  /// awakeFromNib of the set-up window. Kept on purpose: when every set-up played
  /// (`setSoloBandX` 1), the shown one plays alone from now on, and `MIDIbandAll` remembers it.
  /// @param chosen the set-up of the main pop-up
  void awakeFromNib(std::int32_t chosen);

  /// sendMIDIbandData: when the set-up is on and its interval has passed, takes its eight band
  /// values anew and sends them. Any thread.
  void sendMIDIbandData(std::int32_t setup);
  /// sendMIDInote: sends the eight values in the set-up's mode. Any thread.
  void sendMIDInote(std::int32_t setup);
  /// FFTband:lowF:highF:mode: of channel 0 to 3 by its display gain, of 4 to 9 as it stands; mode 0
  /// the band's sum, 1 its strongest value. Any thread.
  [[nodiscard]] float FFTband(std::int32_t channel, float low, float high, std::int32_t mode);

  /// MIDIchannelCopy puts the channels of all set-ups aside and prints them.
  void MIDIchannelCopy();
  /// MIDIchannelBackCopy brings them back.
  void MIDIchannelBackCopy();
  /// setCHto1to8: bands 1 to 8 of the shown set-up to channels 0 to 7, in the edit copy.
  void setCHto1to8() { setChannelsFrom(0); }
  /// setCHto9to16: the same to channels 8 to 15.
  void setCHto9to16() { setChannelsFrom(8); }

 protected:
  Turn play(std::size_t setup) override;
  [[nodiscard]] bool playsAll() const override;
  [[nodiscard]] std::array<std::int32_t, 8> channelsOf(std::size_t setup) const override;
  void setDefaults() override;
  void addActions(std::vector<MappingAction>& to) override;

 private:
  void refresh(std::size_t setup);
  void readBrainSwitches(std::size_t setup);
  void showValues(std::size_t setup);
  void sendNote(std::size_t setup);
  void sendBand(std::size_t setup, std::size_t band, std::int32_t port);
  void setChannelsFrom(std::int32_t first);
};

}  // namespace ovka
