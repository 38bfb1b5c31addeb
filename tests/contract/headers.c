/* Compiles the public headers as C90. Does not compile if an export's type differs from the type
 * declared here. Hosts in other languages declare the same types. */
#include "quelvixwinlib.h"
#include "quelvixwinlib_simulated.h"

extern const struct Exports {
    int32_t (*withoutArguments[4])(void);
    int32_t (*ofAScanner[4])(int32_t);
    int32_t (*getDeviceInfo)(int32_t, int32_t, DiscoveredDevice*);
    int32_t (*ofADevice[3])(uint64_t);
    int32_t (*send)(uint64_t, int32_t, const uint8_t*);
    int32_t (*receive)(uint64_t, int32_t, uint8_t*);
    int32_t (*appendLine)(const char*, int32_t);
} exportsInC;

const struct Exports exportsInC = {
    {BluetoothAvailable, OrvScanner_Initialize, Logging_Enable, Logging_Disable},
    {OrvScanner_Deinitialize, OrvScanner_Start, OrvScanner_Stop, OrvScanner_GetDeviceCount},
    OrvScanner_GetDeviceInfo,
    {OrvDevice_Connect, OrvDevice_Disconnect, OrvDevice_Flush},
    OrvDevice_Send,
    OrvDevice_Receive,
    Logging_AppendLine};
