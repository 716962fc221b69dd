#pragma once

#include <cstdint>
#include <string>

#include "DocumentIndex.h"
#include "DocumentSwitches.h"
#include "SampleStore.h"
#include "VersionRules.h"

namespace ovka {

/// Moves the samples of a checked document into the buffer. Used once; the main thread, while
/// nothing is acquired.
class SampleLoader {
 public:
  SampleLoader(SampleStore& store, const SwitchSet& open, FileReader& file,
               const DocumentIndex& index, const VersionRules& rules)
      : store_(store), open_(open), file_(file), index_(index), rules_(rules) {}

  std::int64_t recordedSamples = 0;  ///< of the information list
  std::int64_t recordedMaximum = 0;  ///< of the information list; 0: not to be applied
  DocumentProgress progress;

  /// False: problem() says why. Samples before the fault are in the buffer.
  [[nodiscard]] bool load();
  [[nodiscard]] const std::string& problem() const { return problem_; }

 private:
  [[nodiscard]] std::uint64_t sampleCount() const;
  [[nodiscard]] bool prepareRoom(std::int64_t start, std::uint64_t count);
  [[nodiscard]] bool loadBlocks(std::int64_t start, std::uint64_t count);
  [[nodiscard]] bool loadTexts(std::int64_t start, std::uint64_t count);
  [[nodiscard]] bool wanted(std::int32_t channel) const;
  [[nodiscard]] bool transfer(std::int32_t channel, std::int64_t to, std::uint64_t limit,
                              std::int32_t factor, bool swap);

  SampleStore& store_;
  const SwitchSet& open_;
  FileReader& file_;
  const DocumentIndex& index_;
  const VersionRules& rules_;
  std::string problem_;
};

}  // namespace ovka
