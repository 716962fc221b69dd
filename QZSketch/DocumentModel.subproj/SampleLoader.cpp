#include "SampleLoader.h"

#include <algorithm>
#include <vector>

#include "BufferVariables.h"
#include "DocumentVariables.h"
#include "Print.h"
#include "RawBackups.h"

namespace ovka {

/// Of channel 0, else of the information list; never of channel 1, whose block may be twice as
/// long.
std::uint64_t SampleLoader::sampleCount() const {
  const SampleItem& first = index_.samples[0];
  std::uint64_t count = static_cast<std::uint64_t>(std::max<std::int64_t>(recordedSamples, 0));
  if (first.kind == SampleItem::Kind::Block) count = first.length / 4;
  if (first.kind == SampleItem::Kind::Texts) count = first.length;
  return std::min(count, buffer::MAXbuffer);
}

bool SampleLoader::wanted(std::int32_t channel) const {
  const auto kind = rules_.dataBlocks ? SampleItem::Kind::Block : SampleItem::Kind::Texts;
  if (index_.samples[static_cast<std::size_t>(channel)].kind != kind) return false;
  // Kept on purpose: in arrays of texts channel 0 follows the switch of channel 1.
  if (!rules_.dataBlocks && channel == 0) return open_.channel(1);
  return open_.channel(channel);
}

/// The recorded maximum becomes the buffer's when loading begins at its start; room for all samples
/// there must be.
bool SampleLoader::prepareRoom(std::int64_t start, std::uint64_t count) {
  const auto most = static_cast<std::int64_t>(buffer::MAXbuffer);
  bool room = true;
  if (start == 0 && recordedMaximum > 0) {
    const std::int64_t maximum =
        std::clamp(recordedMaximum, static_cast<std::int64_t>(count), most);
    room = store_.initMalloc(static_cast<std::uint64_t>(maximum));
  }
  const bool grows = start == 0 || !rules_.dataBlocks;
  const auto needed = std::min(static_cast<std::uint64_t>(start) + count, buffer::MAXbuffer);
  if (room && grows && buffer::maxploop < needed) room = store_.initMalloc(needed);
  if (!room) {
    problem_ = "there is not enough memory for " + std::to_string(needed) + " points a channel";
  }
  return room;
}

bool SampleLoader::load() {
  const std::int64_t start =
      std::clamp<std::int64_t>(buffer::ploopStart, 0, static_cast<std::int64_t>(buffer::MAXbuffer));
  const std::uint64_t count = sampleCount();
  if (!prepareRoom(start, count)) return false;
  if (count == 0) {
    buffer::ploop = start;
    return true;
  }
  return rules_.dataBlocks ? loadBlocks(start, count) : loadTexts(start, count);
}

bool SampleLoader::transfer(std::int32_t channel, std::int64_t to, std::uint64_t limit,
                            std::int32_t factor, bool swap) {
  std::vector<std::int32_t> swapped;
  const auto take = [&](std::span<const std::int32_t> samples) {
    if (swap) {
      swapped.resize(samples.size());
      std::transform(samples.begin(), samples.end(), swapped.begin(), [](std::int32_t sample) {
        return static_cast<std::int32_t>(__builtin_bswap32(static_cast<std::uint32_t>(sample)));
      });
      samples = swapped;
    }
    store_.storeStored(channel, to, samples);
    to += static_cast<std::int64_t>(samples.size());
  };
  PropertyListError error;
  if (readSamples(file_, index_.samples[static_cast<std::size_t>(channel)], limit, factor, take,
                  &error, progress)) {
    return true;
  }
  problem_ = "channel " + std::to_string(channel) + " cannot be read any more: " + error.text;
  return false;
}

bool SampleLoader::loadBlocks(std::int64_t start, std::uint64_t count) {
  // Kept on purpose: behind a start position nothing is swapped.
  const bool swap = start == 0 && document::setDataSwapX != 0;
  const auto room = static_cast<std::int64_t>(buffer::maxploop.get()) - start;
  const std::uint64_t limit =
      std::min(count, static_cast<std::uint64_t>(std::max<std::int64_t>(room, 0)));
  std::array<bool, buffer::kChannels> loaded{};
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    if (!wanted(channel)) continue;
    Print("process putDataToBuffer ");
    if (!transfer(channel, start, limit, 1, swap)) return false;
    loaded[static_cast<std::size_t>(channel)] = true;
  }
  copyLoadedChannels(store_, start, limit, loaded[1], loaded[2]);
  // The buffer takes the length of the recording, unless its samples had to be swapped.
  if (start == 0 && !swap) buffer::maxploop = count;
  buffer::ploop = start + static_cast<std::int64_t>(limit);
  return true;
}

bool SampleLoader::loadTexts(std::int64_t start, std::uint64_t count) {
  const auto room = static_cast<std::int64_t>(buffer::MAXbuffer) - start;
  const std::uint64_t limit =
      std::min(count, static_cast<std::uint64_t>(std::max<std::int64_t>(room, 0)));
  std::array<bool, buffer::kChannels> loaded{};
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    if (!wanted(channel)) continue;
    const std::int32_t factor = channel == 0 ? 1 : rules_.textFactor;
    if (!transfer(channel, start, limit, factor, false)) return false;
    loaded[static_cast<std::size_t>(channel)] = true;
  }
  copyLoadedChannels(store_, start, limit, loaded[1], loaded[2]);
  buffer::ploop = start + static_cast<std::int64_t>(limit);
  return true;
}

}  // namespace ovka
