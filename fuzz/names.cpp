// Fuzzes names in UTF-16, well-formed or not, of listed and of new devices.
#include "fuzz/decode.h"

using namespace orv::model;

void orv::fuzz::RunInput(Model& model, Input& input) {
    model.Run({Initialize, 0, 0, {}});
    model.Run({Start, 1, 0, {}});
    while (!input.IsEmpty()) {
        // `how` selects the device, the packet type, and the name's beginning, such as "ORV".
        const std::uint8_t how = input.Byte();
        model.Run({SetName, how, static_cast<std::uint8_t>(how >> 1), input.Piece()});
        model.Run({Advertise, how, static_cast<std::uint8_t>(how >> 1 & 1), {}});
        model.Run({ReadDevice, 1, 1, {}});
        model.Run({ReadDevice, 1, 2, {}});
    }
}
