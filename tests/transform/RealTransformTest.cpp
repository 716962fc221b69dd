#include <atomic>
#include <cstring>
#include <doctest/doctest.h>
#include <limits>
#include <thread>
#include <vector>

#include "Inputs.h"
#include "PlainTransform.h"
#include "RealTransform.h"

using namespace ovka;
using namespace ovka::transformtest;

namespace {

// Equal bits; two values that are no number are equal whatever they carry.
bool same(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

struct Result {
  std::vector<double> packed, magnitude;
  bool operator==(const Result&) const = default;
};

// -1 when all values are the same, else the first index where they differ.
long firstDifference(const std::vector<double>& a, const std::vector<double>& b) {
  REQUIRE(a.size() == b.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!same(a[i], b[i])) return static_cast<long>(i);
  }
  return -1;
}

Result plainResult(const std::vector<double>& samples) {
  const std::size_t points = samples.size();
  std::vector<double> data(points + 1), power(points + 1);
  std::copy(samples.begin(), samples.end(), data.begin() + 1);
  plain::realTransform(data.data(), points / 2);
  plain::magnitudes(data.data(), power.data(), points / 2);
  Result result{{data.begin() + 1, data.end()}, std::vector<double>(points / 2)};
  for (std::size_t i = 0; i < points / 2; ++i) result.magnitude[i] = power[2 * i + 1];
  return result;
}

// Arrays that begin `shift` doubles into an allocation, with guards around them.
class Guarded {
 public:
  Guarded(std::size_t size, std::size_t shift)
      : shift_(shift), all_(size + 2 * guard + shift, marker) {}
  double* begin() { return all_.data() + guard + shift_; }
  [[nodiscard]] std::size_t size() const { return all_.size() - 2 * guard - shift_; }
  [[nodiscard]] std::vector<double> values() { return {begin(), begin() + size()}; }
  [[nodiscard]] bool guardsIntact() const {
    for (std::size_t i = 0; i < guard + shift_; ++i) {
      if (all_[i] != marker) return false;
    }
    for (std::size_t i = all_.size() - guard; i < all_.size(); ++i) {
      if (all_[i] != marker) return false;
    }
    return true;
  }

 private:
  static constexpr std::size_t guard = 16;
  static constexpr double marker = 12345.678;
  std::size_t shift_;
  std::vector<double> all_;
};

Result fastResult(const std::vector<double>& samples, std::size_t shift, bool inPlace,
                  bool withMagnitude) {
  const std::size_t points = samples.size();
  Guarded packed(points, shift), magnitude(points / 2, shift), scratch(points, shift);
  std::copy(samples.begin(), samples.end(), packed.begin());
  const RealTransform* plan = RealTransform::forPoints(static_cast<int>(points));
  REQUIRE(plan != nullptr);
  plan->transform(inPlace ? packed.begin() : samples.data(), packed.begin(),
                  withMagnitude ? magnitude.begin() : nullptr, scratch.begin());
  CHECK(packed.guardsIntact());
  CHECK(magnitude.guardsIntact());
  CHECK(scratch.guardsIntact());
  return {packed.values(), magnitude.values()};
}

std::vector<InstructionSet> supportedSets() {
  std::vector<InstructionSet> sets;
  for (int i = 0; i < instructionSetCount; ++i) {
    const auto set = static_cast<InstructionSet>(i);
    if (isSupported(set)) sets.push_back(set);
  }
  return sets;
}

struct RestoreInstructionSet {
  ~RestoreInstructionSet() { RealTransform::useInstructionSet(fastestInstructionSet()); }
};

void checkLength(std::size_t points) {
  CAPTURE(points);
  std::size_t shift = 0;  // walks through all alignments
  for (const Input& input : inputs()) {
    CAPTURE(input.name);
    const std::vector<double> samples = samplesOf(input, points, 1);
    const Result expected = plainResult(samples);
    for (const InstructionSet set : supportedSets()) {
      CAPTURE(nameOf(set));
      REQUIRE(RealTransform::useInstructionSet(set));
      shift = (shift + 1) % 8;
      const Result result = fastResult(samples, shift, shift % 2 == 0, true);
      CHECK(firstDifference(expected.packed, result.packed) == -1);
      CHECK(firstDifference(expected.magnitude, result.magnitude) == -1);
    }
  }
}

}  // namespace

TEST_CASE("every length, path and kind of input gives the bits of the plain form") {
  const RestoreInstructionSet restore;
  for (std::size_t points = RealTransform::shortest; points <= RealTransform::longest;
       points *= 2) {
    checkLength(points);
  }
}

TEST_CASE("without magnitudes the packed result is the same and the array stays untouched") {
  const RestoreInstructionSet restore;
  for (const std::size_t points : {128U, 256U, 4096U}) {
    const std::vector<double> samples = samplesOf(inputs().front(), points, 2);
    for (const InstructionSet set : supportedSets()) {
      CAPTURE(nameOf(set));
      RealTransform::useInstructionSet(set);
      const Result with = fastResult(samples, 0, false, true);
      const Result without = fastResult(samples, 0, false, false);
      CHECK(with.packed == without.packed);
      CHECK(without.magnitude == Guarded(points / 2, 0).values());
    }
  }
}

TEST_CASE("a plan exists for the ten lengths alone, and is the same one each time") {
  for (int points = RealTransform::shortest; points <= RealTransform::longest; points *= 2) {
    const RealTransform* plan = RealTransform::forPoints(points);
    REQUIRE(plan != nullptr);
    CHECK(plan->points() == points);
    CHECK(RealTransform::forPoints(points) == plan);
  }
  for (const int points : {std::numeric_limits<int>::min(), -128, -1, 0, 1, 64, 127, 129, 192,
                           65535, 65537, 131072, 1 << 30, std::numeric_limits<int>::max()}) {
    CAPTURE(points);
    CHECK(RealTransform::forPoints(points) == nullptr);
  }
}

TEST_CASE("a path that is not there is refused and the one in use stays") {
  const RestoreInstructionSet restore;
  CHECK(isSupported(InstructionSet::plain));
  CHECK(isSupported(fastestInstructionSet()));
  REQUIRE(RealTransform::useInstructionSet(InstructionSet::plain));
  for (const int number : {-1, instructionSetCount, 1000}) {
    CHECK_FALSE(RealTransform::useInstructionSet(static_cast<InstructionSet>(number)));
  }
  CHECK(RealTransform::instructionSet() == InstructionSet::plain);
}

TEST_CASE("many threads build, share and use the plans while the path changes") {
  const RestoreInstructionSet restore;
  std::vector<std::vector<double>> samples;
  std::vector<Result> expected;
  for (std::size_t points = 128; points <= 8192; points *= 2) {
    samples.push_back(samplesOf(inputs()[1], points, 3));
    expected.push_back(plainResult(samples.back()));
  }
  std::atomic<int> wrong{0};
  const auto work = [&](std::size_t first) {
    for (std::size_t round = 0; round < 40; ++round) {
      const std::size_t i = (first + round) % samples.size();
      std::vector<double> packed(samples[i].size()), scratch(samples[i].size());
      std::vector<double> magnitude(samples[i].size() / 2);
      RealTransform::forPoints(static_cast<int>(samples[i].size()))
          ->transform(samples[i].data(), packed.data(), magnitude.data(), scratch.data());
      if (Result{packed, magnitude} != expected[i]) ++wrong;
    }
  };
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < 4; ++i) threads.emplace_back(work, 2 * i);
  for (int round = 0; round < 200; ++round) {
    for (const InstructionSet set : supportedSets()) RealTransform::useInstructionSet(set);
  }
  for (std::thread& thread : threads) thread.join();
  CHECK(wrong == 0);
}
