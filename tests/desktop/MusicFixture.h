#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "MusicMachine.h"
#include "MusicWindow.h"
#include "RecordingSynthesizer.h"
#include "RecordingTransport.h"
#include "ShellFixture.h"

namespace ovka::testing {

/// A machine whose MIDI system keeps what it is sent: destinations A, B and C, and the synthesizer
/// as the fourth.
class RecordingMusic final : public desktop::MusicMachine {
 public:
  explicit RecordingMusic(bool sound = true) {
    for (const char* name : {"A", "B", "C"}) transport.addDestination(name);
    if (!sound) synthesizer.startResult = ENODEV;
  }
  const MidiMachine* machine() const override { return &midi; }
  void look() override { looked = true; }
  std::vector<desktop::MusicFinding> findings() const override {
    return {{"recording system", true, "in use", ""},
            {"other system", false, "not there", "sudo mend it"},
            {"synthesizer", synthesizer.started(),
             synthesizer.started() ? synthesizer.name() : synthesizer.explanation(), ""}};
  }
  SynthesizerSettings sound() const override {
    const std::scoped_lock guard(lock_);
    return sound_;
  }
  void setSound(const SynthesizerSettings& sound) override {
    const std::scoped_lock guard(lock_);
    sound_ = sound;
  }

  RecordingTransport transport;
  RecordingSynthesizer synthesizer;
  MidiMachine midi{{&transport}, &synthesizer, nullptr, {}, {}};
  std::atomic<bool> looked{false};

 private:
  mutable std::mutex lock_;
  SynthesizerSettings sound_;
};

/// Before the window, which uses it to its end.
struct MusicBase {
  explicit MusicBase(bool sound) : music(sound) {}
  RecordingMusic music;
};

/// The main window at work on a source, with music that is recorded.
struct MusicFixture : MusicBase, ShellFixture {
  explicit MusicFixture(desktop::SourceChoice::Kind kind, bool sound = true)
      : MusicBase(sound), ShellFixture(kind, true, &music) {}

  desktop::MusicWindow& pages() { return window.musicWindow(); }
  void show(desktop::MusicPage page) {
    pages().showPage(page);
    settle();
    pages().refresh();
  }
  template <typename Widget>
  Widget* find(const char* name) {
    return pages().findChild<Widget*>(QString::fromLatin1(name));
  }
};

}  // namespace ovka::testing
