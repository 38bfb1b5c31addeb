#include "orv/log/log_bytes.h"

#include <fstream>
#include <system_error>
#include <utility>

#include "orv/problem.h"
#include "orv/terminal/printable.h"

namespace orv::log {

std::filesystem::path PathOf(const std::string& path) {
    return std::u8string(path.begin(), path.end());
}

std::optional<std::string> ReadBytes(const std::string& path, std::uint64_t offset) {
    const std::filesystem::path place = PathOf(path);
    std::error_code problem;
    const std::uintmax_t size = std::filesystem::file_size(place, problem);
    std::ifstream file(place, std::ios::binary);
    if (problem || !file) {
        return std::nullopt;
    }
    std::string bytes(size > offset ? static_cast<std::size_t>(size - offset) : 0, '\0');
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

std::string ReadLogFile(const std::string& path) {
    std::optional<std::string> bytes = ReadBytes(path);
    if (!bytes) {
        throw Problem(ExitStatus::FileFailed,
                      Printable(path) +
                          " cannot be read. The log lies beside the library, under "
                          "its name with .log added.");
    }
    return *std::move(bytes);
}

}  // namespace orv::log
