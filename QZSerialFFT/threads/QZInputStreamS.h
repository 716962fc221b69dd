#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ovka {

/// A named MIDI input source with no device behind it. Main thread.
class QZInputStreamS {
 public:
  /// initWithName:
  explicit QZInputStreamS(std::string name) : name_(std::move(name)) {}
  virtual ~QZInputStreamS() = default;

  [[nodiscard]] const std::string& inputStreamSourceName() const { return name_; }
  /// inputStreamSourceUniqueID: nothing for a source that is only a name.
  [[nodiscard]] virtual std::optional<std::int32_t> inputStreamSourceUniqueID() const { return {}; }
  /// inputStreamSourceExternalDeviceNames: none for a source that is only a name.
  [[nodiscard]] virtual std::vector<std::string> inputStreamSourceExternalDeviceNames() const {
    return {};
  }
  /// setName:
  void setName(std::string name) { name_ = std::move(name); }

 private:
  std::string name_;
};

}  // namespace ovka
