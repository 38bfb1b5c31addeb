// Compiles the public headers as C++.
#include "quelvixwinlib.h"
#include "quelvixwinlib_simulated.h"
