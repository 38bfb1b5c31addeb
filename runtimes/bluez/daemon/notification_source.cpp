#include "runtimes/bluez/daemon/notification_source.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

namespace orv::bluez {

using objects::Lock;

namespace {

// Returns true if the daemon has closed its end of the socket and all bytes are read. A read of 0
// bytes can also be an empty record.
bool HasEnded(int socket) {
    pollfd polled{socket, 0, 0};
    int left = 0;
    return poll(&polled, 1, 0) > 0 && (polled.revents & POLLHUP) != 0 &&
           (ioctl(socket, FIONREAD, &left) != 0 || left == 0);
}

}  // namespace

Source::Source(Path pathOfSource, UINT64 addressOfSource)
    : path(std::move(pathOfSource)), address(addressOfSource), records() {
    for (std::size_t i = 0; i < RecordsAtOnce; ++i) {
        parts[i] = {buffers[i].data(), buffers[i].size()};
        records[i].msg_hdr.msg_iov = &parts[i];
        records[i].msg_hdr.msg_iovlen = 1;
    }
}

Source::~Source() {
    Detach();
}

void Source::Attach(int socket) {
    const Lock lock(mutex);
    descriptor = socket;
}

void Source::Detach() {
    const Lock lock(mutex);
    if (descriptor >= 0) {
        close(std::exchange(descriptor, -1));
    }
}

int Source::Descriptor() {
    const Lock lock(mutex);
    return descriptor;
}

// If a system call reads fewer than RecordsAtOnce records, the socket is empty.
bool Source::Take() {
    const Lock lock(mutex);
    for (int count = RecordsAtOnce; descriptor >= 0 && count == RecordsAtOnce;) {
        do {
            count = recvmmsg(descriptor, records.data(), RecordsAtOnce, MSG_DONTWAIT, nullptr);
        } while (count < 0 && errno == EINTR);
        if (count < 0) {
            return errno == EAGAIN;
        }
        const auto end = records.begin() + count;
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            const BYTE* const bytes = buffers[i].data();
            const bool isRestEmpty =
                std::all_of(records.begin() + static_cast<std::ptrdiff_t>(i), end,
                            [](const mmsghdr& each) { return each.msg_len == 0; });
            if (isRestEmpty && HasEnded(descriptor)) {
                return false;
            }
            try {
                values.emplace_back(bytes, bytes + records[i].msg_len);
            } catch (...) {  // memory is exhausted; must not lose the next records, too
            }
            takenAny = true;
        }
    }
    return true;
}

void Source::Push(Bytes value) {
    const Lock lock(mutex);
    values.push_back(std::move(value));
}

void Source::Deliver() {
    for (;;) {
        Bytes value;
        std::shared_ptr<const std::vector<SharedSubscriber>> all;
        {
            const Lock lock(mutex);
            if (values.empty()) {
                return;
            }
            value = std::move(values.front());
            values.pop_front();
            all = subscribers;
        }
        if (all) {
            for (const SharedSubscriber& subscriber : *all) {
                subscriber->Receive(value);
            }
        }
    }
}

void Source::Subscribe(SharedSubscriber subscriber) {
    const Lock lock(mutex);
    auto all = subscribers ? *subscribers : std::vector<SharedSubscriber>();
    if (std::find(all.begin(), all.end(), subscriber) == all.end()) {
        all.push_back(std::move(subscriber));
        subscribers = std::make_shared<const std::vector<SharedSubscriber>>(std::move(all));
    }
}

bool Source::Unsubscribe(const Subscriber* subscriber) {
    // Destroyed after the lock is released, because releasing a client's handler runs client code.
    std::shared_ptr<const std::vector<SharedSubscriber>> before;
    const auto goes = [&](const SharedSubscriber& each) {
        return each.get() == subscriber || !each->IsOpen();
    };
    const Lock lock(mutex);
    before = subscribers;
    if (before && std::any_of(before->begin(), before->end(), goes)) {
        auto left = std::make_shared<std::vector<SharedSubscriber>>();
        std::remove_copy_if(before->begin(), before->end(), std::back_inserter(*left), goes);
        subscribers = left;
    }
    return !subscribers || subscribers->empty();
}

bool Source::HasTakenAny() {
    const Lock lock(mutex);
    return takenAny;
}

}  // namespace orv::bluez
