#include "bench/runtime/device.h"

#include <cstring>
#include <map>
#include <mutex>
#include <utility>

namespace orv::bench {

namespace {

BYTE* Copy(const BYTE* source, UINT32 count) {
    auto* const copy = static_cast<BYTE*>(std::malloc(count + 1));
    if (count != 0) {
        std::memcpy(copy, source, count);
    }
    return copy;
}

template <typename T>
HRESULT Answer(IAsyncOperation<T>** operation, Abi<T> result) {
    return Hand(operation, new EndedOperation<T>(result));
}

}  // namespace

Bytes::Bytes(const BYTE* source, UINT32 count) : bytes(Copy(source, count)), length(count) {}

HRESULT Bytes::get_Length(UINT32* value) {
    *value = length;
    return S_OK;
}

HRESULT Bytes::Buffer(BYTE** value) {
    *value = bytes.get();
    return S_OK;
}

Reader::Reader(IBuffer* source) : buffer(source) {
    source->AddRef();
    auto* const bytes = static_cast<Bytes*>(source);
    BYTE* begin = nullptr;
    UINT32 length = 0;
    bytes->Buffer(&begin);
    bytes->get_Length(&length);
    position = begin;
    end = begin + length;
}

HRESULT Reader::get_UnconsumedBufferLength(UINT32* value) {
    *value = static_cast<UINT32>(end - position);
    return S_OK;
}

HRESULT Reader::ReadByte(BYTE* value) {
    if (position == end) {
        return E_BOUNDS;
    }
    *value = *position++;
    return S_OK;
}

HRESULT Writer::WriteBytes(UINT32 length, const BYTE* values) {
    written = new Bytes(values, length);
    return S_OK;
}

HRESULT Writer::DetachBuffer(IBuffer** buffer) {
    return Hand(buffer, std::exchange(written, nullptr));
}

Notification::Notification(UINT32 size)
    : bytes([size] {
          BYTE values[1024];
          for (UINT32 i = 0; i < size; ++i) {
              values[i] = static_cast<BYTE>(i);
          }
          return new Bytes(values, size);
      }()) {}

HRESULT Notification::get_CharacteristicValue(IBuffer** value) {
    return Share(value, bytes);
}

HRESULT Characteristic::get_Service(IGattDeviceService** value) {
    return Share(value, &device.service);
}

HRESULT Characteristic::WriteValueAsync(IBuffer*,
                                        IAsyncOperation<GattCommunicationStatus>** operation) {
    return Answer(operation, GattCommunicationStatus::Success);
}

HRESULT Characteristic::WriteClientCharacteristicConfigurationDescriptorAsync(
    GattClientCharacteristicConfigurationDescriptorValue,
    IAsyncOperation<GattCommunicationStatus>** operation) {
    return Answer(operation, GattCommunicationStatus::Success);
}

HRESULT Characteristic::add_ValueChanged(
    TypedEventHandler<GattCharacteristic, GattValueChangedEventArgs>*,
    EventRegistrationToken* token) {
    token->value = 1;
    return S_OK;
}

HRESULT Characteristics::get_Status(GattCommunicationStatus* value) {
    *value = GattCommunicationStatus::Success;
    return S_OK;
}

HRESULT Characteristics::get_Characteristics(IVectorView<GattCharacteristic>** value) {
    return Share(value, &list);
}

HRESULT Service::get_Device(IBluetoothLEDevice** value) {
    return Share(value, &device);
}

HRESULT Service::RequestAccessAsync(IAsyncOperation<DeviceAccessStatus>** operation) {
    return Answer(operation, DeviceAccessStatus::Allowed);
}

HRESULT Service::GetCharacteristicsForUuidWithCacheModeAsync(
    GUID, BluetoothCacheMode, IAsyncOperation<GattCharacteristicsResult>** operation) {
    return Answer<GattCharacteristicsResult>(operation, &device.characteristics);
}

HRESULT Services::get_Status(GattCommunicationStatus* value) {
    *value = GattCommunicationStatus::Success;
    return S_OK;
}

HRESULT Services::get_Services(IVectorView<GattDeviceService>** value) {
    return Share(value, &list);
}

HRESULT Device::get_BluetoothAddress(UINT64* value) {
    *value = address;
    return S_OK;
}

HRESULT Device::GetGattServicesForUuidWithCacheModeAsync(
    GUID, BluetoothCacheMode, IAsyncOperation<GattDeviceServicesResult>** operation) {
    return Answer<GattDeviceServicesResult>(operation, &services);
}

Device& DeviceOf(UINT64 address) {
    static std::mutex mutex;
    static auto& devices = *new std::map<UINT64, Device*>;
    const std::lock_guard<std::mutex> lock(mutex);
    Device*& device = devices[address];
    if (device == nullptr) {
        device = new Device(address);
    }
    return *device;
}

}  // namespace orv::bench
