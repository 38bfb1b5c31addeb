#include "scanner/scanner_session.h"

#include "platform/process_wide.h"

namespace orv {

Mutex scannerMutex;

static ProcessWide<ScannerSessionList> processWideSessions;
ScannerSessionList& scannerSessions = processWideSessions.object;

ScannerSession* ScannerSessionList::Find(std::int32_t id) {
    for (ScannerSession& session : sessions) {
        if (session.id == id) {
            return &session;
        }
    }
    return nullptr;
}

}  // namespace orv
