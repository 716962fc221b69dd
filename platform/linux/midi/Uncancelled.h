#pragma once

#include <pthread.h>

namespace ovka {

/// Runs a callback of a library that may cancel its threads at any instruction, as JACK's does with
/// those of a server that hangs: unwinding a function that promises not to throw would end the
/// program. A cancellation waits until the body is through. Real-time safe.
///
/// Not a guard object, whose destructor may not be unwound either.
template <typename Body>
void uncancelled(Body body) {
  int before = 0;
  ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
  body();
  ::pthread_setcancelstate(before, nullptr);
}

}  // namespace ovka
