#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace ovka {

/// The answer of one band query.
struct BandAnswer {
  float value = 0.0F;
  float frequency = 0.0F;  ///< Hz
};

/// What one band query asks, beside its source.
struct BandAsk {
  float lowF;
  float highF;
  std::int32_t mode;  ///< 0 or 1

  [[nodiscard]] std::uint64_t edges() const noexcept {
    return std::uint64_t{std::bit_cast<std::uint32_t>(lowF)} << 32U |
           std::bit_cast<std::uint32_t>(highF);
  }
};

/// The values from which a source's kept results were made. Readers compare it without a lock while
/// one writer at a time replaces it: a version number, odd during the change, tells them when what
/// they read was not of one piece. Every replacement has a version of its own, so answers kept
/// under an older one never match again, even if the values come back.
template <std::size_t Words>
class KeptKey {
 public:
  using Values = std::array<std::uint64_t, Words>;

  /// The version under which `values` are kept, 0 when something else is.
  [[nodiscard]] std::uint64_t versionOf(const Values& values) const noexcept {
    const std::uint64_t version = version_.load(std::memory_order_acquire);
    std::uint64_t different = version & 1U;
    for (std::size_t i = 0; i < Words; ++i) {
      different |= values_[i].load(std::memory_order_acquire) ^ values[i];
    }
    if (different != 0 || version_.load(std::memory_order_relaxed) != version) return 0;
    return version;
  }

  /// Nothing is kept from now on. With the owner's lock held, as the next two.
  void drop() noexcept {
    version_.store(version_.load(std::memory_order_relaxed) | 1U, std::memory_order_release);
  }
  /// Keeps `values` under a new version.
  void keep(const Values& values) noexcept {
    drop();
    for (std::size_t i = 0; i < Words; ++i) {
      values_[i].store(values[i], std::memory_order_release);
    }
    version_.store(version_.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  [[nodiscard]] std::uint64_t version() const noexcept {
    return version_.load(std::memory_order_relaxed);
  }

 private:
  std::atomic<std::uint64_t> version_{1};
  std::array<std::atomic<std::uint64_t>, Words> values_{};
};

/// Answers already given, found again by edges, mode and the version of the data. Four places share
/// a hash; a new answer takes a place whose data are gone, else one after the other. Reads take no
/// lock; `keep` is called with the owner's.
class BandAnswers {
 public:
  [[nodiscard]] bool find(const BandAsk& ask, std::uint64_t version,
                          BandAnswer& answer) const noexcept {
    for (const Entry& entry : groups_[placeOf(ask)]) {
      const std::uint64_t change = entry.change.load(std::memory_order_acquire);
      const std::uint64_t edges = entry.edges.load(std::memory_order_acquire);
      const std::uint64_t made = entry.made.load(std::memory_order_acquire);
      if (edges != ask.edges() || made != madeOf(ask, version)) continue;
      const std::uint64_t result = entry.result.load(std::memory_order_acquire);
      if ((change & 1U) != 0 || entry.change.load(std::memory_order_relaxed) != change) continue;
      answer = {std::bit_cast<float>(static_cast<std::uint32_t>(result >> 32U)),
                std::bit_cast<float>(static_cast<std::uint32_t>(result))};
      return true;
    }
    return false;
  }

  void keep(const BandAsk& ask, std::uint64_t version, const BandAnswer& answer) noexcept {
    Entry& entry = replaceable(groups_[placeOf(ask)], version);
    const std::uint64_t change = entry.change.load(std::memory_order_relaxed);
    entry.change.store(change + 1, std::memory_order_release);
    entry.edges.store(ask.edges(), std::memory_order_release);
    entry.made.store(madeOf(ask, version), std::memory_order_release);
    entry.result.store(std::uint64_t{std::bit_cast<std::uint32_t>(answer.value)} << 32U |
                           std::bit_cast<std::uint32_t>(answer.frequency),
                       std::memory_order_release);
    entry.change.store(change + 2, std::memory_order_release);
  }

 private:
  static constexpr unsigned kBits = 9;  // 512 groups of four: twice the 1024 queries of a busy tick

  struct Entry {
    std::atomic<std::uint64_t> change{0};  // odd while the entry is being written
    std::atomic<std::uint64_t> edges{0};
    std::atomic<std::uint64_t> made{0};  // version and mode; 0: never
    std::atomic<std::uint64_t> result{0};
  };
  using Group = std::array<Entry, 4>;

  // Versions are even, so the mode fits below.
  static std::uint64_t madeOf(const BandAsk& ask, std::uint64_t version) noexcept {
    return version | static_cast<std::uint64_t>(ask.mode);
  }
  static std::size_t placeOf(const BandAsk& ask) noexcept {
    const std::uint64_t mixed =
        (ask.edges() + static_cast<std::uint64_t>(ask.mode)) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>((mixed ^ mixed << 23U) >> (64U - kBits));
  }
  Entry& replaceable(Group& group, std::uint64_t version) noexcept {
    for (Entry& entry : group) {
      if ((entry.made.load(std::memory_order_relaxed) | 1U) != (version | 1U)) return entry;
    }
    return group[turn_++ % group.size()];
  }

  alignas(64) std::array<Group, std::size_t{1} << kBits> groups_{};
  std::size_t turn_ = 0;
};

}  // namespace ovka
