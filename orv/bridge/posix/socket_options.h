// Socket options that Asio does not offer.
#pragma once

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace orv::bridge {

// Allows listening on a port at once after another program has used it.
constexpr int ListenOption = SO_REUSEADDR;

// Makes the system detect a vanished peer after 2 minutes.
inline void NoticeVanishedPeer(int socket) {
    const auto set = [&](int option, int value) {
        setsockopt(socket, IPPROTO_TCP, option, &value, sizeof value);
    };
    set(TCP_KEEPIDLE, 60);
    set(TCP_KEEPINTVL, 15);
    set(TCP_KEEPCNT, 4);
    set(TCP_USER_TIMEOUT, 120000);
}

}  // namespace orv::bridge
