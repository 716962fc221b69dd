// The passes with AVX-512, eight values at a time; only called where the processor has it.
#if defined(__x86_64__)
#define OVKA_LANES 8
#include "PassBodies.h"

namespace ovka {
const Passes avx512Passes = {firstPass, middlePasses, lastPass};
}
#else
#include "Passes.h"

namespace ovka {
const Passes avx512Passes = {nullptr, nullptr, nullptr};
}
#endif
