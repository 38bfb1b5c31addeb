// OrvDevice_Send.
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
        // Copied before the lock is taken, so that the time under it does not grow with the block.
        const auto writer = Activate<DataWriter>();
        Call(writer, &IDataWriter::WriteBytes, static_cast<UINT32>(length), data);

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
        // How the device answered is not asked: a write that has ended in time counts as sent.
        return WaitForCompletion(write, GattWaitLimitMs) == AsyncStatus::Completed ? length
                                                                                   : Failure;
    });
}
