#include "QuietThread.h"

#include <pthread.h>
#include <signal.h>
#include <string>
#include <utility>

namespace ovka {
namespace {

/// A new thread inherits the mask: there is no moment in which it could take a signal.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) {
      ::sigdelset(&all, fault);
    }
    ::pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

}  // namespace

std::thread startQuietThread(const char* name, std::function<void()> body) {
  constexpr std::size_t kLongestName = 15;
  const SignalsBlocked blocked;
  return std::thread([shown = std::string(name).substr(0, kLongestName), body = std::move(body)] {
    ::pthread_setname_np(::pthread_self(), shown.c_str());
    body();
  });
}

}  // namespace ovka
