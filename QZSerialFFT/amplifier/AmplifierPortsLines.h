#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <utility>

namespace ovka {

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

  /// Calls `use(descriptor)` as its only reader; nothing when it is not open (any more).
  template <typename Use>
  auto reading(std::int32_t descriptor, Use use) {
    return with(descriptor, &Line::reading, std::move(use));
  }
  /// The same as its only writer, so that whole messages follow one another.
  template <typename Use>
  auto writing(std::int32_t descriptor, Use use) {
    return with(descriptor, &Line::writing, std::move(use));
  }

  /// Takes the descriptor out and calls `close(descriptor)` once nobody uses it; false when it was
  /// not open, so that two callers never close twice.
  template <typename Close>
  bool closing(std::int32_t descriptor, Close close) {
    Line* line = find(descriptor);
    if (line == nullptr) return false;
    const std::scoped_lock guard(line->reading, line->writing);
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
    std::mutex reading;
    std::mutex writing;
  };

  Line* find(std::int32_t descriptor) {
    if (descriptor < 0) return nullptr;
    for (Line& line : lines_) {
      if (line.descriptor.load() == descriptor) return &line;
    }
    return nullptr;
  }

  template <typename Use>
  auto with(std::int32_t descriptor, std::mutex Line::*lock, Use use)
      -> std::optional<decltype(use(descriptor))> {
    Line* line = find(descriptor);
    if (line == nullptr) return std::nullopt;
    const std::scoped_lock guard(line->*lock);
    if (line->descriptor.load() != descriptor) return std::nullopt;
    return use(descriptor);
  }

  std::mutex adding_;
  std::array<Line, kMost> lines_;
};

}  // namespace ovka
