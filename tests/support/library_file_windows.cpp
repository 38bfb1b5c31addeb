#include <windows.h>

#include "log_file.h"

namespace orv {

std::string LibraryFile() {
    char file[MAX_PATH] = "";
    GetModuleFileNameA(GetModuleHandleA("quelvixwinlib.dll"), file, MAX_PATH);
    return file;
}

}  // namespace orv
