#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <utility>

namespace ovka::testing {

/// Channel and note of what sounds at a receiver: Note Offs, Note Ons of velocity 0, and
/// controllers 120 and 123 end notes.
struct HeardNotes : std::set<std::pair<int, int>> {
  void hear(std::span<const std::uint8_t> bytes) {
    if (bytes.size() != 3) return;
    const int kind = bytes[0] & 0xF0;
    const std::pair<int, int> note{bytes[0] & 0x0F, bytes[1]};
    if (kind == 0x90 && bytes[2] > 0) insert(note);
    if (kind == 0x80 || (kind == 0x90 && bytes[2] == 0)) erase(note);
    if (kind == 0xB0 && (bytes[1] == 120 || bytes[1] == 123))
      std::erase_if(*this, [&](const auto& n) { return n.first == note.first; });
  }
};

}  // namespace ovka::testing
