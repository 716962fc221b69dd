#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "DocumentIndex.h"
#include "DocumentSwitches.h"
#include "SampleStore.h"
#include "VersionRules.h"

namespace ovka {

/// Moves the samples of a checked document into the buffer, on as many threads as there are
/// processors (four at most). Used once; the main thread, while nothing is acquired. Where a
/// channel is shorter than channel 0 the rest of it is 0.
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
  [[nodiscard]] bool loadChannels(std::int64_t start, std::uint64_t limit, bool swap);
  [[nodiscard]] bool wanted(std::int32_t channel) const;
  /// What one thread moves at a time: a channel or half of one.
  struct Work {
    std::int32_t channel = 0;
    SamplePart part;
    std::uint64_t end = 0;    ///< up to here what the document does not hold becomes 0
    std::int32_t factor = 1;  ///< of texts
  };
  [[nodiscard]] std::vector<Work> worksOf(std::int32_t channel, std::uint64_t limit) const;
  /// Empty when done, else why not.
  [[nodiscard]] std::string transfer(const Work& work, std::int64_t start, bool swap,
                                     const DocumentProgress& tell);

  SampleStore& store_;
  const SwitchSet& open_;
  FileReader& file_;
  const DocumentIndex& index_;
  const VersionRules& rules_;
  std::string problem_;
};

}  // namespace ovka
