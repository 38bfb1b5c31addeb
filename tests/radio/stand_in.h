// A test double for the Bluetooth daemon on a bus: one adapter and one device, whose behaviour a
// test arranges. It replies on its own thread.
#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "quelvixwinlib.h"

namespace orv::radio {

constexpr BluetoothAddress Address = 0xC0B1C2D3E4F5;  // of the type "random static"

// Only StandIn::Arrange may change it.
struct Behaviour {
    bool hasAdapter = true;
    bool powered = true;
    bool known = true;  // the daemon lists the device
    bool advertises = true;
    bool forgets = false;           // the daemon removes the device when a scan ends
    bool forgetsAtConnect = false;  // the daemon removes the device when the next connect begins
    int rejectedScans = 0;          // number of scan starts that the kernel rejects
    bool hasService = true;
    bool objectsLate = false;    // reports services as resolved before their objects exist
    int abortsConnects = 0;      // number of connects that fail with "abort-by-local"
    std::string refusesConnect;  // failure text of a connect, or empty
    bool connectHangs = false;   // a connect has no reply until a disconnect
    bool acquireRefused = false;
    bool acquireEndsAtOnce = false;
    bool acquireDropsLink = false;
    bool startRefused = false;
    bool indicatesOnly = false;
    std::string writeFailure;  // name of the error of each write, or empty
    int silentWrites = 0;      // number of writes to leave without a reply
};

class StandIn {
  public:
    ~StandIn() { Kill(); }

    template <typename Change>
    void Arrange(Change&& change) {
        const std::lock_guard<std::recursive_mutex> lock(mutex);
        change(behaviour);
    }

    // Start connects to the bus. Kill disconnects without notice.
    void Start();
    void Kill();

    // Makes the n-th reply from now (1 is the next) an error, or omits it if `silently`. 0 lets all
    // replies succeed.
    void FailReply(int n, bool silently);
    // Returns 1 if the next reply fails, 2 if the second one does, and so on; 0 if none will fail.
    int RepliesLeft() { return Read(failAt); }

    void Power(bool on);
    void Unplug(bool away);
    void Advertise(const char* name, const std::vector<std::uint8_t>& payload, short signal);
    void AdvertiseSignalOnly(short signal);
    void DropLink() {
        Arrange([this](Behaviour&) { SetConnected(false); });
    }
    void ForgetDevice() {
        Arrange([this](Behaviour&) { Know(false); });
    }
    // Sends a notification through the socket or as a signal, as the library has requested. Returns
    // false if the socket is full.
    bool Notify(const std::vector<std::uint8_t>& value);

    std::size_t Written() { return Read(written); }
    int Calls(const std::string& member) { return Read(calls)[member]; }
    bool IsConnected() { return Read(connected); }
    bool IsScanning() { return Read(scanning); }
    bool IsNotifying();

  private:
    template <typename Field>
    Field Read(const Field& field) {
        const std::lock_guard<std::recursive_mutex> lock(mutex);
        return field;
    }
    static int OnMessage(sd_bus_message* message, void* standIn, sd_bus_error* error);
    static int OnOwner(sd_bus_message* message, void* standIn, sd_bus_error* error);
    void Run();
    void Handle(sd_bus_message* call);
    bool Reply(sd_bus_message* call, sd_bus_message* reply = nullptr);
    void ReplyError(sd_bus_message* call, const char* name, const char* text);
    void Connect(sd_bus_message* call);
    void Disconnect(sd_bus_message* call);
    void Acquire(sd_bus_message* call);
    void Write(sd_bus_message* call);
    void AddInterfaces(const char* path);
    void RemoveInterfaces(const char* path);
    void AppendInterfaces(sd_bus_message* message, const std::string& path);
    void ChangeFlag(const char* path, const char* property, bool value);
    void SetConnected(bool value);
    void Know(bool value);
    void ShowServices(bool shown);
    void CloseSocket();

    std::recursive_mutex mutex;  // guards all members below
    Behaviour behaviour;
    sd_bus* bus = nullptr;
    std::thread thread;
    std::atomic<bool> ends{false};
    int failAt = 0;
    bool failSilently = false;
    bool connected = false;
    bool servicesShown = false;
    bool scanning = false;
    bool signalling = false;
    int socket = -1;
    std::string name = "ORV-0042";
    std::vector<std::uint8_t> payload = {42};
    short signal = -60;
    std::string client;  // the bus name of the library's connection
    std::size_t written = 0;
    std::map<std::string, int> calls;
    sd_bus_message* hanging = nullptr;
};

}  // namespace orv::radio
