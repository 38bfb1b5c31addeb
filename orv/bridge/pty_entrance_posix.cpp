// A pseudo-terminal for programs that use serial ports. The path stays the same when a program
// closes it.
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "orv/bridge/entrance.h"
#include "orv/library/library.h"
#include "orv/problem.h"

namespace orv::bridge {

namespace {

namespace fs = std::filesystem;

struct File {
    explicit File(int opened) : descriptor(opened) {
        if (opened < 0) {
            throw Problem(ExitStatus::FileFailed,
                          std::string("cannot open a pseudo-terminal: ") + strerror(errno) +
                              ". Check that /dev/pts is mounted and has free numbers");
        }
    }
    ~File() { close(descriptor); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const int descriptor;
};

class PtyEntrance : public Entrance {
  public:
    explicit PtyEntrance(const std::string& link)
        : terminal(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
        char text[64] = "";
        const bool isReady = grantpt(terminal.descriptor) == 0 &&
                             unlockpt(terminal.descriptor) == 0 &&
                             ptsname_r(terminal.descriptor, text, sizeof text) == 0;
        name = isReady ? text : "";
        MakeRaw();
        if (!link.empty()) {
            MakeLink(PathOf(link));
        }
    }

    ~PtyEntrance() override {
        std::error_code error;
        if (!path.empty() && fs::read_symlink(path, error) == name) {
            fs::remove(path, error);
        }
    }

    std::string Place() const override { return path.empty() ? name : TextOf(path); }

    std::size_t Refresh(std::string&) override {
        pollfd polled{terminal.descriptor, POLLIN, 0};
        poll(&polled, 1, 0);
        const bool wasUsed = isUsed;
        // Unread input counts as use, because a program may have opened the terminal, written to it
        // and closed it since the last call.
        isUsed = (polled.revents & POLLHUP) == 0 || (polled.revents & POLLIN) != 0;
        return wasUsed && !isUsed ? TakeUnread() : 0;
    }

    std::string Client() const override { return isUsed ? "a program" : ""; }

    Io Read(std::string& bytes, std::size_t most) override {
        bytes.resize(most);
        const ssize_t count = read(terminal.descriptor, bytes.data(), most);
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return count > 0 ? Io::Done : Io::Nothing;  // Refresh detects a closed terminal
    }

    Io Write(std::string_view bytes, std::size_t& written) override {
        const ssize_t count = write(terminal.descriptor, bytes.data(), bytes.size());
        written = count > 0 ? static_cast<std::size_t>(count) : 0;
        return count > 0 ? Io::Done : Io::Nothing;
    }

    bool DropClient() override { return false; }

  private:
    int OpenProgramsSide() const {
        return open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    }

    // Sets raw mode permanently, so that bytes pass unchanged. Also opens and closes the programs'
    // side once: only then can poll report whether a program uses it.
    void MakeRaw() const {
        const File side(OpenProgramsSide());
        termios settings{};
        tcgetattr(side.descriptor, &settings);
        cfmakeraw(&settings);
        tcsetattr(side.descriptor, TCSANOW, &settings);
    }

    // Removes the bytes that the last program did not read, because the next program would receive
    // them. Returns their number. Reads in a loop, because they arrive in pieces.
    std::size_t TakeUnread() const {
        constexpr int PieceArrivesMs = 10;
        const int side = OpenProgramsSide();
        pollfd polled{side, POLLIN, 0};
        std::size_t unread = 0;
        char bytes[4096];
        while (side >= 0 && poll(&polled, 1, PieceArrivesMs) > 0) {
            const ssize_t count = read(side, bytes, sizeof bytes);
            if (count <= 0) {
                break;
            }
            unread += static_cast<std::size_t>(count);
        }
        tcflush(side, TCIFLUSH);  // drops a partial line if a program set line mode
        close(side);
        return unread;
    }

    void MakeLink(const fs::path& link) {
        std::error_code error;
        const fs::path old = fs::read_symlink(link, error);
        if (!error && old.parent_path() == "/dev/pts" && !fs::exists(old)) {
            fs::remove(link, error);  // a bridge that was killed left this link
        }
        fs::create_symlink(name, link, error);
        if (error) {
            throw Problem(ExitStatus::FileFailed,
                          "cannot create the link " + TextOf(link) + ": " + error.message() +
                              ". Give another path by --link, or remove what is there if no "
                              "program uses it");
        }
        path = link;
    }

    const File terminal;
    std::string name;
    fs::path path;  // symbolic link to the terminal, or empty
    bool isUsed = false;
};

}  // namespace

std::unique_ptr<Entrance> OpenPty(const std::string& link) {
    return std::make_unique<PtyEntrance>(link);
}

}  // namespace orv::bridge
