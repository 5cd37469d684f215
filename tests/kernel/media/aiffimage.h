// Test helpers for the AIFF layer: big-endian chunk images built in code.
#pragma once

#include "iff.h"

#include "kernel/media/riffimage.h"

namespace tq::test {

inline Bytes BE16(WORD v)
{
    return {BYTE(v >> 8), BYTE(v)};
}
inline Bytes BE32(DWORD v)
{
    return {BYTE(v >> 24), BYTE(v >> 16), BYTE(v >> 8), BYTE(v)};
}

// Header, data and the pad byte of an odd size, all big-endian.
inline Bytes IffChunk(const char (&id)[5], const Bytes& data)
{
    return Text(id) + BE32(static_cast<DWORD>(data.size())) + data + Bytes(data.size() & 1);
}

// "FORM" with the honest size unless one is given.
inline Bytes Form(const char (&form)[5], const Bytes& chunks, DWORD size = 0)
{
    return Text("FORM") + BE32(size ? size : static_cast<DWORD>(chunks.size() + 4)) + Text(form) +
           chunks;
}

// "COMM" data; compression makes it the 22-byte AIFF-C form.
inline Bytes CommData(WORD channels, DWORD frames, WORD bits, DWORD rate,
                      const char* compression = nullptr)
{
    WORD exponent = 0, mantissa[4] = {};
    aiff_CreateRate(rate, &exponent, mantissa);
    Bytes b = BE16(channels) + BE32(frames) + BE16(bits) + BE16(exponent);
    for (WORD m : mantissa)
        b = b + BE16(m);
    if (compression) b = b + Text(compression);
    return b;
}

// "SSND" data: offset, block size, offset bytes of filler, then the samples.
inline Bytes SsndData(const Bytes& samples, DWORD offset = 0)
{
    return BE32(offset) + BE32(0) + Bytes(offset, 0xEE) + samples;
}

} // namespace tq::test
