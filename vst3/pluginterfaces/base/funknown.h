// The root interface, 16-byte interface ids and the class id type shared by every interface.
#pragma once

#include "ftypes.h"

#include <cstring>

namespace vst3 {

using TUID = char[16];

inline bool iidEqual(const void* a, const void* b)
{
    return std::memcmp(a, b, sizeof(TUID)) == 0;
}

// A 16-byte id. On Windows the bytes are those of a COM GUID: the first long and the two
// halves of the second are stored little-endian, the last eight bytes in written order.
class FUID
{
public:
    constexpr FUID() = default;
    constexpr FUID(uint32 l1, uint32 l2, uint32 l3, uint32 l4)
        : data{byte(l1, 0),  byte(l1, 8),  byte(l1, 16), byte(l1, 24), byte(l2, 16), byte(l2, 24),
               byte(l2, 0),  byte(l2, 8),  byte(l3, 24), byte(l3, 16), byte(l3, 8),  byte(l3, 0),
               byte(l4, 24), byte(l4, 16), byte(l4, 8),  byte(l4, 0)}
    {
    }

    static FUID fromTUID(const char* tuid)
    {
        FUID id;
        if (tuid) std::memcpy(id.data, tuid, sizeof(TUID));
        return id;
    }

    bool isValid() const;
    uint32 getLong1() const;
    uint32 getLong2() const;
    uint32 getLong3() const;
    uint32 getLong4() const;

    // 32 upper-case hexadecimal digits of the four longs, as preset files carry the class id.
    void toString(char8 text[33]) const;
    // Accepts exactly 32 hexadecimal digits of either case; anything else leaves the id unchanged.
    bool fromString(const char8* text);

    constexpr const char* toTUID() const { return data; }
    constexpr operator const char*() const { return data; }
    bool operator==(const FUID& other) const { return iidEqual(data, other.data); }

private:
    static constexpr char byte(uint32 value, int shift)
    {
        return static_cast<char>((value >> shift) & 0xFF);
    }

    char data[16]{};
};

class FUnknown
{
public:
    virtual tresult PLUGIN_API queryInterface(const TUID iid, void** obj) = 0;
    virtual uint32 PLUGIN_API addRef() = 0;
    virtual uint32 PLUGIN_API release() = 0;

    static constexpr FUID iid{0x00000000, 0x00000000, 0xC0000000, 0x00000046};
};

} // namespace vst3
