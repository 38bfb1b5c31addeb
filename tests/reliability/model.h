// A plainly written reference of the whole interface: what every call must return, log, take on the
// clock and leave behind. Each command is given to the library and to the reference side by side.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "quelvixwinlib.h"
#include "quelvixwinlib_simulated.h"

namespace orv::model {

using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

// A call or an event: any values are meaningful, so random ones can be used as they come. What `a`,
// `b` and `bytes` mean is said where the command is carried out.
struct Command {
    std::uint8_t what;
    std::uint8_t a;
    std::uint8_t b;
    Bytes bytes;
};

#define ORV_COMMANDS(of)                                                                          \
    of(AskAvailable) of(SetMachine) of(Initialize) of(Deinitialize) of(Start) of(Stop)            \
        of(CountDevices) of(ReadDevice) of(Connect) of(Disconnect) of(Send) of(Receive) of(Flush) \
            of(SwitchLog) of(AppendLine) of(SetName) of(SetSections) of(Advertise) of(Notify)     \
                of(Arrange) of(Break)
#define ORV_COMMAND(name) name,
enum What : std::uint8_t { ORV_COMMANDS(ORV_COMMAND) CommandCount };

std::string Text(const Command& command);

// The library must be without sessions and links; destroying the model leaves it so again. One at a
// time. Run and Finish raise std::runtime_error that says what differs.
class Model {
  public:
    Model();
    ~Model();
    void Run(const Command& command);
    // Compares everything that is still there, takes it down, and looks for what was not released.
    void Finish();

  private:
    struct Session {
        std::int32_t id;
        std::int32_t watcher;
        std::vector<DiscoveredDevice> devices;
    };
    struct Link {
        std::size_t device;
        std::int32_t registration;
        Bytes queue;
        bool isServiceOpen = true;
    };
    struct Watcher {
        bool hears;  // a handler is registered
        bool isStarted = false;
    };
    struct Packet {
        std::u16string name;
        std::vector<Bytes> sections;
    };
    struct Answer {
        std::int32_t manner = OrvManner_Standard;
        std::int32_t value = 0;
    };
    struct Device {
        std::array<Packet, 2> packets;
        std::int16_t signal = -60;
        std::int32_t registrations = 0;
        std::vector<Bytes> writes;
    };
    // What a call of the platform makes of the call of the library that it is in.
    enum class Outcome { Good, Refused, Raised };

    ResultCode Available();
    ResultCode CreateSession();
    ResultCode OpenLink(std::size_t device);
    ResultCode CloseLink(std::size_t device);
    ResultCode SendBlock(std::size_t device, std::int32_t length, bool isNull, const Bytes& data);
    void Hear(std::int32_t watcher, std::size_t device, bool isScan);
    void TakeNotification(std::size_t device, std::int32_t registration, const Bytes& data);

    Session* FindSession(std::int32_t id);
    Link* FindLink(std::size_t device);
    // The failure line of a member that was made to fail; false when it was not.
    bool Fails(const char* member);
    Outcome Await(std::size_t device, std::int32_t operation, bool isResultRead);
    void CheckLog(bool ordered);
    void CheckResult(const char* name, std::int64_t actual, std::int64_t expected);
    void Traced(const std::string& line) { lines.push_back(line); }

    std::vector<Session> sessions;
    std::vector<Watcher> watchers;  // all there ever were
    std::vector<Link> links;        // oldest first
    std::array<Device, 2> devices;
    std::map<std::pair<std::size_t, std::int32_t>, Answer> answers;
    std::map<std::string, std::int32_t> failing;
    bool hasAdapter = true;
    std::int32_t radioKind = OrvRadioKind_Bluetooth;
    std::int32_t radioState = OrvRadioState_On;
    bool isLogOn = false;
    std::int64_t now = 0;
    Lines lines;  // that the current command must write
    long logRead = 0;
};

}  // namespace orv::model
