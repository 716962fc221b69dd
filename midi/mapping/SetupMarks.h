#pragma once

#include <array>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "MidiVariables.h"
#include "SharedBlock.h"

namespace ovka {

/// Set-ups 0 to 127 as a set, walked in ascending order.
class SetupMask {
 public:
  static constexpr std::size_t kWords = midi::kSetups / 64;

  static constexpr SetupMask all() noexcept {
    SetupMask mask;
    mask.words_.fill(~std::uint64_t{0});
    return mask;
  }
  void insert(std::size_t setup) noexcept { words_[setup / 64] |= bitOf(setup); }
  void erase(std::size_t setup) noexcept { words_[setup / 64] &= ~bitOf(setup); }
  [[nodiscard]] bool contains(std::size_t setup) const noexcept {
    return (words_[setup / 64] & bitOf(setup)) != 0;
  }
  [[nodiscard]] bool empty() const noexcept { return (words_[0] | words_[1]) == 0; }
  SetupMask& operator|=(const SetupMask& other) noexcept {
    for (std::size_t i = 0; i < kWords; ++i) words_[i] |= other.words_[i];
    return *this;
  }
  template <typename Visit>
  void forEach(Visit visit) const {
    for (std::size_t i = 0; i < kWords; ++i) {
      for (std::uint64_t word = words_[i]; word != 0; word &= word - 1) {
        visit(i * 64 + static_cast<std::size_t>(std::countr_zero(word)));
      }
    }
  }

 private:
  friend class SetupMarks;
  static constexpr std::uint64_t bitOf(std::size_t setup) noexcept {
    return std::uint64_t{1} << (setup % 64);
  }
  std::array<std::uint64_t, kWords> words_{};
};

/// Which set-ups changed since the last tick. Any thread marks; the tick takes.
class SetupMarks {
 public:
  constexpr SetupMarks() noexcept = default;
  void mark(std::size_t setup) noexcept {
    words_[setup / 64].fetch_or(SetupMask::bitOf(setup), std::memory_order_release);
  }
  /// Whoever takes a mark sees what was stored before it.
  SetupMask take() noexcept {
    SetupMask taken;
    for (std::size_t i = 0; i < SetupMask::kWords; ++i) {
      // An idle tick only reads: it leaves the cache line to the writers.
      if (words_[i].load(std::memory_order_relaxed) == 0) continue;
      taken.words_[i] = words_[i].exchange(0, std::memory_order_acquire);
    }
    return taken;
  }

 private:
  std::array<std::atomic<std::uint64_t>, SetupMask::kWords> words_{};
};

/// An array of the 128 set-ups whose changes the tick must notice at once.
template <typename T>
class MarkedBlock {
 public:
  constexpr explicit MarkedBlock(SetupMarks& marks) noexcept : marks_(marks) {}
  MarkedBlock(const MarkedBlock&) = delete;
  MarkedBlock& operator=(const MarkedBlock&) = delete;

  [[nodiscard]] T get(std::size_t setup) const noexcept { return values_.get(setup); }
  T operator[](std::size_t setup) const noexcept { return get(setup); }
  void set(std::size_t setup, T value) noexcept {
    values_.set(setup, value);
    marks_.mark(setup);
  }
  /// For the tick itself, which knows what it wrote.
  void setQuietly(std::size_t setup, T value) noexcept { values_.set(setup, value); }

 private:
  SharedBlock<T, midi::kSetups> values_;
  SetupMarks& marks_;
};

}  // namespace ovka
