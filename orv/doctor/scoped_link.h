// Opens and closes a link to the device, and records findings about both steps.
#pragma once

#include "orv/doctor/examination.h"

namespace orv::doctor {

class ScopedLink {
  public:
    // Connects. After a failure, may retry to find the cause.
    explicit ScopedLink(Examination& run);
    ~ScopedLink();
    ScopedLink(const ScopedLink&) = delete;
    ScopedLink& operator=(const ScopedLink&) = delete;

    bool IsOpen() const { return isOpen; }
    // Returns the received bytes after `expected` bytes have arrived, or after 2 s.
    std::string Await(std::size_t expected);
    // Disconnects on a separate thread, because the call may hang. Pass false if another call may
    // hold the lock that the disconnect needs.
    void Close(bool alone = true);

    // Returns whether the call failed after about 2000 ms, the library's timeout.
    static bool IsTimeout(const MadeCall& call);

  private:
    Examination& run;
    bool isOpen = false;
};

}  // namespace orv::doctor
