// Moving a list's payload between the RIFF and the Wave64 framing.
#include "listframing.h"

#include "mediafile.h"

#include <algorithm>
#include <cstring>

namespace tqhost {
namespace {

void Append(std::vector<BYTE>& to, const void* data, size_t size)
{
    const auto* bytes = static_cast<const BYTE*>(data);
    to.insert(to.end(), bytes, bytes + size);
}

} // namespace

bool RiffListToWave64(const std::vector<BYTE>& riff, std::vector<BYTE>& wave64)
{
    wave64.clear();
    if (riff.size() < 4) return false;
    DWORD type;
    std::memcpy(&type, riff.data(), 4);
    const GUID typeGuid = Wave64Guid(type);
    Append(wave64, &typeGuid, sizeof typeGuid);
    for (size_t at = 4; at < riff.size();)
    {
        if (riff.size() - at < 8) return false;
        DWORD id, size;
        std::memcpy(&id, &riff[at], 4);
        std::memcpy(&size, &riff[at + 4], 4);
        if (size > riff.size() - at - 8) return false;
        const GUID guid = Wave64Guid(id);
        const UINT64 stored = UINT64(size) + 24;
        Append(wave64, &guid, sizeof guid);
        Append(wave64, &stored, sizeof stored);
        Append(wave64, &riff[at + 8], size);
        wave64.resize(wave64.size() + (8 - size % 8) % 8, 0);
        // The pad of a last odd entry may be missing.
        at += std::min<size_t>(8 + size + (size & 1), riff.size() - at);
    }
    return true;
}

bool Wave64ListToRiff(const std::vector<BYTE>& wave64, std::vector<BYTE>& riff)
{
    riff.clear();
    if (wave64.size() < 16) return false;
    GUID typeGuid;
    std::memcpy(&typeGuid, wave64.data(), 16);
    const DWORD type = FourccOfWave64Guid(typeGuid);
    if (!type) return false;
    Append(riff, &type, 4);
    for (size_t at = 16; at < wave64.size();)
    {
        if (wave64.size() - at < 24) return false;
        GUID guid;
        UINT64 stored;
        std::memcpy(&guid, &wave64[at], 16);
        std::memcpy(&stored, &wave64[at + 16], 8);
        const DWORD id = FourccOfWave64Guid(guid);
        // A size that counts the padding keeps it: there is no telling it from the data.
        if (!id || stored < 24 || stored - 24 > wave64.size() - at - 24) return false;
        const UINT64 size = stored - 24;
        if (size > 0xFFFFFFF0u) return false;
        const auto size32 = static_cast<DWORD>(size);
        Append(riff, &id, 4);
        Append(riff, &size32, 4);
        Append(riff, &wave64[at + 24], size32);
        riff.resize(riff.size() + (size32 & 1), 0);
        const UINT64 padded = (size + 7) & ~UINT64(7);
        at += static_cast<size_t>(std::min<UINT64>(24 + padded, wave64.size() - at));
    }
    return true;
}

} // namespace tqhost
