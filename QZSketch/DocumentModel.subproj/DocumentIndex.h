#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>

#include "BufferVariables.h"
#include "Files.h"
#include "PropertyList.h"
#include "PropertyListParser.h"

namespace ovka {

/// Keys of the sample blocks, by channel.
inline constexpr std::array<std::string_view, buffer::kChannels> kSampleKeys{
    "OVKA4dataCH0", "OVKA4dataCH1", "OVKA4dataCH2", "OVKA4dataCH3", "OVKA4dataCH4"};

/// Where a document's file holds the samples of a channel.
struct SampleItem {
  enum class Kind : std::uint8_t { None, Block, Texts };
  Kind kind = Kind::None;
  std::uint64_t offset = 0;  ///< byte offset of the value in the file
  std::uint64_t length = 0;  ///< bytes of a block, number of texts
  /// A place inside a block from which on it can be read as well, and the bytes before it; 0: none.
  std::uint64_t middle = 0;
  std::uint64_t middleBytes = 0;
};

/// A document read once and checked through and through: the tree of everything but the samples,
/// and where those lie, so that a broken file is known as such before anything is changed and no
/// sample is held twice.
struct DocumentIndex {
  PropertyList list;  ///< a dictionary without the sample keys
  std::array<SampleItem, buffer::kChannels> samples;
};

/// Byte offset in the file, for a progress display.
using DocumentProgress = std::function<void(std::uint64_t done, std::uint64_t total)>;

/// False: `*error` says what and where.
[[nodiscard]] bool readDocumentIndex(FileReader& file, DocumentIndex* index,
                                     PropertyListError* error,
                                     const DocumentProgress& progress = {});

/// Of a broken document: what stands before the fault, a channel that it lies in up to there. False
/// when that is no list of information or no sample of channel 0.
[[nodiscard]] bool salvageDocumentIndex(FileReader& file, DocumentIndex* index);

/// Receives the samples of a channel in order, as the file's 32-bit values.
using TakeSamples = std::function<void(std::span<const std::int32_t>)>;

/// Samples of an item: `count` of them from the `first` on.
struct SamplePart {
  std::uint64_t first = 0;  ///< 0, or firstBehindMiddle()
  std::uint64_t count = 0;
};
/// The first whole sample behind a block's middle; 0 when it has none.
[[nodiscard]] constexpr std::uint64_t firstBehindMiddle(const SampleItem& item) {
  return (item.middleBytes + 3) / 4;
}

/// Reads samples of a channel again; fewer when the item ends before. Texts go through the digit
/// rule and are multiplied by `textFactor`. False when the file cannot be read any more. Several
/// threads may read one file.
[[nodiscard]] bool readSamples(FileReader& file, const SampleItem& item, const SamplePart& part,
                               std::int32_t textFactor, const TakeSamples& take,
                               PropertyListError* error, const DocumentProgress& progress = {});

}  // namespace ovka
