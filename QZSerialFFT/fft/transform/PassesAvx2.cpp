// The passes with AVX2, four values at a time; only called where the processor has it.
#if defined(__x86_64__)
#define OVKA_LANES 4
#include "PassBodies.h"

namespace ovka {
const Passes avx2Passes = {firstPass, middlePasses, lastPass};
}
#else
#include "Passes.h"

namespace ovka {
const Passes avx2Passes = {nullptr, nullptr, nullptr};
}
#endif
