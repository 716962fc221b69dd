#include "SampleLoader.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

#include "BufferVariables.h"
#include "DocumentVariables.h"
#include "Print.h"
#include "RawBackups.h"

namespace ovka {
namespace {

constexpr std::size_t kZeros = 64U << 10U;
constexpr unsigned kMostThreads = 4;

/// Calls `work(i, on the calling thread)` for i = 0 ... count - 1, on several threads where there
/// are any to be had.
template <typename Function>
void together(std::size_t count, const Function& work) {
  std::atomic<std::size_t> next{0};
  const auto run = [&](bool caller) {
    for (std::size_t i = next++; i < count; i = next++) work(i, caller);
  };
  std::vector<std::thread> others;
  try {
    const unsigned threads = std::min(std::thread::hardware_concurrency(), kMostThreads);
    for (unsigned i = 1; i < std::min<std::size_t>(threads, count); ++i)
      others.emplace_back(run, false);
  } catch (const std::system_error&) {
    // Those that came to be share the work with this one.
  }
  run(true);
  for (std::thread& other : others) other.join();
}

}  // namespace

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
  // Kept on purpose: behind a start position nothing is swapped, nor are texts.
  const bool swap = rules_.dataBlocks && start == 0 && document::setDataSwapX != 0;
  const std::uint64_t end = rules_.dataBlocks ? buffer::maxploop.get() : buffer::MAXbuffer;
  const auto first = static_cast<std::uint64_t>(start);
  const std::uint64_t limit = std::min(count, end > first ? end - first : 0);
  if (!loadChannels(start, limit, swap)) return false;
  // The buffer takes the length of the recording, unless its samples had to be swapped.
  if (rules_.dataBlocks && start == 0 && !swap) buffer::maxploop = count;
  buffer::ploop = start + static_cast<std::int64_t>(limit);
  return true;
}

bool SampleLoader::loadChannels(std::int64_t start, std::uint64_t limit, bool swap) {
  std::array<bool, buffer::kChannels> loaded{};
  std::vector<Work> works;
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    if (!wanted(channel)) continue;
    if (rules_.dataBlocks) Print("process putDataToBuffer ");
    const std::vector<Work> more = worksOf(channel, limit);
    works.insert(works.end(), more.begin(), more.end());
    loaded[static_cast<std::size_t>(channel)] = true;
  }
  std::vector<std::string> problems(works.size());
  together(works.size(), [&](std::size_t i, bool mainThread) {
    problems[i] = transfer(works[i], start, swap, mainThread ? progress : DocumentProgress{});
  });
  for (const std::string& problem : problems) {
    if (problem_.empty()) problem_ = problem;
  }
  if (!problem_.empty()) return false;
  copyLoadedChannels(store_, start, limit, loaded[1], loaded[2]);
  return true;
}

std::vector<SampleLoader::Work> SampleLoader::worksOf(std::int32_t channel,
                                                      std::uint64_t limit) const {
  const SampleItem& item = index_.samples[static_cast<std::size_t>(channel)];
  const std::int32_t factor = channel == 0 ? 1 : rules_.textFactor;
  const std::uint64_t held = rules_.dataBlocks ? item.length / 4 : item.length;
  const std::uint64_t count = std::min(limit, held);
  const std::uint64_t middle = firstBehindMiddle(item);
  if (middle == 0 || middle >= count) return {{channel, {0, count}, limit, factor}};
  return {{channel, {0, middle}, middle, factor},
          {channel, {middle, count - middle}, limit, factor}};
}

std::string SampleLoader::transfer(const Work& work, std::int64_t start, bool swap,
                                   const DocumentProgress& tell) {
  std::int64_t to = start + static_cast<std::int64_t>(work.part.first);
  const std::int64_t end = start + static_cast<std::int64_t>(work.end);
  std::vector<std::int32_t> swapped;
  const auto take = [&](std::span<const std::int32_t> samples) {
    if (swap) {
      swapped.resize(samples.size());
      std::transform(samples.begin(), samples.end(), swapped.begin(), [](std::int32_t sample) {
        return static_cast<std::int32_t>(__builtin_bswap32(static_cast<std::uint32_t>(sample)));
      });
      samples = swapped;
    }
    store_.storeStored(work.channel, to, samples);
    to += static_cast<std::int64_t>(samples.size());
  };
  PropertyListError error;
  if (!readSamples(file_, index_.samples[static_cast<std::size_t>(work.channel)], work.part,
                   work.factor, take, &error, tell)) {
    return "channel " + std::to_string(work.channel) + " cannot be read any more: " + error.text;
  }
  // What an earlier recording left there is none of this one.
  const std::vector<std::int32_t> zeros(
      to < end ? std::min<std::size_t>(kZeros, static_cast<std::size_t>(end - to)) : 0);
  for (; to < end; to += static_cast<std::int64_t>(zeros.size())) {
    store_.storeStored(
        work.channel, to,
        std::span(zeros).first(std::min(zeros.size(), static_cast<std::size_t>(end - to))));
  }
  return {};
}

}  // namespace ovka
