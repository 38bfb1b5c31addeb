// Fuzzes the log reader with any bytes. Its output must contain no control characters. Its output
// and its memory must be at most proportional to the size of the log.
#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

#include "orv/log/infer/overview.h"
#include "orv/log/show/json.h"
#include "orv/log/show/report_json.h"
#include "orv/log/show/text.h"
#include "orv/problem.h"

using namespace orv::log;

// Number of bytes that are allocated now, and its maximum so far.
static std::size_t held = 0;
static std::size_t mostHeld = 0;

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    void* memory = std::malloc(size);
    held += malloc_usable_size(memory);
    mostHeld = std::max(mostHeld, held);
    return memory;
}

void* operator new(std::size_t size) {
    void* memory = operator new(size, std::nothrow);
    if (!memory) {
        std::abort();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    held -= malloc_usable_size(memory);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace {

// Limits of output and memory per byte of the log. A failed call takes at least 33 bytes in the
// log, and the reader prints at most a dozen possible causes of 110 bytes each (more in JSON).
// `Constant` is added to each limit, for texts that occur once.
constexpr std::size_t MostTextPerByte = 60;
constexpr std::size_t MostJsonPerByte = 150;
constexpr std::size_t MostHeldPerByte = 40;
constexpr std::size_t Constant = 65536;

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

template <typename Write>
std::string Written(Write write) {
    char* text = nullptr;
    std::size_t length = 0;
    std::FILE* file = open_memstream(&text, &length);
    write(file);
    std::fclose(file);
    std::string written(text, length);
    std::free(text);
    return written;
}

void RequireHarmless(std::string_view written) {
    for (const char character : written) {
        Require(static_cast<unsigned char>(character) >= ' ' || character == '\n');
    }
}

void CheckPage(LogFile& log, Threads threads) {
    ReportCollector collected;
    const Totals totals = Analyse(log, FindResults(log), threads, collected);
    const std::string page = ReportJson({"log", true, threads, totals}, collected);
    Require(page.find('<') == page.npos);
}

void CheckExplained(LogFile& log, std::size_t size, Threads threads) {
    FindResults(log);  // throws if the input is not a log
    mostHeld = held;
    const std::size_t before = held;
    std::string text =
        Written([&](std::FILE* file) { PrintLog(file, /*colours=*/false, log, threads); });
    Require(mostHeld - before - text.size() <= MostHeldPerByte * size + Constant);
    Require(text.size() <= MostTextPerByte * size + Constant);
    RequireHarmless(text);
    text = Written([&](std::FILE* file) { WriteJson(file, log, threads); });
    Require(text.size() <= MostJsonPerByte * size + Constant);
    RequireHarmless(text);
}

// Returns a longer log: repeats some lines 128 times and lengthens others.
std::string Stretched(std::string_view log) {
    constexpr std::size_t Enough = 65536;
    std::string stretched;
    while (!log.empty() && stretched.size() < Enough) {
        const std::string line(log.substr(0, log.find('\n')));
        log.remove_prefix(std::min(log.size(), line.size() + 1));
        const auto how = static_cast<unsigned char>(line.empty() ? 0 : line.back()) % 4;
        for (int i = 0; i < (how == 1 ? 128 : 1); ++i) {
            stretched += line;
            for (int j = 0; how == 2 && j < 512; ++j) {
                stretched += line.substr(std::min<std::size_t>(line.size(), 13));
            }
            stretched += '\n';
        }
    }
    return stretched;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    try {
        LogFile log = LogFile::OfBytes(bytes);
        CheckExplained(log, size, Threads::One);
        CheckExplained(log, size, Threads::Many);
        CheckPage(log, Threads::Many);
        // Lengthens only inputs whose size is a multiple of 4, because long logs are slow.
        if (size % 4 == 0) {
            const std::string stretched = Stretched(bytes);
            LogFile longLog = LogFile::OfBytes(stretched);
            CheckExplained(longLog, stretched.size(), Threads::Many);
        }
    } catch (const orv::Problem&) {
        // The input is not a log.
    }
    return 0;
}
