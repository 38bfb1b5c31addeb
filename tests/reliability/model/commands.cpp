#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>

#include "tests/reliability/model/model.h"

namespace orv::model {
namespace {

// A running command, whose field `a` determines the device, session and link of the call.
struct Step {
    const Command& command;
    Reference& reference;
    LogComparison& log;
    std::uint8_t a = command.a;
    std::uint8_t b = command.b;
    const Bytes& bytes = command.bytes;

    std::size_t device = a % Addresses.size();
    BluetoothAddress address = Addresses[device];
    std::size_t known = a % reference.devices.size();
    std::int32_t id = a % 5 - 1;
    Reference::Session* session = reference.FindSession(id);
    Reference::Link* link = reference.FindLink(device);
    bool isNull = a >= 224;

    void Trace(const std::string& line) { reference.lines.push_back(line); }
    void TraceDevice(const char* name, const std::string& more = "") {
        Trace(name + (" " + std::to_string(address)) + more);
    }
    void TraceSession(const char* name, const std::string& more = "") {
        Trace(name + (" " + std::to_string(id)) + more);
    }
};

// Compares the result of `call` with `expected`, and the time that `call` took with the time that
// the reference took to compute `expected`.
#define COMPARE(step, call, expected)                                    \
    do {                                                                 \
        const std::int64_t wanted = (expected);                          \
        const std::int64_t before = OrvWorld_Now();                      \
        CheckEqual(#call, (call), wanted);                               \
        CheckEqual("time", OrvWorld_Now() - before, step.reference.now); \
    } while (false)

void RunAskAvailable(Step& step) {
    step.Trace("BluetoothAvailable");
    COMPARE(step, BluetoothAvailable(), step.reference.Available());
}

void RunSetMachine(Step& step) {
    Reference& reference = step.reference;
    reference.hasAdapter = step.a % 4 != 0;
    reference.radioKind = step.b % 4;
    reference.radioState = step.a % 3;
    OrvWorld_SetAdapter(reference.hasAdapter);
    OrvWorld_SetRadio(0, reference.radioKind, reference.radioState);
}

void RunInitialize(Step& step) {
    step.Trace("OrvScanner_Initialize");
    COMPARE(step, OrvScanner_Initialize(), step.reference.CreateSession());
}

void RunDeinitialize(Step& step) {
    step.TraceSession("OrvScanner_Deinitialize");
    COMPARE(step, OrvScanner_Deinitialize(step.id), step.session ? 0 : -1);
    if (step.session) {
        auto& sessions = step.reference.sessions;
        sessions.erase(sessions.begin() + (step.session - sessions.data()));
    }
}

void RunStart(Step& step) {
    step.TraceSession("OrvScanner_Start");
    COMPARE(step, OrvScanner_Start(step.id), step.reference.StartOrStop(step.session, true));
}

void RunStop(Step& step) {
    step.TraceSession("OrvScanner_Stop");
    COMPARE(step, OrvScanner_Stop(step.id), step.reference.StartOrStop(step.session, false));
}

void RunCountDevices(Step& step) {
    step.TraceSession("OrvScanner_GetDeviceCount");
    COMPARE(step, OrvScanner_GetDeviceCount(step.id),
            step.session ? Small(step.session->devices.size()) : -1);
}

void RunReadDevice(Step& step) {
    const std::int32_t index = step.b == 254 ? INT_MIN : step.b == 253 ? INT_MAX : step.b % 4 - 1;
    step.TraceSession("OrvScanner_GetDeviceInfo", " " + std::to_string(index));
    DiscoveredDevice info;
    std::memset(static_cast<void*>(&info), 0xEE, sizeof info);
    DiscoveredDevice expected = info;
    const bool exists =
        step.session && !step.isNull && index >= 0 && index < Small(step.session->devices.size());
    if (exists) {
        expected = step.session->devices[static_cast<std::size_t>(index)];
    }
    COMPARE(step, OrvScanner_GetDeviceInfo(step.id, index, step.isNull ? nullptr : &info),
            exists ? 0 : -1);
    CheckEqual("record", std::memcmp(&info, &expected, sizeof info), 0);
}

void RunConnect(Step& step) {
    step.TraceDevice("OrvDevice_Connect");
    COMPARE(step, OrvDevice_Connect(step.address), step.reference.OpenLink(step.device));
}

void RunDisconnect(Step& step) {
    step.TraceDevice("OrvDevice_Disconnect");
    COMPARE(step, OrvDevice_Disconnect(step.address), step.reference.CloseLink(step.device));
}

void CompareWrites(const Step& step) {
    if (step.device >= step.reference.devices.size() ||
        step.reference.devices[step.device].writes.empty()) {
        return;
    }
    const auto& writes = step.reference.devices[step.device].writes;
    const Bytes& last = writes.back();
    const std::int32_t count = Small(writes.size());
    Bytes got(last.size() + 1);
    CheckEqual("writes", OrvWorld_WriteCount(step.address), count);
    CheckEqual("write's length",
               OrvWorld_WriteAt(step.address, count - 1, got.data(), Small(got.size())),
               Small(last.size()));
    CheckEqual("write's bytes", std::equal(last.begin(), last.end(), got.begin()), 1);
}

void RunSend(Step& step) {
    const std::int32_t length = step.b == 254 ? -1 : Small(step.bytes.size());
    step.TraceDevice("OrvDevice_Send", " " + std::to_string(length));
    COMPARE(step, OrvDevice_Send(step.address, length, step.isNull ? nullptr : step.bytes.data()),
            step.reference.SendBlock(step.device, length, step.isNull || step.bytes.empty(),
                                     step.bytes));
    CompareWrites(step);
}

void RunReceive(Step& step) {
    constexpr std::int32_t Extremes[] = {INT_MIN, -1, INT_MAX, 1 << 16};
    const std::int32_t count = step.b % 8 == 7 ? Extremes[step.b / 8 % 4] : step.b % 64;
    step.TraceDevice("OrvDevice_Receive");
    Bytes queue = step.link ? step.link->queue : Bytes();
    const std::size_t taken = std::min(queue.size(), static_cast<std::size_t>(std::max(count, 0)));
    Bytes buffer(queue.size() + 1, 0xEE);
    COMPARE(step, OrvDevice_Receive(step.address, count, step.isNull ? nullptr : buffer.data()),
            !step.link || (step.isNull && count > 0) ? -1 : Small(taken));
    if (step.link && !step.isNull) {
        Bytes expected(buffer.size(), 0xEE);
        std::copy_n(queue.begin(), taken, expected.begin());
        CheckEqual("bytes", buffer == expected, 1);
        step.link->queue.assign(queue.begin() + Small(taken), queue.end());
    }
}

void RunFlush(Step& step) {
    step.TraceDevice("OrvDevice_Flush");
    COMPARE(step, OrvDevice_Flush(step.address), step.link ? Small(step.link->queue.size()) : -1);
    if (step.link) {
        step.link->queue.clear();
    }
}

void RunSwitchLog(Step& step) {
    const bool isOn = step.reference.isLogOn = step.a % 8 != 0;
    if (isOn) {
        step.log.Restart();
    }
    COMPARE(step, isOn ? Logging_Enable() : Logging_Disable(), 0);
}

void RunAppendLine(Step& step) {
    const std::int32_t length = step.b == 254   ? -7
                                : step.b == 253 ? INT_MIN
                                                : Small(step.bytes.size());
    const std::int32_t used = std::max(length, 0);
    const bool fails = !step.reference.isLogOn || (step.isNull && length > 0);
    if (!fails) {
        step.Trace(std::string(step.bytes.begin(), step.bytes.begin() + used));
    }
    const auto* text = step.isNull ? nullptr : reinterpret_cast<const char*>(step.bytes.data());
    COMPARE(step, Logging_AppendLine(text, length), fails ? -1 : used + 14);
}

void RunSetName(Step& step) {
    auto& device = step.reference.devices[step.known];
    std::u16string& name = device.packets[step.b % 2].name;
    constexpr const char16_t* Prefixes[] = {u"", u"ORV", u"ORv", u"ORV"};
    name = Prefixes[step.b / 2 % 4];
    for (std::size_t i = 0; i + 1 < step.bytes.size(); i += 2) {
        const int unit = step.bytes[i] | step.bytes[i + 1] << 8;
        // Half of the names consist of surrogates and control characters.
        name += static_cast<char16_t>(step.b & 64   ? unit
                                      : unit & 0x80 ? 0xD800 | unit >> 5
                                                    : unit % 16);
    }
    device.signal = static_cast<std::int16_t>(step.b * 257 - 33000);
    OrvWorld_SetSignal(Addresses[step.known], device.signal);
    OrvWorld_SetName(Addresses[step.known], step.b % 2,
                     reinterpret_cast<const std::uint16_t*>(name.data()), Small(name.size()));
}

// Appends a data section, or removes all. Most sections have a key that the library reads, or such
// a key with its bytes swapped.
void RunSetSections(Step& step) {
    constexpr std::uint8_t Keys[][2] = {{0x00, 0x05}, {0x30, 0x11}, {0x18, 0x11}, {0x05, 0x00},
                                        {0x00, 0x05}, {0x30, 0x11}, {0x18, 0x11}, {0x11, 0x18}};
    const std::int32_t packet = step.a / 2 % 4 != 0;  // 1 is a scan response
    auto& sections = step.reference.devices[step.known].packets[packet != 0].sections;
    if (step.b % 8 == 7) {
        sections.clear();
        OrvWorld_ClearSections(Addresses[step.known], packet);
        return;
    }
    Bytes data = step.bytes;
    if (step.b % 4 != 0) {
        const auto& key = Keys[step.b / 8 % 8];
        data.insert(data.begin(), std::begin(key), std::end(key));
    }
    sections.push_back(data);
    OrvWorld_AddSection(Addresses[step.known], packet, step.b, data.data(), Small(data.size()));
}

void RunAdvertise(Step& step) {
    const bool isScan = step.b & 1;
    const std::int32_t only = step.b / 2 % 4 - 2;  // selects a watcher; negative: all
    const auto& watchers = step.reference.watchers;
    for (std::int32_t i = 0; i < Small(watchers.size()); ++i) {
        if (only < 0 ? watchers[static_cast<std::size_t>(i)].isStarted : i == only) {
            step.reference.Hear(i, step.known, isScan);
        }
    }
    OrvWorld_Advertise(Addresses[step.known], isScan, std::max(only, -1));
    Settle();
}

void RunNotify(Step& step) {
    const std::int32_t only = step.b % 4 - 2;  // selects a registration; negative: all
    for (std::int32_t i = 0; i < step.reference.devices[step.known].registrations; ++i) {
        if (only < 0 || only == i) {
            step.reference.TakeNotification(step.known, i, step.bytes);
        }
    }
    OrvWorld_Notify(Addresses[step.known], step.bytes.data(), Small(step.bytes.size()),
                    std::max(only, -1));
    Settle();
}

void RunArrange(Step& step) {
    const Reference::Answer choices[] = {{OrvAnswer_Standard, 0},
                                         {OrvAnswer_AtOnce, 1},
                                         {OrvAnswer_After, 1999},
                                         {OrvAnswer_After, 2001},
                                         {OrvAnswer_Never, 1},
                                         {OrvAnswer_EndsAs, 2},
                                         {OrvAnswer_EndsAs, 3},
                                         {OrvAnswer_StartFails, Unspecified},
                                         {OrvAnswer_StartFails, NoMemory},
                                         {OrvAnswer_RegistrationFails, Unspecified},
                                         {OrvAnswer_ResultFails, NoMemory},
                                         {OrvAnswer_NullResult, 1},
                                         {OrvAnswer_Status, step.b / 16 % 4},
                                         {OrvAnswer_EmptyList, 1}};
    const Reference::Answer answer = choices[step.b % std::size(choices)];
    const std::int32_t operation = step.a / 4 % 8;
    const std::size_t owner = operation < OrvOperation_FindDevice ? Machine : step.known;
    step.reference.answers[{owner, operation}] = answer;
    const BluetoothAddress of = owner == Machine ? 0 : Addresses[owner];
    OrvWorld_Answer(of, operation, OrvAnswer_Standard, 0);
    OrvWorld_Answer(of, operation, answer.manner, answer.value);
}

void RunBreak(Step& step) {
    auto& failing = step.reference.failing;
    if (step.a % 2) {
        failing[Breakable[step.a / 2 % std::size(Breakable)]] = step.b % 2 ? Unspecified : NoMemory;
    } else {
        failing.clear();
    }
    for (const char* member : Breakable) {
        OrvWorld_FailMember(member, failing.count(member) ? failing[member] : 0);
    }
}

struct Handler {
    const char* name;
    void (*run)(Step&);
};
#define ORV_HANDLER(name) {#name, Run##name},
constexpr Handler Handlers[] = {ORV_COMMANDS(ORV_HANDLER)};

}  // namespace

std::string Text(const Command& command) {
    std::string text = std::string(Handlers[command.what % CommandCount].name) + " " +
                       std::to_string(command.a) + " " + std::to_string(command.b) + " {";
    for (const std::uint8_t byte : command.bytes) {
        text += " " + std::to_string(byte);
    }
    return text + " }";
}

void Model::Run(const Command& command) {
    reference.now = 0;
    reference.lines.clear();
    Step step{command, reference, log};
    const int what = command.what % CommandCount;
    Handlers[what].run(step);
    // Callbacks of one event run in parallel, so their lines have no order.
    log.Check(reference.isLogOn ? reference.lines : Lines(), what != Advertise && what != Notify);
}

}  // namespace orv::model
