#include "orv/scan/view.h"

#include <cstdio>
#include <cstring>
#include <optional>

#include "orv/address.h"
#include "orv/scan/device_text.h"
#include "orv/scan/table.h"
#include "orv/terminal/live.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

constexpr int DrawMs = 250;
constexpr int ReportMs = 1000;
constexpr std::size_t AllColumns = 1000;

std::string Found(std::size_t count) {
    return count == 0 ? "no device heard" : Counted(count, "device");
}

std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    return text;
}

std::string Seconds(double seconds) {
    char text[32];
    snprintf(text, sizeof text, "%.1f s", seconds);
    return text;
}

class LiveTable : public ScanView {
  public:
    void Show(const ScanState& state) override {
        history.Add(state.devices, state.second);
        if (state.second * 1000 < nextMs) {
            return;
        }
        nextMs = state.second * 1000 + DrawMs;
        history.AddSignals(state.devices);
        Draw(state.devices, state.offSince
                                ? "Bluetooth went off " + Seconds(state.second - *state.offSince) +
                                      " ago; Ctrl-C ends the scan"
                                : "Ctrl-C ends the scan");
    }
    void End(const ScanState& state) override {
        history.Add(state.devices, state.second);
        Draw(state.devices, "scan ended");
    }

  private:
    void Draw(const Devices& devices, const std::string& what) {
        const terminal::Size size = terminal::SizeOf();
        std::vector<std::string> lines = TableOf(devices, size.columns, history, TableKind::Live);
        std::string sum = Found(devices.size()) + "; " + what;
        // Three rows of the terminal are for the titles, `sum` and the cursor.
        const std::size_t room = size.rows > 4 ? size.rows - 3 : 1;
        if (devices.size() > room) {
            lines.resize(room + 1);
            sum = std::to_string(devices.size() - room) + " more below; " + sum;
        }
        lines.push_back(Fitted(sum, size.columns));
        live.Draw(lines);
    }

    terminal::LiveLines live;
    ScanHistory history;
    double nextMs = 0;
};

// Each second, prints the devices that have changed or are gone. For output that is not a terminal.
class ChangeLines : public ScanView {
  public:
    void Show(const ScanState& state) override {
        history.Add(state.devices, state.second);
        ReportRadio(state);
        if (state.second * 1000 >= nextMs) {
            nextMs = state.second * 1000 + ReportMs;
            ReportDevices(state);
        }
    }
    void End(const ScanState& state) override {
        history.Add(state.devices, state.second);
        ReportDevices(state);
        terminal::Write(Joined(TableOf(state.devices, AllColumns, history, TableKind::Changes)));
    }

  private:
    static std::string Stamped(double second, const std::string& text) {
        char stamp[32];
        snprintf(stamp, sizeof stamp, "%7.1f s  ", second);
        return stamp + text + '\n';
    }

    void ReportRadio(const ScanState& state) {
        if (state.offSince.has_value() != isOff) {
            isOff = !isOff;
            terminal::Write(
                Stamped(state.second, isOff ? "Bluetooth went off"
                                            : "Bluetooth is on again; the scan continues"));
        }
    }

    void ReportDevices(const ScanState& state) {
        const std::vector<std::string> lines =
            TableOf(state.devices, AllColumns, history, TableKind::Once);
        std::string text;
        known.resize(state.devices.size());
        for (std::size_t i = 0; i < state.devices.size(); ++i) {
            const DiscoveredDevice& device = state.devices[i];
            const bool isGone = history.IsGone(device);
            if (memcmp(&known[i].record, &device, sizeof device) != 0 ||
                isGone != known[i].isGone) {
                text += Stamped(
                    state.second,
                    isGone ? AddressText(device.address) + " is no longer heard" : lines[i + 1]);
            }
            known[i] = {device, isGone};
        }
        terminal::Write(text);
    }

    struct Reported {
        DiscoveredDevice record;
        bool isGone;
    };
    std::vector<Reported> known;
    ScanHistory history;
    bool isOff = false;
    double nextMs = 0;
};

// On a terminal, a line shows the progress.
class OnlyTheEnd : public ScanView {
  public:
    explicit OnlyTheEnd(ScanFormat endFormat) : format(endFormat) {
        if (terminal::IsOutput()) {
            live.emplace();
        }
    }
    void Show(const ScanState& state) override {
        history.Add(state.devices, state.second);
        if (live) {
            char text[64];
            snprintf(text, sizeof text, "scanning, %.0f s: ", state.second);
            live->Draw({text + Found(state.devices.size())});
        }
    }
    void End(const ScanState& state) override {
        history.Add(state.devices, state.second);
        if (live) {
            live->Clear();
            live.reset();
        }
        const std::size_t columns = terminal::IsOutput() ? terminal::SizeOf().columns : AllColumns;
        const Devices& devices = state.devices;
        terminal::Write(format == ScanFormat::Json ? JsonOf(devices)
                        : format == ScanFormat::Csv
                            ? CsvOf(devices)
                            : Joined(TableOf(devices, columns, history, TableKind::Once)) +
                                  Found(devices.size()) + '\n');
    }

  private:
    const ScanFormat format;
    ScanHistory history;
    std::optional<terminal::LiveLines> live;
};

}  // namespace

std::unique_ptr<ScanView> MakeScanView(ScanFormat format) {
    if (format != ScanFormat::Watch) {
        return std::make_unique<OnlyTheEnd>(format);
    }
    if (terminal::IsOutput()) {
        return std::make_unique<LiveTable>();
    }
    return std::make_unique<ChangeLines>();
}

}  // namespace orv
