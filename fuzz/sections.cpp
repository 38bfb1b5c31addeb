// Sections of scan responses, and of advertisements, as a hostile neighbour may send them.
#include "fuzz/decode.h"

using namespace orv::fuzz;
using namespace orv::model;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return Compare([&](Model& model) {
        Input input(data, size);
        model.Run({Initialize, 0, 0, {}});
        model.Run({Start, 1, 0, {}});
        model.Run({Advertise, 0, 0, {}});
        while (!input.IsEmpty()) {
            // A round is up to four sections, in one packet or the other.
            const std::uint8_t round = input.Byte();
            model.Run({SetSections, 0, 7, {}});
            for (int i = 0; i <= round % 4; ++i) {
                model.Run({SetSections, 0, static_cast<std::uint8_t>(round & 0xFE), input.Piece()});
            }
            model.Run({Advertise, 0, static_cast<std::uint8_t>(round / 8 % 2), {}});
            model.Run({ReadDevice, 1, 1, {}});
        }
    });
}
