// .vstpreset files.
#include "presetfile.h"

#include "readonlybstream.h"
#include "streamer.h"

#include <cstring>
#include <new>

namespace vst3 {

namespace {

const ChunkID kChunkIds[kNumPresetChunks] = {
    {'V', 'S', 'T', '3'}, {'C', 'o', 'm', 'p'}, {'C', 'o', 'n', 't'},
    {'P', 'r', 'o', 'g'}, {'I', 'n', 'f', 'o'}, {'L', 'i', 's', 't'},
};

bool sameId(const ChunkID& a, const ChunkID& b)
{
    return std::memcmp(a, b, sizeof(ChunkID)) == 0;
}

// A plug-in that keeps no state of one kind may say so instead of writing nothing.
bool stateWritten(tresult result)
{
    return result == kResultOk || result == kNotImplemented;
}

} // namespace

const ChunkID& getChunkID(ChunkType type)
{
    return kChunkIds[type];
}

void PresetFile::setClassID(const FUID& id)
{
    m_classId = id;
    m_classIdValid = true;
}

const PresetFile::Entry* PresetFile::getEntry(ChunkType which) const
{
    for (int32 i = 0; i < m_entryCount; ++i)
        if (sameId(m_entries[i].id, getChunkID(which))) return &m_entries[i];
    return nullptr;
}

bool PresetFile::readChunkList()
{
    m_entryCount = 0;
    m_classIdValid = false;
    IBStreamer streamer(m_stream);
    if (!streamer.seek(0, IBStream::kIBSeekEnd, &m_streamSize) || m_streamSize < kHeaderSize)
        return false;

    ChunkID id;
    int32 version = 0;
    char classText[kClassIDSize + 1] = {};
    int64 listOffset = 0;
    if (!streamer.seek(0, IBStream::kIBSeekSet) || !streamer.readRaw(id, sizeof id) ||
        !sameId(id, getChunkID(kHeader)) || !streamer.readInt32(version) ||
        !streamer.readRaw(classText, kClassIDSize) || !streamer.readInt64(listOffset))
        return false;
    m_classIdValid = m_classId.fromString(classText);

    // The list needs at least its id and count, after the header and inside the stream.
    if (listOffset < kHeaderSize || listOffset > m_streamSize - 8) return false;
    int32 count = 0;
    if (!streamer.seek(listOffset, IBStream::kIBSeekSet) || !streamer.readRaw(id, sizeof id) ||
        !sameId(id, getChunkID(kChunkList)) || !streamer.readInt32(count))
        return false;
    // Entries past the first 128 are never looked at. A list cut short is a cut file: it is
    // refused rather than read as a file without the missing chunks.
    if (count > kMaxEntries) count = kMaxEntries;
    if (count <= 0) return false;
    for (int32 i = 0; i < count; ++i)
    {
        Entry& entry = m_entries[i];
        if (!streamer.readRaw(entry.id, sizeof entry.id) || !streamer.readInt64(entry.offset) ||
            !streamer.readInt64(entry.size))
            return false;
    }
    m_entryCount = count;
    return true;
}

IBStream* PresetFile::openChunk(ChunkType which)
{
    const Entry* entry = getEntry(which);
    if (!entry || entry->offset < 0 || entry->size < 0 || entry->offset > m_streamSize ||
        entry->size > m_streamSize - entry->offset)
        return nullptr;
    return new (std::nothrow) ReadOnlyBStream(m_stream, entry->offset, entry->size);
}

bool PresetFile::restoreComponentState(IComponent* component)
{
    if (!component) return false;
    IBStream* chunk = openChunk(kComponentState);
    if (!chunk) return false;
    const bool done = component->setState(chunk) == kResultOk;
    chunk->release();
    return done;
}

bool PresetFile::restoreComponentState(IEditController* controller)
{
    if (!controller) return false;
    IBStream* chunk = openChunk(kComponentState);
    if (!chunk) return false;
    const bool done = controller->setComponentState(chunk) == kResultOk;
    chunk->release();
    return done;
}

bool PresetFile::restoreControllerState(IEditController* controller)
{
    if (!controller) return false;
    IBStream* chunk = openChunk(kControllerState);
    if (!chunk) return false;
    const bool done = controller->setState(chunk) == kResultOk;
    chunk->release();
    return done;
}

bool PresetFile::writeHeader()
{
    char classText[kClassIDSize + 1];
    m_classId.toString(classText);
    IBStreamer streamer(m_stream);
    m_entryCount = 0;
    // The list offset is written as 0 here and filled in by writeChunkList.
    return streamer.seek(0, IBStream::kIBSeekSet) &&
           streamer.writeRaw(getChunkID(kHeader), sizeof(ChunkID)) &&
           streamer.writeInt32(kFormatVersion) && streamer.writeRaw(classText, kClassIDSize) &&
           streamer.writeInt64(0);
}

bool PresetFile::beginChunk(Entry& entry, ChunkType which)
{
    if (m_entryCount >= kMaxEntries) return false;
    std::memcpy(entry.id, getChunkID(which), sizeof(ChunkID));
    entry.offset = IBStreamer(m_stream).tell();
    entry.size = 0;
    return entry.offset >= 0;
}

bool PresetFile::endChunk(Entry& entry)
{
    const int64 end = IBStreamer(m_stream).tell();
    if (end < entry.offset) return false;
    entry.size = end - entry.offset;
    m_entries[m_entryCount++] = entry;
    return true;
}

bool PresetFile::storeComponentState(IComponent* component)
{
    Entry entry{};
    return component && beginChunk(entry, kComponentState) &&
           stateWritten(component->getState(m_stream)) && endChunk(entry);
}

bool PresetFile::storeControllerState(IEditController* controller)
{
    Entry entry{};
    return controller && beginChunk(entry, kControllerState) &&
           stateWritten(controller->getState(m_stream)) && endChunk(entry);
}

bool PresetFile::writeMetaInfo(const char* xmlBuffer, int32 size)
{
    if (!xmlBuffer) return false;
    if (size < 0) size = static_cast<int32>(std::strlen(xmlBuffer));
    Entry entry{};
    return beginChunk(entry, kMetaInfo) && IBStreamer(m_stream).writeRaw(xmlBuffer, size) &&
           endChunk(entry);
}

bool PresetFile::writeChunkList()
{
    IBStreamer streamer(m_stream);
    const int64 listOffset = streamer.tell();
    if (listOffset < kHeaderSize || !streamer.seek(kListOffsetPos, IBStream::kIBSeekSet) ||
        !streamer.writeInt64(listOffset) || !streamer.seek(listOffset, IBStream::kIBSeekSet) ||
        !streamer.writeRaw(getChunkID(kChunkList), sizeof(ChunkID)) ||
        !streamer.writeInt32(m_entryCount))
        return false;
    for (int32 i = 0; i < m_entryCount; ++i)
    {
        const Entry& entry = m_entries[i];
        if (!streamer.writeRaw(entry.id, sizeof entry.id) || !streamer.writeInt64(entry.offset) ||
            !streamer.writeInt64(entry.size))
            return false;
    }
    return true;
}

bool PresetFile::savePreset(IBStream* stream, const FUID& classId, IComponent* component,
                            IEditController* controller, const char* xmlBuffer, int32 xmlSize)
{
    PresetFile file(stream);
    file.setClassID(classId);
    return file.writeHeader() && file.storeComponentState(component) &&
           (!controller || file.storeControllerState(controller)) &&
           (!xmlBuffer || file.writeMetaInfo(xmlBuffer, xmlSize)) && file.writeChunkList();
}

bool PresetFile::loadPreset(IBStream* stream, const FUID& classId, IComponent* component,
                            IEditController* controller, const std::vector<FUID>* otherClassIds,
                            bool* classMatched)
{
    if (classMatched) *classMatched = false;
    PresetFile file(stream);
    if (!file.readChunkList() || !file.hasValidClassID()) return false;
    bool known = file.getClassID() == classId;
    if (!known && otherClassIds)
        for (const FUID& other : *otherClassIds)
            known = known || file.getClassID() == other;
    if (!known) return false;
    if (classMatched) *classMatched = true;

    if (!file.restoreComponentState(component)) return false;
    if (controller)
    {
        if (!file.restoreComponentState(controller)) return false;
        if (file.contains(kControllerState) && !file.restoreControllerState(controller))
            return false;
    }
    return true;
}

} // namespace vst3
