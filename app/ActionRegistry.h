#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace ovka {

/// The window actions of the system, keyed by their exact selectors ("setMaxTime1hAction:"):
/// controls carry the selector as their name, tests and the command line perform it by name. Filled
/// once by the engine, then only read; actions run on the caller's thread.
class ActionRegistry {
 public:
  /// An action; the argument is the control's value (a menu index, a switch), 0 for a plain button.
  using Perform = std::function<void(std::int32_t sender)>;
  /// An action of a slider or a text field: the value itself.
  using PerformValue = std::function<void(double value)>;

  struct Action {
    std::string meaning;
    PerformValue perform;
  };

  void add(std::string_view selector, std::string_view meaning, Perform perform);
  void addValue(std::string_view selector, std::string_view meaning, PerformValue perform);

  /// False when there is no such action. Whole numbers are truncated and held at the limits of 32
  /// bits; what is no number counts as 0.
  [[nodiscard]] bool perform(std::string_view selector, double sender = 0) const;

  /// Every action in the order of their selectors.
  [[nodiscard]] const std::map<std::string, Action, std::less<>>& entries() const {
    return actions_;
  }

 private:
  std::map<std::string, Action, std::less<>> actions_;
};

}  // namespace ovka
