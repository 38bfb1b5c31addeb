#include "orv/doctor/examination.h"

#include <utility>

#include "orv/address.h"
#include "orv/scan/device_text.h"

namespace orv::doctor {

Examination::Examination(Library loaded)
    : library(std::move(loaded)), surroundings(library), calls(library, surroundings) {}

std::string Examination::Named(const DiscoveredDevice& heard) const {
    const std::string strength = std::to_string(heard.rssi) + " dBm";
    return isAnonymous ? "a device at " + strength
                       : std::string(NameOf(heard)) + " (" + AddressText(heard.address) + ") at " +
                             strength;
}

std::uintmax_t Examination::LogSize() const {
    std::error_code missing;
    const std::uintmax_t size = std::filesystem::file_size(library.LogFile(), missing);
    return missing ? 0 : size;
}

std::string Examination::WhyNoLink() const {
    return closeHangs                       ? "a disconnect hangs, so no link can be used"
           : isLost                         ? "the device can no longer be reached"
           : !device && !wantedName.empty() ? "the scan has not heard a device of that name"
           : !device                        ? "no device: give one with --device, or bring one near"
           : connectMs.empty()              ? "no connect succeeded"
                                            : "";
}

std::string Examination::WhyNotTested(Need need) const {
    const std::string whyNoLink = WhyNoLink();
    switch (need) {
        case Need::Nothing:
            break;
        case Need::Address:
            return "give the device's address with --device";
        case Need::Heard:
            return whyNoRadio.empty() ? "no device was heard" : whyNoRadio;
        case Need::Link:
            return !whyNoRadio.empty()  ? whyNoRadio
                   : !whyNoLink.empty() ? whyNoLink
                                        : "no connect succeeded";
        case Need::Echo:
            return !whyNoRadio.empty() ? whyNoRadio : !whyNoLink.empty() ? whyNoLink : whyNoEcho;
        case Need::Switch:
            return !whyNoRadio.empty()                   ? whyNoRadio
                   : !surroundings.WhyNoSwitch().empty() ? surroundings.WhyNoSwitch()
                   : !whyNoEcho.empty()                  ? whyNoEcho
                                                         : "no device was heard";
        case Need::Log:
            return whyNoLog;
    }
    return "the run ended before";
}

}  // namespace orv::doctor
