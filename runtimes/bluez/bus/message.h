#pragma once

#include <systemd/sd-bus.h>

#include <string>
#include <vector>

#include "platform/abi/base.h"

namespace orv::bluez {

using Bytes = std::vector<BYTE>;

// Returns the result of a function that reads a message. Throws if memory is exhausted, because the
// message would otherwise seem to be malformed.
int CheckMemory(int result);

// Calls visit(key) for each entry of a dictionary. `type` is the type of its entries, such as
// "{sv}". `visit` must read the whole value or nothing; an unread value is skipped.
template <typename Key, typename Visit>
void ForEachEntry(sd_bus_message* message, const char* type, Visit&& visit) {
    if (CheckMemory(sd_bus_message_enter_container(message, 'a', type)) < 0) {
        return;
    }
    std::string entry = type + 1;
    entry.pop_back();
    while (CheckMemory(sd_bus_message_enter_container(message, 'e', entry.c_str())) > 0) {
        Key found{};
        if (CheckMemory(sd_bus_message_read_basic(message, entry[0], &found)) < 0) {
            break;
        }
        visit(found);
        if (sd_bus_message_at_end(message, 0) == 0) {
            CheckMemory(sd_bus_message_skip(message, &entry[1]));
        }
        sd_bus_message_exit_container(message);
    }
    sd_bus_message_exit_container(message);
}

// Reads the next variant. Leaves `value` unchanged if the variant has another type.
void ReadVariant(sd_bus_message* message, bool& value);
void ReadVariant(sd_bus_message* message, INT16& value);
void ReadVariant(sd_bus_message* message, std::string& value);
void ReadVariant(sd_bus_message* message, Bytes& value);  // appends to `value`
void ReadVariant(sd_bus_message* message, std::vector<std::string>& value);

// These functions return zeros if the text is malformed.
GUID ReadUuid(sd_bus_message* message);
UINT64 ReadAddress(sd_bus_message* message);

std::vector<std::string> ReadStrings(sd_bus_message* message);

}  // namespace orv::bluez
