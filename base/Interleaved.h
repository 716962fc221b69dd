#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace ovka::bench {

/// Measures several pieces of work beside each other: in every round each of them runs once for a
/// short while, and the median over the rounds counts. Whatever else the machine does then hits all
/// alike, so the ratios hold even where the times do not.
class Interleaved {
 public:
  void add(std::string name, std::function<void()> work) {
    entries_.push_back({std::move(name), std::move(work), 1, {}});
  }

  /// @param slice seconds that one entry runs in one round
  void run(int rounds, double slice) {
    for (Entry& entry : entries_) {
      entry.seconds.clear();
      timeOf(entry);
      entry.repeats = std::max(1, static_cast<int>(slice / std::max(timeOf(entry), 1e-9)));
    }
    for (int round = 0; round < rounds; ++round) {
      for (Entry& entry : entries_) entry.seconds.push_back(timeOf(entry));
    }
  }

  [[nodiscard]] std::size_t size() const { return entries_.size(); }
  [[nodiscard]] const std::string& name(std::size_t i) const { return entries_[i].name; }

  /// Median seconds of one call.
  [[nodiscard]] double median(std::size_t i) const {
    std::vector<double> sorted = entries_[i].seconds;
    std::sort(sorted.begin(), sorted.end());
    return sorted[sorted.size() / 2];
  }

 private:
  struct Entry {
    std::string name;
    std::function<void()> work;
    int repeats;
    std::vector<double> seconds;
  };

  static double timeOf(const Entry& entry) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    for (int i = 0; i < entry.repeats; ++i) entry.work();
    return std::chrono::duration<double>(Clock::now() - begin).count() / entry.repeats;
  }

  std::vector<Entry> entries_;
};

}  // namespace ovka::bench
