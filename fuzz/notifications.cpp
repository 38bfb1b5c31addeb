// Fuzzes notifications of any size on two links, received in portions of any size.
#include "fuzz/decode.h"

using namespace orv::model;

void orv::fuzz::RunInput(Model& model, Input& input) {
    model.Run({Connect, 0, 0, {}});
    model.Run({Connect, 0, 0, {}});
    while (!input.IsEmpty()) {
        const std::uint8_t how = input.Byte();
        const What next[] = {Notify, Notify, Receive, Receive, Flush, Disconnect, Connect};
        const What what = next[how % 7];
        Bytes value = what == Notify ? input.Piece() : Bytes();
        for (int i = 0; what == Notify && i < (how >> 6); ++i) {
            const Bytes half = value;
            value.insert(value.end(), half.begin(), half.end());  // up to 2040 bytes
        }
        model.Run({what, 0, what == Receive ? input.Byte() : how, value});
    }
}
