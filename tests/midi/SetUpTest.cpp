#include <doctest/doctest.h>

#include "MidiBench.h"

using namespace ovka;
using ovka::testing::Bytes;
using ovka::testing::MidiBench;
using ovka::testing::RecordingTransport;

TEST_CASE("the set-up names everything it finds, once") {
  MidiBench b({"Keys", "Organ"});
  b.transport.addSource("Pedal");
  b.transport.addDevice({"Box", "Maker", "One"});
  b.transport.addExternalDevice({"Rack", "", ""});
  int cleared = 0;
  b.parts.clearPortChoices = [&] { ++cleared; };
  b.engine = std::make_unique<MidiEngine>(b.parts, b.time);
  CHECK(b.engine->mainMidi() == 0);
  CHECK(b.printed.take() ==
        "1 Devices\nname=Box, manuf=Maker, model=One\n1 sources\nname=Pedal \n"
        "2 Destinations\nname=Organ \nname=Keys \n1 ExternalDevices\nname=Rack \n");
  CHECK(midi::runMIDI == 1);
  CHECK(cleared == 1);
  CHECK(b.transport.connectedSources().size() == 1);
  CHECK(b.transport.names().client == "OVKA MIDI");
  CHECK(b.engine->mainMidi() == 0);
  CHECK(b.printed.take().empty());
  CHECK(b.transport.opens() == 1);

  b.engine->setGetOutMIDIPort();
  CHECK(b.printed.take() == "name=Keys \nname=Organ \n");
  const auto names = b.engine->portNames();
  CHECK(names[0] == "Keys");
  CHECK(names[2] == "OVKA");
  CHECK(names[23] == "OVKA");
  CHECK(MidiEngine::midiPortReturn(1) == 1);
  for (const std::int32_t stored : {2, 24, -1, INT32_MAX}) {
    CHECK(MidiEngine::midiPortReturn(stored) == 0);
  }
}

TEST_CASE("names: numbered ones by appearance, long ones cut between characters") {
  std::string name(254, 'x');
  name += "\xC3\xA4y";  // the buffer would end inside the two-byte character
  MidiBench b({"DLSMusicDevice", name, "DLSMusicDevice"});
  b.setUp();
  CHECK(b.printed.take().find("name=" + std::string(254, 'x') + " \n") != std::string::npos);
  CHECK(b.engine->portNames()[0] == "DLSMusicDevice:1");
  CHECK(b.engine->portNames()[2] == "DLSMusicDevice:2");
  CHECK(b.engine->convertPortNameToInt("DLSMusicDevice:2") == 2);
  CHECK(b.engine->convertPortNameToInt("nobody") == -1);
}

TEST_CASE("several MIDI systems make one list; one that fails is explained and left out") {
  MidiBench b({"A"});
  RecordingTransport broken("broken");
  RecordingTransport second("second");
  broken.openResult = 2;
  broken.addDestination("never");
  second.addDestination("A");
  b.parts.transports = {&broken, &b.transport, &second};
  b.setUp();
  CHECK(b.printed.take().find("Error opening broken - scripted failure") == 0);
  CHECK(midi::findPortCountE == 2);
  b.engine->MidiOutOn(60, 1, 0, 0, 0, 0);
  b.engine->MidiOutOn(61, 1, 0, 0, 1, 0);
  CHECK(b.transport.sent().size() == 1);
  CHECK(second.sent().size() == 1);
  CHECK(second.sent()[0].bytes[1] == 61);
  // The last port is published by every system that is open.
  CHECK(b.transport.published().size() == 1);
  CHECK(second.published().size() == 1);
  b.engine->close();
  CHECK(b.transport.sounding().empty());
  CHECK(second.sounding().empty());
}

TEST_CASE("without a MIDI system the synthesizer is a destination and makes the music") {
  MidiBench b({}, true);
  b.parts.transports.clear();
  MidiEngine& e = b.start();
  CHECK(midi::findPortCountE == 1);
  CHECK(e.portNames()[0] == "OVKA Synthesizer");
  e.MidiOutOn(60, 1, 0, 9, MidiEngine::midiPortReturn(5), 0);
  e.MidiControlChange(7, 99, 0, 9, 0, 0);
  CHECK(b.synthesizer.messages() == std::vector<Bytes>{{0x99, 60, 1}, {0xB9, 7, 99}});
  // Chosen as port and as the set-up's companion: once, not twice; coreMidi does not silence it.
  b.synthesizer.forget();
  midi::UseQTMIDIX.set(0, 1);
  midi::coreMidi = 0;
  e.MidiOutOff(60, 0, 9, 0, 1);
  CHECK(b.synthesizer.messages() == std::vector<Bytes>{{0x89, 60, 0}});
  CHECK(b.synthesizer.sounding().empty());
}

TEST_CASE("more destinations than ports: 24 can be chosen, the synthesizer is the last of them") {
  std::vector<std::string> many;
  for (int i = 0; i < 30; ++i) many.push_back("D" + std::to_string(i));
  MidiBench b(many, true);
  b.setUp();
  CHECK(b.printed.take().find("31 MIDI destinations, the port list holds 24") != std::string::npos);
  CHECK(midi::findPortCountE == 24);
  CHECK(b.engine->portNames()[22] == "D22");
  CHECK(b.engine->portNames()[23] == "OVKA Synthesizer");
  // The port behind the last is booked like any other.
  b.synthesizer.forget();
  b.engine->MidiOutOn(60, 9, 0, 0, 24, 1);
  b.engine->MidiOutOff(60, 0, 0, 24, 1);
  CHECK(b.synthesizer.messages() == std::vector<Bytes>{{0x90, 60, 9}, {0x90, 60, 0}});
}

TEST_CASE("restart: offs first, then everything anew on the same port numbers") {
  MidiBench b({"A", "B"}, true);
  int converted = 0;
  b.parts.convertPortNameToInt = [&] { ++converted; };
  MidiEngine& e = b.start();
  e.MidiOutOn(60, 1, 0, 0, 0, 0);
  e.MidiOutOn(61, 1, 0, 0, 1, 0);
  e.MidiOutOn(62, 1, 0, 0, 2, 0);
  e.MidiOutOffOn(63, 1, 0, 0, 0, 0, 0);
  e.MidiOutOffOn(63, 1, 8, 1, 0, 0, 0);
  e.restart();
  CHECK(b.transport.rescans() == 1);
  CHECK(b.transport.opens() == 2);
  CHECK(converted == 1);
  CHECK(midi::runMIDI == 1);
  CHECK(b.transport.sounding().empty());
  CHECK(b.synthesizer.sounding().empty());
  CHECK(!e.onRecord(60, 0, 0, 0));
  CHECK(e.portNames()[1] == "B");
  // One that could not be opened gets another chance.
  b.transport.openResult = ENOENT;
  e.restart();
  b.transport.openResult = 0;
  e.restart();
  CHECK(e.portNames()[1] == "B");
  CHECK(b.printed.take().find("Error opening recording - ") != std::string::npos);
  // Set-ups 0 to 7 forgot their last notes, 8 to 127 keep them.
  static_cast<void>(b.sent());
  e.MidiOutOffOn(63, 1, 0, 0, 0, 0, 0);
  e.MidiOutOffOn(63, 1, 8, 1, 0, 0, 0);
  CHECK(b.sent().size() == 2);
}

TEST_CASE("who plays the synthesizer, in both of its styles") {
  // Destinations A and B, the synthesizer as port 2, so that findPortCountE is 3.
  struct QtCase {
    const char* name;
    std::int32_t useQT, uses, port;
    bool toPort, toSynthesizer;
  };
  const QtCase cases[] = {
      {"not asked", 0, 1, 0, true, false},
      {"asked, not chosen", 1, 0, 0, true, false},
      {"besides the port", 1, 1, 0, true, true},
      {"behind the last port", 1, 0, 3, false, true},
      {"behind it, not asked", 0, 0, 3, false, false},
  };
  for (const std::int32_t graph : {1, 0}) {
    CAPTURE(graph);
    MidiBench b({"A", "B"}, true);
    midi::AUuse = graph;
    midi::mProgram0 = 19;
    b.setUp();
    const auto first = b.synthesizer.messages();
    CHECK(first.size() == (graph != 0 ? 2U : 8U));
    CHECK(first[0] == (graph != 0 ? Bytes{0xB0, 0, 0} : Bytes{0xC0, 19}));
    CHECK(first[1] == (graph != 0 ? Bytes{0xC0, 19} : Bytes{0xC1, 0}));
    for (const QtCase& c : cases) {
      CAPTURE(c.name);
      static_cast<void>(b.sent());
      b.synthesizer.forget();
      midi::UseQTMIDIX.set(5, c.uses);
      b.engine->MidiOutOn(60, 7, 5, 3, c.port, c.useQT);
      b.engine->MidiCpitch(64, 5, 3, c.port, c.useQT);
      b.engine->MidiCprogram(40, 5, 3, c.port, c.useQT);
      b.engine->MidiOutOff(60, 5, 3, c.port, c.useQT);
      std::vector<Bytes> expected{
          {0x93, 60, 7}, {0xE3, 0, 64}, {0xB3, 0, 0}, {0xC3, 40}, {0x93, 60, 0}};
      if (graph == 0) expected.erase(expected.begin() + 2);
      if (!c.toSynthesizer) expected.clear();
      CHECK(b.synthesizer.messages() == expected);
      CHECK(b.sent().size() == (c.toPort ? 4U : 0U));
    }
  }
}

TEST_CASE("note allocator: a voice opens with its first note; a closed one is silent") {
  MidiBench b({"A"}, true);
  midi::AUuse = 0;
  MidiEngine& e = b.start();
  midi::UseQTMIDIX.set(0, 1);
  e.MidiOutOn(60, 7, 0, 12, 0, 1);
  CHECK(b.synthesizer.messages() == std::vector<Bytes>{{0xCC, 0}, {0x9C, 60, 7}});
  e.setUseQtMidi(12, 0);
  CHECK(b.synthesizer.sounding().empty());
  b.synthesizer.forget();
  e.MidiOutOn(61, 7, 0, 12, 0, 1);
  CHECK(b.synthesizer.messages().empty());
}

TEST_CASE("the synthesizer's choice is taken back while its note sounds: the note still ends") {
  MidiBench b({"A"}, true);
  MidiEngine& e = b.start();
  midi::UseQTMIDIX.set(0, 1);
  e.MidiOutOn(60, 7, 0, 0, 0, 1);
  midi::UseQTMIDIX.set(0, 0);
  e.MidiOutOff(60, 0, 0, 0, 1);
  CHECK(b.synthesizer.sounding().empty());
  // Turned off as a whole, it leaves the list's numbers alone and keeps silent.
  e.setUseQtMidi(0, 0);
  CHECK(!b.synthesizer.started());
  CHECK(midi::findPortCountE == 2);
  e.MidiOutOn(60, 7, 0, 0, 1, 0);
  e.setUseQtMidi(0, 1);
  b.synthesizer.forget();
  e.MidiOutOn(62, 7, 0, 0, 1, 0);
  CHECK(b.synthesizer.messages() == std::vector<Bytes>{{0x90, 62, 7}});
}

TEST_CASE("a synthesizer without sounds to play is explained; the rest runs") {
  MidiBench b({"A"}, true);
  b.synthesizer.startResult = ENOENT;
  b.setUp();
  CHECK(b.printed.take().find("Error starting the synthesizer - no sound") == 0);
  CHECK(midi::findPortCountE == 1);
  b.engine->MidiOutOn(60, 1, 0, 0, 1, 1);
  CHECK(b.synthesizer.messages().empty());
  CHECK(!b.engine->sounding().anySounds());
}
