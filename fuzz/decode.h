// Decodes the fuzzer's bytes into commands, which the library and its reference model both execute.
#pragma once

#include <algorithm>

#include "tests/reliability/model/model.h"

namespace orv::fuzz {

using model::Bytes;
using model::Command;

class Input {
  public:
    Input(const std::uint8_t* bytes, std::size_t count) : data(bytes), left(count) {}

    bool IsEmpty() const { return left == 0; }
    std::uint8_t Byte() { return left > 0 ? (--left, *data++) : std::uint8_t{0}; }
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

// Decodes the input and runs the commands; each fuzz target implements this. A difference from the
// reference model ends the process.
void RunInput(model::Model& model, Input& input);

}  // namespace orv::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
