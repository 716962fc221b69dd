#pragma once

#include <doctest/doctest.h>
#include <sys/mman.h>

namespace ovka::testing {

/// What a child process tells the one that kills it: a T in memory that both have.
template <typename T>
class SharedTold {
 public:
  SharedTold() {
    void* memory =
        ::mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    REQUIRE(memory != MAP_FAILED);
    told_ = new (memory) T;
  }
  ~SharedTold() { ::munmap(told_, sizeof(T)); }
  SharedTold(const SharedTold&) = delete;
  SharedTold& operator=(const SharedTold&) = delete;
  T& operator*() const { return *told_; }
  T* operator->() const { return told_; }

 private:
  T* told_;
};

}  // namespace ovka::testing
