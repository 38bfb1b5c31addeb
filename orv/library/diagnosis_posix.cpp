// Asks the Linux Bluetooth daemon why Bluetooth is not available.
#include <systemd/sd-bus.h>

#include <cerrno>
#include <string_view>

#include "orv/library/diagnosis.h"

namespace orv {

namespace {

constexpr std::uint64_t AnswerLimitUs = 5'000'000;

std::string WhyNoAnswer(std::string_view error) {
    if (error == SD_BUS_ERROR_ACCESS_DENIED) {
        return "this user may not use the Bluetooth daemon: run `sudo usermod -aG bluetooth $USER` "
               "and log in again";
    }
    return "the Bluetooth daemon does not run: run `sudo systemctl start bluetooth`, after "
           "`sudo apt install bluez` if it is not installed";
}

// Returns why no radio is on, according to the daemon's reply to GetManagedObjects.
std::string WhyNoRadio(sd_bus_message* reply) {
    bool hasAdapter = false;
    const char* name = nullptr;
    sd_bus_message_enter_container(reply, 'a', "{oa{sa{sv}}}");
    while (sd_bus_message_enter_container(reply, 'e', "oa{sa{sv}}") > 0) {
        sd_bus_message_read(reply, "o", &name);
        sd_bus_message_enter_container(reply, 'a', "{sa{sv}}");
        while (sd_bus_message_enter_container(reply, 'e', "sa{sv}") > 0) {
            sd_bus_message_read(reply, "s", &name);
            hasAdapter |= std::string_view(name) == "org.bluez.Adapter1";
            sd_bus_message_skip(reply, "a{sv}");
            sd_bus_message_exit_container(reply);
        }
        sd_bus_message_exit_container(reply);
        sd_bus_message_exit_container(reply);
    }
    return hasAdapter ? "the Bluetooth radio is off: run `rfkill unblock bluetooth; "
                        "bluetoothctl power on`"
                      : "there is no Bluetooth adapter: plug one in, or load the driver of the one "
                        "that is there by `sudo modprobe btusb`";
}

std::string Ask(sd_bus* bus) {
    sd_bus_error error{};
    sd_bus_message* call = nullptr;
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_call(bus, &call, "org.bluez", "/",
                                   "org.freedesktop.DBus.ObjectManager", "GetManagedObjects");
    const bool answered = sd_bus_call(bus, call, AnswerLimitUs, &error, &reply) >= 0;
    std::string why = answered ? WhyNoRadio(reply) : WhyNoAnswer(error.name ? error.name : "");
    sd_bus_message_unref(call);
    sd_bus_message_unref(reply);
    sd_bus_error_free(&error);
    return why;
}

}  // namespace

std::string WhyNotAvailable() {
    sd_bus* bus = nullptr;
    const int code = sd_bus_open_system(&bus);
    std::string why =
        code >= 0 ? Ask(bus)
        : code == -EACCES || code == -EPERM
            ? WhyNoAnswer(SD_BUS_ERROR_ACCESS_DENIED)
            : "the system's message bus does not run: run `sudo systemctl start dbus`";
    sd_bus_flush_close_unref(bus);
    return why;
}

}  // namespace orv
