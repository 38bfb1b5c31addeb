#pragma once

#include "link/receive_queue.h"
#include "platform/abi/streams.h"
#include "platform/failure.h"

namespace orv {

template <typename Reader>
inline UINT32 BytesLeftIn(Reader* reader) {
    UINT32 left = 0;
    CheckResult(reader ? reader->get_UnconsumedBufferLength(&left) : E_POINTER);
    return left;
}

template <typename Reader>
inline void ReadByte(Reader* reader, BYTE* place) {
    CheckResult(reader ? reader->ReadByte(place) : E_POINTER);
}

// Appends all bytes of `reader` to the queue. Throws if the reader is null or fails. This is a
// template, so that the compiler can inline a reader without virtual functions, as in the BlueZ
// runtime.
template <typename Reader>
inline void ReadValue(Reader* reader, ReceiveQueue::Filling& filling) {
    while (BytesLeftIn(reader) > 0) {
        ReadByte(reader, filling.Place());
        filling.Add();
    }
}

}  // namespace orv
