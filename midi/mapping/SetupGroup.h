#pragma once

#include <cstddef>
#include <string>

#include "MidiMapping.h"
#include "SettingsGroup.h"

namespace ovka {

/// The set-ups of a mapping as documents and presets hold them: 128 parts of 129 texts. Entry 0 is
/// the count, the others are in the order of the mapping's table (README), "0" where it has none.
/// A number out of range, or none at all, leaves the set-up's value as it is. While a document is
/// put, the mapping is silent. The main thread.
class SetupGroup final : public SettingsGroup {
 public:
  static constexpr std::size_t kEntries = 129;

  /// `mapping` outlives it.
  explicit SetupGroup(MidiMapping& mapping);

  [[nodiscard]] bool available() const override { return mapping_.setupOpened(); }
  [[nodiscard]] std::size_t parts() const override { return midi::kSetups; }
  [[nodiscard]] std::size_t count() const override { return kEntries; }
  [[nodiscard]] std::string get(std::size_t part, std::size_t index) const override;
  void set(std::size_t part, std::size_t index, const std::string& text) override;
  void willPut() override { mapping_.beginPut(); }
  void didPut() override { mapping_.endPut(); }

 private:
  MidiMapping& mapping_;
  std::array<SetupPlace, kEntries> places_{};  // of an entry, without the set-up
};

}  // namespace ovka
