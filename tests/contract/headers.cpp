// The public headers as C++, in the other order than headers.c: that this compiles is the test.
#include "quelvixwinlib.h"
#include "quelvixwinlib_simulated.h"
