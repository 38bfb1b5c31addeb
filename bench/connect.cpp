#include "bench/support/arrangement.h"
#include "bench/support/await.h"
#include "bench/support/measure.h"

namespace orv::bench {

namespace {

struct LinkByHand {
    BluetoothAddress address = 0;
    IBluetoothLEDevice* device = nullptr;
    IGattDeviceService* service = nullptr;
    IGattCharacteristic* characteristic = nullptr;
};

std::list<LinkByHand> links;

void FindService(LinkByHand& link) {
    auto* const device = QueryByHand<IBluetoothLEDevice3>(link.device);
    IAsyncOperation<GattDeviceServicesResult>* find = nullptr;
    device->GetGattServicesForUuidWithCacheModeAsync(GUID{}, BluetoothCacheMode::Uncached, &find);
    device->Release();
    IGattDeviceServicesResult* result = nullptr;
    AwaitByHand(find, &result);
    GattCommunicationStatus status{};
    result->get_Status(&status);
    IVectorView<GattDeviceService>* services = nullptr;
    result->get_Services(&services);
    services->GetAt(0, &link.service);
    services->Release();
    result->Release();
}

void RequestAccess(const LinkByHand& link) {
    auto* const service = QueryByHand<IGattDeviceService3>(link.service);
    IAsyncOperation<DeviceAccessStatus>* request = nullptr;
    service->RequestAccessAsync(&request);
    service->Release();
    DeviceAccessStatus status{};
    AwaitByHand(request, &status);
}

void FindCharacteristic(LinkByHand& link) {
    auto* const service = QueryByHand<IGattDeviceService3>(link.service);
    IAsyncOperation<GattCharacteristicsResult>* find = nullptr;
    service->GetCharacteristicsForUuidWithCacheModeAsync(GUID{}, BluetoothCacheMode::Uncached,
                                                         &find);
    service->Release();
    IGattCharacteristicsResult* result = nullptr;
    AwaitByHand(find, &result);
    GattCommunicationStatus status{};
    result->get_Status(&status);
    IVectorView<GattCharacteristic>* characteristics = nullptr;
    result->get_Characteristics(&characteristics);
    characteristics->GetAt(0, &link.characteristic);
    characteristics->Release();
    result->Release();
}

void WriteDescriptor(const LinkByHand& link,
                     GattClientCharacteristicConfigurationDescriptorValue value) {
    IAsyncOperation<GattCommunicationStatus>* write = nullptr;
    link.characteristic->WriteClientCharacteristicConfigurationDescriptorAsync(value, &write);
    GattCommunicationStatus status{};
    AwaitByHand(write, &status);
}

[[gnu::noinline]] void ConnectByHand(BluetoothAddress address) {
    LinkByHand link;
    link.address = address;
    IAsyncOperation<BluetoothLEDevice>* find = nullptr;
    FactoryByHand<BluetoothLEDevice, IBluetoothLEDeviceStatics>()->FromBluetoothAddressAsync(
        address, &find);
    AwaitByHand(find, &link.device);
    FindService(link);
    RequestAccess(link);
    FindCharacteristic(link);
    EventRegistrationToken token;
    link.characteristic->add_ValueChanged(nullptr, &token);
    WriteDescriptor(link, GattClientCharacteristicConfigurationDescriptorValue::Notify);
    const std::lock_guard<std::mutex> lock(floorMutex);
    links.push_back(link);
}

void CloseByHand(IUnknown* object) {
    auto* const closable = QueryByHand<IClosable>(object);
    closable->Close();
    closable->Release();
}

[[gnu::noinline]] void DisconnectByHand() {
    const std::lock_guard<std::mutex> lock(floorMutex);
    const LinkByHand& link = links.front();
    WriteDescriptor(link, GattClientCharacteristicConfigurationDescriptorValue::None);
    CloseByHand(link.service);
    CloseByHand(link.device);
    link.characteristic->Release();
    link.service->Release();
    link.device->Release();
    links.pop_front();
}

const Registered connects([] {
    const auto unlinked = [] { ArrangeLinks(0); };
    Measure("connect and disconnect", Ours, 100, unlinked, [] {
        OrvDevice_Connect(1);
        OrvDevice_Disconnect(1);
    });
    Measure("connect and disconnect", Floor, 100, unlinked, [] {
        ConnectByHand(1);
        DisconnectByHand();
    });
});

}  // namespace

}  // namespace orv::bench
