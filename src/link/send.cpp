#include "frame/export_frame.h"
#include "link/connection_table.h"
#include "platform/activation.h"
#include "platform/wait.h"

using namespace orv;

extern "C" ResultCode OrvDevice_Send(BluetoothAddress address, std::int32_t length,
                                     const std::uint8_t* data) {
    return RunExport(Traced("OrvDevice_Send", address, length), [&]() -> ResultCode {
        if (length < 0 || (!data && length > 0)) {
            return Failure;
        }
        // Copies the block before the lock is taken, so that a large block does not delay other
        // threads.
        const auto writer = Activate<DataWriter>();
        // An empty block needs an address, too, because the runtime may reject a null pointer.
        const std::uint8_t none = 0;
        Call(writer, &IDataWriter::WriteBytes, static_cast<UINT32>(length), data ? data : &none);

        const Lock lock(connectionTable.mutex);
        const DeviceLink* link = connectionTable.FindByAddress(address);
        if (!link) {
            return Failure;
        }
        const auto block = Get(writer, &IDataWriter::DetachBuffer);
        if (!block) {
            return Failure;
        }
        const auto write =
            Get(link->characteristic, &IGattCharacteristic::WriteValueAsync, block.Get());
        // Does not read the device's answer: every write that completes in time counts as sent.
        return WaitForCompletion(write, GattWaitLimitMs) == AsyncStatus::Completed ? length
                                                                                   : Failure;
    });
}
