#include <fcntl.h>

#include "orv/system_file.h"

namespace orv {

bool IsLink(const std::filesystem::path& path) {
    std::error_code missing;  // set if nothing exists at the path
    return std::filesystem::is_symlink(path, missing);
}

bool IsReservedName(const std::filesystem::path&) {
    return false;
}

std::FILE* CreateNewFile(const std::filesystem::path& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    return file < 0 ? nullptr : fdopen(file, "wb");
}

OpenFile OpenForReading(const std::filesystem::path& path) {
    const int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) {
        return nullptr;
    }
    fcntl(file, F_SETFL, 0);  // lets reads wait for data again
    return OpenFile(fdopen(file, "rb"));
}

}  // namespace orv
