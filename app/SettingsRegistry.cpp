#include "SettingsRegistry.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <sstream>
#include <utility>

#include "EditDistance.h"

namespace ovka {
namespace {

std::optional<double> parse(const Setting& setting, std::string_view text) {
  if (setting.kind == Setting::Kind::Character) {
    if (text.size() != 1) return std::nullopt;
    return static_cast<double>(text.front());
  }
  double value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc{} || stop != end || !std::isfinite(value)) return std::nullopt;
  if (setting.kind == Setting::Kind::Integer && value != std::trunc(value)) return std::nullopt;
  return value;
}

bool allowed(const Setting& setting, double value, std::string_view text) {
  if (setting.kind == Setting::Kind::Character)
    return setting.choices.find(text) != std::string::npos;
  if (!setting.choices.empty()) {
    std::istringstream words(setting.choices);
    double choice = 0;
    while (words >> choice) {
      if (choice == value) return true;
    }
    return false;
  }
  return value >= setting.minimum && value <= setting.maximum;
}

}  // namespace

Setting& SettingsRegistry::row(std::string_view name, Setting::Kind kind, double minimum,
                               double maximum, std::string_view meaning) {
  Setting& setting = settings_.emplace_back();
  setting.name = name;
  setting.kind = kind;
  setting.minimum = minimum;
  setting.maximum = maximum;
  setting.meaning = meaning;
  return setting;
}

const Setting* SettingsRegistry::find(std::string_view name) const {
  const auto found = std::find_if(settings_.begin(), settings_.end(),
                                  [&](const Setting& setting) { return setting.name == name; });
  return found == settings_.end() ? nullptr : &*found;
}

Setting& SettingsRegistry::addTable(std::string_view name, Setting::Kind kind, std::size_t count,
                                    double minimum, double maximum, std::string_view meaning,
                                    std::function<double(std::size_t)> get,
                                    std::function<void(std::size_t, double)> set) {
  Setting& setting = row(name, kind, minimum, maximum, meaning);
  setting.count = count;
  setting.getAt = std::move(get);
  setting.setAt = std::move(set);
  setting.defaultValue = setting.getAt(0);
  return setting;
}

std::optional<Setting> SettingsRegistry::value(std::string_view name) const {
  const std::size_t bracket = name.find('[');
  const Setting* row = find(name.substr(0, bracket));
  if (row == nullptr || (row->count > 0) != (bracket != std::string_view::npos)) {
    return std::nullopt;
  }
  if (row->count == 0) return *row;
  std::size_t index = 0;
  const char* const end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data() + bracket + 1, end, index);
  if (error != std::errc{} || index >= row->count || std::string_view(stop, end) != "]") {
    return std::nullopt;
  }
  Setting one = *row;
  one.name = name;
  one.count = 0;
  one.get = [get = row->getAt, index] { return get(index); };
  one.set = [set = row->setAt, index](double value) { set(index, value); };
  return one;
}

void SettingsRegistry::onSet(std::string_view name, std::function<void(double)> set) {
  const auto found = std::find_if(settings_.begin(), settings_.end(),
                                  [&](const Setting& setting) { return setting.name == name; });
  if (found != settings_.end()) found->set = std::move(set);
}

std::string SettingsRegistry::nearest(std::string_view name) const {
  const auto closest =
      std::min_element(settings_.begin(), settings_.end(), [&](const Setting& a, const Setting& b) {
        return editDistance(name, a.name) < editDistance(name, b.name);
      });
  return closest == settings_.end() ? std::string() : closest->name;
}

std::string SettingsRegistry::assign(std::string_view text) const {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos) {
    return "'" + std::string(text) + "' is no setting: write NAME=VALUE, for example fftp=2048";
  }
  const std::string name(text.substr(0, equals));
  const std::string_view value = text.substr(equals + 1);
  const std::optional<Setting> setting = this->value(name);
  if (!setting) {
    if (const Setting* row = find(name.substr(0, name.find('['))); row != nullptr) {
      if (row->count == 0) return "'" + row->name + "' is a single value: write it without [...]";
      return "'" + row->name + "' is a table: write " + row->name + "[0] to " + row->name + "[" +
             std::to_string(row->count - 1) + "]";
    }
    return "there is no setting '" + name + "'; did you mean '" + nearest(name) +
           "'? 'ovka settings' lists them all";
  }
  if (!setting->writable) return "'" + name + "' is kept by the system itself and cannot be set";
  const std::optional<double> number = parse(*setting, value);
  if (!number || !allowed(*setting, *number, value)) {
    return "'" + std::string(value) + "' is no value for " + name + ": it takes " + range(*setting);
  }
  setting->set(*number);
  return {};
}

std::string SettingsRegistry::format(const Setting& setting, double value) {
  if (setting.kind == Setting::Kind::Character) return {static_cast<char>(value)};
  std::array<char, 64> text{};
  char* const end = text.data() + text.size();
  if (setting.kind == Setting::Kind::Integer) {
    return {text.data(), std::to_chars(text.data(), end, static_cast<std::int64_t>(value)).ptr};
  }
  if (setting.single)
    return {text.data(), std::to_chars(text.data(), end, static_cast<float>(value)).ptr};
  return {text.data(), std::to_chars(text.data(), end, value).ptr};
}

std::string SettingsRegistry::range(const Setting& setting) {
  if (!setting.writable) return "set by the system";
  if (setting.kind == Setting::Kind::Character) {
    std::string letters;
    for (const char letter : setting.choices) {
      letters += letters.empty() ? "" : ", ";
      letters += letter;
    }
    return "one of " + letters;
  }
  if (!setting.choices.empty()) return "one of " + setting.choices;
  return format(setting, setting.minimum) + " ... " + format(setting, setting.maximum);
}

}  // namespace ovka
