#include "link/receive.h"

#include <utility>

#include "frame/export_frame.h"
#include "link/connection_table.h"
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
        // No call has ever seen this variable's address, so the pointer in it stays in a register
        // through the loop over the bytes.
        const auto reader = std::move(opened);
        // One lock hold for the whole value: a receive sees either none or all of it. The link is
        // found by the characteristic, not by the address, which several links may share.
        const Lock lock(connectionTable.mutex);
        DeviceLink* link = connectionTable.FindByCharacteristic(sender);
        if (!link) {
            return;
        }
        ReceiveQueue::Filling filling(link->receiveQueue);
        while (Get(reader, &IDataReader::get_UnconsumedBufferLength) > 0) {
            Call(reader, &IDataReader::ReadByte, filling.Place());
            filling.Add();
        }
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
