// .vstpreset files: a header with the class id, chunks of component and controller state,
// and a chunk list at the end. All numbers are little-endian.
#pragma once

#include "pluginterfaces/vst/ivstcomponent.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"

#include <vector>

namespace vst3 {

using ChunkID = char[4];

enum ChunkType
{
    kHeader,
    kComponentState,
    kControllerState,
    kProgramData,
    kMetaInfo,
    kChunkList,
    kNumPresetChunks,
};

const ChunkID& getChunkID(ChunkType type);

class PresetFile
{
public:
    static constexpr int32 kFormatVersion = 1;
    static constexpr int32 kClassIDSize = 32;
    static constexpr TSize kHeaderSize = 4 + 4 + kClassIDSize + 8;
    static constexpr TSize kListOffsetPos = kHeaderSize - 8;
    static constexpr int32 kMaxEntries = 128;

    struct Entry
    {
        ChunkID id;
        TSize offset;
        TSize size;
    };

    // Writes header, "Comp" (and "Cont" with a controller, "Info" with meta data, whose size
    // -1 means up to its terminator) and the chunk list.
    static bool savePreset(IBStream* stream, const FUID& classId, IComponent* component,
                           IEditController* controller = nullptr, const char* xmlBuffer = nullptr,
                           int32 xmlSize = -1);

    // Reads the chunk list, tests the class id (another id in otherClassIds also passes),
    // restores the component from "Comp", hands the same chunk to the controller and then
    // "Cont" if the file has one. classMatched, if given, is cleared at entry and set as soon
    // as the class test passed: a caller tells another plug-in's preset from a broken file.
    static bool loadPreset(IBStream* stream, const FUID& classId, IComponent* component,
                           IEditController* controller = nullptr,
                           const std::vector<FUID>* otherClassIds = nullptr,
                           bool* classMatched = nullptr);

    explicit PresetFile(IBStream* stream) : m_stream(stream) {}

    // Reads the header and the list. Entries whose range lies outside the stream are kept but
    // never read; a list with fewer entries than it announces fails.
    bool readChunkList();
    const FUID& getClassID() const { return m_classId; }
    bool hasValidClassID() const { return m_classIdValid; }
    void setClassID(const FUID& id);
    int32 getEntryCount() const { return m_entryCount; }
    const Entry* getEntry(ChunkType which) const;
    bool contains(ChunkType which) const { return getEntry(which) != nullptr; }

    bool restoreComponentState(IComponent* component);
    bool restoreComponentState(IEditController* controller);
    bool restoreControllerState(IEditController* controller);

    bool writeHeader();
    bool storeComponentState(IComponent* component);
    bool storeControllerState(IEditController* controller);
    bool writeMetaInfo(const char* xmlBuffer, int32 size);
    bool writeChunkList();

private:
    bool beginChunk(Entry& entry, ChunkType which);
    bool endChunk(Entry& entry);
    // The chunk as a window of its own, or null if it is missing or outside the stream.
    IBStream* openChunk(ChunkType which);

    IBStream* m_stream;
    TSize m_streamSize = 0;
    FUID m_classId;
    bool m_classIdValid = false;
    Entry m_entries[kMaxEntries] = {};
    int32 m_entryCount = 0;
};

} // namespace vst3
