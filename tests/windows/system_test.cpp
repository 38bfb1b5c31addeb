// Tests the library with the system's apartments, activation and text conversion.
#include <windows.h>
// These headers need windows.h before them.
#include <objbase.h>
#include <roapi.h>
#include <winstring.h>

#include <cstdlib>
#include <thread>

#include "support/world.h"

namespace orv {
namespace {

constexpr int Well = 42;

// Calls functions that use every Windows Runtime class of the library. Returns true if all succeed.
bool EverythingWorks() {
    const std::uint8_t data[] = {1, 2, 3};
    const ResultCode scanner = OrvScanner_Initialize();
    const bool scans = scanner >= 0 && OrvScanner_Start(scanner) == 0 &&
                       OrvWorld_Advertise(Address, OrvPacket_Advertisement, -1) == 1 &&
                       OrvWorld_Settle() == 0 && OrvScanner_GetDeviceCount(scanner) == 1 &&
                       OrvScanner_Stop(scanner) == 0 && OrvScanner_Deinitialize(scanner) == 0;
    std::uint8_t received[3];
    const bool links = OrvDevice_Connect(Address) == 0 && OrvDevice_Send(Address, 3, data) == 3 &&
                       OrvWorld_Notify(Address, data, 3, -1) > 0 && OrvWorld_Settle() == 0 &&
                       OrvDevice_Receive(Address, 3, received) == 3 &&
                       OrvDevice_Disconnect(Address) == 0;
    return BluetoothAvailable() == 0 && scans && links;
}

// Returns true if the multithreaded apartment exists, which the library must keep while it caches
// factories.
bool ApartmentIsHeld() {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    return CoGetApartmentType(&type, &qualifier) == S_OK && type == APTTYPE_MTA &&
           qualifier == APTTYPEQUALIFIER_IMPLICIT_MTA;
}

template <typename Body>
bool OnThread(Body&& body) {
    bool result = false;
    std::thread([&] { result = body(); }).join();
    return result;
}

// The apartments from which a host thread calls the library; -1 is no apartment.
struct Host {
    const char* name;
    int first;  // the thread leaves it before it enters `second`
    int second;
};

const Host Hosts[] = {
    {"NoApartment", -1, -1},
    {"SingleThreaded", COINIT_APARTMENTTHREADED, COINIT_APARTMENTTHREADED},
    {"Multithreaded", COINIT_MULTITHREADED, COINIT_MULTITHREADED},
    {"MultithreadedThenNone", COINIT_MULTITHREADED, -1},
    {"SingleThreadedThenNone", COINIT_APARTMENTTHREADED, -1},
    {"NoneThenSingleThreaded", -1, COINIT_APARTMENTTHREADED},
    {"MultithreadedThenSingleThreaded", COINIT_MULTITHREADED, COINIT_APARTMENTTHREADED},
};

bool WorksIn(int apartment) {
    if (apartment >= 0 && FAILED(CoInitializeEx(nullptr, static_cast<DWORD>(apartment)))) {
        return false;
    }
    const bool works = EverythingWorks();
    if (apartment >= 0) {
        CoUninitialize();
    }
    return works;
}

// Each host needs its own process, because the library requests its factories only once.
[[noreturn]] void RunHost(const Host& host) {
    const bool held = OnThread(ApartmentIsHeld);
    const bool works = OnThread([&] { return WorksIn(host.first) && WorksIn(host.second); });
    const bool heldThen = OnThread(ApartmentIsHeld);
    std::exit(held ? 1 : !works ? 2 : !heldThen ? 3 : !OnThread(EverythingWorks) ? 4 : Well);
}

class HostThreads : public WorldTest, public testing::WithParamInterface<Host> {};

TEST_P(HostThreads, NeedNoPreparation) {
    EXPECT_EXIT(RunHost(GetParam()), testing::ExitedWithCode(Well), "");
}

INSTANTIATE_TEST_SUITE_P(Apartments, HostThreads, testing::ValuesIn(Hosts), RowName);

// Checks that the system finds the classes only if this run has registered them.
TEST(Activation, UsesTheConfiguredWay) {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const char* const way = std::getenv("ORV_WAY");
    ASSERT_TRUE(way != nullptr);
    const HRESULT expected = way == std::string("registered") ? S_OK : REGDB_E_CLASSNOTREG;
    for (const wchar_t* name :
         {L"Windows.Devices.Bluetooth.BluetoothAdapter", L"Windows.Devices.Radios.Radio",
          L"Windows.Devices.Bluetooth.Advertisement.BluetoothLEAdvertisementWatcher",
          L"Windows.Devices.Bluetooth.BluetoothLEDevice", L"Windows.Storage.Streams.DataReader",
          L"Windows.Storage.Streams.DataWriter"}) {
        HSTRING className = nullptr;
        ASSERT_EQ(WindowsCreateString(name, static_cast<UINT32>(wcslen(name)), &className), S_OK);
        IUnknown* factory = nullptr;
        EXPECT_EQ(
            RoGetActivationFactory(className, IID_IUnknown, reinterpret_cast<void**>(&factory)),
            expected)
            << className;
        WindowsDeleteString(className);
        if (factory != nullptr) {
            factory->Release();
        }
    }
    CoUninitialize();
}

struct Name {
    const char* name;
    std::u16string text;
};

const Name Names[] = {
    {"Ascii", u"ORV-0042"},
    {"TwoAndThreeBytes", u"ORV \u00e9\u0416\u20ac"},
    {"Pair", u"ORV \U0001F600\U00010000\U0010FFFF"},
    {"LoneHigh", {'O', 'R', 'V', 0xD83D, 'x'}},
    {"LoneLow", {'O', 'R', 'V', 0xDE00, 'x'}},
    {"HighAtTheEnd", {'O', 'R', 'V', 0xD800}},
    {"Reversed", {'O', 'R', 'V', 0xDC00, 0xD800, 'x'}},
    {"HighBeforeAPair", {'O', 'R', 'V', 0xDBFF, 0xD83D, 0xDE00}},
    {"PairBeforeALow", {'O', 'R', 'V', 0xD83D, 0xDE00, 0xDFFF}},
    {"NonCharacters", {'O', 'R', 'V', 0xFFFE, 0xFFFF, 0xFEFF}},
    {"LongEnoughToBeCut", u"ORV \u20ac\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac\u20ac"},
};

class ConvertedName : public WorldTest, public testing::WithParamInterface<Name> {};

TEST_P(ConvertedName, MatchesTheSystemsConversion) {
    const std::u16string& text = GetParam().text;
    const auto units = static_cast<int>(text.size());
    char converted[200] = "";
    const int size = WideCharToMultiByte(CP_UTF8, 0, reinterpret_cast<const wchar_t*>(text.data()),
                                         units, converted, sizeof converted, nullptr, nullptr);
    ASSERT_GT(size, 0);
    ASSERT_EQ(OrvWorld_SetName(Address, OrvPacket_Advertisement,
                               reinterpret_cast<const std::uint16_t*>(text.data()), units),
              0);
    ASSERT_EQ(OrvScanner_Initialize(), 0);
    ASSERT_EQ(OrvScanner_Start(0), 0);
    Logging_Enable();
    Advertise(Address);
    EXPECT_EQ(LogLines(), Lines{"OnAdvertisementReceived 176685338322165 <" +
                                std::string(converted) + "> -60"});
    DiscoveredDevice device = {};
    ASSERT_EQ(OrvScanner_GetDeviceInfo(0, 0, &device), 0);
    EXPECT_EQ(std::string(device.name), std::string(converted).substr(0, 29));
}

INSTANTIATE_TEST_SUITE_P(Texts, ConvertedName, testing::ValuesIn(Names), RowName);

}  // namespace
}  // namespace orv
