#include "orv/log/report_command.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "orv/log/log_bytes.h"
#include "orv/log/report_json.h"
#include "orv/log/report_page.h"
#include "orv/problem.h"
#include "orv/terminal/printable.h"

namespace orv::log {

namespace {

std::string PageOf(const std::string& path, std::string_view bytes, Threads threads) {
    ReportCollector collected;
    const ResultUse results = FindResults(bytes);
    Analysis analysis(collected, results, threads);
    analysis.Feed(bytes);
    analysis.End();
    std::string page;
    const auto append = [&page](std::string_view piece) { page += piece; };
    std::for_each(PageBeforeData.begin(), PageBeforeData.end(), append);
    page += ReportJson({path, results.any(), threads, analysis.Sums()}, collected);
    std::for_each(PageAfterData.begin(), PageAfterData.end(), append);
    return page;
}

}  // namespace

void WriteReport(const std::string& path, Threads threads, const std::string& output) {
    std::error_code notBoth;  // files are there; then they are not the same
    if (std::filesystem::equivalent(PathOf(path), PathOf(output), notBoth)) {
        throw Problem(ExitStatus::FileFailed,
                      Printable(output) + " is the log itself. Give the page another name.");
    }
    const std::string page = PageOf(path, ReadLogFile(path), threads);
    std::ofstream file(PathOf(output), std::ios::binary);
    file.write(page.data(), static_cast<std::streamsize>(page.size()));
    file.close();
    if (!file) {
        throw Problem(ExitStatus::FileFailed,
                      Printable(output) + " cannot be written. Is its folder there, and yours?");
    }
    std::printf("%s\n", Printable(output).c_str());
}

}  // namespace orv::log
