#include "link/receive.h"

#include <utility>

#include "frame/export_frame.h"
#include "link/connection_table.h"
#include "link/read_value.h"
#include "platform/activation.h"

namespace orv {

namespace {

BluetoothAddress AddressOf(const Reference<IGattCharacteristic>& characteristic) {
    const auto service =
        Get(characteristic.As<IGattCharacteristic2>(), &IGattCharacteristic2::get_Service);
    const auto device = Get(service.As<IGattDeviceService2>(), &IGattDeviceService2::get_Device);
    return Get(device, &IBluetoothLEDevice::get_BluetoothAddress);
}

}  // namespace

void OnDataReceived(const Reference<IGattCharacteristic>& sender,
                    const Reference<IGattValueChangedEventArgs>& arguments) noexcept {
    LogFailuresOf([&] {
        const auto value = Get(arguments, &IGattValueChangedEventArgs::get_CharacteristicValue);
        const UINT32 length = Get(value, &IBuffer::get_Length);
        Trace("OnDataReceived", AddressOf(sender), length);

        const auto readers = FactoryOf<DataReader, IDataReaderStatics>();
        auto opened =
            Get(readers, &IDataReaderStatics::FromBuffer,
                Get(arguments, &IGattValueChangedEventArgs::get_CharacteristicValue).Get());
        // No function knows the address of this copy, so the compiler can keep the copied pointer
        // in a register during the loop.
        const auto reader = std::move(opened);
        // Locks once for the whole value, so that OrvDevice_Receive finds either none or all of its
        // bytes. Finds the link by its characteristic, because several links may have the same
        // address.
        const Lock lock(connectionTable.mutex);
        DeviceLink* link = connectionTable.FindByCharacteristic(sender);
        if (!link) {
            return;
        }
        ReceiveQueue::Filling filling(link->receiveQueue);
        ReadValue(reader.Get(), filling);
    });
}

}  // namespace orv

using namespace orv;

extern "C" ResultCode OrvDevice_Receive(BluetoothAddress address, std::int32_t count,
                                        std::uint8_t* buffer) {
    return RunExport(Traced("OrvDevice_Receive", address), [&]() -> ResultCode {
        const Lock lock(connectionTable.mutex);
        DeviceLink* link = connectionTable.FindByAddress(address);
        if (!link) {
            return Failure;
        }
        if (count <= 0) {
            return 0;
        }
        if (!buffer) {
            return Failure;
        }
        return CountResult(link->receiveQueue.Take(buffer, static_cast<std::size_t>(count)));
    });
}

extern "C" ResultCode OrvDevice_Flush(BluetoothAddress address) {
    return RunExport(Traced("OrvDevice_Flush", address), [&]() -> ResultCode {
        const Lock lock(connectionTable.mutex);
        DeviceLink* link = connectionTable.FindByAddress(address);
        return link ? CountResult(link->receiveQueue.Clear()) : Failure;
    });
}
