/* Usage: radio hand|library ADDRESS. Runs the commands that it reads from standard input, one per
   line, and prints one line of results for each. Processor time is that of the whole process.

     connect          milliseconds until the device can send
     receive BYTES    number of received bytes, milliseconds from the first to the last byte,
                      microseconds of processor time; ends early if no byte arrives for 3 s
     disconnect       0, or -1 on failure
     scan SECONDS     number of advertising reports, microseconds of processor time */
#define _POSIX_C_SOURCE 200809L

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <time.h>

#include "bench/radio/client.h"

static double now_ms(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)now.tv_sec * 1e3 + (double)now.tv_nsec / 1e6;
}

static double processor_us(void) {
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return (double)(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e6 +
           (double)(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

static void receive(const struct client* client, long bytes) {
    long count = 0;
    double start = now_ms(), first = 0, last = start, processor = processor_us();
    while (count < bytes && now_ms() - last < 3000) {
        int more = client->receive();
        if (more < 0) {
            break;
        }
        if (more > 0) {
            last = now_ms();
            first = first > 0 ? first : last;
            count += more;
        }
    }
    printf("%ld %.0f %.0f\n", count, last - first, processor_us() - processor);
}

static void scan(const struct client* client, int seconds) {
    int heard = 0;
    double start = now_ms(), processor = processor_us();
    if (client->start_scan() < 0) {
        printf("-1 0\n");
        return;
    }
    while (now_ms() - start < seconds * 1000) {
        heard = client->scan();
    }
    printf("%d %.0f\n", heard, processor_us() - processor);
}

int main(int argc, char** argv) {
    char line[100];
    const struct client* client = argc > 1 && strcmp(argv[1], "hand") == 0 ? &by_hand : &by_library;
    if (argc != 3) {
        return 2;
    }
    setvbuf(stdout, NULL, _IOLBF, 0);
    while (fgets(line, sizeof line, stdin)) {
        long number = atol(line + strcspn(line, " \n"));
        double start = now_ms();
        if (strncmp(line, "connect", 7) == 0) {
            int result = client->connect(argv[2]);
            printf("%.0f\n", result < 0 ? -1 : now_ms() - start);
        } else if (strncmp(line, "receive", 7) == 0) {
            receive(client, number);
        } else if (strncmp(line, "disconnect", 10) == 0) {
            printf("%d\n", client->disconnect());
        } else {
            scan(client, (int)number);
        }
    }
    return 0;
}
