// Measures a send to a device that answers at once.
#include "bench/support/arrangement.h"
#include "bench/support/await.h"
#include "bench/support/measure.h"

namespace orv::bench {

namespace {

IDataWriter* WriterWith(std::int32_t length, const std::uint8_t* data) {
    IInspectable* instance = nullptr;
    FactoryByHand<DataWriter, IActivationFactory>()->ActivateInstance(&instance);
    auto* const writer = QueryByHand<IDataWriter>(instance);
    instance->Release();
    writer->WriteBytes(static_cast<UINT32>(length), data);
    return writer;
}

IAsyncOperation<GattCommunicationStatus>* StartWrite(IGattCharacteristic* characteristic,
                                                     IDataWriter* writer) {
    IBuffer* block = nullptr;
    writer->DetachBuffer(&block);
    IAsyncOperation<GattCommunicationStatus>* write = nullptr;
    characteristic->WriteValueAsync(block, &write);
    block->Release();
    return write;
}

[[gnu::noinline]] ResultCode SendByHand(BluetoothAddress address, std::int32_t length,
                                        const std::uint8_t* data) {
    IDataWriter* const writer = WriterWith(length, data);
    const std::lock_guard<std::mutex> lock(floorMutex);
    const FloorLink* link = FindFloorLink(address);
    const bool sent = link && AwaitByHand(StartWrite(link->characteristic, writer),
                                          static_cast<GattCommunicationStatus*>(nullptr));
    writer->Release();
    return sent ? length : -1;
}

// Makes only the runtime calls of a send, and reuses one completion handler.
[[gnu::noinline]] void RuntimeOnly(std::int32_t length, const std::uint8_t* data) {
    static HandlerByHand<GattCommunicationStatus>& handler =
        *new HandlerByHand<GattCommunicationStatus>;
    IDataWriter* const writer = WriterWith(length, data);
    auto* const write = StartWrite(&DeviceOf(1).characteristic, writer);
    write->put_Completed(&handler);
    write->Release();
    writer->Release();
}

const Registered sends([] {
    static const std::uint8_t data[244] = {};
    for (const std::int32_t length : {20, 244}) {
        const std::string row = "send of " + std::to_string(length) + " bytes";
        const auto linked = [] { ArrangeLinks(1); };
        Measure(row, Ours, 500, linked, [length] { return OrvDevice_Send(1, length, data); });
        Measure(row, Floor, 500, linked, [length] { return SendByHand(1, length, data); });
        Measure(row, RuntimeAlone, 500, linked, [length] { RuntimeOnly(length, data); });
    }
});

}  // namespace

}  // namespace orv::bench
