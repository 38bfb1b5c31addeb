// Texts that a host writes into the log: line feeds, zeros, stamps, any length.
#include "fuzz/decode.h"

using namespace orv::fuzz;
using namespace orv::model;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Compare([&](Model& model) {
        Input input(data, size);
        while (!input.IsEmpty()) {
            const std::uint8_t how = input.Byte();
            Bytes text = input.Piece();
            for (int i = 0; i < how % 4; ++i) {
                text.insert(text.end(), text.begin(), text.end());
            }
            model.Run({how < 16 ? SwitchLog : AppendLine, how, how, text});
        }
    });
}
