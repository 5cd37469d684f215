// Compile-time checks of the binary interface against the published facts: interface ids,
// record sizes, alignments and field offsets, and the calling convention of every method.
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "pluginterfaces/vst/ivsthostapplication.h"
#include "pluginterfaces/vst/ivstunits.h"
#include "pluginterfaces/vst/vstspeaker.h"

#include <cstddef>
#include <type_traits>

namespace vst3 {
namespace {

// The memory image of a GUID given in registry form: Data1, Data2 and Data3 little-endian,
// then the eight bytes of Data4 in written order.
constexpr int hexDigit(char c)
{
    return c <= '9' ? c - '0' : c - 'A' + 10;
}

constexpr unsigned hexAt(const char* text, int pos, int digits)
{
    unsigned value = 0;
    for (int i = 0; i < digits; ++i)
        value = value << 4 | static_cast<unsigned>(hexDigit(text[pos + i]));
    return value;
}

constexpr bool hasGuid(const FUID& id, const char (&text)[39])
{
    const unsigned data1 = hexAt(text, 1, 8);
    const unsigned data2 = hexAt(text, 10, 4);
    const unsigned data3 = hexAt(text, 15, 4);
    unsigned char expected[16] = {
        static_cast<unsigned char>(data1),       static_cast<unsigned char>(data1 >> 8),
        static_cast<unsigned char>(data1 >> 16), static_cast<unsigned char>(data1 >> 24),
        static_cast<unsigned char>(data2),       static_cast<unsigned char>(data2 >> 8),
        static_cast<unsigned char>(data3),       static_cast<unsigned char>(data3 >> 8)};
    const int data4At[8] = {20, 22, 25, 27, 29, 31, 33, 35};
    for (int i = 0; i < 8; ++i)
        expected[8 + i] = static_cast<unsigned char>(hexAt(text, data4At[i], 2));
    const char* bytes = id.toTUID();
    for (int i = 0; i < 16; ++i)
        if (static_cast<unsigned char>(bytes[i]) != expected[i]) return false;
    return true;
}

static_assert(hasGuid(FUnknown::iid, "{00000000-0000-0000-C000-000000000046}"));
static_assert(hasGuid(IPluginBase::iid, "{22888DDB-156E-45AE-8358-B34808190625}"));
static_assert(hasGuid(IPluginFactory::iid, "{7A4D811C-5211-4A1F-AED9-D2EE0B43BF9F}"));
static_assert(hasGuid(IPluginFactory2::iid, "{0007B650-F24B-4C0B-A464-EDB9F00B2ABB}"));
static_assert(hasGuid(IPluginFactory3::iid, "{4555A2AB-C123-4E57-9B12-291036878931}"));
static_assert(hasGuid(IBStream::iid, "{C3BF6EA2-3099-4752-9B6B-F9901EE33E9B}"));
static_assert(hasGuid(IComponent::iid, "{E831FF31-F2D5-4301-928E-BBEE25697802}"));
static_assert(hasGuid(IAudioProcessor::iid, "{42043F99-B7DA-453C-A569-E79D9AAEC33D}"));
static_assert(hasGuid(IEditController::iid, "{DCD7BBE3-7742-448D-A874-AACC979C759E}"));
static_assert(hasGuid(IComponentHandler::iid, "{93A0BEA3-0BD0-45DB-8E89-0B0CC1E46AC6}"));
static_assert(hasGuid(IComponentHandler2::iid, "{F040B4B3-A360-45EC-ABCD-C045B4D5A2CC}"));
static_assert(hasGuid(IConnectionPoint::iid, "{70A4156F-6E6E-4026-9891-48BFAA60D8D1}"));
static_assert(hasGuid(IMessage::iid, "{936F033B-C6C0-47DB-BB08-82F813C1E613}"));
static_assert(hasGuid(IAttributeList::iid, "{1E5F0AEB-CC7F-4533-A254-401138AD5EE4}"));
static_assert(hasGuid(IUnitInfo::iid, "{3D4BD6B5-913A-4FD2-A886-E768A5EB92C1}"));
static_assert(hasGuid(IMidiMapping::iid, "{DF0FF9F7-49B7-4669-B63A-B7327ADBF5E5}"));
static_assert(hasGuid(IHostApplication::iid, "{58E595CC-DB2D-4969-8B6A-AF8C36A664E5}"));
static_assert(hasGuid(IPlugView::iid, "{5BC32507-D060-49EA-A615-1B522B755B29}"));
static_assert(hasGuid(IPlugFrame::iid, "{367FAF01-AFA9-4693-8D4D-A2A0ED0882A3}"));
static_assert(hasGuid(IParameterChanges::iid, "{A4779663-0BB6-4A56-B443-84A8466FEB9D}"));
static_assert(hasGuid(IParamValueQueue::iid, "{01263A18-ED07-4F6F-98C9-D3564686F9BA}"));
static_assert(hasGuid(IEventList::iid, "{3A2C4214-3463-49FE-B2C4-F397B9695A44}"));

// Size and alignment: (record, x64 size, x86 size, x64 alignment, x86 alignment).
#if defined(_WIN64)
#define RECORD(T, size64, size86, align64, align86)                                                \
    static_assert(sizeof(T) == (size64) && alignof(T) == (align64), #T)
#else
#define RECORD(T, size64, size86, align64, align86)                                                \
    static_assert(sizeof(T) == (size86) && alignof(T) == (align86), #T)
#endif

RECORD(PFactoryInfo, 452, 452, 4, 4);
RECORD(PClassInfo, 116, 116, 4, 4);
RECORD(PClassInfo2, 440, 440, 4, 4);
RECORD(PClassInfoW, 696, 696, 4, 4);
RECORD(ProcessSetup, 24, 24, 8, 8);
RECORD(AudioBusBuffers, 24, 24, 8, 8);
RECORD(ProcessData, 80, 48, 8, 4);
RECORD(BusInfo, 276, 276, 4, 4);
RECORD(RoutingInfo, 12, 12, 4, 4);
RECORD(ParameterInfo, 792, 792, 8, 8);
RECORD(NoteOnEvent, 20, 20, 4, 4);
RECORD(NoteOffEvent, 16, 16, 4, 4);
RECORD(DataEvent, 16, 12, 8, 4);
RECORD(PolyPressureEvent, 12, 12, 4, 4);
RECORD(ChordEvent, 16, 12, 8, 4);
RECORD(ScaleEvent, 16, 12, 8, 4);
RECORD(LegacyMIDICCOutEvent, 4, 4, 1, 1);
RECORD(NoteExpressionValueEvent, 16, 16, 8, 4);
RECORD(NoteExpressionTextEvent, 24, 16, 8, 4);
RECORD(Event, 48, 40, 8, 8);
RECORD(FrameRate, 8, 8, 4, 4);
RECORD(Chord, 4, 4, 2, 2);
RECORD(ProcessContext, 112, 112, 8, 8);
RECORD(UnitInfo, 268, 268, 4, 4);
RECORD(ProgramListInfo, 264, 264, 4, 4);
RECORD(ViewRect, 16, 16, 4, 4);

// Field offsets: (record, field, x64 offset, x86 offset).
#if defined(_WIN64)
#define FIELD(T, f, at64, at86) static_assert(offsetof(T, f) == (at64), #T "::" #f)
#else
#define FIELD(T, f, at64, at86) static_assert(offsetof(T, f) == (at86), #T "::" #f)
#endif

FIELD(PFactoryInfo, url, 64, 64);
FIELD(PFactoryInfo, email, 320, 320);
FIELD(PFactoryInfo, flags, 448, 448);
FIELD(PClassInfo, cardinality, 16, 16);
FIELD(PClassInfo, category, 20, 20);
FIELD(PClassInfo, name, 52, 52);
FIELD(PClassInfo2, classFlags, 116, 116);
FIELD(PClassInfo2, subCategories, 120, 120);
FIELD(PClassInfo2, vendor, 248, 248);
FIELD(PClassInfo2, version, 312, 312);
FIELD(PClassInfo2, sdkVersion, 376, 376);
FIELD(PClassInfoW, name, 52, 52);
FIELD(PClassInfoW, classFlags, 180, 180);
FIELD(PClassInfoW, subCategories, 184, 184);
FIELD(PClassInfoW, vendor, 312, 312);
FIELD(PClassInfoW, version, 440, 440);
FIELD(PClassInfoW, sdkVersion, 568, 568);
FIELD(ProcessSetup, maxSamplesPerBlock, 8, 8);
FIELD(ProcessSetup, sampleRate, 16, 16);
FIELD(AudioBusBuffers, silenceFlags, 8, 8);
FIELD(AudioBusBuffers, channelBuffers32, 16, 16);
FIELD(ProcessData, numOutputs, 16, 16);
FIELD(ProcessData, inputs, 24, 20);
FIELD(ProcessData, outputs, 32, 24);
FIELD(ProcessData, inputParameterChanges, 40, 28);
FIELD(ProcessData, outputParameterChanges, 48, 32);
FIELD(ProcessData, inputEvents, 56, 36);
FIELD(ProcessData, outputEvents, 64, 40);
FIELD(ProcessData, processContext, 72, 44);
FIELD(BusInfo, channelCount, 8, 8);
FIELD(BusInfo, name, 12, 12);
FIELD(BusInfo, busType, 268, 268);
FIELD(BusInfo, flags, 272, 272);
FIELD(ParameterInfo, title, 4, 4);
FIELD(ParameterInfo, shortTitle, 260, 260);
FIELD(ParameterInfo, units, 516, 516);
FIELD(ParameterInfo, stepCount, 772, 772);
FIELD(ParameterInfo, defaultNormalizedValue, 776, 776);
FIELD(ParameterInfo, unitId, 784, 784);
FIELD(ParameterInfo, flags, 788, 788);
FIELD(Event, sampleOffset, 4, 4);
FIELD(Event, ppqPosition, 8, 8);
FIELD(Event, flags, 16, 16);
FIELD(Event, type, 18, 18);
FIELD(Event, noteOn, 24, 20);
FIELD(ProcessContext, sampleRate, 8, 8);
FIELD(ProcessContext, projectTimeSamples, 16, 16);
FIELD(ProcessContext, systemTime, 24, 24);
FIELD(ProcessContext, continousTimeSamples, 32, 32);
FIELD(ProcessContext, projectTimeMusic, 40, 40);
FIELD(ProcessContext, cycleEndMusic, 64, 64);
FIELD(ProcessContext, tempo, 72, 72);
FIELD(ProcessContext, timeSigNumerator, 80, 80);
FIELD(ProcessContext, chord, 88, 88);
FIELD(ProcessContext, smpteOffsetSubframes, 92, 92);
FIELD(ProcessContext, frameRate, 96, 96);
FIELD(ProcessContext, samplesToNextClock, 104, 104);
FIELD(UnitInfo, name, 8, 8);
FIELD(UnitInfo, programListId, 264, 264);
FIELD(ProgramListInfo, name, 4, 4);
FIELD(ProgramListInfo, programCount, 260, 260);
FIELD(ViewRect, bottom, 12, 12);

// Every method is __stdcall on x86; the member pointer's type carries the convention there.
#if defined(_WIN64)
#define METHOD(I, m, R, ...) static_assert(std::is_same_v<decltype(&I::m), R (I::*)(__VA_ARGS__)>)
#else
#define METHOD(I, m, R, ...)                                                                       \
    static_assert(std::is_same_v<decltype(&I::m), R (__stdcall I::*)(__VA_ARGS__)>, #I "::" #m)
#endif

METHOD(FUnknown, queryInterface, tresult, const char*, void**);
METHOD(FUnknown, addRef, uint32);
METHOD(FUnknown, release, uint32);
METHOD(IPluginBase, initialize, tresult, FUnknown*);
METHOD(IPluginBase, terminate, tresult);
METHOD(IPluginFactory, getFactoryInfo, tresult, PFactoryInfo*);
METHOD(IPluginFactory, countClasses, int32);
METHOD(IPluginFactory, getClassInfo, tresult, int32, PClassInfo*);
METHOD(IPluginFactory, createInstance, tresult, const char*, const char*, void**);
METHOD(IPluginFactory2, getClassInfo2, tresult, int32, PClassInfo2*);
METHOD(IPluginFactory3, getClassInfoUnicode, tresult, int32, PClassInfoW*);
METHOD(IPluginFactory3, setHostContext, tresult, FUnknown*);
METHOD(IBStream, read, tresult, void*, int32, int32*);
METHOD(IBStream, write, tresult, void*, int32, int32*);
METHOD(IBStream, seek, tresult, int64, int32, int64*);
METHOD(IBStream, tell, tresult, int64*);
METHOD(IComponent, getControllerClassId, tresult, char*);
METHOD(IComponent, setIoMode, tresult, int32);
METHOD(IComponent, getBusCount, int32, int32, int32);
METHOD(IComponent, getBusInfo, tresult, int32, int32, int32, BusInfo&);
METHOD(IComponent, getRoutingInfo, tresult, RoutingInfo&, RoutingInfo&);
METHOD(IComponent, activateBus, tresult, int32, int32, int32, uint8);
METHOD(IComponent, setActive, tresult, uint8);
METHOD(IComponent, setState, tresult, IBStream*);
METHOD(IComponent, getState, tresult, IBStream*);
METHOD(IAudioProcessor, setBusArrangements, tresult, uint64*, int32, uint64*, int32);
METHOD(IAudioProcessor, getBusArrangement, tresult, int32, int32, uint64&);
METHOD(IAudioProcessor, canProcessSampleSize, tresult, int32);
METHOD(IAudioProcessor, getLatencySamples, uint32);
METHOD(IAudioProcessor, setupProcessing, tresult, ProcessSetup&);
METHOD(IAudioProcessor, setProcessing, tresult, uint8);
METHOD(IAudioProcessor, process, tresult, ProcessData&);
METHOD(IAudioProcessor, getTailSamples, uint32);
METHOD(IEditController, setComponentState, tresult, IBStream*);
METHOD(IEditController, setState, tresult, IBStream*);
METHOD(IEditController, getState, tresult, IBStream*);
METHOD(IEditController, getParameterCount, int32);
METHOD(IEditController, getParameterInfo, tresult, int32, ParameterInfo&);
METHOD(IEditController, getParamStringByValue, tresult, uint32, double, char16_t*);
METHOD(IEditController, getParamValueByString, tresult, uint32, char16_t*, double&);
METHOD(IEditController, normalizedParamToPlain, double, uint32, double);
METHOD(IEditController, plainParamToNormalized, double, uint32, double);
METHOD(IEditController, getParamNormalized, double, uint32);
METHOD(IEditController, setParamNormalized, tresult, uint32, double);
METHOD(IEditController, setComponentHandler, tresult, IComponentHandler*);
METHOD(IEditController, createView, IPlugView*, const char*);
METHOD(IComponentHandler, beginEdit, tresult, uint32);
METHOD(IComponentHandler, performEdit, tresult, uint32, double);
METHOD(IComponentHandler, endEdit, tresult, uint32);
METHOD(IComponentHandler, restartComponent, tresult, int32);
METHOD(IComponentHandler2, setDirty, tresult, uint8);
METHOD(IComponentHandler2, requestOpenEditor, tresult, const char*);
METHOD(IComponentHandler2, startGroupEdit, tresult);
METHOD(IComponentHandler2, finishGroupEdit, tresult);
METHOD(IConnectionPoint, connect, tresult, IConnectionPoint*);
METHOD(IConnectionPoint, disconnect, tresult, IConnectionPoint*);
METHOD(IConnectionPoint, notify, tresult, IMessage*);
METHOD(IMessage, getMessageID, const char*);
METHOD(IMessage, setMessageID, void, const char*);
METHOD(IMessage, getAttributes, IAttributeList*);
METHOD(IAttributeList, setInt, tresult, const char*, int64);
METHOD(IAttributeList, getInt, tresult, const char*, int64&);
METHOD(IAttributeList, setFloat, tresult, const char*, double);
METHOD(IAttributeList, getFloat, tresult, const char*, double&);
METHOD(IAttributeList, setString, tresult, const char*, const char16_t*);
METHOD(IAttributeList, getString, tresult, const char*, char16_t*, uint32);
METHOD(IAttributeList, setBinary, tresult, const char*, const void*, uint32);
METHOD(IAttributeList, getBinary, tresult, const char*, const void*&, uint32&);
METHOD(IUnitInfo, getUnitCount, int32);
METHOD(IUnitInfo, getUnitInfo, tresult, int32, UnitInfo&);
METHOD(IUnitInfo, getProgramListCount, int32);
METHOD(IUnitInfo, getProgramListInfo, tresult, int32, ProgramListInfo&);
METHOD(IUnitInfo, getProgramName, tresult, int32, int32, char16_t*);
METHOD(IUnitInfo, getProgramInfo, tresult, int32, int32, const char*, char16_t*);
METHOD(IUnitInfo, hasProgramPitchNames, tresult, int32, int32);
METHOD(IUnitInfo, getProgramPitchName, tresult, int32, int32, int16, char16_t*);
METHOD(IUnitInfo, getSelectedUnit, int32);
METHOD(IUnitInfo, selectUnit, tresult, int32);
METHOD(IUnitInfo, getUnitByBus, tresult, int32, int32, int32, int32, int32&);
METHOD(IUnitInfo, setUnitProgramData, tresult, int32, int32, IBStream*);
METHOD(IMidiMapping, getMidiControllerAssignment, tresult, int32, int16, int16, uint32&);
METHOD(IHostApplication, getName, tresult, char16_t*);
METHOD(IHostApplication, createInstance, tresult, char*, char*, void**);
METHOD(IPlugView, isPlatformTypeSupported, tresult, const char*);
METHOD(IPlugView, attached, tresult, void*, const char*);
METHOD(IPlugView, removed, tresult);
METHOD(IPlugView, onWheel, tresult, float);
METHOD(IPlugView, onKeyDown, tresult, char16_t, int16, int16);
METHOD(IPlugView, onKeyUp, tresult, char16_t, int16, int16);
METHOD(IPlugView, getSize, tresult, ViewRect*);
METHOD(IPlugView, onSize, tresult, ViewRect*);
METHOD(IPlugView, onFocus, tresult, uint8);
METHOD(IPlugView, setFrame, tresult, IPlugFrame*);
METHOD(IPlugView, canResize, tresult);
METHOD(IPlugView, checkSizeConstraint, tresult, ViewRect*);
METHOD(IPlugFrame, resizeView, tresult, IPlugView*, ViewRect*);
METHOD(IParamValueQueue, getParameterId, uint32);
METHOD(IParamValueQueue, getPointCount, int32);
METHOD(IParamValueQueue, getPoint, tresult, int32, int32&, double&);
METHOD(IParamValueQueue, addPoint, tresult, int32, double, int32&);
METHOD(IParameterChanges, getParameterCount, int32);
METHOD(IParameterChanges, getParameterData, IParamValueQueue*, int32);
METHOD(IParameterChanges, addParameterData, IParamValueQueue*, const uint32&, int32&);
METHOD(IEventList, getEventCount, int32);
METHOD(IEventList, getEvent, tresult, int32, Event&);
METHOD(IEventList, addEvent, tresult, Event&);

// The speaker arrangements a host asks for by channel count.
static_assert(SpeakerArr::kMono == 0x80000);
static_assert(SpeakerArr::k40Cine == 0x107 && SpeakerArr::k60Cine == 0x137);
static_assert(SpeakerArr::k70Cine == 0xF7 && SpeakerArr::k80Cine == 0x1F7);
static_assert(SpeakerArr::k50_4 == 0x2D037 && SpeakerArr::k100Cine == 0x2D837);
static_assert(SpeakerArr::k101Cine == 0x2D83F && SpeakerArr::k102 == 0x6F03F);
static_assert(SpeakerArr::k130 == 0x2FE37 && SpeakerArr::k140 == 0x285002D633);
static_assert(SpeakerArr::k222 == 0x7307FFFF && getChannelCount(SpeakerArr::k222) == 24);

} // namespace
} // namespace vst3
