// Measures the cost of a notification until its bytes are queued.
#include "bench/support/arrangement.h"
#include "bench/support/measure.h"
#include "link/receive.h"
#include "platform/runtime.h"

namespace orv::bench {

namespace {

IDataReaderStatics* Readers() {
    static IDataReaderStatics* const readers = [] {
        void* found = nullptr;
        runtime::GetActivationFactory(DataReader::Name, IDataReaderStatics::Iid, &found);
        return static_cast<IDataReaderStatics*>(found);
    }();
    return readers;
}

// Reads the device's address with the same runtime calls as the library.
void AskDevice(IGattCharacteristic* sender, UINT64* address) {
    void* found = nullptr;
    sender->QueryInterface(&IGattCharacteristic2::Iid, &found);
    auto* const newerSender = static_cast<IGattCharacteristic2*>(found);
    IGattDeviceService* service = nullptr;
    newerSender->get_Service(&service);
    service->QueryInterface(&IGattDeviceService2::Iid, &found);
    auto* const newerService = static_cast<IGattDeviceService2*>(found);
    IBluetoothLEDevice* device = nullptr;
    newerService->get_Device(&device);
    device->get_BluetoothAddress(address);
    device->Release();
    newerService->Release();
    service->Release();
    newerSender->Release();
}

IDataReader* OpenReader(IGattValueChangedEventArgs* arguments) {
    IBuffer* value = nullptr;
    arguments->get_CharacteristicValue(&value);
    UINT32 length = 0;
    value->get_Length(&length);
    value->Release();
    arguments->get_CharacteristicValue(&value);
    IDataReader* reader = nullptr;
    Readers()->FromBuffer(value, &reader);
    value->Release();
    return reader;
}

// Makes the same runtime calls as the library and copies the bytes to allocated memory.
[[gnu::noinline]] void NotifyByHand(IGattCharacteristic* sender,
                                    IGattValueChangedEventArgs* arguments) {
    UINT64 address = 0;
    AskDevice(sender, &address);
    IDataReader* const reader = OpenReader(arguments);
    {
        const std::lock_guard<std::mutex> lock(floorMutex);
        for (FloorLink& link : floorLinks) {
            if (link.characteristic == sender) {
                UINT32 left = 0;
                reader->get_UnconsumedBufferLength(&left);
                if (link.bytes.size() - link.end < left) {
                    link.bytes.resize(2 * link.end + left);
                }
                BYTE* place = link.bytes.data() + link.end;
                while (left > 0) {
                    reader->ReadByte(place++);
                    reader->get_UnconsumedBufferLength(&left);
                }
                link.end = static_cast<std::size_t>(place - link.bytes.data());
                break;
            }
        }
    }
    reader->Release();
}

[[gnu::noinline]] void RuntimeOnly(IGattCharacteristic* sender,
                                   IGattValueChangedEventArgs* arguments) {
    UINT64 address = 0;
    AskDevice(sender, &address);
    IDataReader* const reader = OpenReader(arguments);
    UINT32 left = 0;
    BYTE byte = 0;
    while (reader->get_UnconsumedBufferLength(&left) == S_OK && left > 0) {
        reader->ReadByte(&byte);
        benchmark::DoNotOptimize(byte);
    }
    reader->Release();
}

void Notify(UINT32 size, int batch) {
    const std::string row = "notification of " + std::to_string(size) + " bytes";
    const auto emptied = [] {
        ArrangeLinks(1);
        ArrangeQueue(0);
    };
    auto* const arguments = new Notification(size);
    IGattCharacteristic* const sender = &DeviceOf(1).characteristic;
    Measure(row, Ours, batch, emptied,
            [sender = SenderOf(1), event = Reference<IGattValueChangedEventArgs>(arguments)] {
                OnDataReceived(sender, event);
            });
    Measure(row, Floor, batch, emptied, [=] { NotifyByHand(sender, arguments); });
    Measure(row, RuntimeAlone, batch, emptied, [=] { RuntimeOnly(sender, arguments); });
}

const Registered notifications([] {
    Notify(20, 200);
    Notify(244, 100);
});

}  // namespace

}  // namespace orv::bench
