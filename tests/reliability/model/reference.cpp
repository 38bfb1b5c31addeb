#include "tests/reliability/model/reference.h"

#include <algorithm>

namespace orv::model {
namespace {

const char* FailureLine(std::int32_t code) {
    return code == NoMemory ? "Exception: bad allocation" : "Exception: unknown type";
}

std::string Utf8(const std::u16string& units) {
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        std::uint32_t point = units[i];
        if (point >= 0xD800 && point <= 0xDFFF) {
            const bool pair = point <= 0xDBFF && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
                              units[i + 1] <= 0xDFFF;
            point = pair ? 0x10000 + (point - 0xD800) * 0x400 + (units[++i] - 0xDC00u) : 0xFFFD;
        }
        const int more = point < 0x80 ? 0 : point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
        const std::uint32_t leads[] = {0, 0xC0, 0xE0, 0xF0};
        text += static_cast<char>(leads[more] + (point >> (6 * more)));
        for (int k = more - 1; k >= 0; --k) {
            text += static_cast<char>(0x80 + (point >> (6 * k)) % 64);
        }
    }
    return text;
}

void PutName(DiscoveredDevice& record, const std::string& name) {
    for (std::size_t i = 0; i < sizeof record.name; ++i) {
        record.name[i] = i < name.size() && i < 29 ? name[i] : '\0';
    }
}

void PutSection(DiscoveredDevice& record, const Bytes& data) {
    if (data.size() < 3) {
        return;
    }
    const int key = data[0] + 256 * data[1];
    if (key == 0x0500) {
        record.value0500 = data[2];
    } else if (key == 0x1130) {
        record.value1130 = data[2];
    } else if (key == 0x1118) {
        for (std::size_t i = 0; i < 16; ++i) {
            record.data1118[i] = i + 2 < data.size() ? data[i + 2] : std::uint8_t{0};
        }
    }
}

}  // namespace

Reference::Session* Reference::FindSession(std::int32_t id) {
    const auto found = std::find_if(sessions.begin(), sessions.end(),
                                    [id](const Session& session) { return session.id == id; });
    return found == sessions.end() ? nullptr : &*found;
}

Reference::Link* Reference::FindLink(std::size_t device) {
    const auto found = std::find_if(links.begin(), links.end(),
                                    [device](const Link& link) { return link.device == device; });
    return found == links.end() ? nullptr : &*found;
}

bool Reference::Fails(const char* member) {
    const auto found = failing.find(member);
    if (found == failing.end()) {
        return false;
    }
    lines.push_back(FailureLine(found->second));
    return true;
}

Reference::Outcome Reference::Await(std::size_t device, std::int32_t operation, bool isResultRead) {
    const Answer answer = answers[{device, operation}];
    switch (answer.manner) {
        case OrvAnswer_After:
            now += std::min(answer.value, 2000);
            return answer.value < 2000 ? Outcome::Good : Outcome::Refused;
        case OrvAnswer_Never:
            now += 2000;
            return Outcome::Refused;
        case OrvAnswer_EndsAs:
            return Outcome::Refused;
        case OrvAnswer_ResultFails:
            if (!isResultRead) {
                return Outcome::Good;
            }
            [[fallthrough]];
        case OrvAnswer_StartFails:
        case OrvAnswer_RegistrationFails:
            lines.push_back(FailureLine(answer.value));
            return Outcome::Raised;
        case OrvAnswer_NullResult:
            // A null result of WriteDescriptor counts as the status 0, which means success.
            return isResultRead && operation != OrvOperation_WriteDescriptor ? Outcome::Refused
                                                                             : Outcome::Good;
        case OrvAnswer_Status: {
            const bool isExamined = isResultRead && operation >= OrvOperation_FindServices;
            const int good = operation == OrvOperation_RequestAccess ? 1 : 0;
            return isExamined && answer.value != good ? Outcome::Refused : Outcome::Good;
        }
        case OrvAnswer_EmptyList:
            if (operation == OrvOperation_FindServices ||
                operation == OrvOperation_FindCharacteristics) {
                lines.push_back(FailureLine(0));
                return Outcome::Raised;
            }
            return Outcome::Good;
        default:
            return Outcome::Good;
    }
}

ResultCode Reference::Available() {
    const bool adapter =
        Await(Machine, OrvOperation_FindAdapter, true) == Outcome::Good && hasAdapter;
    return adapter && Await(Machine, OrvOperation_FindRadios, true) == Outcome::Good &&
                   radioKind == OrvRadioKind_Bluetooth && radioState == OrvRadioState_On
               ? 0
               : -1;
}

ResultCode Reference::CreateSession() {
    watchers.push_back({!Fails(AddReceived)});
    if (!watchers.back().hears) {
        return -1;
    }
    const std::int32_t id = sessions.empty() ? 0 : sessions.back().id + 1;
    sessions.push_back({id, Small(watchers.size()) - 1, {}});
    return id;
}

ResultCode Reference::StartOrStop(Session* session, bool starts) {
    if (!session) {
        return -1;
    }
    if (starts) {
        session->devices.clear();
    }
    if (Fails(starts ? StartWatcher : StopWatcher)) {
        return -1;
    }
    watchers[static_cast<std::size_t>(session->watcher)].isStarted = starts;
    return 0;
}

ResultCode Reference::OpenLink(std::size_t device) {
    if (device >= devices.size() || Await(device, OrvOperation_FindDevice, true) != Outcome::Good) {
        return -1;
    }
    bool good = Await(device, OrvOperation_FindServices, true) == Outcome::Good;
    const bool hasService = good;
    good = good && Await(device, OrvOperation_RequestAccess, true) == Outcome::Good &&
           Await(device, OrvOperation_FindCharacteristics, true) == Outcome::Good;
    if (good) {
        ++devices[device].registrations;
        good = Await(device, OrvOperation_WriteDescriptor, true) == Outcome::Good;
    }
    if (good) {
        links.push_back({device, devices[device].registrations - 1, {}});
        return 0;
    }
    if (hasService) {
        Fails(CloseService);
    }
    Fails(CloseDevice);
    return -1;
}

ResultCode Reference::CloseLink(std::size_t device) {
    Link* link = FindLink(device);
    if (!link) {
        return -1;
    }
    if (link->isServiceOpen) {
        if (Await(device, OrvOperation_WriteDescriptor, false) == Outcome::Raised ||
            Fails(CloseService)) {
            return -1;
        }
        link->isServiceOpen = false;
    }
    if (Fails(CloseDevice)) {
        return -1;
    }
    links.erase(links.begin() + (link - links.data()));
    return 0;
}

ResultCode Reference::SendBlock(std::size_t device, std::int32_t length, bool isNull,
                                const Bytes& data) {
    const Link* link = FindLink(device);
    if (length < 0 || (isNull && length > 0) || !link) {
        return -1;
    }
    if (!link->isServiceOpen) {
        lines.push_back(FailureLine(0));
        return -1;
    }
    if (answers[{device, OrvOperation_WriteValue}].manner != OrvAnswer_StartFails) {
        devices[device].writes.emplace_back(data.begin(), data.begin() + length);
    }
    return Await(device, OrvOperation_WriteValue, false) == Outcome::Good ? length : -1;
}

void Reference::Hear(std::int32_t watcher, std::size_t device, bool isScan) {
    if (!watchers[static_cast<std::size_t>(watcher)].hears || Fails(GetName)) {
        return;
    }
    const Device& sender = devices[device];
    const std::string name = Utf8(sender.packets[isScan].name);
    lines.push_back("OnAdvertisementReceived " + std::to_string(Addresses[device]) + " <" + name +
                    "> " + std::to_string(sender.signal));
    for (Session& session : sessions) {
        if (session.watcher == watcher) {
            HearFor(session, device, isScan, name);
        }
    }
}

void Reference::HearFor(Session& session, std::size_t device, bool isScan,
                        const std::string& name) {
    const Device& sender = devices[device];
    for (DiscoveredDevice& record : session.devices) {
        if (record.address != Addresses[device]) {
            continue;
        }
        record.rssi = sender.signal;
        if (!isScan) {
            PutName(record, name);
            return;
        }
        for (const Bytes& section : sender.packets[isScan].sections) {
            if (Fails(GetData)) {
                return;
            }
            PutSection(record, section);
        }
        return;
    }
    if (name.compare(0, 3, "ORV") == 0) {
        DiscoveredDevice record = {Addresses[device], {}, sender.signal, 0xFF, 0xFF, {}, {}};
        PutName(record, name);
        session.devices.push_back(record);
    }
}

void Reference::TakeNotification(std::size_t device, std::int32_t registration, const Bytes& data) {
    if (Fails(GetValue)) {
        return;
    }
    lines.push_back("OnDataReceived " + std::to_string(Addresses[device]) + " " +
                    std::to_string(data.size()));
    for (Link& link : links) {
        if (link.device == device && link.registration == registration) {
            if (data.empty() || !Fails(ReadByte)) {
                link.queue.insert(link.queue.end(), data.begin(), data.end());
            }
        }
    }
}

}  // namespace orv::model
