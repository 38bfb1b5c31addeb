#include "runtimes/bluez/bus/message.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

namespace orv::bluez {

int CheckMemory(int result) {
    if (result == -ENOMEM) {
        throw std::bad_alloc();
    }
    return result;
}

void ReadVariant(sd_bus_message* message, bool& value) {
    int read = 0;
    if (CheckMemory(sd_bus_message_read(message, "v", "b", &read)) >= 0) {
        value = read != 0;
    }
}

void ReadVariant(sd_bus_message* message, INT16& value) {
    CheckMemory(sd_bus_message_read(message, "v", "n", &value));
}

void ReadVariant(sd_bus_message* message, std::string& value) {
    const char* type = nullptr;
    const char* read = nullptr;
    // Also accepts an object path.
    if (CheckMemory(sd_bus_message_peek_type(message, nullptr, &type)) > 0 &&
        (strcmp(type, "s") == 0 || strcmp(type, "o") == 0) &&
        CheckMemory(sd_bus_message_read(message, "v", type, &read)) >= 0) {
        value = read;
    }
}

void ReadVariant(sd_bus_message* message, Bytes& value) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (CheckMemory(sd_bus_message_enter_container(message, 'v', "ay")) > 0) {
        if (CheckMemory(sd_bus_message_read_array(message, 'y', &bytes, &size)) >= 0) {
            value.insert(value.end(), static_cast<const BYTE*>(bytes),
                         static_cast<const BYTE*>(bytes) + size);
        }
        sd_bus_message_exit_container(message);
    }
}

void ReadVariant(sd_bus_message* message, std::vector<std::string>& value) {
    if (CheckMemory(sd_bus_message_enter_container(message, 'v', "as")) > 0) {
        value = ReadStrings(message);
        sd_bus_message_exit_container(message);
    }
}

GUID ReadUuid(sd_bus_message* message) {
    std::string text;
    char copy[37];
    ReadVariant(message, text);
    if (text.size() != 36 || text.find_first_not_of("0123456789abcdefABCDEF-") != text.npos) {
        return {};
    }
    memcpy(copy, text.c_str(), sizeof copy);
    return Guid(copy);
}

UINT64 ReadAddress(sd_bus_message* message) {
    std::string text;
    ReadVariant(message, text);
    unsigned parts[6];
    if (text.size() != 17 || sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x", &parts[0], &parts[1],
                                    &parts[2], &parts[3], &parts[4], &parts[5]) != 6) {
        return 0;
    }
    UINT64 address = 0;
    for (const unsigned part : parts) {
        address = address << 8 | part;
    }
    return address;
}

std::vector<std::string> ReadStrings(sd_bus_message* message) {
    std::vector<std::string> strings;
    if (CheckMemory(sd_bus_message_enter_container(message, 'a', "s")) > 0) {
        const char* item = nullptr;
        while (CheckMemory(sd_bus_message_read_basic(message, 's', &item)) > 0) {
            strings.emplace_back(item);
        }
        sd_bus_message_exit_container(message);
    }
    return strings;
}

}  // namespace orv::bluez
