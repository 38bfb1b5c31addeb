/*
 * quelvixwinlib: Bluetooth Low Energy devices whose names begin with "ORV", for host applications.
 *
 * A host checks that Bluetooth is on, scans, lists the devices that were found, opens a link to a
 * device by its address, exchanges a raw byte stream with it, closes the link, and keeps a
 * diagnostics log. The interface is 15 functions that take integers and pointers; any language that
 * can call C can use it.
 *
 *
 * RESULTS
 *
 * Every function returns a ResultCode. -1 (ORV_FAILED) means that the call failed; every other
 * value means success: 0, or the id, count or length that the function names. Note that
 * BluetoothAvailable returns 0 if Bluetooth is available. A count of bytes or devices that exceeds
 * 2147483647 is returned as 2147483647. No function throws an exception or sets errno. The system's
 * last error is not defined after a call.
 *
 * A call can fail in three ways, and -1 does not distinguish them:
 *
 *   - An error: the system reports an error, or memory runs out. The diagnostics log then has a
 *     line that begins with "Exception: ".
 *   - A rejection: the device or the system answers, but refuses the request or lacks the
 *     requested object.
 *   - A timeout: no answer arrives within 2000 ms.
 *
 * After a rejection or timeout, the log has only the usual line of the call. To distinguish these
 * two, a host measures how long the call took.
 *
 * HANDLES
 *
 * A scannerId, returned by OrvScanner_Initialize, names a scanner session. A BluetoothAddress names
 * a device. A call with an unknown id or address returns -1 and changes nothing.
 *
 * POINTERS
 *
 * The host owns the memory that it passes in. The library reads or writes it during the call only
 * and keeps no pointer. It never returns memory of its own, so there is nothing to free. The call
 * returns -1 if a pointer to needed bytes is null.
 *
 * THREADS
 *
 * Every function may be called from any thread at any time, also from several threads at once. A
 * thread needs no preparation: on Windows it may be in a single-threaded apartment, in the
 * multithreaded apartment, or in none. The library starts no thread and calls no function of the
 * host. Advertisements and notifications arrive on the system's threads and are queued; the host
 * polls.
 *
 * On a thread in a single-threaded apartment, a call into the system can dispatch window messages
 * before it returns. A message handler that runs in this way must not call the library, because the
 * thread may hold the lock that the second call waits for, and would then wait forever.
 *
 * BLOCKING
 *
 * The library waits at most 2000 ms for each asynchronous operation of the system. "Blocks" below
 * states the maximum sum of these waits for each function. The following calls into the system have
 * no timeout and add to this sum. They normally return at once:
 *
 *   - the first use of a system class in the process, which loads the system's libraries. It is
 *     most of the work of OrvScanner_Initialize, and part of BluetoothAvailable, OrvDevice_Connect,
 *     OrvDevice_Send and of the first notification;
 *   - starting any asynchronous operation;
 *   - starting and stopping a scan, and closing a service or a device;
 *   - the last release of the system's objects, when a session is removed or a link is closed.
 *
 * Two locks decide which functions wait for each other:
 *
 *   - All device links share one lock. OrvDevice_Send and OrvDevice_Disconnect hold it while they
 *     wait for the device, up to 2000 ms. During this time OrvDevice_Receive, OrvDevice_Flush,
 *     other sends and disconnects, and the last step of OrvDevice_Connect wait, for every device.
 *     Notifications wait, too, and are queued afterwards; notifications of a link that was
 *     disconnected are dropped.
 *   - All scanner sessions share another lock. It is held while a scan is started or stopped, and
 *     while a list is updated from an advertisement, which is read from the system.
 *
 * The OrvScanner_ functions, BluetoothAvailable and the Logging_ functions never wait for a device
 * link, and the OrvDevice_ functions never wait for a scanner. A host that polls on a thread of its
 * own keeps its user interface responsive during OrvDevice_Connect and OrvDevice_Send.
 *
 * LOADING AND UNLOADING
 *
 * The library can be loaded and unloaded freely until its first call that uses a class of the
 * system: BluetoothAvailable, OrvScanner_Initialize, OrvDevice_Connect or OrvDevice_Send. From then
 * on it stays in memory until the process ends, because the system may call it back at any time. A
 * call to Logging_Enable keeps it loaded, too. A host need not undo anything before it exits, but
 * the system may keep the link to a device that was not disconnected until the process has ended.
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

/* -1 means that the call failed. The other values mean success; each function describes them. */
typedef int32_t ResultCode;

#define ORV_FAILED (-1)

/*
 * A 48-bit Bluetooth device address, with its most significant byte in bits 40 to 47: the address
 * A0:B1:C2:D3:E4:F5 is 0xA0B1C2D3E4F5. The log shows it in decimal.
 */
typedef uint64_t BluetoothAddress;

/*
 * One device that a scanner session has found. The record has 64 bytes and is little-endian; the
 * offsets below are the same for every compiler and language.
 *
 * The last three values come from data sections of the device's scan responses; each section begins
 * with a 16-bit key. Until a scan response has set the values, they are 0xFF, 0xFF and zeros.
 */
typedef struct DiscoveredDevice {
    uint64_t address;     /*  0: the device's BluetoothAddress                                */
    char name[30];        /*  8: local name in UTF-8, at most 29 bytes, then zeros. The last   */
                          /*     character may be cut; empty when the latest advertisement had */
                          /*     no name                                                       */
    int16_t rssi;         /* 38: signal strength of the latest packet, in dBm                  */
    uint8_t value0500;    /* 40: value of the section with key 0x0500                          */
    uint8_t value1130;    /* 41: value of the section with key 0x1130                          */
    uint8_t data1118[16]; /* 42: value of the section with key 0x1118, zeros after its end     */
    uint8_t padding[6];   /* 58: unused                                                        */
} DiscoveredDevice;

/* Each line fails to compile if the compiler uses another offset. */
typedef char orv_check_address[offsetof(DiscoveredDevice, address) == 0 ? 1 : -1];
typedef char orv_check_name[offsetof(DiscoveredDevice, name) == 8 ? 1 : -1];
typedef char orv_check_rssi[offsetof(DiscoveredDevice, rssi) == 38 ? 1 : -1];
typedef char orv_check_value0500[offsetof(DiscoveredDevice, value0500) == 40 ? 1 : -1];
typedef char orv_check_value1130[offsetof(DiscoveredDevice, value1130) == 41 ? 1 : -1];
typedef char orv_check_data1118[offsetof(DiscoveredDevice, data1118) == 42 ? 1 : -1];
typedef char orv_check_padding[offsetof(DiscoveredDevice, padding) == 58 ? 1 : -1];
typedef char orv_check_size[sizeof(DiscoveredDevice) == 64 ? 1 : -1];

/* ---- availability */

/*
 * Checks that the system has a Bluetooth adapter, and a Bluetooth radio that is on. Every call
 * queries the system again.
 *
 * Returns  0: Bluetooth is available (note: not 1). -1: Bluetooth is not available, the system
 *          reported an error, or it did not answer in time.
 * Blocks   4000 ms at most (two waits).
 */
QUELVIXWINLIB_API ResultCode BluetoothAvailable(void);

/* ---- scanning */

/*
 * Creates a scanner session: one scan with its own list of devices. The session does not scan yet.
 * Several sessions may exist and scan at the same time.
 *
 * Returns  the scannerId, 0 or greater: one more than the highest id in use, 0 when none is in use.
 *          -1: the system reported an error; no session was created.
 * Blocks   only for the scanner lock, and while the system creates an object.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_Initialize(void);

/*
 * Removes a session and its list. A scan that still runs is not stopped: call OrvScanner_Stop
 * first, or the radio may go on scanning until the process ends. The id may be used again for a
 * later session.
 *
 * Returns  0: removed. -1: no session has this id.
 * Blocks   only for the scanner lock.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_Deinitialize(int32_t scannerId);

/*
 * Empties the session's list and starts an active scan, which requests the devices' scan responses.
 * A session that is already scanning can be started again.
 *
 * Returns  0: started; this does not mean that the radio is on, call BluetoothAvailable to find
 *          out. -1: no session has this id, or the system reported an error; after an error, the
 *          list is empty, too.
 * Blocks   for the scanner lock and while the system starts the scan, which has no timeout. During
 *          this time, every other OrvScanner_ function waits.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_Start(int32_t scannerId);

/*
 * Stops the scan. The list can be read until the next start. Stopping a session that was never
 * started succeeds.
 *
 * Returns  0: stopped. -1: no session has this id, or the system reported an error; the list is
 *          unchanged.
 * Blocks   like OrvScanner_Start.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_Stop(int32_t scannerId);

/*
 * Returns the number of devices in the session's list, also after the scan was stopped.
 *
 * Returns  the number of devices, 0 or greater. -1: no session has this id.
 * Blocks   only for the scanner lock.
 *
 * A device is added to the list at its first packet whose name begins with "ORV" (case-sensitive).
 * Advertisements and scan responses are checked alike. The values of a scan response are read only
 * if the device was listed before that packet. A listed device keeps its index and stays listed
 * until the next start, whatever name it advertises later. The list is limited by memory only: it
 * needs 76 to 89 bytes per device if it has 1,000 devices or more, and at most 4 kB for the first
 * device.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_GetDeviceCount(int32_t scannerId);

/*
 * Copies one record of the list. No packet changes the record during the copy.
 *
 * Returns  0: copied. -1: no session has this id, index is out of range or info is null; the bytes
 *          at info are unchanged.
 * index    0 (the device that was listed first) to OrvScanner_GetDeviceCount - 1.
 * info     64 writable bytes.
 * Blocks   like OrvScanner_GetDeviceCount. The duration does not grow with index.
 */
QUELVIXWINLIB_API ResultCode OrvScanner_GetDeviceInfo(int32_t scannerId, int32_t index,
                                                      DiscoveredDevice* info);

/* ---- device links */

/*
 * Opens a link to a device: finds the device, its service and its characteristic, and switches
 * notifications on. No scan is needed before; the system decides whether it can find a device of
 * this address.
 *
 * Returns  0: the link is open and its queue is empty. -1: no link was opened, and the call has
 *          closed all objects that it had opened.
 * Blocks   10000 ms at most (five waits), plus closing after a failure, plus up to 2000 ms for
 *          every send or disconnect that holds the lock when the new link is stored.
 *
 * Connecting to an address again opens a further link. The other functions use the oldest link of
 * an address; after that link is disconnected, they use the next oldest link.
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Connect(BluetoothAddress address);

/*
 * Switches notifications off, closes the device and removes the link with all bytes that were not
 * read. The link is removed even if the device does not answer.
 *
 * Returns  0: the oldest link of the address is removed. -1: the address has no link (the system is
 *          not called), or the system reported an error.
 * Blocks   2000 ms at most (one wait), plus closing the device. Holds the lock of the device links,
 *          and first waits for a send or disconnect that holds it.
 *
 * After an error the link still exists with its bytes, and the call can be repeated. If the error
 * came after the service was closed, the link can only be read, flushed and disconnected:
 * OrvDevice_Send on it fails.
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Disconnect(BluetoothAddress address);

/*
 * Sends a block of bytes in one write. The library does not split, queue or repeat it. If the
 * device accepts only smaller blocks, the system decides whether the write fails.
 *
 * Returns  length: the system reported the write as finished. The device may still have rejected
 *          it; the device's answer is not read. -1: no link, a negative length, null data with a
 *          positive length, a timeout after 2000 ms (the bytes may still arrive), or an error.
 * length   0 or greater. 0 sends an empty block.
 * data     length readable bytes; may be null when length is 0. The log never contains the bytes.
 * Blocks   2000 ms at most (one wait). Holds the lock of the device links, and first waits for a
 *          send or disconnect that holds it.
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Send(BluetoothAddress address, int32_t length,
                                            const uint8_t* data);

/*
 * Reads bytes that the device has sent, oldest first, as one stream without message boundaries. It
 * never waits for bytes, but returns the queued bytes at once.
 *
 * Returns  the number of bytes copied, 0 to count. -1: the address has no link, or buffer is null
 *          while count is positive; the bytes stay queued.
 * count    the maximum number of bytes to read. 0 or less reads no bytes.
 * buffer   count writable bytes; may be null when count is 0 or less.
 * Blocks   only for a send or disconnect that holds the lock of the device links.
 *
 * The queue is limited by memory only. The queue of a link that is never read grows by up to 175 kB
 * a second, the maximum rate of a 2M radio (1402 kbit/s).
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Receive(BluetoothAddress address, int32_t count,
                                               uint8_t* buffer);

/*
 * Discards all queued bytes.
 *
 * Returns  the number of bytes discarded, 0 or greater. -1: the address has no link.
 * Blocks   like OrvDevice_Receive.
 */
QUELVIXWINLIB_API ResultCode OrvDevice_Flush(BluetoothAddress address);

/* ---- diagnostics log */

/*
 * Switches the diagnostics log on and empties it. The log is a text file beside the library's own
 * file, under its name with ".log" appended: quelvixwinlib.dll.log. Each call of a function above,
 * each advertisement and each notification adds a line; data bytes are never written. A line is
 *
 *     hh:mm:ss.mmm <tab> text <carriage return> <line feed>
 *
 * in local time. The file is opened, written and closed for each line, so that the file is always
 * complete. It may be read, moved or deleted while the log is on. Its size is not limited.
 *
 * Returns  0: on. -1: the file cannot be created or emptied, or, on Windows, the library's path has
 *          characters that the ANSI code page lacks; the log is off then, even if it was on.
 * Blocks   only for file access.
 */
QUELVIXWINLIB_API ResultCode Logging_Enable(void);

/*
 * Switches the log off. The file is kept. A line that another thread is writing may still be added.
 *
 * Returns  0, always.
 * Blocks   never.
 */
QUELVIXWINLIB_API ResultCode Logging_Disable(void);

/*
 * Writes a line of the host to the log.
 *
 * Returns  the number of characters in the line before line feeds are translated: length + 14, or
 *          14 without text. -1: the log is off, its file cannot be opened, or text is null with a
 *          positive length.
 * text     length bytes, written unchanged except that a line feed becomes carriage return and line
 *          feed. A terminating zero is not needed. May be null when length is 0 or less.
 * length   number of bytes of text; 0 or less writes a line without text.
 * Blocks   only for file access. While the log is off, returns at once.
 */
QUELVIXWINLIB_API ResultCode Logging_AppendLine(const char* text, int32_t length);

#ifdef __cplusplus
}
#endif

#endif
