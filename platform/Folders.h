#pragma once

#include <string>
#include <string_view>

namespace ovka {

/// Where the folders that the system names are on this machine. Any thread.
class Folders {
 public:
  virtual ~Folders() = default;
  /// The machine's path for a path under "/Users/Shared/" or "~/Library/Preferences/"; any other
  /// path comes back as it is. Creates nothing.
  [[nodiscard]] virtual std::string resolve(std::string_view path) const = 0;
};

}  // namespace ovka
