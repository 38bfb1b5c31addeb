#include "orv/scan/table.h"

#include <algorithm>

#include "orv/address.h"
#include "orv/scan/device_text.h"
#include "orv/terminal/printable.h"

namespace orv {

namespace {

// dBm of an empty and of a full bar: about the ends of what a radio hears and of what is near.
constexpr int Weakest = -100;
constexpr int Strongest = -40;
constexpr std::size_t BarColumns = 10;

// How much of `full` a signal fills, 0 to `full`.
std::size_t Share(int signal, std::size_t full) {
    const int clamped = std::clamp(signal, Weakest, Strongest) - Weakest;
    return (static_cast<std::size_t>(clamped) * full + (Strongest - Weakest) / 2) /
           static_cast<std::size_t>(Strongest - Weakest);
}

std::string Bar(int signal) {
    std::string bar;
    for (std::size_t i = 0; i < BarColumns; ++i) {
        bar += i < Share(signal, BarColumns) ? "█" : "░";
    }
    return bar;
}

struct Column {
    const char* title;
    std::size_t width;
    int importance;  // 0 is never left out
    std::string (*text)(const DiscoveredDevice&, const SignalHistory*);
};

constexpr std::size_t NameColumns = sizeof(DiscoveredDevice::name) - 1;
constexpr std::size_t NameColumnsAtLeast = 8;

std::string OrDash(const std::string& text) {
    return text.empty() ? "-" : text;
}

const Column Columns[] = {
    {"address", 17, 0, [](auto& device, auto*) { return AddressText(device.address); }},
    {"name", NameColumns, 1, [](auto& device, auto*) { return Printable(NameOf(device)); }},
    {"signal", BarColumns, 5, [](auto& device, auto*) { return Bar(device.rssi); }},
    {"dBm", 4, 2, [](auto& device, auto*) { return std::to_string(device.rssi); }},
    {"latest", SignalHistory::Length, 6,
     [](auto& device, auto* history) { return history->Of(device.address); }},
    {"0500", 4, 3, [](auto& device, auto*) { return OrDash(ValueText(device.value0500)); }},
    {"1130", 4, 4, [](auto& device, auto*) { return OrDash(ValueText(device.value1130)); }},
    {"1118", 2 * sizeof(DiscoveredDevice::data1118), 7,
     [](auto& device, auto*) { return OrDash(DataText(device)); }},
};

// What is shown: for each column its width, 0 for one that is left out.
std::vector<std::size_t> Widths(std::size_t columns, std::size_t nameColumns, bool withHistory) {
    std::vector<std::size_t> widths(std::size(Columns), 0);
    std::size_t used = 0;
    const int last = static_cast<int>(std::size(Columns));
    for (int importance = 0; importance < last; ++importance) {
        for (std::size_t i = 0; i < std::size(Columns); ++i) {
            const bool isName = importance == 1;
            const std::size_t gap = used > 0 ? 1 : 0;
            const std::size_t width = isName ? NameColumnsAtLeast : Columns[i].width;
            if (Columns[i].importance != importance || used + gap + width > columns ||
                (Columns[i].title == std::string("latest") && !withHistory)) {
                continue;
            }
            widths[i] = width;
            used += gap + width;
        }
    }
    // The name takes what is left over.
    if (widths[1] > 0) {
        widths[1] = std::min(nameColumns, widths[1] + columns - used);
    }
    return widths;
}

}  // namespace

void SignalHistory::Add(const std::vector<DiscoveredDevice>& devices) {
    for (const DiscoveredDevice& device : devices) {
        std::vector<int>& signal = signals[device.address];
        signal.push_back(device.rssi);
        if (signal.size() > Length) {
            signal.erase(signal.begin());
        }
    }
}

std::string SignalHistory::Of(BluetoothAddress address) const {
    static constexpr const char* Steps[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    std::string text;
    const auto found = signals.find(address);
    if (found != signals.end()) {
        for (const int signal : found->second) {
            text += Steps[Share(signal, std::size(Steps) - 1)];
        }
    }
    return text;
}

std::vector<std::string> TableOf(const std::vector<DiscoveredDevice>& devices, std::size_t columns,
                                 const SignalHistory* history) {
    std::size_t nameColumns = NameColumns;  // more where something in a name had to be escaped
    for (const DiscoveredDevice& device : devices) {
        nameColumns = std::max(nameColumns, ColumnsOf(Printable(NameOf(device))));
    }
    const std::vector<std::size_t> widths = Widths(columns, nameColumns, history != nullptr);
    const auto lineOf = [&](auto&& textOf) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (widths[i] > 0) {
                line += (line.empty() ? "" : " ") + Fitted(textOf(Columns[i]), widths[i]);
            }
        }
        line.erase(line.find_last_not_of(' ') + 1);
        return Fitted(line, std::min(columns, ColumnsOf(line)));
    };
    std::vector<std::string> lines;
    lines.push_back(lineOf([](const Column& column) { return std::string(column.title); }));
    for (const DiscoveredDevice& device : devices) {
        lines.push_back(lineOf([&](const Column& column) { return column.text(device, history); }));
    }
    return lines;
}

}  // namespace orv
