// One plug-in side of the audio buffers: a table of channel pointers and the channels' samples in
// one zero-filled global block.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <utility>

namespace vst2 {

class ChannelBlock
{
public:
    ChannelBlock() noexcept = default;
    ChannelBlock(const ChannelBlock&) = delete;
    ChannelBlock& operator=(const ChannelBlock&) = delete;
    ~ChannelBlock() { Free(); }

    // Room for frames samples of sampleBytes each per channel. Each channel gets twice that, so
    // a plug-in that writes a little past the block size still writes into its own channel.
    // False when out of memory; the block is then empty.
    bool Allocate(int32_t channels, uint32_t frames, uint32_t sampleBytes) noexcept
    {
        Free();
        if (channels < 0) channels = 0;
        const uint64_t stride = 2ull * frames * sampleBytes;
        const uint64_t bytes = uint64_t(channels) * (kTableSlotBytes + stride);
        // A table even for no channels, so a plug-in never receives a null array.
        if (bytes > SIZE_MAX - kTableSlotBytes) return false;
        auto* block = static_cast<uint8_t*>(
            GlobalAlloc(GPTR, static_cast<SIZE_T>(bytes ? bytes : kTableSlotBytes)));
        if (!block) return false;
        m_table = reinterpret_cast<float**>(block);
        m_channels = channels;
        uint8_t* samples = block + uint64_t(channels) * kTableSlotBytes;
        for (int32_t i = 0; i < channels; ++i)
            m_table[i] = reinterpret_cast<float*>(samples + uint64_t(i) * stride);
        return true;
    }

    void Free() noexcept
    {
        if (m_table) GlobalFree(m_table);
        m_table = nullptr;
        m_channels = 0;
    }

    // Zeroes bytes from the start of the first channel on.
    void ClearFromFirstChannel(size_t bytes) noexcept
    {
        if (m_table && m_channels > 0) std::memset(m_table[0], 0, bytes);
    }

    float** Table() const noexcept { return m_table; }
    int32_t Channels() const noexcept { return m_channels; }
    void* Channel(int32_t i) const noexcept { return m_table[i]; }

private:
    // Eight bytes per table entry in either bitness keeps every channel 8-byte aligned.
    static constexpr uint64_t kTableSlotBytes = 8;

    float** m_table = nullptr;
    int32_t m_channels = 0;
};

} // namespace vst2
