// Fuzzes the data sections of advertisements and scan responses, which any device nearby can send.
#include "fuzz/decode.h"

using namespace orv::model;

void orv::fuzz::RunInput(Model& model, Input& input) {
    model.Run({Initialize, 0, 0, {}});
    model.Run({Start, 1, 0, {}});
    model.Run({Advertise, 0, 0, {}});
    while (!input.IsEmpty()) {
        // Each round adds up to four sections to one packet.
        const std::uint8_t round = input.Byte();
        model.Run({SetSections, 0, 7, {}});
        for (int i = 0; i <= round % 4; ++i) {
            model.Run({SetSections, 0, static_cast<std::uint8_t>(round & 0xFE), input.Piece()});
        }
        model.Run({Advertise, 0, static_cast<std::uint8_t>(round / 8 % 2), {}});
        model.Run({ReadDevice, 1, 1, {}});
    }
}
