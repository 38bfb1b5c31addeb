// Compiles src/link/receive.cpp so that it reads a value without virtual calls. These took 38
// instructions per byte, most of the cost of a long notification.
#include "link/read_value.h"
#include "runtimes/objects/streams.h"

namespace orv {

// In this runtime, each reader is a MemoryReader, and no observer hears its calls. Does not update
// the reader, because the library releases it afterwards.
template <>
inline void ReadValue(IDataReader* reader, ReceiveQueue::Filling& filling) {
    objects::UnreadBytes unread = static_cast<objects::MemoryReader*>(reader)->unread;
    ReadValue(&unread, filling);
}

}  // namespace orv

#include "link/receive.cpp"  // NOLINT(bugprone-suspicious-include)
