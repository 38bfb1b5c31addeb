// The reference, and the comparison with the library.
#include "tests/reliability/model.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "tests/support/log_file.h"

namespace orv::model {
namespace {

constexpr std::array<BluetoothAddress, 3> Addresses = {0xA0B1C2D3E4F5, 0xFFFFFFFFFFFF, 7};
constexpr std::size_t Machine = 2;  // the world's address 0, where answers are arranged
constexpr std::size_t StampSize = 13;

#define ORV_COMMAND_NAME(name) #name,
const char* const Names[] = {ORV_COMMANDS(ORV_COMMAND_NAME)};

constexpr const char* StartWatcher = "BluetoothLEAdvertisementWatcher.Start";
constexpr const char* StopWatcher = "BluetoothLEAdvertisementWatcher.Stop";
constexpr const char* AddReceived = "BluetoothLEAdvertisementWatcher.add_Received";
constexpr const char* CloseService = "GattDeviceService.Close";
constexpr const char* CloseDevice = "BluetoothLEDevice.Close";
constexpr const char* GetName = "BluetoothLEAdvertisement.get_LocalName";
constexpr const char* GetData = "BluetoothLEAdvertisementDataSection.get_Data";
constexpr const char* GetValue = "GattValueChangedEventArgs.get_CharacteristicValue";
constexpr const char* ReadByte = "DataReader.ReadByte";
const char* const Breakable[] = {StartWatcher, StopWatcher, AddReceived, CloseService, CloseDevice,
                                 GetName,      GetData,     GetValue,    ReadByte};

constexpr auto Fails = static_cast<std::int32_t>(0x80004005);
constexpr auto NoMemory = static_cast<std::int32_t>(0x8007000E);

const char* FailureLine(std::int32_t code) {
    return code == NoMemory ? "Exception: bad allocation" : "Exception: unknown type";
}

std::int32_t Small(std::size_t number) {
    return static_cast<std::int32_t>(number);
}

// As the text says it: code points first, lone halves replaced, then their bytes.
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

// On disk a line feed is two bytes.
std::string OnDisk(const std::string& line) {
    std::string stored;
    for (const char c : line + "\n") {
        stored += c == '\n' ? "\r\n" : std::string(1, c);
    }
    return stored;
}

// The world gives up when the machine stands still for seconds; that is no difference.
void Settle() {
    while (OrvWorld_Settle() != 0) {
    }
}

std::string ReadLog(long from) {
    std::string tail;
    if (FILE* file = std::fopen((LibraryFile() + ".log").c_str(), "rb")) {
        std::fseek(file, from, SEEK_SET);
        char buffer[4096];
        for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, file)) > 0;) {
            tail.append(buffer, got);
        }
        std::fclose(file);
    }
    return tail;
}

}  // namespace

std::string Text(const Command& command) {
    std::string text = std::string(Names[command.what % CommandCount]) + " " +
                       std::to_string(command.a) + " " + std::to_string(command.b) + " {";
    for (const std::uint8_t byte : command.bytes) {
        text += " " + std::to_string(byte);
    }
    return text + " }";
}

Model::Model() {
    OrvWorld_Reset(1);
    OrvWorld_SetAdapter(1);
    OrvWorld_AddRadio(radioKind, radioState);
    for (std::size_t i = 0; i < devices.size(); ++i) {
        OrvWorld_AddDevice(Addresses[i], "ORV-1");
        devices[i].packets[0].name = u"ORV-1";
    }
    Run({SwitchLog, 1, 0, {}});
}

Model::~Model() {
    OrvWorld_Reset(1);  // nothing fails and nothing hangs any more
    for (ResultCode id = OrvScanner_Initialize(); id >= 0; --id) {
        OrvScanner_Deinitialize(id);
    }
    for (const BluetoothAddress address : Addresses) {
        while (OrvDevice_Disconnect(address) == 0) {
        }
    }
    Settle();
    Logging_Disable();
}

// ---------------------------------------------------------------------------------- comparison

void Model::CheckResult(const char* name, std::int64_t actual, std::int64_t expected) {
    if (actual != expected) {
        throw std::runtime_error(std::string(name) + " is " + std::to_string(actual) +
                                 " instead of " + std::to_string(expected));
    }
}

void Model::CheckLog(bool ordered) {
    const std::string tail = ReadLog(logRead);
    logRead += static_cast<long>(tail.size());
    std::size_t at = 0;
    Lines left = isLogOn ? lines : Lines();
    lines.clear();
    while (!left.empty()) {
        // Callbacks that run at once may write in any order.
        const auto found = std::find_if(left.begin(), left.end(), [&](const std::string& line) {
            return tail.compare(std::min(at + StampSize, tail.size()), OnDisk(line).size(),
                                OnDisk(line)) == 0;
        });
        const std::string stamp = tail.substr(at, StampSize);
        const bool stamped = stamp.size() == StampSize && stamp[2] == ':' && stamp[5] == ':' &&
                             stamp[8] == '.' && stamp[12] == '\t';
        if (!stamped || found == left.end() || (ordered && found != left.begin())) {
            throw std::runtime_error("the log goes on with <" + tail.substr(at) + "> instead of <" +
                                     left.front() + ">");
        }
        at += StampSize + OnDisk(*found).size();
        left.erase(found);
    }
    if (at != tail.size()) {
        throw std::runtime_error("the log has more: <" + tail.substr(at) + ">");
    }
}

// ------------------------------------------------------------------------------- the reference

Model::Session* Model::FindSession(std::int32_t id) {
    const auto found = std::find_if(sessions.begin(), sessions.end(),
                                    [id](const Session& session) { return session.id == id; });
    return found == sessions.end() ? nullptr : &*found;
}

Model::Link* Model::FindLink(std::size_t device) {
    const auto found = std::find_if(links.begin(), links.end(),
                                    [device](const Link& link) { return link.device == device; });
    return found == links.end() ? nullptr : &*found;
}

bool Model::Fails(const char* member) {
    const auto found = failing.find(member);
    if (found == failing.end()) {
        return false;
    }
    Traced(FailureLine(found->second));
    return true;
}

Model::Outcome Model::Await(std::size_t device, std::int32_t operation, bool isResultRead) {
    const Answer answer = answers[{device, operation}];
    switch (answer.manner) {
        case OrvManner_After:
            now += std::min(answer.value, 2000);
            return answer.value < 2000 ? Outcome::Good : Outcome::Refused;
        case OrvManner_Never:
            now += 2000;
            return Outcome::Refused;
        case OrvManner_EndsAs:
            return Outcome::Refused;
        case OrvManner_ResultFails:
            if (!isResultRead) {
                return Outcome::Good;
            }
            [[fallthrough]];
        case OrvManner_StartFails:
        case OrvManner_RegistrationFails:
            Traced(FailureLine(answer.value));
            return Outcome::Raised;
        case OrvManner_NullResult:
            // Of a status it is zero, which means success for a write only.
            return isResultRead && operation != OrvOperation_WriteDescriptor ? Outcome::Refused
                                                                             : Outcome::Good;
        case OrvManner_Status: {
            const bool isExamined = isResultRead && operation >= OrvOperation_FindServices;
            const int good = operation == OrvOperation_RequestAccess ? 1 : 0;
            return isExamined && answer.value != good ? Outcome::Refused : Outcome::Good;
        }
        case OrvManner_EmptyList:
            if (operation == OrvOperation_FindServices ||
                operation == OrvOperation_FindCharacteristics) {
                Traced(FailureLine(0));
                return Outcome::Raised;
            }
            return Outcome::Good;
        default:
            return Outcome::Good;
    }
}

ResultCode Model::Available() {
    const bool adapter =
        Await(Machine, OrvOperation_FindAdapter, true) == Outcome::Good && hasAdapter;
    return adapter && Await(Machine, OrvOperation_FindRadios, true) == Outcome::Good &&
                   radioKind == OrvRadioKind_Bluetooth && radioState == OrvRadioState_On
               ? 0
               : -1;
}

ResultCode Model::CreateSession() {
    watchers.push_back({!Fails(AddReceived)});
    if (!watchers.back().hears) {
        return -1;
    }
    const std::int32_t id = sessions.empty() ? 0 : sessions.back().id + 1;
    sessions.push_back({id, Small(watchers.size()) - 1, {}});
    return id;
}

ResultCode Model::OpenLink(std::size_t device) {
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

ResultCode Model::CloseLink(std::size_t device) {
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

ResultCode Model::SendBlock(std::size_t device, std::int32_t length, bool isNull,
                            const Bytes& data) {
    const Link* link = FindLink(device);
    if (length < 0 || (isNull && length > 0) || !link) {
        return -1;
    }
    if (!link->isServiceOpen) {
        Traced(FailureLine(0));
        return -1;
    }
    if (answers[{device, OrvOperation_WriteValue}].manner != OrvManner_StartFails) {
        devices[device].writes.emplace_back(data.begin(), data.begin() + length);
    }
    return Await(device, OrvOperation_WriteValue, false) == Outcome::Good ? length : -1;
}

void Model::Hear(std::int32_t watcher, std::size_t device, bool isScan) {
    if (!watchers[static_cast<std::size_t>(watcher)].hears || Fails(GetName)) {
        return;
    }
    const Device& sender = devices[device];
    const Packet& packet = sender.packets[isScan];
    const std::string name = Utf8(packet.name);
    Traced("OnAdvertisementReceived " + std::to_string(Addresses[device]) + " <" + name + "> " +
           std::to_string(sender.signal));
    for (Session& session : sessions) {
        if (session.watcher != watcher) {
            continue;
        }
        for (DiscoveredDevice& record : session.devices) {
            if (record.address != Addresses[device]) {
                continue;
            }
            record.rssi = sender.signal;
            if (!isScan) {
                PutName(record, name);
                return;
            }
            for (const Bytes& section : packet.sections) {
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
}

void Model::TakeNotification(std::size_t device, std::int32_t registration, const Bytes& data) {
    if (Fails(GetValue)) {
        return;
    }
    Traced("OnDataReceived " + std::to_string(Addresses[device]) + " " +
           std::to_string(data.size()));
    for (Link& link : links) {
        if (link.device == device && link.registration == registration) {
            if (data.empty() || !Fails(ReadByte)) {
                link.queue.insert(link.queue.end(), data.begin(), data.end());
            }
        }
    }
}

// -------------------------------------------------------------------------------- the commands

// Runs the library's side of a call and compares; `expected` was worked out, with its lines,
// before.
#define COMPARE(call, expected)                            \
    do {                                                   \
        const std::int64_t wanted = (expected);            \
        const std::int64_t before = OrvWorld_Now();        \
        CheckResult(#call, (call), wanted);                \
        CheckResult("time", OrvWorld_Now() - before, now); \
    } while (false)

void Model::Run(const Command& command) {
    const auto& [what, a, b, bytes] = command;
    const std::size_t device = a % Addresses.size();
    const BluetoothAddress address = Addresses[device];
    const std::size_t known = a % devices.size();
    const std::int32_t id = a % 5 - 1;
    Session* const session = FindSession(id);
    Link* const link = FindLink(device);
    const std::string ofDevice = " " + std::to_string(address);
    const std::string ofSession = " " + std::to_string(id);
    const bool isNull = b == 255;
    bool isEvent = false;
    now = 0;
    lines.clear();
    switch (what % CommandCount) {
        case AskAvailable:
            Traced("BluetoothAvailable");
            COMPARE(BluetoothAvailable(), Available());
            break;
        case SetMachine:
            hasAdapter = a % 4 != 0;
            radioKind = b % 4;
            radioState = a % 3;
            OrvWorld_SetAdapter(hasAdapter);
            OrvWorld_SetRadio(0, radioKind, radioState);
            break;
        case Initialize:
            Traced("OrvScanner_Initialize");
            COMPARE(OrvScanner_Initialize(), CreateSession());
            break;
        case Deinitialize:
            Traced("OrvScanner_Deinitialize" + ofSession);
            COMPARE(OrvScanner_Deinitialize(id), session ? 0 : -1);
            if (session) {
                sessions.erase(sessions.begin() + (session - sessions.data()));
            }
            break;
        case Start:
        case Stop: {
            const bool starts = what % CommandCount == Start;
            Traced((starts ? "OrvScanner_Start" : "OrvScanner_Stop") + ofSession);
            ResultCode expected = -1;
            if (session) {
                if (starts) {
                    session->devices.clear();
                }
                if (!Fails(starts ? StartWatcher : StopWatcher)) {
                    watchers[static_cast<std::size_t>(session->watcher)].isStarted = starts;
                    expected = 0;
                }
            }
            COMPARE(starts ? OrvScanner_Start(id) : OrvScanner_Stop(id), expected);
            break;
        }
        case CountDevices:
            Traced("OrvScanner_GetDeviceCount" + ofSession);
            COMPARE(OrvScanner_GetDeviceCount(id), session ? Small(session->devices.size()) : -1);
            break;
        case ReadDevice: {
            const std::int32_t index = b % 4 - 1;
            Traced("OrvScanner_GetDeviceInfo" + ofSession + " " + std::to_string(index));
            DiscoveredDevice info;
            std::memset(static_cast<void*>(&info), 0xEE, sizeof info);
            DiscoveredDevice expected = info;
            const bool there =
                session && !isNull && index >= 0 && index < Small(session->devices.size());
            if (there) {
                expected = session->devices[static_cast<std::size_t>(index)];
            }
            COMPARE(OrvScanner_GetDeviceInfo(id, index, isNull ? nullptr : &info), there ? 0 : -1);
            CheckResult("record", std::memcmp(&info, &expected, sizeof info), 0);
            break;
        }
        case Connect:
            Traced("OrvDevice_Connect" + ofDevice);
            COMPARE(OrvDevice_Connect(address), OpenLink(device));
            break;
        case Disconnect:
            Traced("OrvDevice_Disconnect" + ofDevice);
            COMPARE(OrvDevice_Disconnect(address), CloseLink(device));
            break;
        case Send: {
            const std::int32_t length = b == 254 ? -1 : Small(bytes.size());
            Traced("OrvDevice_Send" + ofDevice + " " + std::to_string(length));
            COMPARE(OrvDevice_Send(address, length, isNull ? nullptr : bytes.data()),
                    SendBlock(device, length, isNull || bytes.empty(), bytes));
            if (device < devices.size() && !devices[device].writes.empty()) {
                const Bytes& last = devices[device].writes.back();
                Bytes got(last.size() + 1);
                const std::int32_t count = Small(devices[device].writes.size());
                CheckResult("writes", OrvWorld_WriteCount(address), count);
                CheckResult("write's length",
                            OrvWorld_WriteAt(address, count - 1, got.data(), Small(got.size())),
                            Small(last.size()));
                CheckResult("write's bytes", std::equal(last.begin(), last.end(), got.begin()), 1);
            }
            break;
        }
        case Receive: {
            const std::int32_t count = b == 254 ? -1 : b % 64;
            Traced("OrvDevice_Receive" + ofDevice);
            const std::size_t taken =
                link && count > 0 ? std::min(link->queue.size(), static_cast<std::size_t>(count))
                                  : 0;
            std::uint8_t buffer[64];
            COMPARE(OrvDevice_Receive(address, count, isNull ? nullptr : buffer),
                    !link || (isNull && count > 0) ? -1 : Small(taken));
            if (taken > 0 && !isNull) {
                CheckResult("bytes", std::equal(buffer, buffer + taken, link->queue.begin()), 1);
                link->queue.erase(link->queue.begin(), link->queue.begin() + Small(taken));
            }
            break;
        }
        case Flush:
            Traced("OrvDevice_Flush" + ofDevice);
            COMPARE(OrvDevice_Flush(address), link ? Small(link->queue.size()) : -1);
            if (link) {
                link->queue.clear();
            }
            break;
        case SwitchLog:
            isLogOn = a % 8 != 0;
            logRead = isLogOn ? 0 : logRead;
            COMPARE(isLogOn ? Logging_Enable() : Logging_Disable(), 0);
            break;
        case AppendLine: {
            const std::int32_t length = b == 254 ? -7 : Small(bytes.size());
            const bool refused = !isLogOn || (isNull && length > 0);
            if (!refused) {
                Traced(std::string(bytes.begin(), bytes.begin() + std::max(length, 0)));
            }
            const auto* text = isNull ? nullptr : reinterpret_cast<const char*>(bytes.data());
            COMPARE(Logging_AppendLine(text, length), refused ? -1 : std::max(length, 0) + 14);
            break;
        }
        case SetName: {
            std::u16string& name = devices[known].packets[b % 2].name;
            name = b & 2 ? u"ORV" : u"";
            for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
                name += static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8);
            }
            devices[known].signal = static_cast<std::int16_t>(b * 257 - 33000);
            OrvWorld_SetSignal(Addresses[known], devices[known].signal);
            OrvWorld_SetName(Addresses[known], b % 2,
                             reinterpret_cast<const std::uint16_t*>(name.data()),
                             Small(name.size()));
            break;
        }
        case SetSections: {
            // One section, or none; half of them with a key that means something.
            constexpr std::uint8_t Keys[][2] = {{0x00, 0x05}, {0x30, 0x11}, {0x18, 0x11}};
            auto& sections = devices[known].packets[1].sections;
            if (b % 8 == 7) {
                sections.clear();
                OrvWorld_ClearSections(Addresses[known], OrvPacket_ScanResponse);
                break;
            }
            Bytes data = bytes;
            if (b & 1) {
                data.insert(data.begin(), Keys[b / 8 % 3], Keys[b / 8 % 3] + 2);
            }
            sections.push_back(data);
            OrvWorld_AddSection(Addresses[known], OrvPacket_ScanResponse, b, data.data(),
                                Small(data.size()));
            break;
        }
        case Advertise: {
            isEvent = true;
            const bool isScan = b & 1;
            const std::int32_t only = b / 2 % 4 - 2;
            if (only < 0) {
                for (std::size_t i = 0; i < watchers.size(); ++i) {
                    if (watchers[i].isStarted) {
                        Hear(Small(i), known, isScan);
                    }
                }
            } else if (only < Small(watchers.size())) {
                Hear(only, known, isScan);
            }
            OrvWorld_Advertise(Addresses[known], isScan, only < 0 ? -1 : only);
            Settle();
            break;
        }
        case Notify: {
            isEvent = true;
            const std::int32_t only = b % 4 - 2;
            for (std::int32_t i = 0; i < devices[known].registrations; ++i) {
                if (only < 0 || only == i) {
                    TakeNotification(known, i, bytes);
                }
            }
            OrvWorld_Notify(Addresses[known], bytes.data(), Small(bytes.size()),
                            only < 0 ? -1 : only);
            Settle();
            break;
        }
        case Arrange: {
            const Answer choices[] = {{OrvManner_Standard, 0},
                                      {OrvManner_AtOnce, 1},
                                      {OrvManner_After, 1999},
                                      {OrvManner_After, 2001},
                                      {OrvManner_Never, 1},
                                      {OrvManner_EndsAs, 2},
                                      {OrvManner_EndsAs, 3},
                                      {OrvManner_StartFails, model::Fails},
                                      {OrvManner_StartFails, NoMemory},
                                      {OrvManner_RegistrationFails, model::Fails},
                                      {OrvManner_ResultFails, NoMemory},
                                      {OrvManner_NullResult, 1},
                                      {OrvManner_Status, b / 16 % 4},
                                      {OrvManner_EmptyList, 1}};
            const Answer answer = choices[b % std::size(choices)];
            const std::int32_t operation = a / 4 % 8;
            const std::size_t owner = operation < OrvOperation_FindDevice ? Machine : known;
            answers[{owner, operation}] = answer;
            const BluetoothAddress of = owner == Machine ? 0 : Addresses[owner];
            OrvWorld_Answer(of, operation, OrvManner_Standard, 0);
            OrvWorld_Answer(of, operation, answer.manner, answer.value);
            break;
        }
        default: {  // Break: a member fails, or all work again
            if (a % 2) {
                failing[Breakable[a / 2 % std::size(Breakable)]] = b % 2 ? model::Fails : NoMemory;
            } else {
                failing.clear();
            }
            for (const char* member : Breakable) {
                OrvWorld_FailMember(member, failing.count(member) ? failing[member] : 0);
            }
        }
    }
    CheckLog(!isEvent);
}

void Model::Finish() {
    Run({Break, 0, 0, {}});
    for (std::uint8_t i = 0; i < 5; ++i) {
        Run({CountDevices, i, 0, {}});
        for (std::uint8_t index = 1; index < 4; ++index) {
            Run({ReadDevice, i, index, {}});
        }
        Run({Flush, i, 0, {}});
        Run({Arrange, static_cast<std::uint8_t>(OrvOperation_WriteDescriptor * 4 + i), 0, {}});
        while (FindLink(i % Addresses.size())) {
            Run({Disconnect, i, 0, {}});
        }
    }
    while (!sessions.empty()) {
        ResultCode id = sessions.back().id;
        CheckResult("removal", OrvScanner_Deinitialize(id), 0);
        sessions.pop_back();
    }
    OrvWorld_PassTime(5000);
    Settle();
    CheckResult("held objects", OrvWorld_HeldObjects(), 0);
    CheckResult("held references", OrvWorld_HeldReferences(), 0);
    CheckResult("unexpected calls", OrvWorld_UnexpectedCallCount(), 0);
}

}  // namespace orv::model
