#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Dialogs.h"
#include "Folders.h"

namespace ovka::testing {

/// Keeps what it is asked to say; answers every question alike.
struct FakeDialogs final : Dialogs {
  void alert(std::string_view message, std::string_view detail) override {
    alerts.push_back(std::string(message) + "|" + std::string(detail));
  }
  bool confirm(std::string_view /*message*/, std::string_view /*detail*/) override { return yes; }
  void beep() override {}
  std::vector<std::string> alerts;
  bool yes = true;
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

}  // namespace ovka::testing
