#include "Output.h"

#include <cerrno>
#include <cstddef>
#include <poll.h>
#include <system_error>
#include <unistd.h>

#include "Failure.h"

namespace ovka::terminal {

void Output::flushWhenLarge() {
  if (text_.size() >= 65536) flush();
}

void Output::flush() {
  std::size_t done = 0;
  while (done < text_.size()) {
    const ssize_t written = ::write(descriptor_, text_.data() + done, text_.size() - done);
    if (written >= 0) {
      done += static_cast<std::size_t>(written);
      continue;
    }
    const int error = errno;
    if (error == EINTR) continue;
    if (error == EAGAIN) {
      pollfd wait{descriptor_, POLLOUT, 0};
      poll(&wait, 1, 1000);
      continue;
    }
    text_.clear();
    if (error == EPIPE) throw ReaderGone();
    throw Failure(ExitCode::Output,
                  "cannot write to " + name_ + ": " + std::generic_category().message(error));
  }
  text_.clear();
}

}  // namespace ovka::terminal
