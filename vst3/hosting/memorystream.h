// An IBStream in memory: a growing buffer it owns, or a read-only view of the caller's bytes.
#pragma once

#include "objectbase.h"
#include "pluginterfaces/base/ibstream.h"

#include <memory>

namespace vst3 {

class MemoryStream final : public IBStream
{
public:
    MemoryStream() = default;
    // A view: reads come from the caller's memory, which must outlive the stream; writes fail.
    MemoryStream(const void* data, TSize size);
    ~MemoryStream();
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;

    VST3_OBJECT_METHODS(IBStream)

    tresult PLUGIN_API read(void* buffer, int32 numBytes, int32* numBytesRead) override;
    tresult PLUGIN_API write(void* buffer, int32 numBytes, int32* numBytesWritten) override;
    tresult PLUGIN_API seek(int64 pos, int32 mode, int64* result) override;
    tresult PLUGIN_API tell(int64* pos) override;

    const char* getData() const { return m_data; }
    TSize getSize() const { return m_size; }
    // Empties an owned stream and rewinds it, keeping its memory for the next use.
    void reset();

private:
    bool reserve(TSize capacity);

    char* m_data = nullptr;
    TSize m_size = 0;
    TSize m_capacity = 0;
    TSize m_position = 0;
    bool m_owned = true;
};

} // namespace vst3
