// The frame loop of the channel functions: unrolled by four frames, with a tail of single frames.
// Internal to kernel/audio.
#pragma once

#include <stddef.h>

namespace tq::audio {

// Calls op(i) for i from 0 to frames - 1, in order.
template <class FrameOp>
inline void ForEachFrame(long frames, const FrameOp& op)
{
    size_t i = 0;
    const size_t count = frames > 0 ? static_cast<size_t>(frames) : 0;
    for (; i + 4 <= count; i += 4)
    {
        op(i);
        op(i + 1);
        op(i + 2);
        op(i + 3);
    }
    for (; i < count; ++i)
        op(i);
}

// The same from the last frame to the first, for moves that widen frames in place.
template <class FrameOp>
inline void ForEachFrameBackward(long frames, const FrameOp& op)
{
    size_t i = frames > 0 ? static_cast<size_t>(frames) : 0;
    for (; i >= 4; i -= 4)
    {
        op(i - 1);
        op(i - 2);
        op(i - 3);
        op(i - 4);
    }
    while (i > 0)
        op(--i);
}

} // namespace tq::audio
