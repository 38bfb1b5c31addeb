#include <map>

#include "orv/doctor/examination.h"
#include "orv/scan/device_text.h"
#include "orv/terminal/printable.h"

namespace orv::doctor {

namespace {

constexpr int PollMs = 50;
constexpr int PollsPerQuestion = 4;
constexpr int ScanMs = 3000;
constexpr int LongestScanMs = 10000;  // maximum duration if no device is heard
constexpr int RadioReturnMs = 10000;
constexpr int WeakestSignal = -126;
constexpr int StrongestSignal = 20;

bool HasValues(const DiscoveredDevice& device) {
    return !ValueText(device.value0500).empty() || !ValueText(device.value1130).empty() ||
           !DataText(device).empty();
}

// Checks the listed devices. Stores the first name and the latest record of each.
class Listing {
  public:
    explicit Listing(Findings& written) : findings(written) {}

    void Add(const std::vector<DiscoveredDevice>& devices, std::int64_t ms);
    // Confirms the checks that are not refuted.
    void End();

    std::optional<std::int64_t> FirstMs() const { return firstMs; }
    const std::map<BluetoothAddress, DiscoveredDevice>& Latest() const { return latest; }

  private:
    void CheckName(const DiscoveredDevice& device);

    Findings& findings;
    std::map<BluetoothAddress, DiscoveredDevice> latest;
    std::map<BluetoothAddress, std::string> names;
    std::optional<std::int64_t> firstMs;
    int weakest = StrongestSignal;
    int strongest = WeakestSignal;
};

void Listing::CheckName(const DiscoveredDevice& device) {
    const std::string_view name = NameOf(device);
    const std::string& first = names.emplace(device.address, name).first->second;
    if (name.empty() && !first.empty()) {
        findings.Refute(Check::NameStays, "the name of a listed device became empty");
    }
    const std::size_t cut = UnfinishedBytes(name);
    if (cut > 0) {
        findings.Refute(Check::NameWhole, "the last " + Counted(cut, "byte") +
                                              " of a name are the beginning of a character");
    }
    const std::string_view whole = name.substr(0, name.size() - cut);
    if (Printable(whole) != whole) {
        findings.Refute(Check::NameHarmless,
                        "a name has control characters, marks that turn the direction of writing, "
                        "or bytes that are not UTF-8");
    }
}

void Listing::Add(const std::vector<DiscoveredDevice>& devices, std::int64_t ms) {
    for (const DiscoveredDevice& device : devices) {
        firstMs = firstMs.value_or(ms);
        CheckName(device);
        weakest = std::min<int>(weakest, device.rssi);
        strongest = std::max<int>(strongest, device.rssi);
        const auto known = latest.find(device.address);
        if (known != latest.end() && HasValues(known->second) && !HasValues(device)) {
            findings.Refute(Check::ScanValues, "the values of a listed device were unset again");
        }
        latest[device.address] = device;
    }
}

void Listing::End() {
    if (latest.empty()) {
        return;
    }
    const std::string devices = Counted(latest.size(), "device");
    findings.Confirm(Check::NameStays, devices + ", each with a name until the end");
    findings.Confirm(Check::NameWhole, devices + ", no name is cut");
    findings.Confirm(Check::NameHarmless, devices + ", each with a printable name");
    findings.Judge(Check::Signal, weakest >= WeakestSignal && strongest <= StrongestSignal,
                   std::to_string(weakest) + " to " + std::to_string(strongest) + " dBm");
    std::size_t withValues = 0;
    for (const auto& [address, device] : latest) {
        withValues += HasValues(device);
    }
    if (withValues > 0) {
        findings.Confirm(Check::ScanValues,
                         std::to_string(withValues) + " of " + devices + " have values");
    } else {
        findings.Skip(Check::ScanValues,
                      "no listed device has a value: none sends one, or the system does not tell "
                      "scan responses from advertisements, as before version 2004 of Windows 10");
    }
}

void ResumeScan(Examination& run, std::int32_t scanner, std::int64_t ms) {
    run.findings.Refute(Check::ScanLasts, "the radio went off " + std::to_string(ms) +
                                              " ms after the start of the scan");
    const std::int64_t begin = run.surroundings.Now();
    while (run.calls.Available().result != 0 && run.surroundings.Now() - begin < RadioReturnMs) {
        run.surroundings.Pass(PollMs);
    }
    run.calls.Start(scanner);
}

void Poll(Examination& run, std::int32_t scanner, Listing& listing) {
    const std::int64_t begin = run.surroundings.Now();
    for (int poll = 0;; ++poll) {
        const std::int64_t ms = run.surroundings.Now() - begin;
        listing.Add(run.calls.Devices(scanner), ms);
        if (ms >= (listing.FirstMs() || !run.whyNoRadio.empty() ? ScanMs : LongestScanMs)) {
            return;
        }
        if (poll % PollsPerQuestion == 0 && run.whyNoRadio.empty() &&
            run.calls.Available().result != 0) {
            ResumeScan(run, scanner, ms);
        }
        run.surroundings.Pass(PollMs);
    }
}

// Chooses the device that the user named, or else the one with the strongest signal.
void ChooseDevice(Examination& run, const Listing& listing) {
    const DiscoveredDevice* best = nullptr;
    for (const auto& [address, device] : listing.Latest()) {
        run.isHeard = run.isHeard || run.device == address;
        const bool isWanted = run.wantedName.empty() || NameOf(device) == run.wantedName;
        if (isWanted && (!best || device.rssi > best->rssi)) {
            best = &device;
        }
    }
    if (!run.device && best) {
        run.device = best->address;
        run.isHeard = true;
    }
}

void ReportHeard(Examination& run, const Listing& listing) {
    if (listing.FirstMs()) {
        std::string seen = "the first after " + std::to_string(*listing.FirstMs()) + " ms: ";
        for (const auto& [address, device] : listing.Latest()) {
            seen += (seen.back() == ' ' ? "" : ", ") + run.Named(device);
        }
        run.findings.Confirm(Check::FirstHeard, seen);
        if (!run.whyNoRadio.empty()) {
            run.findings.Refute(Check::RadioOn,
                                "BluetoothAvailable returned -1, and devices were "
                                "heard");
        }
        run.findings.Confirm(Check::ScanLasts, "the radio stayed on, " +
                                                   Counted(listing.Latest().size(), "device") +
                                                   " heard in " + std::to_string(ScanMs) + " ms");
    } else if (!run.connectMs.empty()) {
        run.findings.Refute(Check::FirstHeard, "nothing was heard for " +
                                                   std::to_string(LongestScanMs) +
                                                   " ms, and the device could be connected before");
    }
}

}  // namespace

void CheckScan(Examination& run) {
    const std::int32_t scanner = run.calls.Initialize().result;
    if (scanner == ORV_FAILED || run.calls.Start(scanner).result == ORV_FAILED) {
        run.findings.Refute(Check::FirstHeard, "the system refused to scan");
    } else {
        Listing listing(run.findings);
        Poll(run, scanner, listing);
        run.calls.Stop(scanner);
        listing.End();
        ReportHeard(run, listing);
        ChooseDevice(run, listing);
    }
    if (scanner != ORV_FAILED) {
        run.calls.Deinitialize(scanner);
    }
}

}  // namespace orv::doctor
