// An IBStream in memory.
#include "memorystream.h"

#include "streamposition.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace vst3 {

namespace {
// Streams carry plug-in states, which are counted in 32 bits by every read and write.
constexpr TSize kMaxSize = std::numeric_limits<int32>::max();
} // namespace

MemoryStream::MemoryStream(const void* data, TSize size)
    : m_data(static_cast<char*>(const_cast<void*>(data))), m_size(data && size > 0 ? size : 0),
      m_capacity(m_size), m_owned(false)
{
}

MemoryStream::~MemoryStream()
{
    if (m_owned) std::free(m_data);
}

void MemoryStream::reset()
{
    if (!m_owned) return;
    m_size = 0;
    m_position = 0;
}

bool MemoryStream::reserve(TSize capacity)
{
    if (capacity <= m_capacity) return true;
    if (capacity > kMaxSize) return false;
    TSize grown = m_capacity < 256 ? 256 : m_capacity * 2;
    if (grown < capacity) grown = capacity;
    if (grown > kMaxSize) grown = kMaxSize;
    void* block = std::realloc(m_data, static_cast<size_t>(grown));
    if (!block) return false;
    m_data = static_cast<char*>(block);
    m_capacity = grown;
    return true;
}

tresult PLUGIN_API MemoryStream::read(void* buffer, int32 numBytes, int32* numBytesRead)
{
    if (numBytesRead) *numBytesRead = 0;
    if (!streamposition::validTransfer(buffer, numBytes)) return kInvalidArgument;
    const int32 count = streamposition::readable(m_position, m_size, numBytes);
    if (count > 0)
    {
        std::memcpy(buffer, m_data + m_position, static_cast<size_t>(count));
        m_position += count;
    }
    if (numBytesRead) *numBytesRead = count;
    return kResultOk;
}

tresult PLUGIN_API MemoryStream::write(void* buffer, int32 numBytes, int32* numBytesWritten)
{
    if (numBytesWritten) *numBytesWritten = 0;
    if (!streamposition::validTransfer(buffer, numBytes)) return kInvalidArgument;
    if (!m_owned) return kResultFalse;
    const TSize end = m_position + numBytes;
    if (!reserve(end)) return kOutOfMemory;
    // Writing after a seek past the end leaves zeros in the gap, never old bytes.
    if (m_position > m_size)
        std::memset(m_data + m_size, 0, static_cast<size_t>(m_position - m_size));
    if (numBytes > 0) std::memcpy(m_data + m_position, buffer, static_cast<size_t>(numBytes));
    m_position = end;
    if (end > m_size) m_size = end;
    if (numBytesWritten) *numBytesWritten = numBytes;
    return kResultOk;
}

tresult PLUGIN_API MemoryStream::seek(int64 pos, int32 mode, int64* result)
{
    TSize base = 0;
    if (!streamposition::seekOrigin(mode, m_position, m_size, base)) return kInvalidArgument;
    if (pos > kMaxSize || pos < -kMaxSize) return kInvalidArgument;
    const TSize target = base + pos;
    if (target < 0 || target > kMaxSize) return kInvalidArgument;
    m_position = target;
    if (result) *result = m_position;
    return kResultOk;
}

tresult PLUGIN_API MemoryStream::tell(int64* pos)
{
    return streamposition::tell(m_position, pos);
}

} // namespace vst3
