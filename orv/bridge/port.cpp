#include "orv/bridge/port.h"

#include <algorithm>
#include <utility>

#include "orv/address.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv::bridge {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t PieceBytes = 16384;
// The link stays open for this time after its client has disconnected, for the next command of a
// script. A client whose input has ended is disconnected this long after the last byte.
constexpr auto Keep = 5s;
// Maximum silence that one step counts. A longer step means that the process was stopped, and bytes
// that came meanwhile may not be read yet.
constexpr auto LongestStep = 100ms;
// Longer than the library's timeout of 2 s for a write, which may first wait for a write of another
// link.
constexpr auto WriteEndsWithin = 5s;

}  // namespace

Port::Port(std::unique_ptr<Entrance> place, std::shared_ptr<PersistentLink> deviceLink, bool eager)
    : entrance(std::move(place)), link(std::move(deviceLink)), isEager(eager), silence(Keep) {
    link->SetWanted(isEager);
}

void Port::Step() {
    const auto now = Clock::now();
    silence += std::min<Clock::duration>(now - std::exchange(lastStep, now), LongestStep);
    NoticeClient();
    if (client.empty()) {
        link->DropReceived(0);
        link->SetWanted(isEager || silence < Keep);
        return;
    }
    ReadClient();
    WriteClient();
    if (hasInputEnded && link->Room() == PersistentLink::SendLimit && silence >= Keep) {
        EndClient();
    }
}

void Port::NoticeClient() {
    const std::size_t left = entrance->Refresh(note);
    const std::string now = entrance->Client();
    if (now == client) {
        return;
    }
    client = now;
    link->DropReceived(std::exchange(pending, {}).size() + left);
    hasInputEnded = false;
    silence = {};
    if (!client.empty()) {
        unreadBefore = link->Status().unread;
        link->SetWanted(true);
    }
}

void Port::ReadClient() {
    while (const std::size_t room = hasInputEnded ? 0 : std::min(link->Room(), PieceBytes)) {
        std::string bytes;
        const Io result = entrance->Read(bytes, room);
        hasInputEnded = result == Io::Ended;
        if (result != Io::Done) {
            return;
        }
        note.clear();
        silence = {};
        link->Send(bytes);
    }
}

void Port::WriteClient() {
    while (!NoticeLoss()) {
        if (pending.empty()) {
            pending = link->Take(PieceBytes);
        }
        if (pending.empty()) {
            return;
        }
        std::size_t written = 0;
        const Io result = entrance->Write(pending, written);
        if (result == Io::Ended) {
            EndClient();
        }
        if (result != Io::Done) {
            return;
        }
        pending.erase(0, written);
        silence = {};
    }
}

// Disconnects the client if received bytes were lost. Returns true if there is no client now.
bool Port::NoticeLoss() {
    const std::uint64_t before = unreadBefore;
    if (link->Status().unread > before) {
        const std::string slow = client;
        const bool isDropped = EndClient();
        note = isDropped ? "closed " + slow + ", which did not read: " +
                               Counted(link->Status().unread - before, "byte") + " lost"
                         : "the program does not read and loses bytes";
    }
    return client.empty();
}

bool Port::EndClient() {
    const bool isDropped = entrance->DropClient();
    NoticeClient();
    return isDropped;
}

void Port::End(Clock::time_point end) {
    EndClient();
    link->StopSending(end);
    link->DropReceived(std::exchange(pending, {}).size());
    hasEnded = true;
}

// Counts received bytes in the queue as lost if there is no client to read them.
StateRow Port::Row() const {
    LinkStatus status = link->Status();
    status.unread += client.empty() || hasEnded ? status.waiting : 0;
    return {AddressText(link->Address()), entrance->Place(), client, status, note};
}

void Serve(std::vector<Port>& ports) {
    StateView view;
    const auto rows = [&] {
        std::vector<StateRow> all;
        std::transform(ports.begin(), ports.end(), std::back_inserter(all),
                       [](const Port& port) { return port.Row(); });
        return all;
    };
    // Polls, because the library offers no event for received bytes.
    while (terminal::Pause(static_cast<int>(PollEvery.count()))) {
        for (Port& port : ports) {
            port.Step();
        }
        view.Show(rows());
    }
    const auto end = std::chrono::steady_clock::now() + WriteEndsWithin;
    for (Port& port : ports) {
        port.End(end);
    }
    view.End(rows());
}

}  // namespace orv::bridge
