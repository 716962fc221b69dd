#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>
#include <type_traits>

namespace ovka {

/// Which notes sound at which receiver: the truth of whoever must end them when the rest of the
/// program cannot. A fixed-size table without pointers, locks or destructors, so that it may lie in
/// memory shared with a guard process and be read there after this process died at any
/// instruction: a note is marked before its Note On leaves and unmarked after its Note Off left.
///
/// One thread at a time writes (the note engine, under its lock). Reading bits is safe from any
/// thread and process; names may be read by the writer's side, or by others once the writer is
/// dead.
class SoundingNotes {
 public:
  static constexpr std::size_t kRows = 64;
  static constexpr std::size_t kChannels = 16;
  static constexpr std::size_t kTransportBytes = 32;     ///< with the closing 0
  static constexpr std::size_t kDestinationBytes = 256;  ///< with the closing 0

  struct Row {
    /// Names are whole and the row counts.
    std::atomic<std::uint32_t> used{0};
    /// MidiTransport::name(); empty: a receiver inside the writer's process (its synthesizer, its
    /// virtual source), which dies with it.
    char transport[kTransportBytes] = {};
    char destination[kDestinationBytes] = {};
    /// The endpoint's id at the writer's transport; a hint where two endpoints share a name.
    std::atomic<std::uint64_t> id{0};
    std::atomic<std::uint64_t> notes[kChannels][2] = {};
  };

  /// Starts a table in `memory` of at least sizeof(SoundingNotes) bytes, aligned for 8.
  static SoundingNotes* make(void* memory) noexcept { return new (memory) SoundingNotes; }
  /// The table that another process made there; null when none is.
  static const SoundingNotes* at(const void* memory) noexcept {
    const auto* table = static_cast<const SoundingNotes*>(memory);
    return table->layout_.load(std::memory_order_acquire) == kLayout ? table : nullptr;
  }

  SoundingNotes() noexcept { layout_.store(kLayout, std::memory_order_release); }
  SoundingNotes(const SoundingNotes&) = delete;
  SoundingNotes& operator=(const SoundingNotes&) = delete;

  // The writer.

  /// Gives a row a receiver and no notes. Names too long are cut.
  void name(std::size_t row, std::string_view transport, std::string_view destination,
            std::uint64_t id) noexcept {
    Row& to = rows_[row];
    to.used.store(0, std::memory_order_release);
    std::atomic_thread_fence(std::memory_order_seq_cst);
    for (auto& channel : to.notes) {
      for (auto& half : channel) half.store(0, std::memory_order_relaxed);
    }
    copy(to.transport, transport);
    copy(to.destination, destination);
    to.id.store(id, std::memory_order_relaxed);
    to.used.store(1, std::memory_order_release);
  }
  void setId(std::size_t row, std::uint64_t id) noexcept {
    rows_[row].id.store(id, std::memory_order_relaxed);
  }
  /// The row has no receiver any more.
  void retire(std::size_t row) noexcept { rows_[row].used.store(0, std::memory_order_release); }
  void mark(std::size_t row, unsigned channel, unsigned note) noexcept {
    word(row, channel, note).fetch_or(bit(note), std::memory_order_acq_rel);
  }
  void unmark(std::size_t row, unsigned channel, unsigned note) noexcept {
    word(row, channel, note).fetch_and(~bit(note), std::memory_order_acq_rel);
  }

  // Any reader. channel 0 to 15, note 0 to 127.

  [[nodiscard]] bool sounds(std::size_t row, unsigned channel, unsigned note) const noexcept {
    return (notes(row, channel)[note >> 6U] & bit(note)) != 0;
  }
  /// Notes 0 to 63 and 64 to 127 of a channel, note n as bit n % 64.
  [[nodiscard]] std::array<std::uint64_t, 2> notes(std::size_t row,
                                                   unsigned channel) const noexcept {
    const auto& from = rows_[row].notes[channel % kChannels];
    return {from[0].load(std::memory_order_acquire), from[1].load(std::memory_order_acquire)};
  }
  [[nodiscard]] const Row& row(std::size_t row) const noexcept { return rows_[row]; }
  [[nodiscard]] bool anySounds() const noexcept {
    bool any = false;
    forEach([&](std::size_t, unsigned, unsigned) { any = true; });
    return any;
  }
  /// Calls visit(row, channel, note) for every sounding note of every row in use. `visit` may
  /// unmark.
  template <typename Visit>
  void forEach(Visit&& visit) const {
    for (std::size_t row = 0; row < kRows; ++row) forEachOf(row, visit);
  }
  /// The same for one row.
  template <typename Visit>
  void forEachOf(std::size_t row, Visit&& visit) const {
    if (rows_[row].used.load(std::memory_order_acquire) == 0) return;
    for (unsigned channel = 0; channel < kChannels; ++channel) {
      const auto halves = notes(row, channel);
      if ((halves[0] | halves[1]) == 0) continue;
      for (unsigned note = 0; note < 128; ++note) {
        if ((halves[note >> 6U] & bit(note)) != 0) visit(row, channel, note);
      }
    }
  }

 private:
  static constexpr std::uint64_t kLayout = 0x4F564B414E4F5401;  // changes with the layout

  [[nodiscard]] static constexpr std::uint64_t bit(unsigned note) noexcept {
    return std::uint64_t{1} << (note & 63U);
  }
  [[nodiscard]] std::atomic<std::uint64_t>& word(std::size_t row, unsigned channel,
                                                 unsigned note) noexcept {
    return rows_[row].notes[channel % kChannels][(note >> 6U) & 1U];
  }
  template <std::size_t N>
  static void copy(char (&to)[N], std::string_view from) noexcept {
    const std::size_t length = from.copy(to, N - 1);
    to[length] = '\0';
  }

  std::atomic<std::uint64_t> layout_{0};
  Row rows_[kRows];
};

static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "shared between processes");
static_assert(std::atomic<std::uint32_t>::is_always_lock_free, "shared between processes");
static_assert(std::is_trivially_destructible_v<SoundingNotes>);

}  // namespace ovka
