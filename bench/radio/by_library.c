#include <poll.h>
#include <stdio.h>

#include "bench/radio/client.h"
#include "quelvixwinlib.h"

static uint64_t device;
static int scanner;

static int library_connect(const char* address) {
    unsigned part[6];
    sscanf(address, "%2x:%2x:%2x:%2x:%2x:%2x", &part[0], &part[1], &part[2], &part[3], &part[4],
           &part[5]);
    device = 0;
    for (int i = 0; i < 6; ++i) {
        device = device << 8 | part[i];
    }
    return OrvDevice_Connect(device);
}

static int library_disconnect(void) {
    return OrvDevice_Disconnect(device);
}

static int library_receive(void) {
    unsigned char bytes[65536];
    int count = OrvDevice_Receive(device, sizeof bytes, bytes);
    if (count == 0) {
        poll(NULL, 0, 10);
    }
    return count;
}

static int library_start_scan(void) {
    scanner = OrvScanner_Initialize();
    return OrvScanner_Start(scanner);
}

/* Counts advertising reports: the test increments value0500 in each report. Polls every 100 ms,
   like a host that lists devices. */
static int library_scan(void) {
    static int heard, value;
    struct DiscoveredDevice record;
    if (OrvScanner_GetDeviceInfo(scanner, 0, &record) == 0 && record.value0500 != 0xFF) {
        heard += (record.value0500 - value) & 0xFF;
        value = record.value0500;
    }
    poll(NULL, 0, 100);
    return heard;
}

const struct client by_library = {"ours",          library_connect,    library_disconnect,
                                  library_receive, library_start_scan, library_scan};
