// Shared rules of the wave format code: subformat GUIDs derived from tags, and speaker masks.
#pragma once

#include <stddef.h>
#include <string.h>

#include "tqwaveformat.h"

namespace tq::audio {

// The size of an extensible header, and how much of it cbSize counts.
constexpr UINT kExtensibleSize = sizeof(WAVEFORMATEXTENSIBLE);
constexpr WORD kExtensibleCbSize = kExtensibleSize - sizeof(WAVEFORMATEX);
static_assert(sizeof(WAVEFORMATEX) == 18 && kExtensibleSize == 40);
static_assert(sizeof(_tqwaveformat) == TQWAVEFORMAT_EXTRA_OFFSET);

// The subformat an extensible header carries for a format tag: the PCM subformat with the tag as
// its first word.
constexpr GUID SubformatOfTag(WORD tag)
{
    return GUID{tag, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
}

inline bool IsSameGuid(const GUID& a, const GUID& b)
{
    return memcmp(&a, &b, sizeof(GUID)) == 0;
}

// All but the first two bytes match the PCM subformat, so those two bytes are a tag.
inline bool IsTagDerived(const GUID& subformat)
{
    const GUID pcm = SubformatOfTag(WAVE_FORMAT_PCM);
    return memcmp(reinterpret_cast<const BYTE*>(&subformat) + 2,
                  reinterpret_cast<const BYTE*>(&pcm) + 2, sizeof(GUID) - 2) == 0;
}

inline WORD TagOfSubformat(const GUID& subformat)
{
    return LOWORD(subformat.Data1);
}

// The extensible fields of a header whose tag is WAVE_FORMAT_EXTENSIBLE. The records are packed:
// read fields by value, and the subformat through SubformatOf.
inline const WAVEFORMATEXTENSIBLE& Extensible(const WAVEFORMATEX& wfx)
{
    return reinterpret_cast<const WAVEFORMATEXTENSIBLE&>(wfx);
}

inline GUID SubformatOf(const WAVEFORMATEX& wfx)
{
    GUID subformat;
    memcpy(&subformat,
           reinterpret_cast<const BYTE*>(&wfx) + offsetof(WAVEFORMATEXTENSIBLE, SubFormat),
           sizeof(subformat));
    return subformat;
}

// The speakers of n channels in the usual order: the n lowest bits.
constexpr DWORD DefaultChannelMask(unsigned channels)
{
    return channels >= 32 ? 0xFFFFFFFFu : (1u << channels) - 1u;
}

// A mask of 0 stands for the default mask of the channel count.
constexpr DWORD EffectiveChannelMask(DWORD mask, unsigned channels)
{
    return mask ? mask : DefaultChannelMask(channels);
}

constexpr bool IsNonDefaultMask(DWORD mask, unsigned channels)
{
    return mask != 0 && mask != DefaultChannelMask(channels);
}

// Length of a record's codec tail; a record whose size leaves no room for cbExtra has none.
inline UINT ExtraOf(const _tqwaveformat& fmt)
{
    return fmt.cbStruct > TQWAVEFORMAT_FIXED_SIZE ? fmt.cbExtra : 0;
}

} // namespace tq::audio
