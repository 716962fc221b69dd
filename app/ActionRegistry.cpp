#include "ActionRegistry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace ovka {
namespace {

std::int32_t whole(double value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::isnan(value)) return 0;
  return static_cast<std::int32_t>(std::clamp<double>(value, Limits::min(), Limits::max()));
}

}  // namespace

void ActionRegistry::add(std::string_view selector, std::string_view meaning, Perform perform) {
  addValue(selector, meaning,
           [perform = std::move(perform)](double value) { perform(whole(value)); });
}

void ActionRegistry::addValue(std::string_view selector, std::string_view meaning,
                              PerformValue perform) {
  actions_.insert_or_assign(std::string(selector),
                            Action{std::string(meaning), std::move(perform)});
}

bool ActionRegistry::perform(std::string_view selector, double sender) const {
  const auto found = actions_.find(selector);
  if (found == actions_.end()) return false;
  found->second.perform(sender);
  return true;
}

}  // namespace ovka
