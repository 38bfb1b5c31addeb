#include "orv/transfer/source.h"

#include <filesystem>

#include "orv/library/library.h"
#include "orv/problem.h"
#include "orv/system_file.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

constexpr std::size_t PieceBytes = 16384;
constexpr int PollMs = 20;

}  // namespace

Source::Source(const std::string& fileName) : name(fileName) {
    if (name == "-") {
        input.emplace(terminal::ReadInput);
        return;
    }
    const std::filesystem::path path = PathOf(name);
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    const bool isFile =
        std::filesystem::is_regular_file(status) || std::filesystem::is_fifo(status);
    if (IsReservedName(path) || (std::filesystem::exists(status) && !isFile)) {
        throw Problem(ExitStatus::FileFailed, "cannot send " + name +
                                                  ": it is neither a file nor a pipe. Name a file "
                                                  "or a pipe, or - for the standard input");
    }
    if (std::filesystem::is_regular_file(status)) {
        size = std::filesystem::file_size(path, error);
    }
    file->stream.open(path, std::ios::binary);
    if (!file->stream) {
        throw Problem(ExitStatus::FileFailed,
                      name + " cannot be read. Check the path and your permissions");
    }
    input.emplace([shared = file]() -> std::optional<std::string> {
        std::string piece(PieceBytes, '\0');
        shared->stream.read(piece.data(), PieceBytes);
        piece.resize(static_cast<std::size_t>(shared->stream.gcount()));
        shared->isBroken = shared->stream.bad();
        return piece.empty() ? std::nullopt : std::optional(std::move(piece));
    });
}

std::string_view Source::Next(std::size_t most) {
    while (!hasEnded && pending.size() - taken < most && !terminal::IsInterrupted()) {
        pending.erase(0, taken);
        taken = 0;
        pending += input->Take(hasEnded);
        if (!hasEnded && pending.size() < most) {
            terminal::Pause(PollMs);
        }
    }
    if (file->isBroken) {
        throw Problem(ExitStatus::FileFailed,
                      name + " cannot be read to its end; what was read before was sent");
    }
    if (terminal::IsInterrupted()) {
        return {};
    }
    const std::string_view block = std::string_view(pending).substr(taken, most);
    taken += block.size();
    return block;
}

}  // namespace orv
