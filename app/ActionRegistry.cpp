#include "ActionRegistry.h"

#include <utility>

namespace ovka {

void ActionRegistry::add(std::string_view selector, std::string_view meaning, Perform perform) {
  actions_.insert_or_assign(std::string(selector),
                            Action{std::string(meaning), std::move(perform)});
}

bool ActionRegistry::perform(std::string_view selector, std::int32_t sender) const {
  const auto found = actions_.find(selector);
  if (found == actions_.end()) return false;
  found->second.perform(sender);
  return true;
}

}  // namespace ovka
