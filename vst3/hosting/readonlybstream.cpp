// A read-only window onto a range of another stream.
#include "readonlybstream.h"

#include "streamposition.h"

namespace vst3 {

ReadOnlyBStream::ReadOnlyBStream(IBStream* source, TSize offset, TSize size)
    : m_source(source), m_offset(offset < 0 ? 0 : offset), m_size(size < 0 ? 0 : size)
{
    if (m_source) m_source->addRef();
}

ReadOnlyBStream::~ReadOnlyBStream()
{
    if (m_source) m_source->release();
}

tresult PLUGIN_API ReadOnlyBStream::read(void* buffer, int32 numBytes, int32* numBytesRead)
{
    if (numBytesRead) *numBytesRead = 0;
    if (!m_source) return kNotInitialized;
    if (!streamposition::validTransfer(buffer, numBytes)) return kInvalidArgument;
    const int32 wanted = streamposition::readable(m_position, m_size, numBytes);
    if (wanted <= 0) return kResultOk;
    tresult result = m_source->seek(m_offset + m_position, kIBSeekSet, nullptr);
    if (result != kResultOk) return result;
    int32 read = 0;
    result = m_source->read(buffer, wanted, &read);
    if (read < 0 || read > wanted) read = 0;
    m_position += read;
    if (numBytesRead) *numBytesRead = read;
    return result;
}

tresult PLUGIN_API ReadOnlyBStream::write(void*, int32, int32* numBytesWritten)
{
    if (numBytesWritten) *numBytesWritten = 0;
    return kNotImplemented;
}

tresult PLUGIN_API ReadOnlyBStream::seek(int64 pos, int32 mode, int64* result)
{
    TSize base = 0;
    if (!streamposition::seekOrigin(mode, m_position, m_size, base)) return kInvalidArgument;
    TSize target = (pos > m_size || pos < -m_size) ? (pos < 0 ? 0 : m_size) : base + pos;
    if (target < 0) target = 0;
    if (target > m_size) target = m_size;
    m_position = target;
    if (result) *result = m_position;
    return kResultOk;
}

tresult PLUGIN_API ReadOnlyBStream::tell(int64* pos)
{
    return streamposition::tell(m_position, pos);
}

} // namespace vst3
