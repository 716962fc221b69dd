#include "EndpointTable.h"

#include <algorithm>
#include <set>
#include <utility>

namespace ovka {

namespace {

std::atomic<std::uint32_t> tables{0};

}  // namespace

EndpointTable::EndpointTable() : firstGeneration_(++tables << 16U) {}

std::uint64_t EndpointTable::idOf(std::size_t place) const {
  return (std::uint64_t{places_[place].generation} << kPlaceBits | place) + 1;
}

std::optional<std::size_t> EndpointTable::placeFor(const std::string& name) {
  const auto known = std::ranges::find(places_, name, &Place::name);
  if (known != places_.end()) return static_cast<std::size_t>(known - places_.begin());
  if (places_.size() < kPlaces) {
    places_.push_back({name, firstGeneration_, 0});
    return places_.size() - 1;
  }
  const auto oldest = std::ranges::min_element(places_, {}, &Place::lastSeen);
  if (oldest->lastSeen + 1 >= round_) return std::nullopt;  // all are there or have just been
  *oldest = {name, oldest->generation + 1, 0};
  return static_cast<std::size_t>(oldest - places_.begin());
}

bool EndpointTable::replace(std::vector<Found> found) {
  const std::scoped_lock guard(lock_);
  ++round_;
  std::set<std::string> taken;
  std::vector<std::size_t> present;
  std::vector<std::uint64_t> addresses(kPlaces, 0);
  for (Found& each : found) {
    std::string name = each.name;
    for (int n = 2; !taken.insert(name).second; ++n) name = each.name + " #" + std::to_string(n);
    const auto place = placeFor(name);
    if (!place) continue;
    places_[*place].lastSeen = round_;
    addresses[*place] = std::uint64_t{places_[*place].generation} << 32U | each.address;
    present.push_back(*place);
  }
  bool changed = present != present_;
  for (std::size_t i = 0; i < places_.size(); ++i) {
    changed |= addresses_[i].exchange(addresses[i], std::memory_order_acq_rel) != addresses[i];
  }
  present_ = std::move(present);
  return changed;
}

std::vector<MidiEndpoint> EndpointTable::endpoints() const {
  const std::scoped_lock guard(lock_);
  std::vector<MidiEndpoint> all;
  for (const std::size_t place : present_) all.push_back({idOf(place), places_[place].name});
  return all;
}

std::optional<std::string> EndpointTable::nameOf(std::uint64_t id) const {
  const std::scoped_lock guard(lock_);
  const auto place = std::ranges::find_if(present_, [&](std::size_t p) { return idOf(p) == id; });
  if (place == present_.end()) return std::nullopt;
  return places_[*place].name;
}

std::uint32_t EndpointTable::address(std::uint64_t id) const noexcept {
  if (id == 0) return 0;
  const std::uint64_t held = addresses_[(id - 1) % kPlaces].load(std::memory_order_acquire);
  return held >> 32U == (id - 1) >> kPlaceBits ? static_cast<std::uint32_t>(held) : 0;
}

}  // namespace ovka
