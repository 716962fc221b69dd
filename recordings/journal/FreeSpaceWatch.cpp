#include "FreeSpaceWatch.h"

#include "Print.h"

namespace ovka {
namespace {

constexpr std::int64_t kPlentyMinutes = 15;
constexpr std::uint64_t kPlentyBytes = 300'000'000;
/// A slower disk could be filled by nothing the journal writes in a hundred years.
constexpr double kMostMinutes = 5e7;

}  // namespace

void FreeSpaceWatch::check(Files& files, const std::string& folder, double bytesASecond) {
  std::uint64_t free = 0;
  minutes_.reset();
  free_.reset();
  if (files.freeBytes(folder, &free) != 0) return;
  free_ = free;
  if (bytesASecond > 0) {
    const double minutes = static_cast<double>(free) / bytesASecond / 60;
    minutes_ = static_cast<std::int64_t>(minutes < kMostMinutes ? minutes : kMostMinutes);
  }
  const bool little = free < kWarnBytes || (minutes_ && *minutes_ < kWarnMinutes);
  const bool plenty = free >= kPlentyBytes && (!minutes_ || *minutes_ >= kPlentyMinutes);
  if (little && !low_) {
    const auto megabytes = static_cast<unsigned long long>(free / 1'000'000);
    if (minutes_) {
      Print("Warning: the disk of %s has %llu MB left, room for %lld minutes of this recording.\n",
            folder.c_str(), megabytes, static_cast<long long>(*minutes_));
    } else {
      Print("Warning: the disk of %s has %llu MB left.\n", folder.c_str(), megabytes);
    }
  }
  low_ = little || (low_ && !plenty);
}

}  // namespace ovka
