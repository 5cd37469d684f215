// The position arithmetic every IBStream here shares: argument checks, how much a read can
// take, where a seek counts from, and tell.
#pragma once

#include "pluginterfaces/base/ibstream.h"

namespace vst3::streamposition {

// A read or write of numBytes from buffer makes sense: no negative count, and memory to use.
inline bool validTransfer(const void* buffer, int32 numBytes)
{
    return numBytes >= 0 && (numBytes == 0 || buffer);
}

// How many of numBytes a read at position can take from a stream of size bytes; none past
// the end.
inline int32 readable(TSize position, TSize size, int32 numBytes)
{
    const TSize left = position < size ? size - position : 0;
    return static_cast<int32>(left < numBytes ? left : numBytes);
}

// The position a seek in mode counts from, or false for a mode there is no such thing as.
inline bool seekOrigin(int32 mode, TSize position, TSize size, TSize& origin)
{
    switch (mode)
    {
    case IBStream::kIBSeekSet:
        origin = 0;
        return true;
    case IBStream::kIBSeekCur:
        origin = position;
        return true;
    case IBStream::kIBSeekEnd:
        origin = size;
        return true;
    }
    return false;
}

inline tresult tell(TSize position, int64* pos)
{
    if (!pos) return kInvalidArgument;
    *pos = position;
    return kResultOk;
}

} // namespace vst3::streamposition
