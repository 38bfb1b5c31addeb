#include "quelvixwinlib.h"
#include "quelvixwinlib_simulated.h"
