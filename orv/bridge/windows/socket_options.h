// Socket options that Asio does not offer.
#pragma once

#include <winsock2.h>
// mstcpip.h must follow winsock2.h.
#include <mstcpip.h>

namespace orv::bridge {

// SO_REUSEADDR would let a second program take over the port.
constexpr int ListenOption = SO_EXCLUSIVEADDRUSE;

// Makes the system detect a vanished peer after 2 minutes.
inline void NoticeVanishedPeer(SOCKET socket) {
    tcp_keepalive values{1, 60000, 6000};
    DWORD ignored = 0;
    WSAIoctl(socket, SIO_KEEPALIVE_VALS, &values, sizeof values, nullptr, 0, &ignored, nullptr,
             nullptr);
}

}  // namespace orv::bridge
