#include "tests/radio/stand_in.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <utility>

#include "tests/radio/allocations.h"

namespace orv::radio {
namespace {

constexpr const char* Adapter = "/org/bluez/hci0";
constexpr const char* Device = "/org/bluez/hci0/dev_C0_B1_C2_D3_E4_F5";
constexpr const char* Service = "/org/bluez/hci0/dev_C0_B1_C2_D3_E4_F5/service0010";
constexpr const char* Stream = "/org/bluez/hci0/dev_C0_B1_C2_D3_E4_F5/service0010/char0011";
constexpr const char* AdapterInterface = "org.bluez.Adapter1";
constexpr const char* DeviceInterface = "org.bluez.Device1";
constexpr const char* ServiceInterface = "org.bluez.GattService1";
constexpr const char* StreamInterface = "org.bluez.GattCharacteristic1";
constexpr const char* Properties = "org.freedesktop.DBus.Properties";
constexpr const char* Objects = "org.freedesktop.DBus.ObjectManager";

const char* InterfaceOf(const std::string& path) {
    return path == Adapter   ? AdapterInterface
           : path == Device  ? DeviceInterface
           : path == Service ? ServiceInterface
                             : StreamInterface;
}

// Begins a bus signal that reports changed properties of an object. EndChange sends it.
sd_bus_message* BeginChange(sd_bus* bus, const char* path) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_signal(bus, &message, path, Properties, "PropertiesChanged");
    sd_bus_message_append(message, "s", InterfaceOf(path));
    sd_bus_message_open_container(message, 'a', "{sv}");
    return message;
}

// Appends bytes as the last value, closes `open` more containers and sends the signal.
void EndChange(sd_bus* bus, sd_bus_message* message, const std::vector<std::uint8_t>& bytes,
               int open) {
    sd_bus_message_open_container(message, 'v', "ay");
    sd_bus_message_append_array(message, 'y', bytes.data(), bytes.size());
    for (int i = 0; i <= open; ++i) {
        sd_bus_message_close_container(message);
    }
    sd_bus_message_append(message, "as", 0);
    sd_bus_send(bus, message, nullptr);
    sd_bus_message_unref(message);
}

}  // namespace

void StandIn::Start() {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    sd_bus_open_system(&bus);
    sd_bus_add_filter(bus, nullptr, &OnMessage, this);
    sd_bus_match_signal_async(bus, nullptr, "org.freedesktop.DBus", nullptr, nullptr,
                              "NameOwnerChanged", &OnOwner, nullptr, this);
    ends = false;
    connected = servicesShown = scanning = signalling = false;
    // Waits in the bus's queue for the name, because a busy bus may still know the former daemon.
    sd_bus_request_name(bus, "org.bluez", SD_BUS_NAME_QUEUE);
    // Waits until the thread is marked: its earlier allocations count as the library's.
    std::promise<void> isMarked;
    thread = std::thread([&] {
        MarkTestThread();
        isMarked.set_value();
        Run();
    });
    isMarked.get_future().wait();
}

void StandIn::Kill() {
    ends = true;
    if (thread.joinable()) {
        thread.join();
    }
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    hanging = sd_bus_message_unref(hanging);
    bus = sd_bus_close_unref(bus);
    CloseSocket();
}

void StandIn::Run() {
    for (int rounds = 0; !ends;) {
        int descriptor = 0;
        {
            const std::lock_guard<std::recursive_mutex> lock(mutex);
            while (sd_bus_process(bus, nullptr) > 0) {
            }
            descriptor = sd_bus_get_fd(bus);
            if (scanning && behaviour.advertises && ++rounds % 10 == 0) {
                Know(true);
                Advertise(name.c_str(), payload, signal);
            }
        }
        pollfd polled{descriptor, POLLIN, 0};
        if (descriptor < 0) {
            return;  // the bus is gone
        }
        poll(&polled, 1, 2);
    }
}

int StandIn::OnMessage(sd_bus_message* message, void* standIn, sd_bus_error*) {
    std::uint8_t type = 0;
    sd_bus_message_get_type(message, &type);
    if (type == SD_BUS_MESSAGE_METHOD_CALL &&
        std::strncmp(sd_bus_message_get_path(message), "/", 1) == 0) {
        static_cast<StandIn*>(standIn)->Handle(message);
        return 1;
    }
    return 0;
}

// When the client leaves the bus, its scan ends, and the daemon stops sending it values as signals.
int StandIn::OnOwner(sd_bus_message* message, void* standIn, sd_bus_error*) {
    auto& self = *static_cast<StandIn*>(standIn);
    const char* client = nullptr;
    const char* owner = nullptr;
    sd_bus_message_read(message, "sss", &client, nullptr, &owner);
    if (self.client == client && *owner == '\0') {
        self.scanning = self.signalling = false;
    }
    return 0;
}

void StandIn::Handle(sd_bus_message* call) {
    client = sd_bus_message_get_sender(call);
    const std::string member = sd_bus_message_get_member(call);
    const std::string path = sd_bus_message_get_path(call);
    ++calls[member];
    const bool exists = path == "/" || (behaviour.hasAdapter && path == Adapter) ||
                        (behaviour.known && path == Device) || (servicesShown && path == Stream);
    sd_bus_message* reply = nullptr;
    if (!exists) {
        ReplyError(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "no such object");
    } else if (member == "Connect" && behaviour.forgetsAtConnect) {
        behaviour.forgetsAtConnect = false;
        Know(false);
        ReplyError(call, SD_BUS_ERROR_UNKNOWN_OBJECT, "no such object");
    } else if (member == "Connect") {
        Connect(call);
    } else if (member == "Disconnect") {
        Disconnect(call);
    } else if (member == "AcquireNotify") {
        Acquire(call);
    } else if (member == "WriteValue") {
        Write(call);
    } else if (member == "StartNotify" && behaviour.startRefused) {
        ReplyError(call, "org.bluez.Error.NotSupported", "refused");
    } else if (member == "StartDiscovery" && !behaviour.powered) {
        ReplyError(call, "org.bluez.Error.NotReady", "Resource Not Ready");
    } else if (member == "StartDiscovery" && (scanning || behaviour.rejectedScans-- > 0)) {
        ReplyError(call, "org.bluez.Error.InProgress", "Operation already in progress");
    } else if (member == "StopDiscovery" && !scanning) {
        ReplyError(call, "org.bluez.Error.Failed", "No discovery started");
    } else {
        if (member == "GetManagedObjects") {
            sd_bus_message_new_method_return(call, &reply);
            sd_bus_message_open_container(reply, 'a', "{oa{sa{sv}}}");
            for (const char* object : {Adapter, Device, Service, Stream}) {
                const bool isThere = object == Adapter  ? behaviour.hasAdapter
                                     : object == Device ? behaviour.known
                                                        : servicesShown;
                if (isThere) {
                    sd_bus_message_open_container(reply, 'e', "oa{sa{sv}}");
                    sd_bus_message_append(reply, "o", object);
                    AppendInterfaces(reply, object);
                    sd_bus_message_close_container(reply);
                }
            }
            sd_bus_message_close_container(reply);
        }
        if (!Reply(call, reply)) {
            return;
        }
        scanning = member == "StartDiscovery" || (scanning && member != "StopDiscovery");
        signalling = member == "StartNotify" || (signalling && member != "StopNotify");
        if (member == "StartDiscovery" && behaviour.advertises) {
            Know(true);
            Advertise(name.c_str(), payload, signal);
        } else if (member == "StopDiscovery" && behaviour.forgets && !connected) {
            Know(false);
        }
    }
}

// Sends `reply`, or an empty reply if it is null. If FailReply chose this reply, sends an error or
// nothing instead. Returns false after an error, because the call then has no effect.
bool StandIn::Reply(sd_bus_message* call, sd_bus_message* reply) {
    if (reply == nullptr) {
        sd_bus_message_new_method_return(call, &reply);
    }
    if (failAt > 0 && --failAt == 0) {
        sd_bus_message_unref(reply);
        if (!failSilently) {
            sd_bus_reply_method_errorf(call, "org.bluez.Error.Failed", "arranged");
        }
        return failSilently;
    }
    sd_bus_send(bus, reply, nullptr);
    sd_bus_message_unref(reply);
    return true;
}

void StandIn::ReplyError(sd_bus_message* call, const char* errorName, const char* text) {
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_errorf(call, &reply, errorName, "%s", text);
    Reply(call, reply);
}

void StandIn::Connect(sd_bus_message* call) {
    if (behaviour.abortsConnects > 0) {
        --behaviour.abortsConnects;
        ReplyError(call, "org.bluez.Error.Failed", "le-connection-abort-by-local");
    } else if (!behaviour.refusesConnect.empty() || !behaviour.powered) {
        ReplyError(call, "org.bluez.Error.Failed", behaviour.refusesConnect.c_str());
    } else if (behaviour.connectHangs) {
        hanging = sd_bus_message_ref(call);
    } else if (Reply(call)) {
        SetConnected(true);
        ShowServices(!behaviour.objectsLate);
        ChangeFlag(Device, "ServicesResolved", true);
        ShowServices(true);
    }
}

void StandIn::Disconnect(sd_bus_message* call) {
    if (hanging != nullptr) {
        sd_bus_reply_method_errorf(hanging, "org.bluez.Error.Failed", "canceled");
        hanging = sd_bus_message_unref(hanging);
    }
    SetConnected(false);
    Reply(call);
}

void StandIn::Acquire(sd_bus_message* call) {
    if (behaviour.acquireRefused) {
        ReplyError(call, "org.bluez.Error.NotSupported", "refused");
        return;
    }
    int ends_[2];
    socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends_);
    CloseSocket();
    socket = ends_[0];
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    sd_bus_message_append(reply, "hq", ends_[1], 517);
    Reply(call, reply);
    close(ends_[1]);
    if (behaviour.acquireEndsAtOnce) {
        CloseSocket();
    } else if (behaviour.acquireDropsLink) {
        SetConnected(false);
    }
}

void StandIn::Write(sd_bus_message* call) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    sd_bus_message_read_array(call, 'y', &bytes, &size);
    const std::vector<std::uint8_t> value(static_cast<const std::uint8_t*>(bytes),
                                          static_cast<const std::uint8_t*>(bytes) + size);
    if (behaviour.silentWrites > 0) {
        --behaviour.silentWrites;
        return;
    }
    if (size > 512) {
        ReplyError(call, "org.bluez.Error.InvalidValueLength", "refused");
    } else if (!behaviour.writeFailure.empty()) {
        ReplyError(call, behaviour.writeFailure.c_str(), "refused");
    } else {
        written += size;
        Reply(call);
        Notify(value);
    }
}

void StandIn::AppendInterfaces(sd_bus_message* message, const std::string& path) {
    constexpr const char* Format = "a{sa{sv}}";
    const char* const interface = InterfaceOf(path);
    if (path == Adapter) {
        sd_bus_message_append(message, Format, 1, interface, 1, "Powered", "b", behaviour.powered);
    } else if (path == Device) {
        sd_bus_message_append(message, Format, 1, interface, 5, "Adapter", "o", Adapter, "Address",
                              "s", "C0:B1:C2:D3:E4:F5", "AddressType", "s", "random", "Connected",
                              "b", connected, "ServicesResolved", "b", servicesShown);
    } else if (path == Service) {
        sd_bus_message_append(message, Format, 1, interface, 2, "Device", "o", Device, "UUID", "s",
                              "4880c12c-fdcb-4077-8920-a450d7f9b907");
    } else {
        sd_bus_message_append(message, Format, 1, interface, 3, "Service", "o", Service, "UUID",
                              "s", "fec26ec4-6d71-4442-9f81-55bc21d658d6", "Flags", "as", 2,
                              "write", behaviour.indicatesOnly ? "indicate" : "notify");
    }
}

void StandIn::AddInterfaces(const char* path) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_signal(bus, &message, "/", Objects, "InterfacesAdded");
    sd_bus_message_append(message, "o", path);
    AppendInterfaces(message, path);
    sd_bus_send(bus, message, nullptr);
    sd_bus_message_unref(message);
}

void StandIn::RemoveInterfaces(const char* path) {
    sd_bus_emit_signal(bus, "/", Objects, "InterfacesRemoved", "oas", path, 1, InterfaceOf(path));
}

void StandIn::ChangeFlag(const char* path, const char* property, bool value) {
    sd_bus_emit_signal(bus, path, Properties, "PropertiesChanged", "sa{sv}as", InterfaceOf(path), 1,
                       property, "b", value, 0);
}

void StandIn::SetConnected(bool value) {
    if (!value) {
        CloseSocket();
        ShowServices(false);
        if (connected) {
            ChangeFlag(Device, "ServicesResolved", false);
        }
    }
    if (std::exchange(connected, value) != value) {
        ChangeFlag(Device, "Connected", value);
    }
}

void StandIn::Know(bool value) {
    if (std::exchange(behaviour.known, value) != value) {
        value ? AddInterfaces(Device) : RemoveInterfaces(Device);
    }
}

void StandIn::ShowServices(bool shown) {
    shown = shown && behaviour.hasService;
    if (std::exchange(servicesShown, shown) == shown) {
        return;
    }
    if (shown) {
        AddInterfaces(Service);
        AddInterfaces(Stream);
    } else {
        signalling = false;
        RemoveInterfaces(Stream);
        RemoveInterfaces(Service);
    }
}

void StandIn::CloseSocket() {
    if (socket >= 0) {
        close(std::exchange(socket, -1));
    }
}

void StandIn::FailReply(int n, bool silently) {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    failAt = n;
    failSilently = silently;
}

void StandIn::Power(bool on) {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    behaviour.powered = on;
    scanning = false;
    if (!on) {
        SetConnected(false);
    }
    ChangeFlag(Adapter, "Powered", on);
}

void StandIn::Unplug(bool away) {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    behaviour.hasAdapter = !away;
    scanning = false;
    if (away) {
        SetConnected(false);
        Know(false);
        RemoveInterfaces(Adapter);
    } else {
        AddInterfaces(Adapter);
    }
}

void StandIn::Advertise(const char* newName, const std::vector<std::uint8_t>& newPayload,
                        short newSignal) {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    name = newName;
    payload = newPayload;
    signal = newSignal;
    sd_bus_message* const message = BeginChange(bus, Device);
    sd_bus_message_append(message, "{sv}", "Name", "s", newName);
    sd_bus_message_append(message, "{sv}", "RSSI", "n", newSignal);
    sd_bus_message_open_container(message, 'e', "sv");
    sd_bus_message_append(message, "s", "ManufacturerData");
    sd_bus_message_open_container(message, 'v', "a{qv}");
    sd_bus_message_open_container(message, 'a', "{qv}");
    sd_bus_message_open_container(message, 'e', "qv");
    sd_bus_message_append(message, "q", 0x0500);
    EndChange(bus, message, newPayload, 5);
}

void StandIn::AdvertiseSignalOnly(short newSignal) {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    signal = newSignal;
    sd_bus_emit_signal(bus, Device, Properties, "PropertiesChanged", "sa{sv}as", DeviceInterface, 1,
                       "RSSI", "n", newSignal, 0);
}

bool StandIn::Notify(const std::vector<std::uint8_t>& value) {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    if (socket >= 0) {
        return send(socket, value.data(), value.size(), MSG_NOSIGNAL) >= 0 || errno != EAGAIN;
    }
    if (signalling) {
        sd_bus_message* const message = BeginChange(bus, Stream);
        sd_bus_message_open_container(message, 'e', "sv");
        sd_bus_message_append(message, "s", "Value");
        EndChange(bus, message, value, 2);
    }
    return true;
}

bool StandIn::IsNotifying() {
    const std::lock_guard<std::recursive_mutex> lock(mutex);
    // If recv returns 0, the library has closed its end of the socket.
    char byte;
    return signalling || (socket >= 0 && recv(socket, &byte, 1, MSG_DONTWAIT | MSG_PEEK) != 0);
}

}  // namespace orv::radio
