#include "SettingsGroup.h"

namespace ovka {

std::vector<std::string> SettingsGroup::texts() const {
  std::vector<std::string> all;
  const std::size_t entries = count();
  all.reserve(parts() * entries);
  for (std::size_t part = 0; part < parts(); ++part) {
    for (std::size_t i = 0; i < entries; ++i) all.push_back(get(part, i));
  }
  return all;
}

void SettingsGroup::put(const std::vector<std::string>& texts) {
  if (texts.empty()) return;
  willPut();
  const auto divides = [&](std::int64_t length) {
    return length > 1 && texts.size() % static_cast<std::size_t>(length) == 0;
  };
  std::size_t length = texts.size();
  if (const std::int64_t stated = srtToLong(texts.front()); divides(stated)) {
    length = static_cast<std::size_t>(stated);
  } else if (divides(static_cast<std::int64_t>(count()))) {
    length = count();
  }
  for (std::size_t i = 0; i < texts.size(); ++i) set(i / length, i % length, texts[i]);
  didPut();
}

KeptGroup::KeptGroup(bool initially) : available_(initially) {}

std::string KeptGroup::get(std::size_t /*part*/, std::size_t index) const {
  return index < texts_.size() ? texts_[index] : std::string();
}

void KeptGroup::set(std::size_t /*part*/, std::size_t index, const std::string& text) {
  if (index < texts_.size()) texts_[index] = text;
}

void KeptGroup::put(const std::vector<std::string>& texts) {
  if (texts.empty()) return;
  available_ = true;
  texts_ = texts;
}

std::string SettingsRows::get(std::size_t /*part*/, std::size_t index) const {
  if (index == 0) return integerText(static_cast<std::int64_t>(count()));
  return index <= rows_.size() ? rows_[index - 1].get() : std::string();
}

void SettingsRows::set(std::size_t part, std::size_t index, const std::string& text) {
  if (part == 0 && index >= 1 && index <= rows_.size()) rows_[index - 1].set(text);
}

void SettingsRows::didPut() {
  if (done_) done_();
}

}  // namespace ovka
