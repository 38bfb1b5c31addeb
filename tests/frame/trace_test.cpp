// Tests that every export writes its trace line first, whatever its arguments are.
#include <climits>
#include <cstring>
#include <string>

#include "support/world.h"

namespace orv {
namespace {

constexpr BluetoothAddress Largest = UINT64_MAX;

struct Trace {
    const char* text;
    ResultCode (*call)();
    ResultCode result = -1;
};

const Trace Traces[] = {
    {"BluetoothAvailable", [] { return BluetoothAvailable(); }, 0},
    {"OrvScanner_Initialize", [] { return OrvScanner_Initialize(); }, 1},
    {"OrvScanner_Deinitialize -2147483648", [] { return OrvScanner_Deinitialize(INT_MIN); }},
    {"OrvScanner_Start 2147483647", [] { return OrvScanner_Start(INT_MAX); }},
    {"OrvScanner_Stop -2147483648", [] { return OrvScanner_Stop(INT_MIN); }},
    {"OrvScanner_GetDeviceCount 2147483647", [] { return OrvScanner_GetDeviceCount(INT_MAX); }},
    {"OrvScanner_GetDeviceInfo 0 3", [] { return OrvScanner_GetDeviceInfo(0, 3, nullptr); }},
    {"OrvScanner_GetDeviceInfo -2147483648 -2147483648",
     [] { return OrvScanner_GetDeviceInfo(INT_MIN, INT_MIN, nullptr); }},
    {"OrvDevice_Connect 18446744073709551615", [] { return OrvDevice_Connect(Largest); }},
    {"OrvDevice_Disconnect 18446744073709551615", [] { return OrvDevice_Disconnect(Largest); }},
    {"OrvDevice_Send 1 20", [] { return OrvDevice_Send(1, 20, Bytes(20).data()); }},
    {"OrvDevice_Send 176685338322165 0", [] { return OrvDevice_Send(Address, 0, nullptr); }, 0},
    {"OrvDevice_Send 176685338322165 1", [] { return OrvDevice_Send(Address, 1, nullptr); }},
    {"OrvDevice_Send 176685338322165 -1",
     [] { return OrvDevice_Send(Address, -1, Bytes(1).data()); }},
    {"OrvDevice_Send 18446744073709551615 -2147483648",
     [] { return OrvDevice_Send(Largest, INT_MIN, nullptr); }},
    {"OrvDevice_Receive 18446744073709551615",
     [] { return OrvDevice_Receive(Largest, INT_MAX, nullptr); }},
    {"OrvDevice_Flush 18446744073709551615", [] { return OrvDevice_Flush(Largest); }},
};

using TraceTest = WorldTest;

// Only session 0 and one link exist, so the library rejects all other ids and addresses.
TEST_F(TraceTest, EveryExportWritesOneLineAndRefusesWithoutACall) {
    ASSERT_EQ(OrvScanner_Initialize(), 0);
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    for (const Trace& trace : Traces) {
        SCOPED_TRACE(trace.text);
        const std::int32_t calls = OrvWorld_CallCount(nullptr);
        ExpectCall(trace.call, trace.result, {trace.text});
        const bool asks = trace.result >= 0 || std::strstr(trace.text, "Connect") != nullptr ||
                          std::strcmp(trace.text, "OrvDevice_Send 1 20") == 0;
        EXPECT_EQ(OrvWorld_CallCount(nullptr) > calls, asks);
    }
}

}  // namespace
}  // namespace orv
