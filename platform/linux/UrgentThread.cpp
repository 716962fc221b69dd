#include "UrgentThread.h"

#include <algorithm>
#include <cerrno>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

namespace ovka {
namespace {

/// JACK's clients have 5 unless its user says otherwise.
constexpr rlim_t kPriority = 3;

}  // namespace

int beUrgentThread() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_RTPRIO, &limit) != 0) return errno;
  const rlim_t allowed = ::geteuid() == 0 ? kPriority : std::min(limit.rlim_cur, kPriority);
  if (allowed == 0) return EPERM;
  sched_param parameter{};
  parameter.sched_priority = static_cast<int>(allowed);
  return ::sched_setscheduler(0, SCHED_RR | SCHED_RESET_ON_FORK, &parameter) == 0 ? 0 : errno;
}

}  // namespace ovka
