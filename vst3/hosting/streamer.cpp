// Little-endian numbers on an IBStream.
#include "streamer.h"

#include <cstring>

namespace vst3 {

bool IBStreamer::writeRaw(const void* data, int32 size)
{
    if (!m_stream || size < 0) return false;
    int32 written = 0;
    return m_stream->write(const_cast<void*>(data), size, &written) == kResultOk && written == size;
}

bool IBStreamer::readRaw(void* data, int32 size)
{
    if (!m_stream || size < 0) return false;
    int32 read = 0;
    return m_stream->read(data, size, &read) == kResultOk && read == size;
}

bool IBStreamer::writeLittleEndian(uint64 value, int bytes)
{
    unsigned char image[8];
    for (int i = 0; i < bytes; ++i)
        image[i] = static_cast<unsigned char>(value >> (8 * i));
    return writeRaw(image, bytes);
}

bool IBStreamer::readLittleEndian(uint64& value, int bytes)
{
    unsigned char image[8];
    if (!readRaw(image, bytes)) return false;
    value = 0;
    for (int i = bytes - 1; i >= 0; --i)
        value = value << 8 | image[i];
    return true;
}

bool IBStreamer::writeFloat(float value)
{
    uint32 bits;
    std::memcpy(&bits, &value, sizeof bits);
    return writeUInt32(bits);
}

bool IBStreamer::writeDouble(double value)
{
    uint64 bits;
    std::memcpy(&bits, &value, sizeof bits);
    return writeUInt64(bits);
}

bool IBStreamer::readInt8(int8& value)
{
    uint64 bits;
    if (!readLittleEndian(bits, 1)) return false;
    value = static_cast<int8>(bits);
    return true;
}

bool IBStreamer::readInt16(int16& value)
{
    uint64 bits;
    if (!readLittleEndian(bits, 2)) return false;
    value = static_cast<int16>(bits);
    return true;
}

bool IBStreamer::readInt32(int32& value)
{
    uint64 bits;
    if (!readLittleEndian(bits, 4)) return false;
    value = static_cast<int32>(bits);
    return true;
}

bool IBStreamer::readInt64(int64& value)
{
    uint64 bits;
    if (!readLittleEndian(bits, 8)) return false;
    value = static_cast<int64>(bits);
    return true;
}

bool IBStreamer::readUInt32(uint32& value)
{
    uint64 bits;
    if (!readLittleEndian(bits, 4)) return false;
    value = static_cast<uint32>(bits);
    return true;
}

bool IBStreamer::readUInt64(uint64& value)
{
    return readLittleEndian(value, 8);
}

bool IBStreamer::readFloat(float& value)
{
    uint32 bits;
    if (!readUInt32(bits)) return false;
    std::memcpy(&value, &bits, sizeof value);
    return true;
}

bool IBStreamer::readDouble(double& value)
{
    uint64 bits;
    if (!readUInt64(bits)) return false;
    std::memcpy(&value, &bits, sizeof value);
    return true;
}

bool IBStreamer::seek(int64 pos, int32 mode, int64* result)
{
    return m_stream && m_stream->seek(pos, mode, result) == kResultOk;
}

int64 IBStreamer::tell()
{
    int64 pos = -1;
    if (!m_stream || m_stream->tell(&pos) != kResultOk) return -1;
    return pos;
}

} // namespace vst3
