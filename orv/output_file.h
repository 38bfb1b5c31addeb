// A file that a command writes completely or not at all.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace orv {

// Writes to a new file beside the path. Commit renames it; until then, the previous file remains.
class OutputFile {
  public:
    // `path` is UTF-8. Throws a Problem if it names a link, a directory or a device, or if the new
    // file cannot be created.
    explicit OutputFile(const std::string& path);
    // Removes the new file if it was not committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Write, Flush and Commit throw a Problem if the file cannot be written.
    void Write(std::string_view bytes);
    // Passes the written bytes to the system, which keeps them even if the program is killed.
    void Flush();
    // Gives the new file its final name. Call nothing else afterwards.
    void Commit();

  private:
    std::string name;
    std::filesystem::path target;
    std::filesystem::path unfinished;
    std::FILE* file = nullptr;  // null after Commit
};

}  // namespace orv
