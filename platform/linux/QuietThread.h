#pragma once

#include <functional>
#include <thread>

namespace ovka {

/// A thread named for debuggers (the first 15 bytes count) that takes no signals but those of its
/// own faults; nor do the threads that libraries start from it. Throws std::system_error when the
/// machine refuses it.
std::thread startQuietThread(const char* name, std::function<void()> body);

}  // namespace ovka
