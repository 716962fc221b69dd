#include "PropertyList.h"

#include <algorithm>

namespace ovka {

// Here, not in the header: a dictionary's entries hold lists themselves.
PropertyList::PropertyList() = default;
PropertyList::PropertyList(std::string text) : value_(std::move(text)) {}
PropertyList::PropertyList(const char* text) : value_(std::string(text)) {}
PropertyList::PropertyList(Bytes bytes) : value_(std::move(bytes)) {}
PropertyList::PropertyList(Array array) : value_(std::move(array)) {}
PropertyList::PropertyList(Dictionary dictionary) : value_(std::move(dictionary)) {}
PropertyList::PropertyList(const PropertyList& other) = default;
PropertyList::PropertyList(PropertyList&& other) noexcept = default;
PropertyList& PropertyList::operator=(const PropertyList& other) = default;
PropertyList& PropertyList::operator=(PropertyList&& other) noexcept = default;
PropertyList::~PropertyList() = default;

const PropertyList* PropertyList::find(std::string_view key) const {
  const Dictionary* entries = dictionary();
  if (entries == nullptr) return nullptr;
  const auto found = std::find_if(entries->rbegin(), entries->rend(),
                                  [&](const Entry& entry) { return entry.key == key; });
  return found == entries->rend() ? nullptr : &found->value;
}

bool PropertyList::operator==(const PropertyList& other) const {
  return value_ == other.value_;
}

}  // namespace ovka
