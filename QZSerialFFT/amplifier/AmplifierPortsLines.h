#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

namespace ovka {

/// One holder at a time. Not a mutex: who greets an amplifier keeps the turn while time passes, and
/// on a manual clock the polls of the other lines, with their locks, run within that wait.
class ReadingTurn {
 public:
  [[nodiscard]] bool tryTake() { return !taken_.test_and_set(std::memory_order_acquire); }
  void take() {
    while (!tryTake()) taken_.wait(true, std::memory_order_relaxed);
  }
  void give() {
    taken_.clear(std::memory_order_release);
    taken_.notify_all();
  }

 private:
  std::atomic_flag taken_;
};

/// The open descriptors and who uses them: one reader and one writer at a time each, and no
/// closing while either is at work. A fixed table: looking up and using allocates nothing. Any
/// thread.
class OpenLines {
 public:
  static constexpr std::size_t kMost = 16;  // four inputs, three outputs, and room

  /// Takes a descriptor in; false when the table is full.
  bool add(std::int32_t descriptor) {
    const std::scoped_lock guard(adding_);
    if (find(descriptor) != nullptr) return true;
    for (Line& line : lines_) {
      std::int32_t unused = -1;
      if (line.descriptor.compare_exchange_strong(unused, descriptor)) return true;
    }
    return false;
  }

  /// Calls `use(descriptor)` as its only reader; nothing when it is not open (any more), or when
  /// somebody else reads right now: never waits.
  template <typename Use>
  auto reading(std::int32_t descriptor, Use use) {
    return read(
        descriptor, [](ReadingTurn& turn) { return turn.tryTake(); }, std::move(use));
  }
  /// The same, but waits for its turn: for a greeting, which reads until it is over.
  template <typename Use>
  auto readingInTurn(std::int32_t descriptor, Use use) {
    const auto take = [](ReadingTurn& turn) {
      turn.take();
      return true;
    };
    return read(descriptor, take, std::move(use));
  }
  /// Calls `use(descriptor)` as its only writer, so that whole messages follow one another; nothing
  /// when it is not open (any more).
  template <typename Use>
  auto writing(std::int32_t descriptor, Use use) -> std::optional<decltype(use(descriptor))> {
    Line* line = find(descriptor);
    if (line == nullptr) return std::nullopt;
    const std::scoped_lock guard(line->writing);
    if (line->descriptor.load() != descriptor) return std::nullopt;
    return use(descriptor);
  }

  /// Takes the descriptor out and calls `close(descriptor)` once nobody uses it; false when it was
  /// not open, so that two callers never close twice.
  template <typename Close>
  bool closing(std::int32_t descriptor, Close close) {
    Line* line = find(descriptor);
    if (line == nullptr) return false;
    line->reading.take();
    const Turn turn(line->reading);
    const std::scoped_lock guard(line->writing);
    if (line->descriptor.load() != descriptor) return false;
    close(descriptor);
    line->descriptor.store(-1);
    return true;
  }

  /// An open descriptor, -1 when there is none.
  [[nodiscard]] std::int32_t any() const {
    for (const Line& line : lines_) {
      if (const std::int32_t descriptor = line.descriptor.load(); descriptor >= 0) {
        return descriptor;
      }
    }
    return -1;
  }

 private:
  struct Line {
    std::atomic<std::int32_t> descriptor{-1};
    ReadingTurn reading;  // taken before `writing` where both are
    std::mutex writing;
  };
  /// Gives a turn that was taken back.
  struct Turn {
    explicit Turn(ReadingTurn& taken) : reading(taken) {}
    ~Turn() { reading.give(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ReadingTurn& reading;
  };

  Line* find(std::int32_t descriptor) {
    if (descriptor < 0) return nullptr;
    for (Line& line : lines_) {
      if (line.descriptor.load() == descriptor) return &line;
    }
    return nullptr;
  }

  template <typename Take, typename Use>
  auto read(std::int32_t descriptor, Take take, Use use)
      -> std::optional<decltype(use(descriptor))> {
    Line* line = find(descriptor);
    if (line == nullptr || !take(line->reading)) return std::nullopt;
    const Turn turn(line->reading);
    if (line->descriptor.load() != descriptor) return std::nullopt;
    return use(descriptor);
  }

  std::mutex adding_;
  std::array<Line, kMost> lines_;
};

}  // namespace ovka
