#include "orv/transfer/progress.h"

#include <algorithm>
#include <cstdio>

#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

constexpr double SecondsBetweenDrawings = 0.1;
constexpr std::size_t BarColumns = 20;

std::string Bar(std::uint64_t bytes, std::uint64_t total) {
    const auto full = static_cast<std::size_t>(
        static_cast<double>(bytes) / static_cast<double>(total) * static_cast<double>(BarColumns));
    std::string bar;
    for (std::size_t i = 0; i < BarColumns; ++i) {
        bar += i < full ? "█" : "░";
    }
    return bar;
}

std::string TimeText(double seconds) {
    const auto whole = static_cast<long long>(std::min(seconds, 359999.0));
    char text[32];
    if (whole < 3600) {
        snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
    } else {
        snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                 whole % 60);
    }
    return text;
}

}  // namespace

std::string SizeText(double bytes) {
    static constexpr const char* Units[] = {"B", "KiB", "MiB", "GiB"};
    std::size_t unit = 0;
    while (bytes >= 1024 && unit + 1 < std::size(Units)) {
        bytes /= 1024;
        ++unit;
    }
    char text[32];
    snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", bytes, Units[unit]);
    return text;
}

Progress::Progress(const char* verbShown, std::uint64_t totalBytes)
    : verb(verbShown), total(totalBytes) {
    if (terminal::IsOutput()) {
        live.emplace();
    }
}

double Progress::Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void Progress::Show(std::uint64_t bytes) {
    const double seconds = Seconds();
    if (!live || (drawnAt >= 0 && seconds < drawnAt + SecondsBetweenDrawings)) {
        return;
    }
    drawnAt = seconds;
    const double rate = seconds > 0 ? static_cast<double>(bytes) / seconds : 0;
    std::string line = verb + std::string(" ");
    if (total > 0) {
        line += Bar(bytes, total) + ' ' + SizeText(static_cast<double>(bytes)) + " of " +
                SizeText(static_cast<double>(total));
    } else {
        line += SizeText(static_cast<double>(bytes));
    }
    line += ", " + SizeText(rate) + "/s";
    if (total > 0 && bytes > 0) {
        line += ", " + TimeText(static_cast<double>(total - bytes) / rate) + " left";
    }
    const std::size_t columns = terminal::SizeOf().columns;
    live->Draw({ColumnsOf(line) > columns ? Fitted(line, columns) : line});
}

std::string Progress::End(std::uint64_t bytes) {
    const double seconds = Seconds();
    if (live) {
        live->Clear();
        live.reset();
    }
    char text[32];
    snprintf(text, sizeof text, "in %.1f s", seconds);
    return text + (seconds > 0 ? ", " + SizeText(static_cast<double>(bytes) / seconds) + "/s"
                               : std::string());
}

}  // namespace orv
