#include <atomic>
#include <doctest/doctest.h>
#include <random>
#include <thread>

#include "MappingRig.h"
#include "SetupGroup.h"

using namespace ovka;
using ovka::testing::MappingRig;

namespace {

/// One random thing that a person, a document or the analysis may do.
void anything(MappingRig& rig, std::mt19937& random) {
  const auto pick = [&](unsigned n) { return static_cast<std::size_t>(random() % n); };
  MidiMapping& mapping = pick(2) == 0 ? static_cast<MidiMapping&>(rig.band) : rig.single;
  const std::size_t setup = pick(6);  // few, so that they meet
  const std::function<void()> deeds[] = {
      [&] { document::savingX = pick(8) == 0 ? 1 : 0; },
      [&] { document::openingX = pick(8) == 0 ? 1 : 0; },
      [&] { buffer::setPauseX = pick(8) == 0 ? 1 : 0; },
      [&] { mapping.sendMidiTemporalyOFF(); },
      [&] { mapping.sendMidiBackON(); },
      [&] { mapping.beginPut(), mapping.endPut(); },
      [&] { setmidiband::setSoloBandX = static_cast<std::int32_t>(pick(2)); },
      [&] { mapping.showSetup(static_cast<std::int32_t>(setup)); },
      [&] { pick(50) == 0 ? mapping.setSetToDefault() : void(); },
      [&] { pick(2) == 0 ? mapping.setSet() : mapping.setCancel(); },
  };
  const std::size_t deed = pick(14);
  if (deed < std::size(deeds)) return deeds[deed]();
  // Any value of the table, in its range; often the switch.
  const auto fields = mapping.fields();
  const SetupField& field = fields[pick(3) == 0 ? 0 : pick(static_cast<unsigned>(fields.size()))];
  const double high = std::min(field.maximum, 140.0);
  const double low = std::max(field.minimum, -20.0);
  const double value = low + (high - low) * static_cast<double>(pick(1001)) / 1000;
  if (field.entry == 0) return;
  const std::size_t row = pick(static_cast<unsigned>(field.access.rows));
  if (pick(4) == 0) {
    field.access.setEdit(row, setup, value);
  } else {
    field.set(row, setup, field.access.real ? value : std::round(value));
  }
}

void putAnyPeaks(std::mt19937& random) {
  for (std::int32_t channel = 0; channel < 4; ++channel) {
    for (std::size_t i = 0; i < 6; ++i) {
      fft::peakFFT(channel).set(i, static_cast<float>(random() % 4000) / 100.0F);
    }
  }
}

}  // namespace

TEST_CASE("100000 random changes leave no note behind") {
  MappingRig rig;
  rig.notes.keepRequests = false;
  std::mt19937 random(23);
  rig.analysis.band = [&](std::int32_t, float, float, std::int32_t) {
    return static_cast<float>(random() % 80);
  };
  long sounded = 0;
  for (int step = 0; step < 100000; ++step) {
    anything(rig, random);
    putAnyPeaks(random);
    rig.notes.now += 0.002;
    rig.band.timerUpdate();
    rig.single.timerUpdate();
    const bool silent = document::savingX != 0 || document::openingX != 0 || buffer::setPauseX != 0;
    sounded += rig.notes.sounding().empty() ? 0 : 1;
    if (silent && !rig.notes.sounding().empty())
      FAIL("a note sounds in the silence, step " << step);
  }
  CHECK(sounded > 10000);
  document::savingX = document::openingX = buffer::setPauseX = 0;
  for (std::size_t setup = 0; setup < 128; ++setup) {
    setmidiband::MIDIoutONEX.set(setup, 0);
    setmidi::MIDIoutONX.set(setup, 0);
  }
  rig.band.timerUpdate();
  rig.single.timerUpdate();
  CHECK(rig.notes.sounding().empty());
}

TEST_CASE("the tick and the window run at once") {
  MappingRig rig;
  rig.notes.keepRequests = false;
  std::atomic<bool> stop{false};
  std::thread ticks([&] {
    while (!stop) {
      rig.notes.now += 0.001;
      rig.band.timerUpdate();
    }
  });
  std::mt19937 random(3);
  SetupGroup group(rig.band);
  for (int step = 0; step < 3000; ++step) {
    if (step % 500 == 0) group.put(group.texts());
    std::mt19937 step_random(random());
    const auto setup = static_cast<std::size_t>(step_random() % 128);
    setmidiband::MIDIoutONEX.set(setup, 1);
    setmidiband::SendMIDItimingEX.set(setup, static_cast<std::int32_t>(step_random() % 7));
    rig.perform(rig.band, "changeLowFSlider1:", 3);
    if (step % 50 == 0) rig.perform(rig.band, "setSet:");
    if (step % 100 == 0) rig.band.sendMidiTemporalyOFF();
    if (step % 100 == 20) rig.band.sendMidiBackON();
  }
  stop = true;
  ticks.join();
  rig.band.sendMidiTemporalyOFF();
  CHECK(rig.notes.sounding().empty());
}
