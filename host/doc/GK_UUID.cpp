#include "host/doc/GK_UUID.h"

#include <cstdio>

std::string GK_UUID::ToString() const {
    char buf[40];
    std::snprintf(buf, sizeof buf,
                  "%02x%02x%02x%02x-%02x%02x-%02x%02x-%02x%02x-%02x%02x%02x%02x%02x%02x", bytes[0],
                  bytes[1], bytes[2], bytes[3], bytes[4], bytes[5], bytes[6], bytes[7], bytes[8],
                  bytes[9], bytes[10], bytes[11], bytes[12], bytes[13], bytes[14], bytes[15]);
    return buf;
}

GK_UUID GK_UUID::FromSerial(std::uint64_t serial) {
    GK_UUID id;
    id.bytes[6] = 0x40; // version 4 layout
    id.bytes[8] = 0x80; // variant 1
    for (int i = 0; i < 6; ++i)
        id.bytes[15 - i] = static_cast<std::uint8_t>(serial >> (8 * i));
    id.bytes[9] = static_cast<std::uint8_t>(serial >> 48);
    id.bytes[7] = static_cast<std::uint8_t>(serial >> 56);
    return id;
}
