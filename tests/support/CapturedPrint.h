#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "Print.h"

namespace ovka::testing {

/// Takes the console lines of the system while it lives.
class CapturedPrint {
 public:
  CapturedPrint()
      : before_(setPrintSink([this](std::string_view text) {
          const std::scoped_lock guard(lock_);
          text_ += text;
        })) {}
  ~CapturedPrint() { setPrintSink(std::move(before_)); }
  CapturedPrint(const CapturedPrint&) = delete;
  CapturedPrint& operator=(const CapturedPrint&) = delete;

  /// What was printed since the last take.
  [[nodiscard]] std::string take() {
    const std::scoped_lock guard(lock_);
    return std::exchange(text_, {});
  }

 private:
  std::mutex lock_;
  std::string text_;
  PrintSink before_;
};

}  // namespace ovka::testing
