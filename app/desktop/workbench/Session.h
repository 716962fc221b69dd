#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "DocumentDesk.h"
#include "Engine.h"
#include "LiveSession.h"

namespace ovka::desktop {

/// What a session gets its samples from.
struct SourceChoice {
  enum class Kind : std::uint8_t {
    None,     ///< documents can be opened and played, nothing is acquired
    Demo,     ///< the virtual amplifier
    Serial,   ///< lines of ports 1 to 4
    Capture,  ///< a capture file at the speed at which it was recorded
  };
  Kind kind = Kind::None;
  std::vector<std::string> paths;     ///< the lines, or the capture file
  std::int32_t model = -1;            ///< amplifier model of the lines; -1: the present setting
  std::vector<std::string> settings;  ///< "NAME=VALUE", each, in their order
  bool defaultPreset = false;         ///< the default preset goes before the settings
  std::function<void()> onEngine;     ///< run once there is an engine, before the default preset

  [[nodiscard]] bool acquires() const { return kind != Kind::None; }
};

/// An engine and what feeds it. Made, opened and closed by one thread (the desk thread),
/// which is the main thread of everything that is documents and presets.
class Session {
 public:
  /// Both outlive it; `midi`: nullptr: nothing is played.
  Session(SourceChoice choice, const DocumentMachine& documents, const MidiMachine* midi);
  /// Closes, if that was not done.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Empty when open, else one line for a person.
  [[nodiscard]] std::string open();
  /// Ends the engine's threads; with `keepJournal` false the journal of what was acquired goes.
  void close(bool keepJournal);

  [[nodiscard]] Engine& engine() { return live_.engine(); }
  [[nodiscard]] const SourceChoice& choice() const { return choice_; }
  /// For a person: a path, "virtual amplifier".
  [[nodiscard]] std::string source() const;
  /// The end of a capture was reached; `damage` is one line when that was before its end. Any
  /// thread.
  [[nodiscard]] bool ended() const { return live_.replayEnded(); }
  [[nodiscard]] std::string damage() const { return live_.replayDamage(); }

 private:
  [[nodiscard]] std::string openLive();
  void applyDefaults();

  SourceChoice choice_;
  const DocumentMachine& documents_;
  const MidiMachine* midi_;
  LiveSession live_;
  bool open_ = false;
};

/// What comes in from now on is looked at, not recorded: it goes round in the buffer.
void beLive(Engine& engine);

/// Settings of an engine that a session of another source is to go on with.
[[nodiscard]] std::vector<std::string> carriedSettings(Engine& engine, SourceChoice::Kind from);

}  // namespace ovka::desktop
