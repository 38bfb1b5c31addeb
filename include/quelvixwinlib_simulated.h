/*
 * The simulated Bluetooth world behind the simulated flavour of quelvixwinlib: radios, devices,
 * their answers and faults, and the clock, arranged in domain words. For tests of hosts and of the
 * library itself. The 15 functions of quelvixwinlib.h then run unchanged against this world.
 *
 * THE DEFAULT WORLD
 *
 * As long as no OrvWorld_ function that arranges is called, the world is one that a host can be
 * tried in: it runs on real time, has one Bluetooth radio that is on, and three devices:
 *
 *   A0:B1:C2:D3:E4:F5  "ORV-0042"   advertises, sends scan responses, takes links and echoes every
 *                                   block that it receives, with the timing of a real link
 *   A0:B1:C2:D3:E4:F6  "ORV-0043"   advertises and sends scan responses with all three values;
 *                                   takes no links
 *   11:22:33:44:55:66  "Lamp"       a foreign device
 *
 * OrvWorld_Reset leaves it for an empty world, which is then arranged piece by piece.
 *
 * CONVENTIONS
 *
 * Functions return 0 or a count or index, and -1 when what they name does not exist; nothing is
 * changed then. They may be called from any thread. Failure codes are HRESULTs, such as 0x80004005,
 * passed as int32_t. Texts are zero-terminated UTF-8 unless a length is asked for.
 * A device is named by its address. Address 0 stands for the machine itself: its adapter and radios.
 *
 * THREADS
 *
 * Answers and events reach the library on the world's own threads, several at once, never on the
 * thread that asked for them. Events of one device to one watcher, and notifications of one
 * characteristic, keep their order; everything else runs side by side.
 *
 * TIME
 *
 * On simulated time a wait of the library takes no real time: when nothing is left to do before a
 * wait's end or the next thing due, the clock jumps there. It never jumps while an answer is on its
 * way, so a time limit passes only when the world was arranged to miss it. On real time, limits and
 * delays pass as they do on a machine.
 * Where the library under test uses the system's own waits (the shipped library on Windows, with the
 * world in a module of its own), time is always real.
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

/* ------------------------------------------------------------------------------------ the world */

/*
 * Empties the world: no adapter, no radio, no device, no arranged fault, all counters 0, all
 * registered handlers forgotten, everything that hangs released. First waits until every event and
 * answer under way has been delivered. Objects that the library still holds stay valid, but nothing
 * happens to them any more. `simulatedTime` 1: simulated time, starting at 0; 0: real time.
 * Returns 0, or 1 when simulated time was asked for but only real time is to be had.
 */
ORV_WORLD_API int32_t OrvWorld_Reset(int32_t simulatedTime);

/* The default world again. */
ORV_WORLD_API int32_t OrvWorld_Default(void);

/*
 * A world from a file in JSON, as docs/simulated_world.md describes it. The file is read and checked
 * as a whole; then the world begins anew as after OrvWorld_Reset, and is what the file says. Time
 * begins at 0, and the file's events are due by it.
 * Returns 0, or 1 when simulated time was asked for but only real time is to be had. -1: the file is
 * at fault or cannot be read; nothing has changed, and `error` holds, zero-terminated and cut to
 * `size` bytes, "FILE:LINE: FIELD: what is wrong, what would be right"; LINE is 0 where no line is
 * meant. `error` may be null. On Windows `path` is in the process's ANSI code page.
 */
ORV_WORLD_API int32_t OrvWorld_PlayScenario(const char* path, int32_t simulatedTime, char* error,
                                            int32_t size);

/* The version of the library that the world belongs to, such as "1.0.0". */
ORV_WORLD_API const char* OrvWorld_Version(void);

/*
 * Waits until every event and answer that is due has been delivered and its handler has returned.
 * Never call it while a handler is kept waiting by a lock that the calling thread will release.
 * Returns 0, or -1 when nothing has moved for 30 s of real time, or from inside a handler; the same
 * holds for OrvWorld_Reset, OrvWorld_Default and OrvWorld_PassTime, which do nothing more then.
 */
ORV_WORLD_API int32_t OrvWorld_Settle(void);

/* ------------------------------------------------------------------------------------------ time */

/* Milliseconds on the world's clock since OrvWorld_Reset. */
ORV_WORLD_API int64_t OrvWorld_Now(void);

/* 1: time is simulated. 0: it is real. */
ORV_WORLD_API int32_t OrvWorld_TimeIsSimulated(void);

/*
 * Simulated time only. Hold keeps the clock from jumping, so that a wait stays a wait until Release
 * or until what it waits for happens. They do not nest.
 */
ORV_WORLD_API int32_t OrvWorld_HoldTime(void);
ORV_WORLD_API int32_t OrvWorld_ReleaseTime(void);

/*
 * Simulated time: moves on by `milliseconds`, letting everything happen that falls due, and settles.
 * Real time: waits that long. Works while time is held. When a wait of the library still goes on at
 * the end, events whose handlers the waiting thread may be keeping out by its lock are given 1 s of
 * real time and then left to come later.
 */
ORV_WORLD_API int32_t OrvWorld_PassTime(int32_t milliseconds);

/*
 * Waits until `count` threads are in a wait of the library. To be called before OrvWorld_PassTime
 * when another thread's wait is to see that time pass: that it has made the calls before its wait
 * does not say that the wait has begun. Returns 0, or -1 after 30 s of real time. Only where the
 * world is linked into the library; -1 elsewhere.
 */
ORV_WORLD_API int32_t OrvWorld_AwaitWaits(int32_t count);

/* --------------------------------------------------------------------------- adapter and radios */

enum { OrvRadioKind_Other = 0, OrvRadioKind_WiFi = 1, OrvRadioKind_Bluetooth = 3 };
enum { OrvRadioState_Unknown = 0, OrvRadioState_On = 1, OrvRadioState_Off = 2, OrvRadioState_Disabled = 3 };

ORV_WORLD_API int32_t OrvWorld_SetAdapter(int32_t present);
/* Adds a radio behind those there are; returns its index. */
ORV_WORLD_API int32_t OrvWorld_AddRadio(int32_t kind, int32_t state);
ORV_WORLD_API int32_t OrvWorld_SetRadio(int32_t index, int32_t kind, int32_t state);
/* As a user switches a radio: when no Bluetooth radio is on any more, started scans end by themselves,
 * and a start has no effect until one is on again. Links and their operations go on. */
ORV_WORLD_API int32_t OrvWorld_SwitchRadio(int32_t index, int32_t state);

/* --------------------------------------------------------------------------------------- devices */

/* The two packets of a device. A scan response reaches only watchers that scan actively. */
enum { OrvPacket_Advertisement = 0, OrvPacket_ScanResponse = 1 };

/*
 * Adds a device: known to the system, with this name in its advertisement and none in its scan
 * response, a signal of -60 dBm, no sections, and the family's service and characteristic. It
 * answers every operation with success, at once but after the call that asked has returned. It
 * sends nothing until told.
 * `name` null: an advertisement without a name. -1: the address is taken or 0.
 */
ORV_WORLD_API int32_t OrvWorld_AddDevice(uint64_t address, const char* name);

/* The system no longer knows the device (a lookup answers with no device); it still advertises. */
ORV_WORLD_API int32_t OrvWorld_ForgetDevice(uint64_t address);
/* The same, until a started watcher has heard the device. */
ORV_WORLD_API int32_t OrvWorld_KnowOnceHeard(uint64_t address);

/* 0: out of reach. It sends nothing by itself, no write reaches it, and what is asked of it, except
 * FindDevice and RequestAccess, ends after 7000 ms as Unreachable. 1: there again. */
ORV_WORLD_API int32_t OrvWorld_SetPresent(uint64_t address, int32_t present);
/* 1: an operation, except FindDevice and RequestAccess, begins when the one before it has ended,
 * whether the library still waits for that or not. 0: side by side, as usual. */
ORV_WORLD_API int32_t OrvWorld_SetOneAtATime(uint64_t address, int32_t on);
/* A longer block does not reach the device, and its write ends as ProtocolError; -1: none is. */
ORV_WORLD_API int32_t OrvWorld_SetLargestWrite(uint64_t address, int32_t bytes);

/* `length` UTF-16 units, well-formed or not; -1: no name in this packet. */
ORV_WORLD_API int32_t OrvWorld_SetName(uint64_t address, int32_t packet, const uint16_t* name,
                                       int32_t length);
ORV_WORLD_API int32_t OrvWorld_SetSignal(uint64_t address, int32_t dBm);
/* Appends a section to a packet: its type byte, and `length` bytes that follow it. */
ORV_WORLD_API int32_t OrvWorld_AddSection(uint64_t address, int32_t packet, int32_t type,
                                          const uint8_t* data, int32_t length);
ORV_WORLD_API int32_t OrvWorld_ClearSections(uint64_t address, int32_t packet);
/* Sends both packets every `milliseconds` while a watcher is started; 0: only when told. */
ORV_WORLD_API int32_t OrvWorld_SetAdvertisingInterval(uint64_t address, int32_t milliseconds);

/* Replaces the services; each call of OrvWorld_AddService appends one, without characteristics, and
 * returns its index. UUIDs in their text form of 36 characters. */
ORV_WORLD_API int32_t OrvWorld_RemoveServices(uint64_t address);
ORV_WORLD_API int32_t OrvWorld_AddService(uint64_t address, const char* uuid);
ORV_WORLD_API int32_t OrvWorld_AddCharacteristic(uint64_t address, int32_t service,
                                                 const char* uuid);

/* 1: every block written to the device while its notifications are on comes back as notifications
 * of at most 244 bytes, one every `intervalMs`; a write then takes `intervalMs` too. */
ORV_WORLD_API int32_t OrvWorld_SetEcho(uint64_t address, int32_t on, int32_t intervalMs);

/* --------------------------------------------------------------------------------------- answers */

/* What can be asked of a device, or of the machine (address 0) for the first two. */
enum {
    OrvOperation_FindAdapter = 0,         /* BluetoothAdapter.GetDefaultAsync */
    OrvOperation_FindRadios = 1,          /* Radio.GetRadiosAsync */
    OrvOperation_FindDevice = 2,          /* BluetoothLEDevice.FromBluetoothAddressAsync */
    OrvOperation_FindServices = 3,        /* BluetoothLEDevice.GetGattServicesForUuidAsync */
    OrvOperation_RequestAccess = 4,       /* GattDeviceService.RequestAccessAsync */
    OrvOperation_FindCharacteristics = 5, /* GattDeviceService.GetCharacteristicsForUuidAsync */
    OrvOperation_WriteDescriptor = 6,     /* ...WriteClientCharacteristicConfigurationDescriptorAsync */
    OrvOperation_WriteValue = 7           /* GattCharacteristic.WriteValueAsync */
};

/* How it is answered. Each manner sets one side of the answer and leaves the others. */
enum {
    OrvManner_Standard = 0,          /* forget all that was arranged for this operation */
    OrvManner_AtOnce = 1,            /* finished when it starts; the handler has run before its
                                        registration returns */
    OrvManner_After = 2,             /* value: milliseconds after the start; more than 2000 is late */
    OrvManner_Never = 3,             /* never ends */
    OrvManner_EndsAs = 4,            /* value: an AsyncStatus, 2 Canceled or 3 Error */
    OrvManner_StartFails = 5,        /* value: the code that starting it gives */
    OrvManner_RegistrationFails = 6, /* value: the code that registering the handler gives */
    OrvManner_ResultFails = 7,       /* value: the code that GetResults gives */
    OrvManner_NullResult = 8,        /* value 1: GetResults gives null; 0: as usual */
    OrvManner_Status = 9,            /* value: a GattCommunicationStatus or DeviceAccessStatus */
    OrvManner_EmptyList = 10         /* value 1: services or characteristics are an empty list */
};

/* Holds for every later start of the operation. An unknown address may be arranged, too. */
ORV_WORLD_API int32_t OrvWorld_Answer(uint64_t address, int32_t operation, int32_t manner,
                                      int32_t value);

/* ---------------------------------------------------------------------------------------- events */

/*
 * Sends one packet of a device as it is configured now. `watcher` -1: to every started watcher that
 * accepts it; 0 or greater: to the watcher created as number `watcher` since OrvWorld_Reset, started
 * or not, still held by the library or not. Returns at once with the number of watchers it goes to.
 */
ORV_WORLD_API int32_t OrvWorld_Advertise(uint64_t address, int32_t packet, int32_t watcher);

/*
 * Sends one notification. `registration` -1: to every handler ever registered on the device's
 * characteristics, those of closed links included; 0 or greater: to the handler registered as number
 * `registration` on this device. Returns at once with the number of handlers it goes to.
 */
ORV_WORLD_API int32_t OrvWorld_Notify(uint64_t address, const uint8_t* data, int32_t length,
                                      int32_t registration);

/* --------------------------------------------------------------------------- what has happened */

/*
 * Calls of the library into the world's objects since OrvWorld_Reset. A call is named by its class
 * and member in the platform's own names, such as "BluetoothLEAdvertisementWatcher.Start",
 * "GattDeviceService.Close", "Radio.get_Kind", "IAsyncOperation.GetResults" or
 * "IVectorView.GetAt"; a request for another interface is the member QueryInterface of its class,
 * looking for a factory is "RoGetActivationFactory". AddRef and Release are not calls.
 */

/* How often `member` was called; null: all calls together. */
ORV_WORLD_API int32_t OrvWorld_CallCount(const char* member);
/* Waits until `member` was called `count` times. Returns 0, or -1 after 10 s of real time. */
ORV_WORLD_API int32_t OrvWorld_AwaitCalls(const char* member, int32_t count);
/*
 * The name of call number `index` (0 is the first since OrvWorld_Reset), followed by one space and
 * its number argument where it has one: "BluetoothLEAdvertisementWatcher.put_ScanningMode 1". Cut to
 * `size` - 1 bytes and zero-terminated. Returns its whole length, or -1 when there is no such call.
 * The latest 100,000 calls are remembered at least; a notification takes two for each of its bytes.
 */
ORV_WORLD_API int32_t OrvWorld_CallAt(int32_t index, char* text, int32_t size);
/* As CallCount and CallAt, for calls of members that the library has no business calling. Each was
 * answered with E_NOTIMPL. */
ORV_WORLD_API int32_t OrvWorld_UnexpectedCallCount(void);
ORV_WORLD_API int32_t OrvWorld_UnexpectedCallAt(int32_t index, char* text, int32_t size);

/* Writes that reached a device, in order, whatever was answered. WriteAt copies at most `size` bytes
 * and returns the write's whole length. */
ORV_WORLD_API int32_t OrvWorld_WriteCount(uint64_t address);
ORV_WORLD_API int32_t OrvWorld_WriteAt(uint64_t address, int32_t index, uint8_t* data,
                                       int32_t size);

/* Devices and services of this address that were handed to the library and not closed by it. */
ORV_WORLD_API int32_t OrvWorld_OpenObjects(uint64_t address);

/* Objects of the world, factories aside, that the library holds at least one reference to; all the
 * references it holds to them; and handlers of the library that the world holds. */
ORV_WORLD_API int32_t OrvWorld_HeldObjects(void);
ORV_WORLD_API int32_t OrvWorld_HeldReferences(void);
ORV_WORLD_API int32_t OrvWorld_HeldHandlers(void);

/* Handlers that did not declare themselves callable from any thread (IAgileObject and IMarshal) or
 * did not answer for their own interface when they were registered. */
ORV_WORLD_API int32_t OrvWorld_ImproperHandlers(void);

/* ---------------------------------------------------------------------------------------- faults */

/*
 * The call number `n` from now on (1 is the next) fails with `code` instead of being carried out;
 * n 0: none does. Returns how many calls of the previous plan were left, 0 when it had struck.
 */
ORV_WORLD_API int32_t OrvWorld_FailCall(int32_t n, int32_t code);

/* Every call of `member` fails with `code` until told otherwise; code 0: it is carried out again. */
ORV_WORLD_API int32_t OrvWorld_FailMember(const char* member, int32_t code);

/*
 * Every call of `member` hangs, before it does anything, until OrvWorld_Release. For calls without a
 * time limit of their own: the two Close, Start and Stop. OrvWorld_AwaitCalls tells when one hangs.
 */
ORV_WORLD_API int32_t OrvWorld_Hang(const char* member);
ORV_WORLD_API int32_t OrvWorld_Release(const char* member);

/* 1: factories may be used on any thread (the usual case). 0: they may not. */
ORV_WORLD_API int32_t OrvWorld_SetFactoriesAgile(int32_t agile);

/*
 * Activation's last resort: a library of this name, such as "Windows.Devices.dll", answers for the
 * classes that the runtime refuses; null: none does. Only where the world is linked into the
 * library. Each request is the call "DllGetActivationFactory" with the library's name as argument.
 */
ORV_WORLD_API int32_t OrvWorld_SetActivationLibrary(const char* name);

/* The next `count` waits of the library cannot be set up: creating their event fails with `code`.
 * Only where the world is linked into the library. */
ORV_WORLD_API int32_t OrvWorld_FailWaits(int32_t count, int32_t code);

#ifdef __cplusplus
}
#endif

#endif
