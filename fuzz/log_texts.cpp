// Fuzzes texts that a host writes to the log: line feeds, zeros, time stamps, any length.
#include "fuzz/decode.h"

using namespace orv::model;

void orv::fuzz::RunInput(Model& model, Input& input) {
    while (!input.IsEmpty()) {
        const std::uint8_t how = input.Byte();
        Bytes text = input.Piece();
        for (int i = 0; i < how % 4; ++i) {
            text.insert(text.end(), text.begin(), text.end());
        }
        model.Run({how < 16 ? SwitchLog : AppendLine, how, how, text});
    }
}
