#include "orv/log/functions.h"

#include <iterator>

namespace orv::log {

namespace {

constexpr FunctionFacts Functions[] = {
    {"BluetoothAvailable", Family::Availability, Traces::Nothing, 2, false},
    {"OrvScanner_Initialize", Family::Scanner, Traces::Nothing, 0, false},
    {"OrvScanner_Deinitialize", Family::Scanner, Traces::Scanner, 0, false},
    {"OrvScanner_Start", Family::Scanner, Traces::Scanner, 0, true},
    {"OrvScanner_Stop", Family::Scanner, Traces::Scanner, 0, true},
    {"OrvScanner_GetDeviceCount", Family::Scanner, Traces::Scanner, 0, false},
    {"OrvScanner_GetDeviceInfo", Family::Scanner, Traces::ScannerAndNumber, 0, false},
    {"OrvDevice_Connect", Family::Link, Traces::Address, 5, false},
    {"OrvDevice_Disconnect", Family::Link, Traces::Address, 1, true},
    {"OrvDevice_Send", Family::Link, Traces::AddressAndNumber, 1, true},
    {"OrvDevice_Receive", Family::Link, Traces::Address, 0, false},
    {"OrvDevice_Flush", Family::Link, Traces::Address, 0, false},
};
static_assert(std::size(Functions) == FunctionCount);

}  // namespace

const FunctionFacts& FactsOf(Function function) {
    return Functions[static_cast<std::size_t>(function)];
}

std::optional<Function> FindFunction(std::string_view name) {
    for (std::size_t index = 0; index < std::size(Functions); ++index) {
        if (Functions[index].name == name) {
            return static_cast<Function>(index);
        }
    }
    return std::nullopt;
}

}  // namespace orv::log
