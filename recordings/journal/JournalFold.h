#pragma once

#include <cstdint>

#include "JournalCatalogue.h"
#include "JournalFormat.h"
#include "JournalReader.h"

namespace ovka {

/// Puts the chunks of a session together, part after part.
class JournalFold {
 public:
  /// `store`: nullptr, or takes the samples (its arrays are open far enough).
  JournalFold(JournalSession& session, journalformat::Session& writer, SampleStore* store)
      : to_(session), writer_(writer), store_(store) {}
  /// A chunk whose payload makes no sense counts as damaged.
  void take(const JournalChunk& chunk);

 private:
  [[nodiscard]] bool takeSession(journalformat::View payload);
  [[nodiscard]] bool takeState(journalformat::View payload);
  [[nodiscard]] bool takeFrames(journalformat::View payload, bool moves);
  [[nodiscard]] bool takeMark(journalformat::View payload);
  [[nodiscard]] bool takeAnnotation(journalformat::View payload);
  [[nodiscard]] bool takeEnd(journalformat::View payload);
  [[nodiscard]] bool takeDropped(journalformat::View payload);

  JournalSession& to_;
  journalformat::Session& writer_;
  SampleStore* store_;
  journalformat::Frames frames_;
  std::uint64_t journaled_ = 0;  ///< points that the writer had journaled up to here
  bool begun_ = false;           ///< a chunk with points was taken
  std::uint64_t before_ = 0;     ///< points that are missing before the first of them
};

}  // namespace ovka
