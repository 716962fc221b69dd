#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace ovka {

/// A fixed number of doubles, all 0 at first, aligned to 64 bytes. Pages that nobody touched take
/// no memory, so room for the longest transform costs nothing while short ones run. Allocates in
/// the constructor alone (std::bad_alloc when refused).
class AlignedBlock {
 public:
  explicit AlignedBlock(std::size_t size);

  [[nodiscard]] double* data() noexcept { return data_; }
  [[nodiscard]] const double* data() const noexcept { return data_; }
  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] std::span<double> first(std::size_t count) noexcept { return {data_, count}; }

 private:
  struct Release {
    void operator()(double* memory) const noexcept;
  };
  std::unique_ptr<double, Release> memory_;
  double* data_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace ovka
