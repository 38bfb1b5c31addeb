#include <cstdio>
#include <cstdlib>
#include <exception>

#include "fuzz/decode.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        orv::model::Model model;
        orv::fuzz::Input input(data, size);
        orv::fuzz::RunInput(model, input);
        model.Finish();
    } catch (const std::exception& difference) {
        std::fprintf(stderr, "%s\n", difference.what());
        std::abort();
    }
    return 0;
}
