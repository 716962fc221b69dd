// The passes with SSE2, two values at a time: what every x86-64 processor has.
#if defined(__x86_64__)
#define OVKA_LANES 2
#include "PassBodies.h"

namespace ovka {
const Passes baselinePasses = {firstPass, middlePasses, lastPass};
}
#else
#include "Passes.h"

namespace ovka {
const Passes baselinePasses = {nullptr, nullptr, nullptr};
}
#endif
