// The byte stream through which plug-ins read and write their state.
#pragma once

#include "funknown.h"

namespace vst3 {

class IBStream : public FUnknown
{
public:
    enum IStreamSeekMode : int32
    {
        kIBSeekSet = 0,
        kIBSeekCur,
        kIBSeekEnd,
    };

    virtual tresult PLUGIN_API read(void* buffer, int32 numBytes,
                                    int32* numBytesRead = nullptr) = 0;
    virtual tresult PLUGIN_API write(void* buffer, int32 numBytes,
                                     int32* numBytesWritten = nullptr) = 0;
    virtual tresult PLUGIN_API seek(int64 pos, int32 mode, int64* result = nullptr) = 0;
    virtual tresult PLUGIN_API tell(int64* pos) = 0;

    static constexpr FUID iid{0xC3BF6EA2, 0x30994752, 0x9B6BF990, 0x1EE33E9B};
};

} // namespace vst3
