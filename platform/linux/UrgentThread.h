#pragma once

namespace ovka {

/// The calling thread goes before all usual ones from now on, as far as this user may ask for that
/// (RLIMIT_RTPRIO; members of group audio on a Debian machine with JACK): notes keep their time
/// while the machine draws. For threads that run for moments only. It stays below JACK's own
/// threads; what it starts is usual again. 0, or the errno of the refusal, which leaves it usual.
int beUrgentThread();

}  // namespace ovka
