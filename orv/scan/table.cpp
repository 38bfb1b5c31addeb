#include "orv/scan/table.h"

#include <algorithm>

#include "orv/address.h"
#include "orv/scan/device_text.h"
#include "orv/scan/signal.h"
#include "orv/terminal/printable.h"

namespace orv {

namespace {

constexpr std::size_t BarColumns = 10;
constexpr const char* Grey = "\033[90m";
constexpr const char* UsualColour = "\033[39m";

std::string Bar(int signal) {
    std::string bar;
    for (std::size_t i = 0; i < BarColumns; ++i) {
        bar += i < SignalShare(signal, BarColumns) ? "█" : "░";
    }
    return bar;
}

std::string Ago(double seconds) {
    const auto whole = static_cast<unsigned>(seconds);
    return whole < 2      ? "now"
           : whole < 60   ? std::to_string(whole) + " s ago"
           : whole < 3600 ? std::to_string(whole / 60) + " min ago"
                          : std::to_string(whole / 3600) + " h ago";
}

struct Column {
    const char* title;
    std::size_t width;
    int importance;       // columns with smaller numbers are added first
    TableKind leastKind;  // this and later kinds of table have the column
    std::string (*text)(const DiscoveredDevice&, const ScanHistory&);
};

constexpr std::size_t NameColumns = sizeof(DiscoveredDevice::name) - 1;
constexpr std::size_t NameColumnsAtLeast = 8;
constexpr std::size_t Name = 1;
constexpr const char* Nothing = "-";

std::string OrDash(const std::string& text) {
    return text.empty() ? Nothing : text;
}

const Column Columns[] = {
    {"address", 17, 0, TableKind::Once,
     [](auto& device, auto&) { return AddressText(device.address); }},
    {"name", NameColumns, 1, TableKind::Once,
     [](auto& device, auto& history) { return Printable(history.NameOf(device.address)); }},
    {"signal", BarColumns, 6, TableKind::Once,
     [](auto& device, auto& history) {
         return history.IsGone(device) ? std::string() : Bar(device.rssi);
     }},
    {"dBm", 4, 2, TableKind::Once, [](auto& device, auto&) { return std::to_string(device.rssi); }},
    {"latest", ScanHistory::Signals, 7, TableKind::Live,
     [](auto& device, auto& history) { return history.SignalsOf(device.address); }},
    {"last heard", 10, 3, TableKind::Changes,
     [](auto& device, auto& history) { return Ago(history.SecondsSinceHeard(device.address)); }},
    {"0500", 4, 4, TableKind::Once,
     [](auto& device, auto&) { return OrDash(ValueText(device.value0500)); }},
    {"1130", 4, 5, TableKind::Once,
     [](auto& device, auto&) { return OrDash(ValueText(device.value1130)); }},
    {"1118", 2 * sizeof(DiscoveredDevice::data1118), 8, TableKind::Once,
     [](auto& device, auto&) { return OrDash(DataText(device)); }},
};
constexpr std::size_t Count = std::size(Columns);

using Row = std::vector<std::string>;

// Divides the width of the terminal among the table's columns. A column of width 0 is omitted.
class Layout {
  public:
    explicit Layout(std::size_t columns) : left(columns) {}

    template <typename Wanted>
    void Take(const Wanted& isWanted) {
        for (int importance = 0; importance < static_cast<int>(Count); ++importance) {
            for (std::size_t i = 0; i < Count; ++i) {
                if (Columns[i].importance == importance && isWanted(i)) {
                    Take(i);
                }
            }
        }
    }
    void WidenName(std::size_t width) {
        const std::size_t more = width > widths[Name] ? width - widths[Name] : 0;
        if (widths[Name] > 0) {
            widths[Name] += std::min(more, left);
            left -= std::min(more, left);
        }
    }
    const std::vector<std::size_t>& Widths() const { return widths; }

  private:
    void Take(std::size_t column) {
        const std::size_t width = column == Name ? NameColumnsAtLeast : Columns[column].width;
        const std::size_t used = width + (isFirst ? 0 : 1);
        if (used <= left) {
            widths[column] = width;
            left -= used;
            isFirst = false;
        }
    }

    std::vector<std::size_t> widths = std::vector<std::size_t>(Count, 0);
    std::size_t left;
    bool isFirst = true;
};

// Includes a column without values only if the longest name leaves enough room.
std::vector<std::size_t> Widths(const std::vector<Row>& rows, std::size_t columns, TableKind kind) {
    const auto isEmpty = [&](std::size_t column) {
        return std::all_of(rows.begin(), rows.end(),
                           [&](const Row& row) { return row[column] == Nothing; });
    };
    const auto isIn = [&](std::size_t column) { return Columns[column].leastKind <= kind; };
    std::size_t longest = 0;
    for (const Row& row : rows) {
        longest = std::max(longest, ColumnsOf(row[Name]));
    }
    Layout layout(columns);
    layout.Take([&](std::size_t i) { return isIn(i) && (rows.empty() || !isEmpty(i)); });
    layout.WidenName(longest);
    layout.Take([&](std::size_t i) { return isIn(i) && !rows.empty() && isEmpty(i); });
    layout.WidenName(NameColumns);
    return layout.Widths();
}

std::string LineOf(const Row& row, const std::vector<std::size_t>& widths, std::size_t columns) {
    std::string line;
    for (std::size_t i = 0; i < Count; ++i) {
        if (widths[i] > 0) {
            line += (line.empty() ? "" : " ") + Fitted(row[i], widths[i]);
        }
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return Fitted(line, std::min(columns, ColumnsOf(line)));
}

}  // namespace

std::vector<std::string> TableOf(const std::vector<DiscoveredDevice>& devices, std::size_t columns,
                                 const ScanHistory& history, TableKind kind) {
    std::vector<Row> rows(devices.size());
    Row titles;
    for (const Column& column : Columns) {
        titles.emplace_back(column.title);
        for (std::size_t i = 0; i < devices.size(); ++i) {
            rows[i].push_back(column.text(devices[i], history));
        }
    }
    const std::vector<std::size_t> widths = Widths(rows, columns, kind);
    std::vector<std::string> lines{LineOf(titles, widths, columns)};
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const std::string line = LineOf(rows[i], widths, columns);
        const bool isGrey = kind == TableKind::Live && history.IsGone(devices[i]);
        lines.push_back(isGrey ? Grey + line + UsualColour : line);
    }
    return lines;
}

}  // namespace orv
