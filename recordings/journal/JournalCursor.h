#pragma once

#include <cstdint>
#include <vector>

namespace ovka {

/// Points first ... end - 1.
struct PointRange {
  std::int64_t first = 0;
  std::int64_t end = 0;
};

/// What the journal sees of the sample buffer at one moment.
struct JournalPositions {
  std::int64_t ploop = 0;
  std::int64_t ploopStart = 0;
  std::int64_t capacity = 0;  ///< `maxploop`
  bool looping = false;
  std::uint64_t generation = 0;  ///< of the store, read after `ploop`
};

/// Finds, look by look, which points of the buffer are new. Nobody tells it of wraps, pauses and
/// jumps: it concludes them from the current point and from how many writes the store counted, and
/// names too many points rather than too few. That does no harm: a journal repeats what the buffer
/// holds, wherever.
class JournalCursor {
 public:
  struct Found {
    /// Points written before a jump; the current point is elsewhere.
    std::vector<PointRange> apart;
    /// New points in the order of their writing; the last one ends at the current point.
    std::vector<PointRange> ranges;
    bool wrapped = false;
  };

  /// Nothing before this moment counts as new.
  void reset(const JournalPositions& now);
  [[nodiscard]] Found look(const JournalPositions& now);

 private:
  std::int64_t next_ = 0;
  std::uint64_t generation_ = 0;
};

}  // namespace ovka
