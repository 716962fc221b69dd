#include <algorithm>
#include <array>
#include <cstdio>

#include "Print.h"
#include "SampleStore.h"

namespace ovka {

std::string SampleStore::getcurrentPointTextStrX(std::int64_t point) const {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%011lld::", static_cast<long long>(point));
  return text.data();
}

std::string SampleStore::getcurrentTimePointTextStrX() const {
  const long long speed = std::max<std::uint32_t>(buffer::SampleSpeed, 1);
  const long long point = buffer::ploop;
  const long long seconds = point / speed;
  const long long hours = seconds / 3600;
  const long long minutes = (seconds - 3600 * hours) / 60;
  const long long rest = seconds - 3600 * hours - 60 * minutes;
  // Milliseconds, although the format shows two digits: up to three appear.
  const long long fraction = std::max((point - speed * seconds) * 1000 / speed, 0LL);
  std::array<char, 96> text{};
  std::snprintf(text.data(), text.size(), "%02lld:%02lld:%02lld.%02lld", hours, minutes, rest,
                fraction);
  Print("%02lld:%02lld:%02lld.00\n", hours, minutes, rest);
  return text.data();
}

}  // namespace ovka
