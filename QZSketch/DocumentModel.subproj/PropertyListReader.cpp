#include "PropertyListReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace ovka {

int MemoryFile::readAt(std::uint64_t offset, std::span<std::byte> out, std::size_t* got) {
  const std::size_t from = static_cast<std::size_t>(std::min<std::uint64_t>(offset, bytes_.size()));
  *got = std::min(out.size(), bytes_.size() - from);
  if (*got > 0) std::memcpy(out.data(), bytes_.data() + from, *got);
  return 0;
}

bool PropertyListBuilder::charge(std::size_t bytes) {
  if (bytes > left_) {
    left_ = 0;
    return false;
  }
  left_ -= bytes;
  return true;
}

std::string PropertyListBuilder::refusal() const {
  return "the list holds more values than fit in memory";
}

bool PropertyListBuilder::open(PropertyList container) {
  if (!charge(sizeof(Level))) return false;
  levels_.push_back({std::move(container), {}});
  return true;
}

bool PropertyListBuilder::close() {
  PropertyList done = std::move(levels_.back().container);
  levels_.pop_back();
  return add(std::move(done));
}

bool PropertyListBuilder::add(PropertyList value) {
  // A growing vector holds up to three times its elements for a moment.
  if (!charge(3 * sizeof(PropertyList::Entry))) return false;
  if (levels_.empty()) {
    root_ = std::move(value);
    return true;
  }
  Level& top = levels_.back();
  if (PropertyList::Array* array = top.container.array()) {
    array->push_back(std::move(value));
  } else {
    top.container.dictionary()->push_back({std::move(top.key), std::move(value)});
  }
  return true;
}

PropertyList PropertyListBuilder::takeUnfinished() {
  while (!levels_.empty() && close()) {
  }
  return take();
}

bool PropertyListBuilder::key(std::string_view text) {
  if (!charge(text.size())) return false;
  levels_.back().key = std::string(text);
  return true;
}

bool PropertyListBuilder::string(std::string_view text) {
  return charge(text.size()) && add(std::string(text));
}

bool PropertyListBuilder::beginData(bool* /*wanted*/) {
  bytes_.clear();
  return true;
}

bool PropertyListBuilder::data(std::span<const std::uint8_t> bytes) {
  if (!charge(2 * bytes.size())) return false;
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return true;
}

bool PropertyListBuilder::endData(std::uint64_t /*length*/) {
  return add(std::exchange(bytes_, {}));
}

bool readPropertyList(FileReader& source, PropertyList* result, PropertyListError* error,
                      const PropertyListLimits& limits) {
  PropertyListBuilder builder;
  PropertyListParser parser(source, builder, limits);
  if (!parser.parse()) {
    *error = parser.error();
    return false;
  }
  *result = builder.take();
  return true;
}

bool readPropertyList(std::string_view text, PropertyList* result, PropertyListError* error,
                      const PropertyListLimits& limits) {
  MemoryFile file(text);
  return readPropertyList(file, result, error, limits);
}

}  // namespace ovka
