#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace orv::bridge {

enum class Io { Done, Nothing, Ended };

// A place, such as a TCP port, at which one program at a time (the client) connects to the bridge.
// No function blocks.
class Entrance {
  public:
    virtual ~Entrance() = default;

    // Returns the address or path that programs open, such as 127.0.0.1:7000.
    virtual std::string Place() const = 0;
    // Accepts a client, or detects its disconnect. `note` receives a text for the user. Returns how
    // many bytes the former client did not read, if the system reports this.
    virtual std::size_t Refresh(std::string& note) = 0;
    // Returns the name of the client, or an empty string.
    virtual std::string Client() const = 0;
    // Reads at most `most` bytes. Returns Ended if the client will send nothing more; it may still
    // read.
    virtual Io Read(std::string& bytes, std::size_t most) = 0;
    // Returns Ended if the client has disconnected.
    virtual Io Write(std::string_view bytes, std::size_t& written) = 0;
    // Returns false if the entrance cannot do this.
    virtual bool DropClient() = 0;
};

// Listens on HOST:PORT, [IPV6]:PORT, or PORT alone on the loopback address. Port 0 lets the system
// choose. Warns if other machines can connect. Throws a Problem.
std::unique_ptr<Entrance> Listen(const std::string& place);

// Opens a pseudo-terminal. A non-empty `link` is the path of a symbolic link to it, which the
// destructor removes. Throws a Problem if the path exists or the system has no pseudo-terminals.
std::unique_ptr<Entrance> OpenPty(const std::string& link);

}  // namespace orv::bridge
