#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ovka::desktop {

/// A page of the set-up window.
enum class SetupPage : std::uint8_t {
  Device,
  Sampling,
  Analysis,
  Coherence,
  Display,
  Presets,
  Annotations,
  Backup,
  Recovery,
};
inline constexpr std::size_t kSetupPages = 9;

/// How a control looks and what it sends.
enum class ControlKind : std::uint8_t {
  Choice,  ///< a list; `labels` and `values` separated by '|', without values the index
  Switch,  ///< off 0, on 1
  Number,  ///< typed in, within the range of its variable
  Radio,   ///< one of the buttons of a group; on while `setting` has `value`; performs `name`
  Button,  ///< performs `name`
};

/// One control of the set-up window.
struct ControlRow {
  SetupPage page;
  std::string_view group;  ///< heading on the page
  std::string_view name;   ///< object name: an action's selector, else the variable's name
  ControlKind kind;
  std::string_view setting;  ///< the variable it shows and, where `name` is no action, sets
  std::string_view label;
  std::string_view tip;  ///< the term in one sentence
  std::string_view labels = {};
  std::string_view values = {};
  double value = 0;  ///< of a Radio
  double step = 1;   ///< of a Number
};

/// Every control but the switches of the presets, which have a table of their own (PresetSwitches).
[[nodiscard]] std::span<const ControlRow> controlRows();

struct PageTitle {
  std::string_view title;
  std::string_view subtitle;  ///< what the page is for, one sentence
};
[[nodiscard]] PageTitle pageTitle(SetupPage page);

/// The texts between the bars.
[[nodiscard]] std::vector<std::string> split(std::string_view texts);

}  // namespace ovka::desktop
