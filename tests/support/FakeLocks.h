#pragma once

#include <cerrno>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "FileLocks.h"

namespace ovka::testing {

/// Locks of one machine; `dead` processes hold none.
class FakeLocks final : public FileLocks {
 public:
  std::string mark = "1 1 boot";
  bool working = true;
  std::set<std::string> held;
  std::set<std::string> running{"1 1 boot"};

  std::unique_ptr<Lock> lock(const std::string& path, int* error) override {
    *error = !working ? ENOTSUP : held.contains(path) ? EWOULDBLOCK : 0;
    if (*error != 0) return nullptr;
    held.insert(path);
    return std::make_unique<Held>(*this, path);
  }
  std::string processMark() const override { return mark; }
  bool isRunning(const std::string& processMark) const override {
    return running.contains(processMark);
  }

 private:
  struct Held final : Lock {
    Held(FakeLocks& locks, std::string path) : locks_(locks), path_(std::move(path)) {}
    ~Held() override { locks_.held.erase(path_); }
    FakeLocks& locks_;
    std::string path_;
  };
};

}  // namespace ovka::testing
