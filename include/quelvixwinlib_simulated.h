/*
 * Functions that control the Bluetooth world of the simulated quelvixwinlib: radios, devices, their
 * answers and faults, and the clock. They serve tests of hosts and of the library itself. The 15
 * functions of quelvixwinlib.h run unchanged against this world.
 *
 * THE DEFAULT WORLD
 *
 * Until an OrvWorld_ function configures it, the world suits a first test of a host: it runs on
 * real time and has one Bluetooth radio, which is on, and three devices:
 *
 *   A0:B1:C2:D3:E4:F5  "ORV-0042"   advertises, sends scan responses, accepts links and echoes
 *                                   every block that it receives, with the timing of a real link
 *   A0:B1:C2:D3:E4:F6  "ORV-0043"   advertises and sends scan responses with all three values;
 *                                   rejects links
 *   11:22:33:44:55:66  "Lamp"       a device that the library must not list
 *
 * OrvWorld_Reset replaces it with an empty world, which the caller then configures step by step.
 *
 * CONVENTIONS
 *
 * Functions return 0, a count or an index. They return -1 and change nothing if an argument is out
 * of range or names an object that does not exist. Any thread may call them. Failure codes are
 * HRESULTs, such as 0x80004005, passed as int32_t. Texts are zero-terminated UTF-8 unless a length
 * is passed. An address names a device; address 0 names the machine: its adapter and radios.
 *
 * THREADS
 *
 * Answers and events reach the library on the world's own threads, several at once, never on the
 * thread that caused them. Events of one device to one watcher, and notifications of one
 * characteristic, keep their order; all other answers and events run in parallel.
 *
 * TIME
 *
 * On simulated time a wait of the library takes no real time: when nothing else can happen, the
 * clock jumps to the next scheduled event or the end of a wait. It never jumps while an answer is
 * being delivered, so a timeout occurs only when the world is configured for it. On real time,
 * timeouts and delays take their real duration. Time is always real for the shipped library on
 * Windows, which uses the system's own waits and has the world in a separate module.
 */
#ifndef QUELVIXWINLIB_SIMULATED_H
#define QUELVIXWINLIB_SIMULATED_H

#include <stdint.h>

#if defined(ORV_WORLD_BUILD) && !defined(_WIN32)
#define ORV_WORLD_API __attribute__((visibility("default")))
#elif defined(_WIN32) && !defined(ORV_WORLD_BUILD)
#define ORV_WORLD_API __declspec(dllimport)
#else
#define ORV_WORLD_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- the world */

/*
 * Removes the adapter and all radios, devices, faults and handlers, sets all counters to 0, and
 * releases all hanging calls. First waits until every event and answer in progress is delivered.
 * Objects to which the library still has references stay valid, but receive no further events.
 * `simulatedTime` 1 selects simulated time, which starts at 0; 0 selects real time. Returns 0, or 1
 * when simulated time was requested but only real time is available.
 */
ORV_WORLD_API int32_t OrvWorld_Reset(int32_t simulatedTime);

/* Restores the default world. */
ORV_WORLD_API int32_t OrvWorld_Default(void);

/*
 * Loads a world from a JSON file; docs/simulated_world.md describes the format. The file is checked
 * completely; then the world is reset as by OrvWorld_Reset and configured. The clock starts at 0,
 * and the file's events run on this clock. Returns 0, or 1 when simulated time was requested but
 * only real time is available. Returns -1 and changes nothing if the file cannot be read, is
 * invalid, or requires a world that is linked into the library. Also returns -1 if the reset fails,
 * as described at OrvWorld_Settle. If `error` is not null, the function writes a zero-terminated
 * text to it, cut to `size` bytes: an empty text after success, otherwise "FILE:LINE: FIELD: what
 * is wrong, what would be right". LINE is 0 if the error has no line. On Windows `path` is in the
 * process's ANSI code page.
 */
ORV_WORLD_API int32_t OrvWorld_PlayScenario(const char* path, int32_t simulatedTime, char* error,
                                            int32_t size);

/* Returns the version of the library that this world is part of, such as "1.0.0". */
ORV_WORLD_API const char* OrvWorld_Version(void);

/*
 * Waits until every event and answer that is due is delivered and its handler has returned. The
 * caller must not hold a lock that a handler needs. Returns 0, or -1 if nothing progresses for 30 s
 * of real time or if a handler calls this function. OrvWorld_Reset, OrvWorld_Default and
 * OrvWorld_PassTime fail in the same cases and then have no further effect.
 */
ORV_WORLD_API int32_t OrvWorld_Settle(void);

/* ---- time */

/* Returns the time since OrvWorld_Reset on the world's clock, in milliseconds. */
ORV_WORLD_API int64_t OrvWorld_Now(void);

/* Returns 1 when time is simulated, 0 when it is real. */
ORV_WORLD_API int32_t OrvWorld_TimeIsSimulated(void);

/*
 * HoldTime stops the simulated clock, so that a wait of the library lasts until its operation ends
 * or ReleaseTime starts the clock again. The calls do not nest, and fail on real time.
 */
ORV_WORLD_API int32_t OrvWorld_HoldTime(void);
ORV_WORLD_API int32_t OrvWorld_ReleaseTime(void);

/*
 * On simulated time, also while it is held: advances the clock by `milliseconds`, runs the events
 * that are due, and waits as OrvWorld_Settle does. If a thread that waits in the library holds a
 * lock that event handlers need, returns after 1 s of real time; their events are delivered later.
 * On real time, only waits for `milliseconds`.
 */
ORV_WORLD_API int32_t OrvWorld_PassTime(int32_t milliseconds);

/*
 * Waits until `count` threads wait inside the library. Call it before OrvWorld_PassTime if another
 * thread must already be waiting. The recorded calls do not contain waits. Returns 0, or -1 after
 * 30 s of real time or if the world is not linked into the library.
 */
ORV_WORLD_API int32_t OrvWorld_AwaitWaits(int32_t count);

/* ---- adapter and radios */

enum { OrvRadioKind_Other = 0, OrvRadioKind_WiFi = 1, OrvRadioKind_Bluetooth = 3 };
enum {
    OrvRadioState_Unknown = 0,
    OrvRadioState_On = 1,
    OrvRadioState_Off = 2,
    OrvRadioState_Disabled = 3
};

ORV_WORLD_API int32_t OrvWorld_SetAdapter(int32_t present);
/* Appends a radio and returns its index. As on Windows, a radio added after the library's first
 * request for radios is not listed until the world is reset. */
ORV_WORLD_API int32_t OrvWorld_AddRadio(int32_t kind, int32_t state);
ORV_WORLD_API int32_t OrvWorld_SetRadio(int32_t index, int32_t kind, int32_t state);
/* Switches a radio, as a user does. When the last Bluetooth radio goes off, the system stops all
 * scans; starting a scan has no effect until a Bluetooth radio is on again. Links and their
 * operations continue. */
ORV_WORLD_API int32_t OrvWorld_SwitchRadio(int32_t index, int32_t state);

/* ---- devices */

/* The two packets that a device sends. A scan response reaches only watchers that scan actively. */
enum { OrvPacket_Advertisement = 0, OrvPacket_ScanResponse = 1 };

/*
 * Adds a device that lookups find. It has `name` in its advertisement (null: no name), no name in
 * its scan response, a signal of -60 dBm, no data sections, and the service and characteristic of
 * the ORV family. Every operation succeeds without delay, but ends only after the call that starts
 * it has returned. The device sends nothing by itself. Returns -1 if the address is in use or 0.
 */
ORV_WORLD_API int32_t OrvWorld_AddDevice(uint64_t address, const char* name);

/* Makes lookups of this address find no device. The device still advertises. */
ORV_WORLD_API int32_t OrvWorld_ForgetDevice(uint64_t address);
/* Makes lookups find the device again, as after OrvWorld_AddDevice. */
ORV_WORLD_API int32_t OrvWorld_KnowDevice(uint64_t address);
/* Makes lookups find the device only after a started watcher has received a packet from it. */
ORV_WORLD_API int32_t OrvWorld_KnowOnceHeard(uint64_t address);

/* Moves the device out of range (0) or into range (1). Out of range, it sends nothing by itself and
 * receives no write. Operations on it, except FindDevice and RequestAccess, then end as Unreachable
 * after 7000 ms. */
ORV_WORLD_API int32_t OrvWorld_SetPresent(uint64_t address, int32_t present);
/* 1 makes each operation, except FindDevice and RequestAccess, begin after the previous operation
 * has ended, even if the library no longer waits for it. 0, the default, lets operations run in
 * parallel. */
ORV_WORLD_API int32_t OrvWorld_SetOneAtATime(uint64_t address, int32_t on);
/* Limits the length of a write. A longer block does not reach the device, and its write ends as
 * ProtocolError. -1 removes the limit. */
ORV_WORLD_API int32_t OrvWorld_SetLargestWrite(uint64_t address, int32_t bytes);

/* Sets the name in a packet to `length` UTF-16 units, well-formed or not. -1 removes the name. */
ORV_WORLD_API int32_t OrvWorld_SetName(uint64_t address, int32_t packet, const uint16_t* name,
                                       int32_t length);
ORV_WORLD_API int32_t OrvWorld_SetSignal(uint64_t address, int32_t dBm);
/* Varies the signal of each packet by up to `dB`, 0 to 100, above or below its configured value.
 * OrvWorld_SetSignal ends this. */
ORV_WORLD_API int32_t OrvWorld_SetSignalSpread(uint64_t address, int32_t dB);
/* Appends a data section to a packet: a type byte and `length` data bytes. */
ORV_WORLD_API int32_t OrvWorld_AddSection(uint64_t address, int32_t packet, int32_t type,
                                          const uint8_t* data, int32_t length);
ORV_WORLD_API int32_t OrvWorld_ClearSections(uint64_t address, int32_t packet);
/* Sends both packets every `milliseconds` while a watcher is started. 0 stops this. */
ORV_WORLD_API int32_t OrvWorld_SetAdvertisingInterval(uint64_t address, int32_t milliseconds);

/* RemoveServices removes all services. AddService appends a service without characteristics and
 * returns its index. UUIDs have their text form of 36 characters. */
ORV_WORLD_API int32_t OrvWorld_RemoveServices(uint64_t address);
ORV_WORLD_API int32_t OrvWorld_AddService(uint64_t address, const char* uuid);
ORV_WORLD_API int32_t OrvWorld_AddCharacteristic(uint64_t address, int32_t service,
                                                 const char* uuid);

/* 1 makes the device echo every block while notifications are on: it sends a notification of at
 * most 244 bytes every `intervalMs`, and a write takes `intervalMs`, too. 0 stops this. */
ORV_WORLD_API int32_t OrvWorld_SetEcho(uint64_t address, int32_t on, int32_t intervalMs);

/* ---- answers */

/* The operations. The first two belong to the machine (address 0), the others to a device. */
enum {
    OrvOperation_FindAdapter = 0,         /* BluetoothAdapter.GetDefaultAsync */
    OrvOperation_FindRadios = 1,          /* Radio.GetRadiosAsync */
    OrvOperation_FindDevice = 2,          /* BluetoothLEDevice.FromBluetoothAddressAsync */
    OrvOperation_FindServices = 3,        /* BluetoothLEDevice.GetGattServicesForUuidAsync */
    OrvOperation_RequestAccess = 4,       /* GattDeviceService.RequestAccessAsync */
    OrvOperation_FindCharacteristics = 5, /* GattDeviceService.GetCharacteristicsForUuidAsync */
    OrvOperation_WriteDescriptor = 6,     /* the write that enables notifications */
    OrvOperation_WriteValue = 7           /* GattCharacteristic.WriteValueAsync */
};

/* Values of `manner` for OrvWorld_Answer. Each changes one property of an operation's answer.
 * "value" below is the last argument of OrvWorld_Answer. */
enum {
    OrvAnswer_Standard = 0,          /* undoes all other settings */
    OrvAnswer_AtOnce = 1,            /* operation ends at its start; handler runs before its
                                        registration returns */
    OrvAnswer_After = 2,             /* value: delay in ms; above 2000, the library times out */
    OrvAnswer_Never = 3,             /* never ends */
    OrvAnswer_EndsAs = 4,            /* value: an AsyncStatus, 2 Canceled or 3 Error */
    OrvAnswer_StartFails = 5,        /* value: the code that the start returns */
    OrvAnswer_RegistrationFails = 6, /* value: the code that registering the handler returns */
    OrvAnswer_ResultFails = 7,       /* value: the code that GetResults returns */
    OrvAnswer_NullResult = 8,        /* value 1: GetResults returns null; 0: as usual */
    OrvAnswer_Status = 9,            /* value: a GattCommunicationStatus or DeviceAccessStatus */
    OrvAnswer_EmptyList = 10         /* value 1: empty list of services or characteristics */
};

/* Configures the answer to every later start of the operation. The address need not have a
 * device. */
ORV_WORLD_API int32_t OrvWorld_Answer(uint64_t address, int32_t operation, int32_t manner,
                                      int32_t value);

/* ---- events */

/*
 * Sends one packet of a device as it is configured now. If `watcher` is -1, every started watcher
 * that accepts the packet receives it. Otherwise, the watcher with this number receives it, even if
 * it is stopped or released; 0 is the first since OrvWorld_Reset. Returns the number of watchers
 * that will receive the packet, without waiting for them.
 */
ORV_WORLD_API int32_t OrvWorld_Advertise(uint64_t address, int32_t packet, int32_t watcher);

/*
 * Sends one notification. If `registration` is -1, every handler ever registered on the device's
 * characteristics receives it, including handlers of closed links. Otherwise, the handler of this
 * number receives it; 0 is the first registered on this device. Returns the number of handlers that
 * will receive the notification, without waiting for them.
 */
ORV_WORLD_API int32_t OrvWorld_Notify(uint64_t address, const uint8_t* data, int32_t length,
                                      int32_t registration);

/* ---- recorded calls */

/*
 * The world records the library's calls into its objects since OrvWorld_Reset. A call is named
 * after the platform's class and member, such as "BluetoothLEAdvertisementWatcher.Start",
 * "GattDeviceService.Close", "Radio.get_Kind", "IAsyncOperation.GetResults" or "IVectorView.GetAt".
 * A request for another interface has the member QueryInterface; a request for a factory is
 * "RoGetActivationFactory". AddRef and Release are not recorded.
 */

/* Returns the number of calls of `member`, or of all calls if `member` is null. */
ORV_WORLD_API int32_t OrvWorld_CallCount(const char* member);
/* Waits until `member` was called `count` times. Returns 0, or -1 after 10 s of real time. */
ORV_WORLD_API int32_t OrvWorld_AwaitCalls(const char* member, int32_t count);
/*
 * Writes the name of call number `index` (0 is the first since OrvWorld_Reset), followed by a space
 * and the recorded argument, if any: "BluetoothLEAdvertisementWatcher.put_ScanningMode 1". The text
 * is cut to `size` - 1 bytes and zero-terminated. Returns the full length, or -1 for an unknown
 * index. At least the latest 100,000 calls are kept. Reading a byte of a notification is two calls.
 */
ORV_WORLD_API int32_t OrvWorld_CallAt(int32_t index, char* text, int32_t size);
/* Like CallCount and CallAt, for members that the library must not call. Each such call returned
 * E_NOTIMPL. */
ORV_WORLD_API int32_t OrvWorld_UnexpectedCallCount(void);
ORV_WORLD_API int32_t OrvWorld_UnexpectedCallAt(int32_t index, char* text, int32_t size);

/* WriteCount returns the number of writes that reached the device, whatever their result. WriteAt
 * copies at most `size` bytes of write `index` (0 is the first) and returns its full length. */
ORV_WORLD_API int32_t OrvWorld_WriteCount(uint64_t address);
ORV_WORLD_API int32_t OrvWorld_WriteAt(uint64_t address, int32_t index, uint8_t* data,
                                       int32_t size);

/* Returns the number of devices and services of this address that the library has not closed. */
ORV_WORLD_API int32_t OrvWorld_OpenObjects(uint64_t address);

/* HeldObjects returns how many of the world's objects the library references, HeldReferences the
 * number of these references; both ignore factories. HeldHandlers returns how many of the library's
 * handlers the world references. */
ORV_WORLD_API int32_t OrvWorld_HeldObjects(void);
ORV_WORLD_API int32_t OrvWorld_HeldReferences(void);
ORV_WORLD_API int32_t OrvWorld_HeldHandlers(void);

/* Returns the number of registered handlers that lacked the interface of their event, IAgileObject
 * or IMarshal. IAgileObject and IMarshal let the world call a handler from any thread. */
ORV_WORLD_API int32_t OrvWorld_ImproperHandlers(void);

/* ---- faults */

/*
 * Makes call number `n` from now on (1 is the next) fail with `code` without being executed. `n` 0
 * cancels this. Returns the number of calls left until the previously set failure, 0 if that
 * failure has occurred.
 */
ORV_WORLD_API int32_t OrvWorld_FailCall(int32_t n, int32_t code);

/* Makes every call of `member` fail with `code`. Code 0 cancels this. */
ORV_WORLD_API int32_t OrvWorld_FailMember(const char* member, int32_t code);

/*
 * Makes every call of `member` hang, before it has an effect, until OrvWorld_Release. Meant for
 * calls without a timeout: Start, Stop, and Close of a service or a device. OrvWorld_AwaitCalls
 * returns when a call hangs.
 */
ORV_WORLD_API int32_t OrvWorld_Hang(const char* member);
ORV_WORLD_API int32_t OrvWorld_Release(const char* member);

/* Sets whether factories may be used on any thread: 1, the default, or 0. */
ORV_WORLD_API int32_t OrvWorld_SetFactoriesAgile(int32_t agile);

/*
 * Simulates a library file of this name, such as "Windows.Devices.dll", that provides the classes
 * that the runtime refuses to create. Null removes the file. Fails unless the world is linked into
 * the library. Each request is recorded as "DllGetActivationFactory" with the file's name as
 * argument.
 */
ORV_WORLD_API int32_t OrvWorld_SetActivationLibrary(const char* name);

/* Makes the next `count` waits of the library fail: creating their event fails with `code`. Fails
 * unless the world is linked into the library. */
ORV_WORLD_API int32_t OrvWorld_FailWaits(int32_t count, int32_t code);

#ifdef __cplusplus
}
#endif

#endif
