// Any bytes as a log: the reader explains them, and nothing of them reaches a terminal or a page.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "orv/log/findings.h"
#include "orv/log/report_json.h"
#include "orv/log/text_printer.h"

using namespace orv::log;

namespace {

std::string TextOf(const Findings& findings) {
    char* text = nullptr;
    std::size_t length = 0;
    std::FILE* file = open_memstream(&text, &length);
    TextPrinter printer(file, /*colours=*/false);
    for (const Call& call : findings.calls) {
        printer.Print(call);
    }
    for (const Note& note : findings.notes) {
        printer.Print(note);
    }
    printer.Flush();
    std::fclose(file);
    const std::string printed(text, length);
    std::free(text);
    return printed;
}

void Check(std::string_view log, Threads threads) {
    for (const char character : TextOf(FindAll(log, threads))) {
        if (static_cast<unsigned char>(character) < ' ' && character != '\n') {
            std::abort();
        }
    }
    ReportCollector collected;
    Analysis analysis(collected, FindResults(log), threads);
    analysis.Feed(log);
    analysis.End();
    const std::string json = ReportJson({"log", true, threads, analysis.Sums()}, collected);
    if (json.find('<') != json.npos) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view log(reinterpret_cast<const char*>(data), size);
    Check(log, Threads::One);
    Check(log, Threads::Many);
    return 0;
}
