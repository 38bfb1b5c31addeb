#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include "orv/system_file.h"

namespace orv {

// Reads attributes, because the C++ library follows links on Windows. Links and cloud files are
// both reparse points, so only the tags of links count.
bool IsLink(const std::filesystem::path& path) {
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(path.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return false;
    }
    FindClose(search);
    return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK ||
            found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

bool IsReservedName(const std::filesystem::path& path) {
    const HANDLE file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const DWORD type = GetFileType(file);
    CloseHandle(file);
    return type == FILE_TYPE_CHAR;
}

std::FILE* CreateNewFile(const std::filesystem::path& path) {
    const int file = _wopen(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
                            _S_IREAD | _S_IWRITE);
    return file < 0 ? nullptr : _fdopen(file, "wb");
}

OpenFile OpenForReading(const std::filesystem::path& path) {
    return OpenFile(_wfopen(path.c_str(), L"rb"));
}

}  // namespace orv
