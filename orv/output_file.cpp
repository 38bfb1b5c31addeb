#include "orv/output_file.h"

#include <cerrno>
#include <system_error>

#include "orv/problem.h"
#include "orv/system_file.h"

namespace orv {

namespace fs = std::filesystem;

namespace {

// Maximum number of unfinished files that killed processes may have left in the directory.
constexpr int MostUnfinished = 100;

constexpr fs::perms AnyWrite =
    fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;

Problem Failed(const std::string& name, const std::string& why) {
    return {ExitStatus::FileFailed, name + " cannot be written: " + why};
}

std::string Reason(int error) {
    return std::generic_category().message(error) +
           ". Check the folder, the disk space and your permissions";
}

// Throws if the target exists and is not a writable regular file.
void RequireReplaceable(const std::string& name, const fs::path& target) {
    if (name.empty()) {
        throw Failed("The file", "its name is empty");
    }
    if (IsLink(target)) {
        throw Failed(name, "it is a link. Name the file that it points to, or another one");
    }
    std::error_code problem;  // ignored: creating the new file then fails
    const fs::file_status status = fs::status(target, problem);
    const bool isReserved = IsReservedName(target);
    if (isReserved || (fs::exists(status) && !fs::is_regular_file(status))) {
        throw Failed(name, fs::is_directory(status)
                               ? "it is a folder. Name a file in it"
                               : "it is a device or a pipe. Name a regular file");
    }
    // A rename would replace even a write-protected file.
    const bool isProtected = (status.permissions() & AnyWrite) == fs::perms::none;
    if (fs::exists(status) && isProtected) {
        throw Failed(name, "it is write-protected. Name another file");
    }
}

fs::path Numbered(const fs::path& target, int number) {
    fs::path path = target;
    path += number == 0 ? ".part" : ".part" + std::to_string(number);
    return path;
}

}  // namespace

OutputFile::OutputFile(const std::string& path)
    : name(path), target(std::u8string(path.begin(), path.end())) {
    RequireReplaceable(name, target);
    for (int number = 0; !file && number < MostUnfinished; ++number) {
        unfinished = Numbered(target, number);
        file = CreateNewFile(unfinished);
        if (!file && errno != EEXIST) {
            break;
        }
    }
    if (!file) {
        throw Failed(name, Reason(errno));
    }
    // Copies the permissions of the previous file, so that no other users can read the new one.
    std::error_code problem;  // ignored: the default permissions remain
    const fs::file_status before = fs::status(target, problem);
    if (fs::exists(before)) {
        fs::permissions(unfinished, before.permissions(), problem);
    }
}

OutputFile::~OutputFile() {
    if (file) {
        std::fclose(file);
        std::error_code problem;  // ignored: the unfinished file remains
        fs::remove(unfinished, problem);
    }
}

void OutputFile::Write(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
        throw Failed(name, Reason(errno));
    }
}

void OutputFile::Flush() {
    if (std::fflush(file) != 0) {
        throw Failed(name, Reason(errno));
    }
}

void OutputFile::Commit() {
    Flush();
    std::FILE* written = file;
    file = nullptr;
    std::error_code problem;
    if (std::fclose(written) != 0) {
        problem = {errno, std::generic_category()};
    } else {
        fs::rename(unfinished, target, problem);
    }
    if (problem) {
        std::error_code leftOver;  // ignored: the unfinished file remains
        fs::remove(unfinished, leftOver);
        throw Failed(name, problem.message() + ". Check that no other program has it open");
    }
}

}  // namespace orv
