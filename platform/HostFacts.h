#pragma once

#include <cstdint>
#include <string>

namespace ovka {

/// A moment in the user's time zone.
struct LocalTime {
  std::int32_t year = 1970;
  std::int32_t month = 1;  ///< 1 to 12
  std::int32_t day = 1;    ///< 1 to 31
  std::int32_t hour = 0;   ///< 0 to 23
  std::int32_t minute = 0;
  std::int32_t second = 0;
};

/// What documents record of the machine that wrote them. Any thread.
class HostFacts {
 public:
  virtual ~HostFacts() = default;
  /// Hardware name ("x86_64").
  [[nodiscard]] virtual std::string machineName() const = 0;
  /// `wallNanoseconds` (since 1970-01-01 UTC) as the user's clock shows it.
  [[nodiscard]] virtual LocalTime localTime(std::int64_t wallNanoseconds) const = 0;
};

}  // namespace ovka
