// Fuzzes sequences of library calls and simulated events, answers and faults.
#include "fuzz/decode.h"

using namespace orv::model;

void orv::fuzz::RunInput(Model& model, Input& input) {
    while (!input.IsEmpty()) {
        const std::uint8_t what = input.Byte();
        const std::uint8_t a = input.Byte();
        const std::uint8_t b = input.Byte();
        const bool hasBytes = what % CommandCount == Send || what % CommandCount == AppendLine ||
                              what % CommandCount == SetName ||
                              what % CommandCount == SetSections || what % CommandCount == Notify;
        model.Run({what, a, b, hasBytes ? input.Piece() : Bytes()});
    }
}
