#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "JournalCursor.h"

namespace ovka {

/// What each part of a looping session still holds that no later part does: a part that holds
/// nothing of its own any more may go, so that going round takes a bounded room on the disk. Parts
/// are numbered from 0 in the order of their beginning. One thread at a time.
class JournalRing {
 public:
  void clear() { *this = {}; }
  /// Another part begins; `framesBefore`: points in the chunks of the session before it.
  void begin(std::uint64_t framesBefore) { parts_.push_back({framesBefore, {}}); }
  /// The session's counts begin again, in the next part.
  void countAnew();

  /// The newest part holds these points; older ones do as long as they are not on the disk.
  void wrote(const PointRange& range);
  /// What `part` wrote of these points is on the disk: no older one is needed for them.
  void synced(const PointRange& range, std::size_t part);

  /// Number of the newest part; there is one.
  [[nodiscard]] std::size_t newest() const { return dropped_ + parts_.size() - 1; }
  [[nodiscard]] std::size_t count() const { return parts_.size(); }
  /// How many of the oldest parts hold nothing of their own; the newest is never among them.
  [[nodiscard]] std::size_t spare() const;
  /// Points that the oldest part alone holds.
  [[nodiscard]] const std::vector<PointRange>& left() const { return parts_.front().ranges; }
  [[nodiscard]] std::size_t oldest() const { return dropped_; }
  /// Points of the session before the `count` + 1st of the parts that are left.
  [[nodiscard]] std::uint64_t framesBefore(std::size_t count) const {
    return parts_[count].framesBefore;
  }
  /// The `count` oldest parts went.
  void drop(std::size_t count);

 private:
  struct Part {
    std::uint64_t framesBefore = 0;
    std::vector<PointRange> ranges;  ///< apart from each other, in order
  };
  std::deque<Part> parts_;
  std::size_t dropped_ = 0;
};

}  // namespace ovka
