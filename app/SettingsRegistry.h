#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Shared.h"

namespace ovka {

/// One process-wide variable as a user may read and set it by the system's own name.
struct Setting {
  enum class Kind : std::uint8_t { Integer, Real, Character };

  std::string name;
  Kind kind = Kind::Integer;
  /// A real kept in single precision: its text is the shortest that gives the same single.
  bool single = false;
  double minimum = 0;
  double maximum = 0;
  double defaultValue = 0;
  /// The values allowed when a range does not say it all ("rtmnb"; "128 256 512"); empty: the
  /// range.
  std::string choices;
  std::string meaning;
  /// False for what the system itself keeps (positions, descriptors, monitors): shown, never set.
  bool writable = true;
  std::function<double()> get;
  std::function<void(double)> set;
  /// A table of values, read and set as "NAME[0]" to "NAME[count - 1]"; 0: a single value. `get`
  /// and `set` are empty then, `defaultValue` is that of entry 0.
  std::size_t count = 0;
  std::function<double(std::size_t)> getAt;
  std::function<void(std::size_t, double)> setAt;
};

/// Every process-wide variable by name, with default, range and meaning. Filled once by the engine,
/// then only read; the variables themselves may change on any thread.
class SettingsRegistry {
 public:
  /// A row for a shared variable; its present value is taken as the default.
  template <typename T>
  Setting& add(std::string_view name, Shared<T>& variable, double minimum, double maximum,
               std::string_view meaning);

  /// A row that the system itself keeps.
  template <typename T>
  Setting& addStatus(std::string_view name, Shared<T>& variable, std::string_view meaning);

  /// A row for a table of `count` values; `set` does what depends on them as well.
  Setting& addTable(std::string_view name, Setting::Kind kind, std::size_t count, double minimum,
                    double maximum, std::string_view meaning,
                    std::function<double(std::size_t)> get,
                    std::function<void(std::size_t, double)> set);

  /// Replaces how a row's value is stored, where more than the variable changes with it.
  void onSet(std::string_view name, std::function<void(double)> set);

  /// The row of a name; nullptr when there is none.
  [[nodiscard]] const Setting* find(std::string_view name) const;
  /// The single value of a name, or one of a table ("LowF1X[3]"); none when there is no such.
  [[nodiscard]] std::optional<Setting> value(std::string_view name) const;

  /// Sets `text` ("NAME=VALUE"). Empty when done, else one line that says what is wrong and what
  /// would be right; nothing is changed then.
  [[nodiscard]] std::string assign(std::string_view text) const;

  /// A value as text, as `assign` would take it.
  [[nodiscard]] static std::string format(const Setting& setting, double value);
  /// The allowed values as text ("0 ... 9").
  [[nodiscard]] static std::string range(const Setting& setting);

  /// In the order in which they were added.
  [[nodiscard]] const std::vector<Setting>& entries() const { return settings_; }

 private:
  Setting& row(std::string_view name, Setting::Kind kind, double minimum, double maximum,
               std::string_view meaning);
  [[nodiscard]] std::string nearest(std::string_view name) const;

  std::vector<Setting> settings_;
};

template <typename T>
Setting& SettingsRegistry::add(std::string_view name, Shared<T>& variable, double minimum,
                               double maximum, std::string_view meaning) {
  using Kind = Setting::Kind;
  constexpr Kind kind = std::is_same_v<T, char>       ? Kind::Character
                        : std::is_floating_point_v<T> ? Kind::Real
                                                      : Kind::Integer;
  Setting& setting = row(name, kind, minimum, maximum, meaning);
  setting.single = std::is_same_v<T, float>;
  setting.get = [&variable] { return static_cast<double>(variable.get()); };
  setting.set = [&variable](double value) { variable = static_cast<T>(value); };
  setting.defaultValue = setting.get();
  return setting;
}

template <typename T>
Setting& SettingsRegistry::addStatus(std::string_view name, Shared<T>& variable,
                                     std::string_view meaning) {
  Setting& setting = add(name, variable, 0, 0, meaning);
  setting.writable = false;
  return setting;
}

}  // namespace ovka
