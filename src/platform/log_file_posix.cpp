#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include "platform/log_file.h"

namespace orv::system {

namespace {

bool OpenThen(const char* path, int mode, std::string_view bytes) {
    // O_NOFOLLOW: a planted symbolic link must not redirect the log into another file.
    const int file = open(path, O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | mode, 0666);
    if (file < 0) {
        return false;
    }
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            break;
        }
    }
    close(file);
    return true;
}

}  // namespace

bool EmptyFile(const char* path) {
    return OpenThen(path, O_TRUNC, {});
}

bool AppendToFile(const char* path, std::string_view bytes) {
    return OpenThen(path, O_APPEND, bytes);
}

}  // namespace orv::system
