/* A minimal client with sd-bus, blocking calls and the socket of BlueZ's AcquireNotify. It keeps no
   device list and does not recover from failures. */
#define _POSIX_C_SOURCE 200809L

#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <string.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include "bench/radio/client.h"

static sd_bus* bus;
static char device[100];
static char stream[160];
static int values = -1;
static int heard;

static int property_is_set(const char* name) {
    int set = 0;
    sd_bus_get_property_trivial(bus, "org.bluez", device, "org.bluez.Device1", name, NULL, 'b',
                                &set);
    return set;
}

/* Finds the D-Bus path of the device's characteristic by UUID, because the path contains an unknown
   attribute handle. Returns 0, or -1 if the device lacks the characteristic. */
static int find_stream(void) {
    sd_bus_message* reply = NULL;
    const char *path = NULL, *interface = NULL, *key = NULL, *text = NULL;
    if (sd_bus_call_method(bus, "org.bluez", "/", "org.freedesktop.DBus.ObjectManager",
                           "GetManagedObjects", NULL, &reply, "") < 0) {
        return -1;
    }
    stream[0] = '\0';
    sd_bus_message_enter_container(reply, 'a', "{oa{sa{sv}}}");
    while (sd_bus_message_enter_container(reply, 'e', "oa{sa{sv}}") > 0) {
        sd_bus_message_read(reply, "o", &path);
        sd_bus_message_enter_container(reply, 'a', "{sa{sv}}");
        while (sd_bus_message_enter_container(reply, 'e', "sa{sv}") > 0) {
            sd_bus_message_read(reply, "s", &interface);
            sd_bus_message_enter_container(reply, 'a', "{sv}");
            while (sd_bus_message_enter_container(reply, 'e', "sv") > 0) {
                sd_bus_message_read(reply, "s", &key);
                if (strcmp(interface, "org.bluez.GattCharacteristic1") == 0 &&
                    strcmp(key, "UUID") == 0 && strncmp(path, device, strlen(device)) == 0) {
                    sd_bus_message_read(reply, "v", "s", &text);
                    if (strcmp(text, "fec26ec4-6d71-4442-9f81-55bc21d658d6") == 0) {
                        snprintf(stream, sizeof stream, "%s", path);
                    }
                } else {
                    sd_bus_message_skip(reply, "v");
                }
                sd_bus_message_exit_container(reply);
            }
            sd_bus_message_exit_container(reply);
            sd_bus_message_exit_container(reply);
        }
        sd_bus_message_exit_container(reply);
        sd_bus_message_exit_container(reply);
    }
    sd_bus_message_unref(reply);
    return stream[0] ? 0 : -1;
}

static int hand_connect(const char* address) {
    sd_bus_message* reply = NULL;
    int descriptor = -1;
    uint16_t mtu = 0;
    snprintf(device, sizeof device, "/org/bluez/hci0/dev_%s", address);
    for (char* c = device; *c; ++c) {
        *c = *c == ':' ? '_' : *c;
    }
    if ((!bus && sd_bus_open_system(&bus) < 0) ||
        sd_bus_call_method(bus, "org.bluez", device, "org.bluez.Device1", "Connect", NULL, NULL,
                           "") < 0) {
        return -1;
    }
    while (!property_is_set("ServicesResolved")) {
        poll(NULL, 0, 5);
    }
    if (find_stream() < 0 ||
        sd_bus_call_method(bus, "org.bluez", stream, "org.bluez.GattCharacteristic1",
                           "AcquireNotify", NULL, &reply, "a{sv}", 0) < 0 ||
        sd_bus_message_read(reply, "hq", &descriptor, &mtu) < 0) {
        return -1;
    }
    values = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    sd_bus_message_unref(reply);
    return 0;
}

static int hand_disconnect(void) {
    close(values);
    return sd_bus_call_method(bus, "org.bluez", device, "org.bluez.Device1", "Disconnect", NULL,
                              NULL, "") < 0
               ? -1
               : 0;
}

static int hand_receive(void) {
    unsigned char value[512];
    struct pollfd polled = {values, POLLIN, 0};
    if (poll(&polled, 1, 10) <= 0) {
        return 0;
    }
    return (int)read(values, value, sizeof value);
}

static int on_report(sd_bus_message* signal, void* ignored, sd_bus_error* error) {
    const char* text = NULL;
    (void)ignored;
    (void)error;
    sd_bus_message_skip(signal, "s");
    sd_bus_message_enter_container(signal, 'a', "{sv}");
    while (sd_bus_message_enter_container(signal, 'e', "sv") > 0) {
        sd_bus_message_read(signal, "s", &text);
        heard += strcmp(text, "ManufacturerData") == 0;
        sd_bus_message_skip(signal, "v");
        sd_bus_message_exit_container(signal);
    }
    return 0;
}

static int hand_start_scan(void) {
    if (!bus && sd_bus_open_system(&bus) < 0) {
        return -1;
    }
    sd_bus_add_match(bus, NULL, "type='signal',sender='org.bluez',arg0='org.bluez.Device1'",
                     on_report, NULL);
    sd_bus_call_method(bus, "org.bluez", "/org/bluez/hci0", "org.bluez.Adapter1",
                       "SetDiscoveryFilter", NULL, NULL, "a{sv}", 2, "Transport", "s", "le",
                       "DuplicateData", "b", 1);
    return sd_bus_call_method(bus, "org.bluez", "/org/bluez/hci0", "org.bluez.Adapter1",
                              "StartDiscovery", NULL, NULL, "");
}

static int hand_scan(void) {
    if (sd_bus_process(bus, NULL) == 0) {
        sd_bus_wait(bus, 10000);
    }
    return heard;
}

const struct client by_hand = {"by hand",    hand_connect,    hand_disconnect,
                               hand_receive, hand_start_scan, hand_scan};
