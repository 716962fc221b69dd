#include "SpectrumArrays.h"

#include <algorithm>

namespace ovka {

namespace {

constexpr std::size_t kRealRoom = fft::kMaxPoints;
constexpr std::size_t kPairRoom = 2 * kRealRoom;
// A cache line more than the room keeps equal positions of different arrays out of the same cache
// set.
constexpr std::size_t kStagger = 8;
constexpr std::size_t kAllRoom =
    (fft::kAllChannels + SpectrumArrays::kExtras) * (kRealRoom + kStagger) +
    fft::kAllChannels * (kPairRoom + kStagger);

}  // namespace

SpectrumArrays::SpectrumArrays() : memory_(kAllRoom) {
  double* next = memory_.data();
  const auto take = [&next](SharedArray<double>& array, std::size_t room) {
    array.attach(next, room);
    next += room + kStagger;
  };
  for (auto& array : spectra_) take(array, kRealRoom);
  for (auto& extra : extras_) take(extra.values, kRealRoom);
  for (auto& array : coherence_) take(array, kPairRoom);
}

SpectrumArrays::Place SpectrumArrays::placeOf(std::uint32_t array) {
  static constexpr std::array<Place, 14> places{{{Place::Spectrum, 0},
                                                 {Place::Spectrum, 1},
                                                 {Place::Extra, 0},
                                                 {Place::Spectrum, 2},
                                                 {Place::Spectrum, 3},
                                                 {Place::Extra, 1},
                                                 {Place::Extra, 2},
                                                 {Place::Extra, 3},
                                                 {Place::Extra, 4},
                                                 {Place::Extra, 5},
                                                 {Place::Coherence, 0},
                                                 {Place::Coherence, 1},
                                                 {Place::Coherence, 2},
                                                 {Place::Coherence, 3}}};
  return array < places.size() ? places[array] : Place{};
}

ComplexDouble SpectrumArrays::getcomplexDoubleFromBuffer(std::uint32_t array,
                                                         std::int64_t samplepoint) const {
  if (samplepoint >= kRoom) return {};
  const auto position = static_cast<std::size_t>(std::max<std::int64_t>(samplepoint, 0));
  const Place place = placeOf(array);
  switch (place.kind) {
    case Place::Spectrum:
      return {spectra_[place.number].get(position), 0.0};
    case Place::Extra:
      return {extras_[place.number].values.get(position), 0.0};
    case Place::Coherence:
      return {coherence_[place.number].get(2 * position),
              coherence_[place.number].get(2 * position + 1)};
    default:
      return {};
  }
}

void SpectrumArrays::putcomplexDoubleToBuffer(std::uint32_t array, std::int64_t samplepoint,
                                              double InDataX) {
  if (samplepoint >= kRoom) return;
  const auto position = static_cast<std::size_t>(std::max<std::int64_t>(samplepoint, 0));
  const Place place = placeOf(array);
  switch (place.kind) {
    case Place::Spectrum:
      spectra_[place.number].set(position, InDataX);
      return;
    case Place::Extra: {
      Extra& extra = extras_[place.number];
      const std::scoped_lock guard(extra.lock);
      extra.values.set(position, InDataX);
      extra.generation.fetch_add(1);
      return;
    }
    case Place::Coherence:
      coherence_[place.number].set(2 * position, InDataX);
      coherence_[place.number].set(2 * position + 1, 0.0);
      return;
    default:
      return;
  }
}

void SpectrumArrays::readSpectrum(std::int32_t channel, std::span<double> out) const {
  spectrum(channel).snapshot(0, out.first(std::min(out.size(), kRealRoom)));
}

void SpectrumArrays::readCoefficients(std::int32_t channel, std::span<double> pairs) const {
  coherence(channel).snapshot(0, pairs.first(std::min(pairs.size(), kPairRoom)));
}

SharedArray<double>& SpectrumArrays::spectrum(std::int32_t channel) {
  return spectra_[static_cast<std::size_t>(channel)];
}
SharedArray<double>& SpectrumArrays::coherence(std::int32_t channel) {
  return coherence_[static_cast<std::size_t>(channel)];
}
const SharedArray<double>& SpectrumArrays::spectrum(std::int32_t channel) const {
  return spectra_[static_cast<std::size_t>(channel)];
}
const SharedArray<double>& SpectrumArrays::coherence(std::int32_t channel) const {
  return coherence_[static_cast<std::size_t>(channel)];
}

}  // namespace ovka
