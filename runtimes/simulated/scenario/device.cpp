#include "runtimes/objects/utf8.h"
#include "runtimes/simulated/scenario/scenario.h"

namespace orv::simulated {

namespace {

std::vector<BYTE> ReadSection(const ScenarioField& field) {
    const ScenarioObject object(field, {"type", "data"});
    object.Get("type").Number(0, 0xFF);
    return object.Get("data").Bytes();
}

// Reads UTF-16 units of four hexadecimal digits each, for names that UTF-8 cannot express.
std::u16string ReadUnits(const ScenarioField& field) {
    const std::vector<BYTE> bytes = field.Bytes();
    if (bytes.size() % 2 != 0) {
        field.Refuse("ends in half a unit", "four hexadecimal digits for each UTF-16 unit");
    }
    std::u16string units;
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        units.push_back(static_cast<char16_t>(bytes[i] << 8 | bytes[i + 1]));
    }
    return units;
}

std::vector<ServiceRecord> ReadServices(const std::vector<ScenarioField>& fields) {
    std::vector<ServiceRecord> services;
    for (const ScenarioField& field : fields) {
        const ScenarioObject object(field, {"uuid", "characteristics"});
        ServiceRecord service{object.Get("uuid").Uuid(), {}};
        for (const ScenarioField& characteristic : object.Items("characteristics")) {
            service.characteristics.push_back(characteristic.Uuid());
        }
        services.push_back(std::move(service));
    }
    return services;
}

void ReadLink(const ScenarioObject& object, DeviceRecord& device) REQUIRES(worldMutex) {
    device.services = {{LinkServiceUuid, {LinkCharacteristicUuid}}};
    if (object.Has("services")) {
        device.services = ReadServices(object.Items("services"));
    }
    if (const auto echo = object.Find("echo")) {
        device.SetEcho(true, echo->Number(0, INT32_MAX));
    }
    device.oneAtATime = object.Boolean("oneAtATime", false);
    if (const auto largest = object.Find("largestWrite")) {
        device.SetLargestWrite(largest->Number(0, INT32_MAX));
    }
}

}  // namespace

Known ReadKnown(const ScenarioField& field) {
    if (field.IsText()) {
        field.OneOf({{"OnceHeard", 0}});
        return Known::OnceHeard;
    }
    return field.Boolean() ? Known::Yes : Known::No;
}

PacketContent ReadPacket(const ScenarioObject& packet, const PacketContent& standard) {
    PacketContent record = standard;
    const auto name = packet.Find("name");
    const auto units = packet.Find("nameUtf16");
    if (name && units) {
        units->Refuse("stands beside name", "one of name, nameUtf16");
    }
    if (name) {
        record.name.reset();
        if (!name->IsNull()) {
            record.name = objects::FromUtf8(name->Text());
        }
    }
    if (units) {
        record.name = ReadUnits(*units);
    }
    if (packet.Has("sections")) {
        record.sections.clear();
        for (const ScenarioField& section : packet.Items("sections")) {
            record.sections.push_back(ReadSection(section));
        }
    }
    return record;
}

void ReadDevice(const ScenarioField& field, World::State& state) {
    const ScenarioObject object(
        field,
        {"address", "name", "nameUtf16", "sections", "signal", "signalSpread", "known", "present",
         "interval", "scanResponse", "echo", "services", "oneAtATime", "largestWrite", "answers"});
    const ScenarioField address = object.Get("address");
    const auto device = std::make_shared<DeviceRecord>(address.Address());
    if (!state.devices.emplace(device->address, device).second) {
        address.Refuse("names a device for the second time", "an address of its own");
    }
    device->packets[0] = ReadPacket(object, {});
    if (const auto response = object.Find("scanResponse")) {
        device->packets[1] =
            ReadPacket(ScenarioObject(*response, {"name", "nameUtf16", "sections"}), {});
    }
    device->SetSignal(object.Number("signal", -60, INT16_MIN, INT16_MAX));
    device->SetSignalSpread(object.Number("signalSpread", 0, 0, DeviceRecord::LargestSpread));
    device->present = object.Boolean("present", true);
    device->SetInterval(object.Number("interval", 0, 0, INT32_MAX));
    if (const auto known = object.Find("known")) {
        device->known = ReadKnown(*known);
    }
    ReadLink(object, *device);
    for (const ScenarioField& item : object.Items("answers")) {
        auto [operation, answer] = ReadAnswer(item, false);
        state.answers[{device->address, operation}] = answer;
    }
}

}  // namespace orv::simulated
