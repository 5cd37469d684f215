// The text and number forms of a 16-byte id.
#include "funknown.h"

#include <cstdio>

namespace vst3 {

namespace {

uint32 bigEndian(const char* p)
{
    auto b = [p](int i) { return static_cast<uint32>(static_cast<uint8>(p[i])); };
    return b(0) << 24 | b(1) << 16 | b(2) << 8 | b(3);
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

} // namespace

bool FUID::isValid() const
{
    for (char c : data)
        if (c) return true;
    return false;
}

uint32 FUID::getLong1() const
{
    const char swapped[4] = {data[3], data[2], data[1], data[0]};
    return bigEndian(swapped);
}

uint32 FUID::getLong2() const
{
    const char swapped[4] = {data[5], data[4], data[7], data[6]};
    return bigEndian(swapped);
}

uint32 FUID::getLong3() const
{
    return bigEndian(data + 8);
}

uint32 FUID::getLong4() const
{
    return bigEndian(data + 12);
}

void FUID::toString(char8 text[33]) const
{
    std::snprintf(text, 33, "%08X%08X%08X%08X", static_cast<unsigned>(getLong1()),
                  static_cast<unsigned>(getLong2()), static_cast<unsigned>(getLong3()),
                  static_cast<unsigned>(getLong4()));
}

bool FUID::fromString(const char8* text)
{
    if (!text) return false;
    uint32 longs[4] = {};
    for (int i = 0; i < 32; ++i)
    {
        int digit = hexValue(text[i]);
        if (digit < 0) return false;
        longs[i / 8] = longs[i / 8] << 4 | static_cast<uint32>(digit);
    }
    if (text[32] != '\0') return false;
    *this = FUID(longs[0], longs[1], longs[2], longs[3]);
    return true;
}

} // namespace vst3
