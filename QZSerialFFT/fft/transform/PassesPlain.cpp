// The passes in plain C++, one value at a time: for processors that have no path of their own.
#define OVKA_LANES 1
#include "PassBodies.h"

namespace ovka {
const Passes plainPasses = {firstPass, middlePasses, lastPass};
}
