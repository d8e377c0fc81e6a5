// The consumer built as C++.
#include "consumer.c"
