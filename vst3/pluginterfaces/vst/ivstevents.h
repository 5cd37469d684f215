// Events on event buses: notes, data, expression, and the list that carries them per block.
#pragma once

#include "pluginterfaces/base/funknown.h"
#include "vsttypes.h"

namespace vst3 {

VST3_PACK_PUSH

struct NoteOnEvent
{
    int16 channel;
    int16 pitch;
    float tuning;
    float velocity;
    int32 length;
    int32 noteId;
};

struct NoteOffEvent
{
    int16 channel;
    int16 pitch;
    float velocity;
    int32 noteId;
    float tuning;
};

struct DataEvent
{
    enum DataTypes : uint32
    {
        kMidiSysEx = 0,
    };

    uint32 size;
    uint32 type;
    const uint8* bytes;
};

struct PolyPressureEvent
{
    int16 channel;
    int16 pitch;
    float pressure;
    int32 noteId;
};

struct ChordEvent
{
    int16 root;
    int16 bassNote;
    int16 mask;
    uint16 textLen;
    const TChar* text;
};

struct ScaleEvent
{
    int16 root;
    int16 mask;
    uint16 textLen;
    const TChar* text;
};

struct LegacyMIDICCOutEvent
{
    uint8 controlNumber;
    int8 channel;
    int8 value;
    int8 value2;
};

VST3_PACK_POP

// The two expression events are packed to 4 bytes on 32-bit Windows, which moves the event
// union to offset 20 there.
#if defined(_WIN64)
VST3_PACK_PUSH
#else
_Pragma("pack(push, 4)")
#endif

struct NoteExpressionValueEvent
{
    NoteExpressionTypeID typeId;
    int32 noteId;
    NoteExpressionValue value;
};

struct NoteExpressionTextEvent
{
    NoteExpressionTypeID typeId;
    int32 noteId;
    uint32 textLen;
    const TChar* text;
};

VST3_PACK_POP

VST3_PACK_PUSH

struct Event
{
    enum EventFlags : uint16
    {
        kIsLive = 1 << 0,
        kUserReserved1 = 1 << 14,
        kUserReserved2 = 1 << 15,
    };
    enum EventTypes : uint16
    {
        kNoteOnEvent = 0,
        kNoteOffEvent = 1,
        kDataEvent = 2,
        kPolyPressureEvent = 3,
        kNoteExpressionValueEvent = 4,
        kNoteExpressionTextEvent = 5,
        kChordEvent = 6,
        kScaleEvent = 7,
        kLegacyMIDICCOutEvent = 65535,
    };

    int32 busIndex;
    int32 sampleOffset;
    TQuarterNotes ppqPosition;
    uint16 flags;
    uint16 type;
    union
    {
        NoteOnEvent noteOn;
        NoteOffEvent noteOff;
        DataEvent data;
        PolyPressureEvent polyPressure;
        NoteExpressionValueEvent noteExpressionValue;
        NoteExpressionTextEvent noteExpressionText;
        ChordEvent chord;
        ScaleEvent scale;
        LegacyMIDICCOutEvent midiCCOut;
    };
};

VST3_PACK_POP

class IEventList : public FUnknown
{
public:
    virtual int32 PLUGIN_API getEventCount() = 0;
    virtual tresult PLUGIN_API getEvent(int32 index, Event& e) = 0;
    virtual tresult PLUGIN_API addEvent(Event& e) = 0;

    static constexpr FUID iid{0x3A2C4214, 0x346349FE, 0xB2C4F397, 0xB9695A44};
};

} // namespace vst3
