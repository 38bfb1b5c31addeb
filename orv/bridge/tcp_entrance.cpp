#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <cstdio>
#include <regex>
#include <utility>

#include "orv/bridge/entrance.h"
#include "orv/problem.h"
#include "socket_options.h"

namespace orv::bridge {

namespace {

using asio::ip::tcp;
using Error = std::error_code;

// Bytes that the system buffers for a client in each direction. The default grows to megabytes.
constexpr int SystemBuffer = 65536;

Problem CannotListen(const std::string& place, const std::string& why) {
    return {ExitStatus::BadUsage,
            "cannot listen on " + place + ": " + why +
                ". Write --listen HOST:PORT, [IPV6]:PORT, or PORT alone for 127.0.0.1, with an "
                "address of this machine and a port that no other program uses; port 0 lets the "
                "system choose"};
}

tcp::endpoint EndpointOf(asio::io_context& context, const std::string& place) {
    static const std::regex form(R"((?:(?:\[([^\]]+)\]|([^:]+)):)?(\d{1,5}))");
    std::smatch parts;
    if (!std::regex_match(place, parts, form) || std::stoul(parts[3]) > UINT16_MAX) {
        throw CannotListen(place, "it is not an address and port");
    }
    const std::string host = parts[1].str() + parts[2].str();
    Error error;
    const auto found =
        tcp::resolver(context).resolve(host.empty() ? "127.0.0.1" : host, parts[3].str(), error);
    if (error) {
        throw CannotListen(place, error.message());
    }
    return found.begin()->endpoint();
}

std::string NameOf(const tcp::endpoint& endpoint) {
    const std::string host = endpoint.address().to_string();
    return (endpoint.address().is_v6() ? "[" + host + "]" : host) + ":" +
           std::to_string(endpoint.port());
}

class TcpEntrance : public Entrance {
  public:
    explicit TcpEntrance(const std::string& place) {
        const tcp::endpoint endpoint = EndpointOf(context, place);
        const int on = 1;
        Error error;
        acceptor.open(endpoint.protocol(), error);
        setsockopt(acceptor.native_handle(), SOL_SOCKET, ListenOption,
                   reinterpret_cast<const char*>(&on), sizeof on);
        if (error || acceptor.bind(endpoint, error) || acceptor.listen(4, error) ||
            acceptor.non_blocking(true, error)) {
            throw CannotListen(place, error.message());
        }
        if (!endpoint.address().is_loopback()) {
            fprintf(stderr,
                    "orv: warning: other machines can connect to %s and use the device, without a "
                    "password and unencrypted. Listen on 127.0.0.1 unless you want that.\n",
                    Place().c_str());
        }
    }

    std::string Place() const override { return NameOf(acceptor.local_endpoint()); }

    std::size_t Refresh(std::string& note) override {
        Error error;
        for (;;) {
            tcp::endpoint address;
            tcp::socket next = acceptor.accept(address, error);
            if (error || next.non_blocking(true, error)) {
                return 0;
            }
            // A client that has closed its sending side is replaced, because it has probably ended.
            if (client.is_open() && !hasInputEnded) {
                note = "refused " + NameOf(address) + ": " + peer + " uses the device";
                continue;
            }
            next.set_option(tcp::no_delay(true), error);
            next.set_option(tcp::socket::send_buffer_size(SystemBuffer), error);
            next.set_option(tcp::socket::receive_buffer_size(SystemBuffer), error);
            next.set_option(tcp::socket::keep_alive(true), error);
            NoticeVanishedPeer(next.native_handle());
            client = std::move(next);
            peer = NameOf(address);
            hasInputEnded = false;
            note.clear();
        }
    }

    std::string Client() const override { return client.is_open() ? peer : std::string(); }

    Io Read(std::string& bytes, std::size_t most) override {
        bytes.resize(most);
        Error error;
        bytes.resize(client.read_some(asio::buffer(bytes), error));
        const Io result = Result(error);
        hasInputEnded = result == Io::Ended;
        if (hasInputEnded && error != asio::error::eof) {
            DropClient();  // after a read error, writes to this client would fail, too
        }
        return result;
    }

    Io Write(std::string_view bytes, std::size_t& written) override {
        Error error;
        written = client.write_some(asio::buffer(bytes), error);
        return Result(error);
    }

    bool DropClient() override {
        Error ignored;
        client.close(ignored);
        return true;
    }

  private:
    static Io Result(const Error& error) {
        return !error ? Io::Done : error == asio::error::would_block ? Io::Nothing : Io::Ended;
    }

    asio::io_context context;
    tcp::acceptor acceptor{context};
    tcp::socket client{context};
    std::string peer;
    bool hasInputEnded = false;
};

}  // namespace

std::unique_ptr<Entrance> Listen(const std::string& place) {
    return std::make_unique<TcpEntrance>(place);
}

}  // namespace orv::bridge
