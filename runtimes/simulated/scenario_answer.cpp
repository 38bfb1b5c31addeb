// The part of a scenario that says how operations and calls are answered.
#include <algorithm>
#include <iterator>

#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/scenario.h"

namespace orv::simulated {

namespace {

using Word = ScenarioField::Word;

INT32 ReadOperation(const ScenarioField& field, bool ofMachine) {
    if (ofMachine) {
        return field.OneOf(
            {{"FindAdapter", OrvOperation_FindAdapter}, {"FindRadios", OrvOperation_FindRadios}});
    }
    return field.OneOf({{"FindDevice", OrvOperation_FindDevice},
                        {"FindServices", OrvOperation_FindServices},
                        {"RequestAccess", OrvOperation_RequestAccess},
                        {"FindCharacteristics", OrvOperation_FindCharacteristics},
                        {"WriteDescriptor", OrvOperation_WriteDescriptor},
                        {"WriteValue", OrvOperation_WriteValue}});
}

// The status of an answer is of one kind for the access to a service and of another elsewhere.
INT32 ReadStatus(const ScenarioField& field, INT32 operation) {
    if (operation == OrvOperation_RequestAccess) {
        return field.OneOf(
            {{"Unspecified", 0}, {"Allowed", 1}, {"DeniedByUser", 2}, {"DeniedBySystem", 3}});
    }
    return field.OneOf(
        {{"Success", 0}, {"Unreachable", 1}, {"ProtocolError", 2}, {"AccessDenied", 3}});
}

INT32 ReadEnding(const ScenarioField& field) {
    return field.OneOf({{"Completed", static_cast<INT32>(AsyncStatus::Completed)},
                        {"Canceled", static_cast<INT32>(AsyncStatus::Canceled)},
                        {"Error", static_cast<INT32>(AsyncStatus::Error)}});
}

// Members that a call can be made to fail or hang in.
const char* const Members[] = {
    "BluetoothAdapter.GetDefaultAsync",
    "BluetoothLEAdvertisement.get_DataSections",
    "BluetoothLEAdvertisement.get_LocalName",
    "BluetoothLEAdvertisementDataSection.get_Data",
    "BluetoothLEAdvertisementReceivedEventArgs.get_Advertisement",
    "BluetoothLEAdvertisementReceivedEventArgs.get_BluetoothAddress",
    "BluetoothLEAdvertisementReceivedEventArgs.get_IsScanResponse",
    "BluetoothLEAdvertisementReceivedEventArgs.get_RawSignalStrengthInDBm",
    "BluetoothLEAdvertisementWatcher.ActivateInstance",
    "BluetoothLEAdvertisementWatcher.Start",
    "BluetoothLEAdvertisementWatcher.Stop",
    "BluetoothLEAdvertisementWatcher.add_Received",
    "BluetoothLEAdvertisementWatcher.put_ScanningMode",
    "BluetoothLEDevice.Close",
    "BluetoothLEDevice.FromBluetoothAddressAsync",
    "BluetoothLEDevice.GetGattServicesForUuidWithCacheModeAsync",
    "BluetoothLEDevice.get_BluetoothAddress",
    "CoIncrementMTAUsage",
    "DataReader.FromBuffer",
    "DataReader.ReadByte",
    "DataReader.get_UnconsumedBufferLength",
    "DataWriter.ActivateInstance",
    "DataWriter.DetachBuffer",
    "DataWriter.WriteBytes",
    "GattCharacteristic.WriteClientCharacteristicConfigurationDescriptorAsync",
    "GattCharacteristic.WriteValueAsync",
    "GattCharacteristic.add_ValueChanged",
    "GattCharacteristic.get_Service",
    "GattCharacteristicsResult.get_Characteristics",
    "GattCharacteristicsResult.get_Status",
    "GattDeviceService.Close",
    "GattDeviceService.GetCharacteristicsForUuidWithCacheModeAsync",
    "GattDeviceService.RequestAccessAsync",
    "GattDeviceService.get_Device",
    "GattDeviceServicesResult.get_Services",
    "GattDeviceServicesResult.get_Status",
    "GattValueChangedEventArgs.get_CharacteristicValue",
    "IAsyncOperation.GetResults",
    "IAsyncOperation.put_Completed",
    "IBuffer.Buffer",
    "IBuffer.get_Length",
    "IVector.GetAt",
    "IVector.get_Size",
    "IVectorView.GetAt",
    "IVectorView.get_Size",
    "Radio.GetRadiosAsync",
    "Radio.get_Kind",
    "Radio.get_State",
    "RoGetActivationFactory",
};

}  // namespace

std::pair<INT32, Answer> ReadAnswer(const ScenarioField& field, bool ofMachine) {
    const ScenarioObject object(
        field, {"operation", "atOnce", "after", "never", "endsAs", "startFails",
                "registrationFails", "resultFails", "nullResult", "status", "emptyList"});
    const INT32 operation = ReadOperation(object.Get("operation"), ofMachine);
    Answer answer;
    const auto arrange = [&](const char* name, INT32 manner, auto read) {
        if (const auto found = object.Find(name)) {
            answer.Set(manner, read(*found));
        }
    };
    const auto code = [](const ScenarioField& value) { return value.Code(); };
    const auto flag = [](const ScenarioField& value) { return value.Boolean() ? 1 : 0; };
    if (object.Boolean("atOnce", false)) {
        answer.Set(OrvManner_AtOnce, 0);
    }
    arrange("after", OrvManner_After, [](const auto& value) { return value.Number(0, INT32_MAX); });
    if (object.Boolean("never", false)) {
        answer.Set(OrvManner_Never, 0);
    }
    arrange("endsAs", OrvManner_EndsAs, ReadEnding);
    arrange("startFails", OrvManner_StartFails, code);
    arrange("registrationFails", OrvManner_RegistrationFails, code);
    arrange("resultFails", OrvManner_ResultFails, code);
    arrange("nullResult", OrvManner_NullResult, flag);
    arrange("status", OrvManner_Status,
            [&](const auto& value) { return ReadStatus(value, operation); });
    arrange("emptyList", OrvManner_EmptyList, flag);
    return {operation, answer};
}

MemberFault ReadMemberFault(const ScenarioField& field) {
    const ScenarioObject object(field, {"member", "code", "hang"});
    const ScenarioField member = object.Get("member");
    MemberFault fault;
    fault.member = member.Text();
    if (std::none_of(std::begin(Members), std::end(Members),
                     [&](const char* name) { return fault.member == name; })) {
        member.Refuse("is \"" + fault.member + "\", which the library never calls",
                      "a name as in OrvWorld_CallAt, such as \"GattDeviceService.Close\",");
    }
    const std::string kind = object.OneOf({"code", "hang"});
    fault.hangs = kind == "hang" && object.Get("hang").Boolean();
    fault.failure = kind == "code" ? object.Get("code").Code() : S_OK;
    return fault;
}

}  // namespace orv::simulated
