#include "NotificationCenter.h"

#include <algorithm>
#include <utility>

namespace ovka {

void NotificationCenter::addObserver(const void* observer, std::string_view name, Handler handler) {
  const std::scoped_lock guard(lock_);
  auto next = std::make_shared<Registrations>(*registrations_);
  const auto same = std::find_if(next->begin(), next->end(), [&](const Registration& entry) {
    return entry.observer == observer && entry.name == name;
  });
  if (same != next->end()) {
    same->handler = std::move(handler);
  } else {
    next->push_back({observer, std::string(name), std::move(handler)});
  }
  registrations_ = std::move(next);
}

void NotificationCenter::removeObserver(const void* observer) {
  const std::scoped_lock guard(lock_);
  auto next = std::make_shared<Registrations>(*registrations_);
  std::erase_if(*next, [&](const Registration& entry) { return entry.observer == observer; });
  registrations_ = std::move(next);
}

std::shared_ptr<const NotificationCenter::Registrations> NotificationCenter::current() const {
  const std::scoped_lock guard(lock_);
  return registrations_;
}

void NotificationCenter::post(std::string_view name) const {
  // The list is immutable: handlers run outside the lock on the list as it was when the post began.
  const auto entries = current();
  for (const Registration& entry : *entries) {
    if (entry.name == name) entry.handler();
  }
}

}  // namespace ovka
