#include "MidiVariables.h"

namespace ovka::midi {

void resetVariables() {
  runMIDI = 0;
  MIDIuseX = 1;
  coreMidi = 1;
  AUuse = 1;
  TimeStampON = 0;
  findPortCountE = 0;
  mProgram0 = 0;
  gChannel = 0;
  Channel = 0;
  noteZ = 0;
  SetupNZ = 0;
  channelZ = 0;
  MIDIportZ = 0;
  UseQTMIDIX.clear();
  inputPortX.clear();
}

}  // namespace ovka::midi
