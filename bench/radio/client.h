/* Two clients for the same device: one uses the library, one is minimal hand-written code. */
#ifndef BENCH_RADIO_CLIENT_H
#define BENCH_RADIO_CLIENT_H

#include <stdint.h>

struct client {
    const char* name;
    /* All functions return -1 on failure. `address` has the form 00:AA:01:01:00:01. */
    int (*connect)(const char* address);
    int (*disconnect)(void);
    /* Reads received bytes, or waits up to 10 ms if there are none. Returns the number of bytes. */
    int (*receive)(void);
    int (*start_scan)(void);
    /* Handles advertising reports, or waits if there are none. Returns their number so far. */
    int (*scan)(void);
};

extern const struct client by_hand;
extern const struct client by_library;

#endif
