#pragma once

#include <string>

namespace ovka {

/// Makes the unfinished file ".NAME.PID-N.part" that atomic writing puts beside the file NAME, and
/// removes those that killed processes left there: of the same NAME, locked by nobody, of a process
/// that is gone. The new one is locked (flock) as long as a descriptor of this opening is open;
/// where locks do not work, nothing is removed. The descriptor and `*part`, or -1 and `*error`
/// (errno). Any thread.
[[nodiscard]] int createPartFile(const std::string& target, std::string* part, int* error);

}  // namespace ovka
