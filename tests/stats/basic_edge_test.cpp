// Edge cases of the basic statistics.
#include "harness.h"
