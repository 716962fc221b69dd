#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Dialogs.h"
#include "Folders.h"
#include "HostFacts.h"

namespace ovka::testing {

/// Keeps what it is asked to say; answers every question alike.
struct FakeDialogs final : Dialogs {
  void alert(std::string_view message, std::string_view detail) override {
    alerts.push_back(std::string(message) + "|" + std::string(detail));
  }
  bool confirm(std::string_view message, std::string_view /*detail*/) override {
    questions.emplace_back(message);
    return answer;
  }
  void beep() override { ++beeps; }
  std::vector<std::string> alerts;
  std::vector<std::string> questions;
  bool answer = true;
  int beeps = 0;
};

/// The system's folders, all in one.
struct OneFolder final : Folders {
  explicit OneFolder(std::string path) : path_(std::move(path)) {}
  [[nodiscard]] std::string resolve(std::string_view path) const override {
    for (const std::string_view prefix : {"/Users/Shared/", "~/Library/Preferences/"}) {
      if (path.starts_with(prefix)) return path_ + "/" + std::string(path.substr(prefix.size()));
    }
    return std::string(path);
  }
  std::string path_;
};

/// A machine where it is always the same second.
struct FakeHost final : HostFacts {
  std::string machineName() const override { return "x86_64"; }
  LocalTime localTime(std::int64_t /*wallNanoseconds*/) const override {
    return {2024, 3, 7, 15, 4, 9};
  }
};

}  // namespace ovka::testing
