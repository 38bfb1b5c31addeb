// Bytes of the fuzzer as commands for the library and its reference.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "tests/reliability/model.h"

namespace orv::fuzz {

using model::Bytes;
using model::Command;

class Input {
  public:
    Input(const std::uint8_t* bytes, std::size_t count) : data(bytes), left(count) {}

    bool IsEmpty() const { return left == 0; }
    std::uint8_t Byte() { return left > 0 ? (--left, *data++) : std::uint8_t{0}; }
    // A piece with its length in front of it.
    Bytes Piece() {
        const std::size_t count = std::min<std::size_t>(Byte(), left);
        const Bytes piece(data, data + count);
        data += count;
        left -= count;
        return piece;
    }

  private:
    const std::uint8_t* data;
    std::size_t left;
};

// Gives each target's commands to both sides. What differs ends the process.
template <typename Body>
int Compare(Body&& body) {
    try {
        model::Model model;
        body(model);
        model.Finish();
    } catch (const std::exception& difference) {
        std::fprintf(stderr, "%s\n", difference.what());
        std::abort();
    }
    return 0;
}

}  // namespace orv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
