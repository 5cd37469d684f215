// Little-endian reading and writing of numbers on an IBStream, whatever the machine's order.
#pragma once

#include "pluginterfaces/base/ibstream.h"

namespace vst3 {

class IBStreamer
{
public:
    explicit IBStreamer(IBStream* stream) : m_stream(stream) {}

    bool writeInt8(int8 value) { return writeLittleEndian(static_cast<uint8>(value), 1); }
    bool writeInt16(int16 value) { return writeLittleEndian(static_cast<uint16>(value), 2); }
    bool writeInt32(int32 value) { return writeLittleEndian(static_cast<uint32>(value), 4); }
    bool writeInt64(int64 value) { return writeLittleEndian(static_cast<uint64>(value), 8); }
    bool writeUInt32(uint32 value) { return writeLittleEndian(value, 4); }
    bool writeUInt64(uint64 value) { return writeLittleEndian(value, 8); }
    bool writeFloat(float value);
    bool writeDouble(double value);
    // Writes all bytes or reports failure.
    bool writeRaw(const void* data, int32 size);

    bool readInt8(int8& value);
    bool readInt16(int16& value);
    bool readInt32(int32& value);
    bool readInt64(int64& value);
    bool readUInt32(uint32& value);
    bool readUInt64(uint64& value);
    bool readFloat(float& value);
    bool readDouble(double& value);
    // Reads exactly size bytes or reports failure; the stream may have moved on by fewer.
    bool readRaw(void* data, int32 size);

    bool seek(int64 pos, int32 mode, int64* result = nullptr);
    int64 tell();

private:
    bool writeLittleEndian(uint64 value, int bytes);
    bool readLittleEndian(uint64& value, int bytes);

    IBStream* m_stream;
};

} // namespace vst3
