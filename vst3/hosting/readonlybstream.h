// A read-only window onto a range of another stream, so a plug-in reads its chunk and no more.
#pragma once

#include "objectbase.h"
#include "pluginterfaces/base/ibstream.h"

namespace vst3 {

class ReadOnlyBStream final : public IBStream
{
public:
    ReadOnlyBStream(IBStream* source, TSize offset, TSize size);
    ~ReadOnlyBStream();
    ReadOnlyBStream(const ReadOnlyBStream&) = delete;
    ReadOnlyBStream& operator=(const ReadOnlyBStream&) = delete;

    VST3_OBJECT_METHODS(IBStream)

    tresult PLUGIN_API read(void* buffer, int32 numBytes, int32* numBytesRead) override;
    tresult PLUGIN_API write(void* buffer, int32 numBytes, int32* numBytesWritten) override;
    // Positions are those of the window; a seek is held to its bounds.
    tresult PLUGIN_API seek(int64 pos, int32 mode, int64* result) override;
    tresult PLUGIN_API tell(int64* pos) override;

private:
    IBStream* m_source;
    TSize m_offset;
    TSize m_size;
    TSize m_position = 0;
};

} // namespace vst3
