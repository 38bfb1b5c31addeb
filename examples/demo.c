/*
 * A complete host: it checks the radio, scans, connects to the first device that accepts a
 * connection, sends 64 KiB, compares the echo with the sent bytes, and shows the end of the log.
 *
 * Usage: demo [log file]
 *
 * The device must echo the bytes that it receives; the simulated world has such a device.
 */
#ifndef _WIN32
#define _POSIX_C_SOURCE 199309L
#endif

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "quelvixwinlib.h"

/* ---- operating system functions */

#ifdef _WIN32

#include <io.h>
#include <windows.h>

static void Pause(unsigned ms) {
    Sleep(ms);
}

static double Seconds(void) {
    LARGE_INTEGER count, frequency;
    QueryPerformanceCounter(&count);
    QueryPerformanceFrequency(&frequency);
    return (double)count.QuadPart / (double)frequency.QuadPart;
}

/* Returns whether the terminal supports colours. Sets UTF-8, the encoding of device names. */
static int PrepareTerminal(void) {
    const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    SetConsoleOutputCP(CP_UTF8);
    return _isatty(_fileno(stdout)) && GetConsoleMode(console, &mode) &&
           SetConsoleMode(console, mode | 0x0004 /* virtual terminal processing */);
}

#else

#include <time.h>
#include <unistd.h>

static void Pause(unsigned ms) {
    const struct timespec length = {ms / 1000, (long)(ms % 1000) * 1000000};
    nanosleep(&length, NULL);
}

static double Seconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

static int PrepareTerminal(void) {
    return isatty(STDOUT_FILENO);
}

#endif

/* ---- output */

enum { ScanMs = 2000, PollMs = 50, MostDevices = 64, TotalBytes = 65536, BlockBytes = 244 };

static const double EchoLimitSeconds = 5;

static int onTerminal;

static const char* Style(const char* sequence) {
    return onTerminal ? sequence : "";
}
#define Bold Style("\033[1m")
#define Dim Style("\033[2m")
#define Green Style("\033[32m")
#define Plain Style("\033[0m")

static void Report(const char* step, const char* format, ...) {
    va_list values;
    printf("%s%-11s%s ", Bold, step, Plain);
    va_start(values, format);
    vprintf(format, values);
    va_end(values);
    putchar('\n');
    fflush(stdout);
}

static int Fail(const char* format, ...) {
    va_list values;
    fflush(stdout);
    fputs("demo: ", stderr);
    va_start(values, format);
    vfprintf(stderr, format, values);
    va_end(values);
    fputc('\n', stderr);
    return 1;
}

static const char* AddressText(BluetoothAddress address) {
    static char text[18];
    int i;
    for (i = 0; i < 6; ++i) {
        sprintf(text + 3 * i, "%02X%s", (unsigned)(address >> (40 - 8 * i) & 0xFF),
                i < 5 ? ":" : "");
    }
    return text;
}

/* Returns the value in hexadecimal, or "-" for 0xFF, the value before a scan response sets it. */
static const char* ValueText(uint8_t value, char* text) {
    if (value == 0xFF) {
        return "-";
    }
    sprintf(text, "%02X", value);
    return text;
}

/* Returns the data in hexadecimal without trailing zeros, or "-" if no scan response has set it:
 * all bytes are then 0. */
static const char* DataText(const uint8_t* data, char* text) {
    int length = 16, i;
    while (length > 0 && data[length - 1] == 0) {
        --length;
    }
    for (i = 0; i < length; ++i) {
        sprintf(text + 2 * i, "%02X", data[i]);
    }
    return length > 0 ? text : "-";
}

/* Shows the progress: a bar on a terminal, otherwise a line for each quarter. */
static void ShowProgress(int done, int* shown) {
    enum { Width = 40 };
    const int step = (onTerminal ? 100 : 4) * (done / 256) / (TotalBytes / 256);
    char bar[Width + 1];
    if (step == *shown) {
        return;
    }
    *shown = step;
    memset(bar, '.', Width);
    memset(bar, '#', (size_t)(Width * (done / 256) / (TotalBytes / 256)));
    bar[Width] = '\0';
    printf("%s%-11s [%s] %3d KiB echoed%s", onTerminal ? "\r" : "", "", bar, done / 1024,
           onTerminal && done < TotalBytes ? "" : "\n");
    fflush(stdout);
}

/* ---- steps */

/* Scans, copies the found devices to `devices` and returns their number, or -1. */
static int Scan(DiscoveredDevice* devices) {
    const double start = Seconds();
    const int32_t scanner = OrvScanner_Initialize();
    int32_t count = 0, i;
    if (scanner == ORV_FAILED || OrvScanner_Start(scanner) == ORV_FAILED) {
        return ORV_FAILED;
    }
    while ((Seconds() - start) * 1000 < ScanMs) {
        Pause(PollMs);
        count = OrvScanner_GetDeviceCount(scanner);
        if (onTerminal) {
            printf("\r%sscanning%s    %d found ", Bold, Plain, (int)count);
            fflush(stdout);
        }
    }
    if (onTerminal) {
        fputs("\r\033[K", stdout);
    }
    if (OrvScanner_Stop(scanner) == ORV_FAILED) {
        return ORV_FAILED;
    }
    for (i = 0; i < count && i < MostDevices; ++i) {
        OrvScanner_GetDeviceInfo(scanner, i, &devices[i]);
    }
    OrvScanner_Deinitialize(scanner);
    return i;
}

static void PrintDevices(const DiscoveredDevice* devices, int count) {
    char value0500[3], value1130[3], data1118[33];
    int i;
    printf("\n  %s%-17s  %-29s  %7s  %4s  %4s  %s%s\n", Dim, "address", "name", "signal", "0500",
           "1130", "1118", Plain);
    for (i = 0; i < count; ++i) {
        printf("  %-17s  %-29.30s  %3d dBm  %4s  %4s  %s\n", AddressText(devices[i].address),
               devices[i].name, devices[i].rssi, ValueText(devices[i].value0500, value0500),
               ValueText(devices[i].value1130, value1130), DataText(devices[i].data1118, data1118));
    }
    putchar('\n');
}

/* Connects to the first device that accepts a connection and returns the device, or null. */
static const DiscoveredDevice* ConnectFirst(const DiscoveredDevice* devices, int count) {
    int i;
    for (i = 0; i < count; ++i) {
        if (OrvDevice_Connect(devices[i].address) != ORV_FAILED) {
            Report("connected", "%.30s at %s", devices[i].name, AddressText(devices[i].address));
            return &devices[i];
        }
        Report("failed", "cannot connect to %.30s", devices[i].name);
    }
    return NULL;
}

/* Sends all blocks, receives the echo between them, and waits for the rest of the echo. */
static int Exchange(BluetoothAddress address) {
    static uint8_t data[TotalBytes], echo[TotalBytes + 1];
    uint32_t random = 0x2545F491;
    int sent = 0, received = 0, shown = 0, i;
    double last = Seconds();
    for (i = 0; i < TotalBytes; ++i) {
        random ^= random << 13;
        random ^= random >> 17;
        random ^= random << 5;
        data[i] = (uint8_t)(random >> 24);
    }
    while (received < TotalBytes) {
        const int block = TotalBytes - sent < BlockBytes ? TotalBytes - sent : BlockBytes;
        ResultCode taken;
        if (block > 0 && OrvDevice_Send(address, block, data + sent) != block) {
            return Fail("cannot send a block after %d bytes", sent);
        }
        sent += block;
        /* The buffer has one byte more than expected, to detect surplus bytes. */
        taken = OrvDevice_Receive(address, TotalBytes + 1 - received, echo + received);
        if (taken == ORV_FAILED) {
            return Fail("the link was lost after %d bytes", received);
        }
        received += taken;
        if (block > 0 || taken > 0) {
            last = Seconds();
        } else if (Seconds() - last > EchoLimitSeconds) {
            return Fail("the device echoed only %d of %d bytes", received, TotalBytes);
        } else {
            Pause(5);
        }
        ShowProgress(received, &shown);
    }
    if (received != TotalBytes || memcmp(data, echo, TotalBytes) != 0) {
        return Fail("the echo differs from the sent bytes");
    }
    return 0;
}

static int ShowLog(const char* path) {
    enum { MostBytes = 4096, MostLines = 8 };
    static char text[MostBytes + 1];
    const char* line;
    size_t length;
    int lines = 0;
    FILE* log = fopen(path, "rb");
    if (log == NULL) {
        return Fail("cannot read the log %s", path);
    }
    if (fseek(log, -(long)MostBytes, SEEK_END) != 0) {
        rewind(log);
    }
    length = fread(text, 1, MostBytes, log);
    fclose(log);
    for (line = text + length; line > text && lines <= MostLines; --line) {
        lines += line[-1] == '\n';
    }
    printf("\n  %sthe end of %s%s\n", Dim, path, Plain);
    for (line = strchr(line, '\n'); line != NULL && *++line != '\0'; line = strchr(line, '\n')) {
        printf("  %.*s\n", (int)strcspn(line, "\r\n"), line);
    }
    return 0;
}

int main(int argc, char** argv) {
    static const char farewell[] = "demo: all bytes were echoed";
    DiscoveredDevice devices[MostDevices];
    const DiscoveredDevice* device;
    double start, seconds;
    int count;

    onTerminal = PrepareTerminal();
    if (Logging_Enable() == ORV_FAILED) {
        return Fail("cannot write the log beside the library; use a folder that is writable");
    }
    if (BluetoothAvailable() == ORV_FAILED) {
        return Fail("no Bluetooth radio is on; switch Bluetooth on");
    }
    Report("radio", "on");

    count = Scan(devices);
    if (count == ORV_FAILED) {
        return Fail("cannot start or stop the scan");
    }
    Report("scanned", "%d found in %.1f s", count, ScanMs / 1000.0);
    PrintDevices(devices, count);

    device = ConnectFirst(devices, count);
    if (device == NULL) {
        return Fail("cannot connect to any device");
    }
    start = Seconds();
    if (Exchange(device->address) != 0) {
        OrvDevice_Disconnect(device->address);
        return 1;
    }
    seconds = Seconds() - start;
    if (OrvDevice_Disconnect(device->address) == ORV_FAILED) {
        return Fail("cannot close the link");
    }
    Report("closed", "the link to %.30s", device->name);

    Logging_AppendLine(farewell, (int32_t)strlen(farewell));
    Logging_Disable();
    if (argc > 1 && ShowLog(argv[1]) != 0) {
        return 1;
    }
    printf("\n%sdone%s: %d bytes to %.30s and back, unchanged, in %.1f s: %.1f KiB/s each way\n",
           Green, Plain, TotalBytes, device->name, seconds, TotalBytes / 1024.0 / seconds);
    return 0;
}
