// Finds problems of devices, such as names that are too long.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>

#include "orv/log/infer/call.h"
#include "orv/log/infer/note.h"

namespace orv::log {

class DeviceNotes {
  public:
    explicit DeviceNotes(std::function<void(const Note&)> noteSink);

    void AddAdvertisement(const Entry& entry);
    void AddNotification(const Entry& entry);
    void AddTrace(const Entry& entry);
    void AddCall(const Call& call);  // `call` must have ended
    void End(std::int64_t latest);

  private:
    struct Device {
        bool hasName = false;
        std::int64_t heard = 0;   // time of the latest advertisement
        std::int64_t queued = 0;  // lower bound of the bytes that the host has not received
        bool isFlooded = false;   // the note BytesNotTaken was reported
        bool isUnlinked = false;  // the device has no link, so its notifications are dropped
        Note unanswered{NoteKind::BlocksUnanswered};  // long sends since the latest notification
    };

    static void Learn(const Call& call, Device& device);

    std::function<void(const Note&)> onNote;
    std::unordered_map<std::uint64_t, Device> devices;
    Note nameless{NoteKind::NamelessAdvertisements};
    Note cut{NoteKind::NamesCut};
    Note lost{NoteKind::NoLongerHeard};
};

}  // namespace orv::log
