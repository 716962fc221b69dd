#include "BandQuery.h"

#include <bit>

#include "BufferVariables.h"
#include "SpectrumTransform.h"

namespace ovka {

namespace {

constexpr std::size_t kFirstExtra = fft::kEegChannels;

// Words of a key that the evaluation reads back.
constexpr std::size_t kPointWord = 0;
constexpr std::size_t kLengthWord = 1;  // length in the low half, sample speed in the high
constexpr std::size_t kScaleYWord = 2;
constexpr std::size_t kScaleXWord = 3;

std::uint64_t bitsOf(double value) {
  return std::bit_cast<std::uint64_t>(value);
}

std::uint64_t lengthAndSpeed() {
  return std::uint64_t{buffer::SampleSpeed} << 32U | static_cast<std::uint32_t>(fft::fftp.get());
}

template <typename Values>
struct KeyView {
  const Values& key;
  [[nodiscard]] std::int32_t points() const {
    return static_cast<std::int32_t>(key[kLengthWord] & 0xFFFFFFFFU);
  }
  [[nodiscard]] std::uint32_t speed() const {
    return static_cast<std::uint32_t>(key[kLengthWord] >> 32U);
  }
  [[nodiscard]] BlockSettings settings() const {
    return {std::bit_cast<double>(key[kScaleYWord]), std::bit_cast<double>(key[kScaleXWord]),
            BinMap::of(points(), speed())};
  }
};

}  // namespace

BandQuery::BandQuery(const SampleStore& store, const SampleFetch& fetch, SpectrumArrays& arrays)
    : store_(store),
      fetch_(fetch),
      arrays_(arrays),
      channels_(std::make_unique<std::array<Channel, fft::kEegChannels>>()),
      extras_(std::make_unique<std::array<Extra, SpectrumArrays::kExtras>>()) {}

float BandQuery::peakFFTband(std::int32_t source, float lowF, float highF, std::int32_t mode) {
  if (source < 0 || source > 9 || (mode != 0 && mode != 1)) return 0.0F;
  const BandAnswer answer = query(source, {lowF, highF, mode});
  fft::peakFrequencyX = answer.frequency;
  return answer.value;
}

float BandQuery::peakFFTbandF(std::int32_t source, float lowF, float highF, std::int32_t mode) {
  if (source < 0 || source > 9 || (mode != 0 && mode != 1)) return 0.0F;
  const BandAnswer answer = query(source, {lowF, highF, mode});
  fft::peakFrequencyX = answer.frequency;
  return answer.frequency;
}

BandAnswer BandQuery::query(std::int32_t source, const BandAsk& ask) {
  const auto number = static_cast<std::size_t>(source);
  const bool extra = number >= kFirstExtra;
  const Source& kept = extra ? static_cast<const Source&>((*extras_)[number - kFirstExtra])
                             : static_cast<const Source&>((*channels_)[number]);
  const Key::Values now =
      extra ? keyOfExtra(number - kFirstExtra) : keyOfChannel(fetch_.settingsOf(source));
  BandAnswer answer;
  const std::uint64_t version = kept.key.versionOf(now);
  if (version != 0 && kept.answers.find(ask, version, answer)) return answer;
  return extra ? answerOfExtra(number - kFirstExtra, ask) : answerOfChannel(number, ask, version);
}

BandQuery::Key::Values BandQuery::keyOfChannel(const FetchSettings& settings) const {
  const auto pair = [](std::uint32_t high, std::uint32_t low) {
    return std::uint64_t{high} << 32U | low;
  };
  const auto word = [](std::int32_t value) { return static_cast<std::uint32_t>(value); };
  // The generation comes before the current point and the modes: a block fetched after it holds at
  // least what the store held then.
  const std::uint64_t generation = store_.writeGeneration();
  return {static_cast<std::uint64_t>(buffer::ploop.get()),
          lengthAndSpeed(),
          bitsOf(fft::scalerY),
          bitsOf(fft::scalerX),
          generation,
          buffer::maxploop,
          reinterpret_cast<std::uintptr_t>(settings.tables),
          bitsOf(settings.gain),
          pair(buffer::SelectDevice, settings.stop ? 1U : 0U),
          pair(word(buffer::ReversPolarityX), word(buffer::LeftRightReverse)),
          word(buffer::ShowReverseWaveX)};
}

BandQuery::Key::Values BandQuery::keyOfExtra(std::size_t number) const {
  return {0, lengthAndSpeed(), bitsOf(fft::scalerY), bitsOf(fft::scalerX),
          arrays_.extra(number).generation.load()};
}

// Fetches the newest block; true when it may be kept. The lock is held.
bool BandQuery::refill(std::size_t number) {
  Channel& channel = (*channels_)[number];
  const auto index = static_cast<std::int32_t>(number);
  const FetchSettings settings = fetch_.settingsOf(index);
  const Key::Values now = keyOfChannel(settings);
  const KeyView<Key::Values> view{now};
  if (channel.key.versionOf(now) != 0) return true;
  channel.key.drop();
  const std::int32_t points = SpectrumTransform::isLength(view.points()) ? view.points() : 0;
  channel.settings = view.settings();
  fetch_.windowedSamples(index, static_cast<std::int64_t>(now[kPointWord]), 1.0, settings,
                         channel.block.refill(static_cast<std::size_t>(points)));
  // What changed during the fetch may or may not be in the block: such a block answers this query
  // and is not kept.
  if (keyOfChannel(settings) != now) return false;
  channel.key.keep(now);
  return true;
}

// `version` is what the caller found kept: unless somebody replaced it meanwhile, it still is the
// newest block. 0: something else is kept.
BandAnswer BandQuery::answerOfChannel(std::size_t number, const BandAsk& ask,
                                      std::uint64_t version) {
  const std::scoped_lock guard(lock_);
  Channel& channel = (*channels_)[number];
  const bool keep = (version != 0 && channel.key.version() == version) || refill(number);
  if (channel.block.empty()) return {};
  const BandAnswer answer = channel.block.answer(ask, channel.settings, scratch_);
  if (keep) channel.answers.keep(ask, channel.key.version(), answer);
  return answer;
}

BandAnswer BandQuery::answerOfExtra(std::size_t number, const BandAsk& ask) {
  SpectrumArrays::Extra& array = arrays_.extra(number);
  const std::scoped_lock guard(lock_, array.lock);
  Extra& extra = (*extras_)[number];
  const Key::Values now = keyOfExtra(number);
  const KeyView<Key::Values> view{now};
  if (!SpectrumTransform::isLength(view.points())) return {};
  if (extra.key.versionOf(now) == 0) {
    array.values.snapshot(0, extra.block.refill(static_cast<std::size_t>(view.points())));
  }
  BandAnswer answer;
  if (extra.block.answer(ask, view.settings(), scratch_, answer)) {
    array.values.publish(0, extra.block.values());
  }
  if (!extra.block.settled()) {
    extra.key.drop();
  } else {
    if (extra.key.versionOf(now) == 0) extra.key.keep(now);
    extra.answers.keep(ask, extra.key.version(), answer);
  }
  return answer;
}

void BandQuery::getDataToBufferX(std::int32_t channel, std::int64_t PT) {
  const std::int32_t points = fft::fftp;
  if (channel < 0 || channel >= fft::kEegChannels || !SpectrumTransform::isLength(points)) return;
  const std::scoped_lock guard(lock_);
  Channel& kept = (*channels_)[static_cast<std::size_t>(channel)];
  kept.key.drop();
  fetch_.windowedSamples(channel, PT, 1.0, fetch_.settingsOf(channel),
                         kept.block.refill(static_cast<std::size_t>(points)));
}

double BandQuery::secondArray(std::int32_t channel, std::int64_t position) {
  if (channel < 0 || channel >= fft::kEegChannels || position < 0) return 0.0;
  const std::scoped_lock guard(lock_);
  return (*channels_)[static_cast<std::size_t>(channel)].block.value(
      static_cast<std::size_t>(position));
}

}  // namespace ovka
