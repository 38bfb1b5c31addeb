#include "orv/scan/search.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "orv/address.h"
#include "orv/problem.h"
#include "orv/scan/device_text.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/step.h"
#include "orv/terminal/terminal.h"

namespace orv {

const char* const DeviceForms =
    "the name of a device, such as ORV-0042, or its address as A0:B1:C2:D3:E4:F5, "
    "A0-B1-C2-D3-E4-F5, A0B1C2D3E4F5 or 0xA0B1C2D3E4F5, or as the log writes it, 176685338322165. "
    "12 digits are always hexadecimal; a decimal number of 12 digits gets a 0 in front";

namespace {

constexpr auto PollEvery = std::chrono::milliseconds(50);
// Minimum duration of a search, because a second device of the same name may advertise later.
constexpr double LeastSeconds = 1;
constexpr std::string_view FamilyPrefix = "ORV";

Devices ScanUntil(Library& library, const std::function<bool(const Devices&)>& isOver) {
    Scanner scanner(library);
    for (;;) {
        Devices heard = scanner.Heard();
        if (isOver(heard)) {
            return heard;
        }
        std::this_thread::sleep_for(PollEvery);
    }
}

Devices Search(Library& library, const std::string& what,
               const std::function<bool(const Devices&, double)>& isFound) {
    const std::string step = "scanning for " + what;
    terminal::StepLine line(step, SearchSeconds);
    return ScanUntil(library, [&](const Devices& heard) {
        if (terminal::IsInterrupted()) {
            throw Problem(ExitStatus::Stopped,
                          std::string("stopped by ") + terminal::Interruption() + " while " + step);
        }
        line.Show();
        return isFound(heard, line.Seconds()) || line.Seconds() >= SearchSeconds;
    });
}

std::optional<DiscoveredDevice> At(BluetoothAddress address, const Devices& devices) {
    const auto found =
        std::find_if(devices.begin(), devices.end(),
                     [&](const DiscoveredDevice& device) { return device.address == address; });
    return found == devices.end() ? std::nullopt : std::optional(*found);
}

std::string ListOf(const Devices& devices) {
    std::string text;
    for (const DiscoveredDevice& device : devices) {
        text += (text.empty() ? "" : ", ") + std::string(NameOf(device)) + " (" +
                AddressText(device.address) + ')';
    }
    return text;
}

BluetoothAddress AddressOfName(const std::string& name, const Devices& heard) {
    Devices found;
    std::copy_if(heard.begin(), heard.end(), std::back_inserter(found),
                 [&](const DiscoveredDevice& device) { return NameOf(device) == name; });
    if (found.empty()) {
        throw Problem(
            ExitStatus::NoLink,
            "cannot find " + name + ": no device of this name was heard in " +
                std::to_string(SearchSeconds) + " s" +
                (heard.empty() ? ", nor any other" : ", but " + ListOf(heard)) +
                ". Check the name, and that the device is switched on, in range and not connected");
    }
    if (found.size() > 1) {
        throw Problem(ExitStatus::BadUsage, name + " is the name of several devices: " +
                                                ListOf(found) + ". Give the address of one");
    }
    fprintf(stderr, "orv: %s is %s, heard at %d dBm\n", Printable(name).c_str(),
            AddressText(found[0].address).c_str(), found[0].rssi);
    return found[0].address;
}

}  // namespace

bool IsDevice(std::string_view text) {
    return FindAddress(text) || text.substr(0, FamilyPrefix.size()) == FamilyPrefix;
}

void CheckDevices(const std::vector<std::string>& texts) {
    std::vector<std::string> named;
    for (const std::string& text : texts) {
        if (!IsDevice(text)) {
            throw Problem(ExitStatus::BadUsage,
                          '"' + text +
                              "\" is not an address, and not a name that begins with ORV. Give " +
                              DeviceForms);
        }
        const auto address = FindAddress(text);
        const std::string name = address ? AddressText(*address) : text;
        if (std::find(named.begin(), named.end(), name) != named.end()) {
            throw Problem(ExitStatus::BadUsage, name + " is named twice: name each device once");
        }
        named.push_back(name);
    }
}

std::vector<BluetoothAddress> FindDevices(Library& library, const std::vector<std::string>& texts) {
    CheckDevices(texts);
    std::string names;
    for (const std::string& text : texts) {
        names += FindAddress(text) ? "" : (names.empty() ? "" : ", ") + Printable(text);
    }
    Devices heard;
    if (!names.empty()) {
        heard = Search(library, names, [&](const Devices& devices, double seconds) {
            return seconds >= LeastSeconds &&
                   std::all_of(texts.begin(), texts.end(), [&](const std::string& text) {
                       return FindAddress(text) ||
                              std::any_of(devices.begin(), devices.end(), [&](const auto& device) {
                                  return NameOf(device) == text;
                              });
                   });
        });
    }
    std::vector<BluetoothAddress> addresses;
    std::vector<std::string> found;
    for (const std::string& text : texts) {
        const auto given = FindAddress(text);
        addresses.push_back(given ? *given : AddressOfName(text, heard));
        found.push_back(AddressText(addresses.back()));
    }
    CheckDevices(found);
    return addresses;
}

BluetoothAddress FindDevice(Library& library, const std::string& text) {
    return FindDevices(library, {text}).front();
}

std::optional<DiscoveredDevice> SearchDevice(Library& library, BluetoothAddress address) {
    return At(address, Search(library, AddressText(address), [&](const Devices& heard, double) {
                  return At(address, heard).has_value();
              }));
}

std::optional<DiscoveredDevice> SearchSilently(Library& library, BluetoothAddress address,
                                               const std::function<bool()>& isStopped) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(SearchSeconds);
    try {
        return At(address, ScanUntil(library, [&](const Devices& heard) {
                      return At(address, heard) || isStopped() ||
                             std::chrono::steady_clock::now() >= end;
                  }));
    } catch (const Problem&) {
        return std::nullopt;
    }
}

}  // namespace orv
