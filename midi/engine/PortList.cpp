#include "PortList.h"

#include <algorithm>

namespace ovka {
namespace {

constexpr std::size_t kMaxSlots = midi::kPorts;
constexpr std::string_view kNumberedName = "DLSMusicDevice";

enum class By : std::uint8_t { Id, Name };

/// Marks endpoints that found their slot as placed.
void settle(std::vector<PortList::Slot>& slots, const std::vector<std::uint64_t>& idsBefore,
            std::span<const PortEndpoint> present, std::vector<bool>& placed, By by) {
  for (std::size_t i = 0; i < slots.size(); ++i) {
    PortEndpoint& mine = slots[i].endpoint;
    if (mine.id != 0) continue;
    for (std::size_t k = 0; k < present.size(); ++k) {
      const PortEndpoint& other = present[k];
      if (placed[k] || other.transport != mine.transport || other.name != mine.name) continue;
      if (by == By::Id && other.id != idsBefore[i]) continue;
      mine.id = other.id;
      placed[k] = true;
      break;
    }
  }
}

void number(std::vector<PortList::Slot>& slots) {
  int count = 0;
  for (PortList::Slot& slot : slots) {
    slot.shown = slot.endpoint.name;
    if (slot.shown == kNumberedName) slot.shown += ':' + std::to_string(++count);
  }
}

}  // namespace

std::size_t PortList::rebuild(std::span<const PortEndpoint> present) {
  std::vector<std::uint64_t> idsBefore;
  for (Slot& slot : slots_) {
    idsBefore.push_back(slot.endpoint.id);
    slot.endpoint.id = 0;
  }
  std::vector<bool> placed(present.size());
  settle(slots_, idsBefore, present, placed, By::Id);
  settle(slots_, idsBefore, present, placed, By::Name);
  std::size_t left = 0;
  for (std::size_t k = 0; k < present.size(); ++k) {
    if (placed[k]) continue;
    const auto free =
        std::ranges::find_if(slots_, [](const Slot& s) { return s.endpoint.id == 0; });
    if (slots_.size() < kMaxSlots) {
      slots_.push_back({present[k], {}});
    } else if (free != slots_.end()) {
      free->endpoint = present[k];
    } else {
      if (present[k].transport < 0) slots_.back().endpoint = present[k];
      ++left;
    }
  }
  number(slots_);
  return left;
}

std::array<std::string, midi::kPorts> PortList::names() const {
  std::array<std::string, midi::kPorts> names;
  names.fill("OVKA");
  for (std::size_t i = 0; i < slots_.size(); ++i) names[i] = slots_[i].shown;
  return names;
}

std::int32_t PortList::convertPortNameToInt(std::string_view name) const {
  const auto found = std::ranges::find(slots_, name, &Slot::shown);
  return found == slots_.end() ? -1 : static_cast<std::int32_t>(found - slots_.begin());
}

}  // namespace ovka
