#include "orv/problem.h"

#include <cstdio>
#include <utility>

#include "orv/terminal/printable.h"

namespace orv {

ExitStatus Report(Problem& problem) {
    fflush(stdout);
    if (!std::exchange(problem.isReported, true)) {
        fprintf(stderr, "orv: %s\n", Printable(problem.what()).c_str());
    }
    return problem.status;
}

}  // namespace orv
