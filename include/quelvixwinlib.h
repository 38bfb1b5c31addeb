/*
 * quelvixwinlib: Bluetooth Low Energy devices whose names begin with "ORV", for host applications.
 *
 * A host asks whether Bluetooth is on, scans, lists what was found, opens a link to a device by its
 * address, exchanges a raw byte stream with it, closes the link, and keeps a diagnostics log. The
 * whole interface is 15 functions that take integers and pointers; any language that can call C can
 * use it.
 *
 *
 * RESULTS
 *
 * Every function returns a ResultCode. -1 (ORV_FAILED) always means that the call failed or was
 * refused; every other value is a success: 0, or the id, count or length that the function names.
 * BluetoothAvailable is no exception: 0 is yes. No function throws, and none sets errno or the
 * system's last error for the host to read. Why a call failed is written to the diagnostics log.
 * A count of bytes or devices that does not fit is given as 2147483647.
 *
 * HANDLES
 *
 * A scanner session is named by the scannerId that OrvScanner_Initialize returned, a device by its
 * BluetoothAddress. An id or address that names nothing is refused with -1; it never crashes.
 *
 * POINTERS
 *
 * Memory that the host passes in stays the host's: the library reads or writes it during the call
 * only and keeps no pointer. Nothing that the library allocates is ever handed out, so there is
 * nothing to free. A null pointer where bytes are needed is refused with -1 and loses nothing.
 *
 * THREADS
 *
 * Every function may be called from any thread at any time, also several at once. The thread needs
 * no preparation: on Windows it may be in a single-threaded apartment, in the multithreaded one, or
 * in none. The library starts no thread and calls no function of the host.
 * Advertisements and notifications arrive on the system's threads and are queued; the host polls.
 *
 * WHAT MAY BLOCK, AND HOW LONG
 *
 * The library waits for the system at most 2000 ms per operation. Each function below states its
 * longest sum of such waits as "Blocks". To that comes the time of calls into the system that have
 * no time limit of their own, and are normally immediate: starting and stopping a scan, and closing
 * a device. So no function can promise a bound if the system itself hangs there.
 *
 * Two locks decide which functions wait for each other:
 *
 *   - Device links share one lock. OrvDevice_Send and OrvDevice_Disconnect keep it while they wait
 *     for the device, up to 2000 ms. Until then OrvDevice_Receive, OrvDevice_Flush, other sends and
 *     disconnects, and the last step of OrvDevice_Connect wait, for every device; received
 *     notifications are queued afterwards, except for a link that was disconnected.
 *   - Scanner sessions share another lock, held while a scan is started or stopped.
 *
 * The OrvScanner_ functions, BluetoothAvailable and the Logging_ functions never wait for a device
 * link, and the OrvDevice_ functions never wait for a scanner. A poll from a thread of its own keeps
 * a user interface alive during OrvDevice_Connect and OrvDevice_Send.
 *
 * LOADING AND UNLOADING
 *
 * The library may be loaded and unloaded freely until its first call that involves a wait or a
 * scanner; from then on it stays in memory until the process ends, because the system may call it
 * back at any time. Logging_Enable keeps it loaded, too. A host need not undo anything before it
 * exits, but a link that is not disconnected keeps its device occupied until the process is gone.
 */
#ifndef QUELVIXWINLIB_H
#define QUELVIXWINLIB_H

#include <stddef.h>
#include <stdint.h>

#define QUELVIXWINLIB_VERSION_MAJOR 1
#define QUELVIXWINLIB_VERSION_MINOR 0
#define QUELVIXWINLIB_VERSION_PATCH 0
#define QUELVIXWINLIB_VERSION "1.0.0"

#if defined(QUELVIXWINLIB_BUILD) && !defined(_WIN32)
#define QUELVIXWINLIB_API __attribute__((visibility("default")))
#elif defined(_WIN32) && !defined(QUELVIXWINLIB_BUILD)
#define QUELVIXWINLIB_API __declspec(dllimport)
#else
#define QUELVIXWINLIB_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* -1: the call failed or was refused. Anything else: success, as the function says. */
typedef int32_t ResultCode;

#define ORV_FAILED (-1)

/*
 * A 48-bit Bluetooth device address, its most significant byte in bits 40 to 47: the address
 * A0:B1:C2:D3:E4:F5 is 0xA0B1C2D3E4F5. Logs show it in decimal.
 */
typedef uint64_t BluetoothAddress;

/*
 * One device that a scanner session has heard. 64 bytes, little-endian; the offsets below hold for
 * every compiler and language.
 *
 * The last three values come from the device's scan responses; until one has brought them they are
 * 0xFF, 0xFF and zeros.
 */
typedef struct DiscoveredDevice {
    uint64_t address;     /*  0: the device's BluetoothAddress                                 */
    char name[30];        /*  8: local name in UTF-8, at most 29 bytes, then zeros. A character */
                          /*     may be cut at the end; empty when the device last advertised   */
                          /*     without a name                                                 */
    int16_t rssi;         /* 38: signal strength of the latest packet, in dBm                   */
    uint8_t value0500;    /* 40: value of key 0x0500                                            */
    uint8_t value1130;    /* 41: value of key 0x1130                                            */
    uint8_t data1118[16]; /* 42: value of key 0x1118, zeros after its end                       */
    uint8_t padding[6];   /* 58: carries nothing                                                */
} DiscoveredDevice;

/* Each line fails to compile where the layout differs. */
typedef char orv_check_address[offsetof(DiscoveredDevice, address) == 0 ? 1 : -1];
typedef char orv_check_name[offsetof(DiscoveredDevice, name) == 8 ? 1 : -1];
typedef char orv_check_rssi[offsetof(DiscoveredDevice, rssi) == 38 ? 1 : -1];
typedef char orv_check_value0500[offsetof(DiscoveredDevice, value0500) == 40 ? 1 : -1];
typedef char orv_check_value1130[offsetof(DiscoveredDevice, value1130) == 41 ? 1 : -1];
typedef char orv_check_data1118[offsetof(DiscoveredDevice, data1118) == 42 ? 1 : -1];
typedef char orv_check_padding[offsetof(DiscoveredDevice, padding) == 58 ? 1 : -1];
typedef char orv_check_size[sizeof(DiscoveredDevice) == 64 ? 1 : -1];

/* ------------------------------------------------------------------------------- availability */

/*
 * Is there a Bluetooth adapter with a Bluetooth radio that is switched on?
 *
 * Returns  0: yes (note: not 1). -1: no, or the system could not say within the time limits.
 * Blocks   4000 ms at most (two waits). Every call asks anew.
 */
QUELVIXWINLIB_API ResultCode BluetoothAvailable(void);

/* ---------------------------------------------------------------------------------- scanning */

/*
 * Creates a scanner session: one scan with its own list of devices. It does not scan yet. Several
 * sessions may exist and scan side by side.
 *
 * Returns  the scannerId, 0 or greater: one more than the highest id in use, 0 when none is.
 *          -1: the system refused; no session was created.
 * Blocks   for no wait; may wait for a start or stop that another thread is in.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_Initialize(void);

/*
 * Removes a session and its list. A scan that still runs is not stopped by this: call
 * OrvScanner_Stop first, or the radio may go on scanning until the process ends. Its id may be
 * given out again.
 *
 * Returns  0: removed. -1: no session has this id.
 * Blocks   for no wait; may wait for a start or stop that another thread is in.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_Deinitialize(int32_t scannerId);

/*
 * Empties the session's list and starts scanning, actively: devices are asked for their scan
 * responses. Also when the session scans already.
 *
 * Returns  0: started. -1: no session has this id, or the system refused; the session's list is
 *          empty then, too. 0 is no proof that the radio is on: BluetoothAvailable tells.
 * Blocks   for no wait, but calls the system's start, which has no time limit of its own; until it
 *          returns, every other OrvScanner_ function waits.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_Start(int32_t scannerId);

/*
 * Stops scanning. The list is kept and can be read until the next start. A session that was never
 * started is stopped successfully.
 *
 * Returns  0: stopped. -1: no session has this id, or the system refused; the list is unchanged.
 * Blocks   as OrvScanner_Start.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_Stop(int32_t scannerId);

/*
 * How many devices the session has found since its last start, at any time, scanning or not. Only
 * devices whose name began with "ORV" when they were first heard are listed; a device stays listed,
 * at its index, until the next start. The list has no limit but memory: 73 bytes a device.
 *
 * Returns  the number of devices, 0 or greater. -1: no session has this id.
 * Blocks   for no wait; may wait for a start or stop that another thread is in.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_GetDeviceCount(int32_t scannerId);

/*
 * Copies one device of the list, as it stood between two advertisements.
 *
 * index    0 (heard first) to OrvScanner_GetDeviceCount - 1.
 * info     64 writable bytes.
 * Returns  0: copied. -1: no session has this id, index is out of range or info is null; the bytes
 *          at info are untouched.
 * Blocks   as OrvScanner_GetDeviceCount. The cost does not grow with index.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_GetDeviceInfo(int32_t scannerId, int32_t index,
                                                      DiscoveredDevice* info);

/* --------------------------------------------------------------------------------- device links */

/*
 * Opens a link to a device: finds it, its service and its characteristic, and switches
 * notifications on. The device need not have been found by a scan; the system decides whether it
 * knows the address.
 *
 * An address that is linked already gets a second link. All other functions act on the oldest link
 * of an address; a disconnect uncovers the next.
 *
 * Returns  0: the link is open, its queue is empty. -1: it is not, and everything that was opened on
 *          the way is closed again.
 * Blocks   10000 ms at most (five waits), plus closing after a failure, plus up to 2000 ms for every
 *          send or disconnect that holds the lock when the link is entered.
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Connect(BluetoothAddress address);

/*
 * Switches notifications off, closes the device and forgets the link with all bytes that were not
 * taken. A device that does not answer is disconnected all the same.
 *
 * Returns  0: the oldest link of the address is gone. -1: the address has no link (then the system
 *          was not asked), or the system failed; the link is then still there with its bytes, and
 *          the call can be repeated.
 * Blocks   2000 ms at most (one wait), plus closing. Holds the device links' lock, and first waits
 *          for a send or disconnect that holds it.
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Disconnect(BluetoothAddress address);

/*
 * Sends a block of bytes in one write. Nothing is split, queued or repeated; a block larger than the
 * device accepts is the system's to refuse.
 *
 * length   0 or greater. 0 sends an empty block.
 * data     length readable bytes; may be null when length is 0. Never written to the log.
 * Returns  length: the system reports the write as finished; the device may still have answered it
 *          with an error, which is not looked at. -1: no link, a negative length, null data with a
 *          positive length, no answer within 2000 ms (the bytes may still arrive), or a failure.
 * Blocks   2000 ms at most (one wait). Holds the device links' lock, and first waits for a send or
 *          disconnect that holds it.
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Send(BluetoothAddress address, int32_t length,
                                            const uint8_t* data);

/*
 * Takes bytes that the device has sent, oldest first, as one stream without message boundaries.
 * Never waits for bytes: what is there is returned at once.
 *
 * The queue has no limit. A link that is never read grows by up to 175 kB a second at the full rate
 * of a 2M radio (1402 kbit/s).
 *
 * count    the most bytes to take. 0 or less takes none.
 * buffer   count writable bytes; may be null when count is 0 or less.
 * Returns  the number of bytes copied, 0 to count. -1: the address has no link, or buffer is null
 *          with a positive count; the bytes stay queued.
 * Blocks   for no wait of its own; waits for a send or disconnect that holds the lock.
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Receive(BluetoothAddress address, int32_t count,
                                               uint8_t* buffer);

/*
 * Throws away all bytes that were received and not taken.
 *
 * Returns  how many there were, 0 or greater. -1: the address has no link.
 * Blocks   as OrvDevice_Receive.
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Flush(BluetoothAddress address);

/* ------------------------------------------------------------------------------ diagnostics log */

/*
 * Switches the diagnostics log on and empties it. The log is a text file beside the library's own
 * file, under its name with ".log" appended: quelvixwinlib.dll.log. Each call of a function above, each
 * advertisement and each notification adds a line; data bytes are never written. A line is
 *
 *     hh:mm:ss.mmm <tab> text <carriage return> <line feed>
 *
 * in local time. The file is opened, written and closed for each line, so that it is complete at any
 * moment; it may be read, moved or deleted meanwhile. It has no size limit.
 *
 * Returns  0: on. -1: the file cannot be created or emptied; the log is off, also if it was on.
 * Blocks   for no wait; file access only.
 */
QUELVIXWINLIB_API ResultCode Logging_Enable(void);

/*
 * Switches the log off. The file stays. A line that another thread is writing may still follow.
 *
 * Returns  0, always.
 * Blocks   never.
 */
QUELVIXWINLIB_API ResultCode Logging_Disable(void);

/*
 * Adds a line of the host's own.
 *
 * text     length bytes, written as they are (a line feed becomes carriage return and line feed); no
 *          terminating zero is looked for. May be null when length is 0 or less.
 * length   bytes of text; 0 or less gives a line without text.
 * Returns  the line's characters before line feeds are translated: length + 14, or 14 without text.
 *          -1: the log is off, its file cannot be opened, or text is null with a positive length.
 * Blocks   for no wait; file access only. Costs next to nothing while the log is off.
 */
QUELVIXWINLIB_API ResultCode Logging_AppendLine(const char* text, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
