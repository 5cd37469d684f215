// The VST2 binary contract as this host uses it: the plug-in record, opcodes, passed records.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vst2 {

struct AEffect;

using HostCallback = intptr_t(__cdecl*)(AEffect* effect, int32_t opcode, int32_t index,
                                        intptr_t value, void* ptr, float opt);
using DispatcherProc = intptr_t(__cdecl*)(AEffect* effect, int32_t opcode, int32_t index,
                                          intptr_t value, void* ptr, float opt);
using ProcessProc = void(__cdecl*)(AEffect* effect, float** inputs, float** outputs,
                                   int32_t frames);
using SetParameterProc = void(__cdecl*)(AEffect* effect, int32_t index, float value);
using GetParameterProc = float(__cdecl*)(AEffect* effect, int32_t index);
using EntryProc = AEffect*(__cdecl*)(HostCallback host);

constexpr int32_t kEffectMagic = 0x56737450; // "VstP"

// Field order and widths give the same offsets a plug-in of either bitness uses.
struct AEffect
{
    int32_t magic;
    DispatcherProc dispatcher;
    ProcessProc process; // never called: accumulating processing is obsolete
    SetParameterProc setParameter;
    GetParameterProc getParameter;
    int32_t numPrograms;
    int32_t numParams;
    int32_t numInputs;
    int32_t numOutputs;
    int32_t flags;
    intptr_t resvd1; // the host's slot: points at the hosting object
    intptr_t resvd2;
    int32_t initialDelay;
    int32_t unusedInts[3];
    void* unusedPointers[2];
    int32_t uniqueID;
    int32_t version;
    ProcessProc processReplacing;
    ProcessProc unusedProcessDouble;
    char future[56];
};

#ifdef _WIN64
static_assert(offsetof(AEffect, dispatcher) == 0x08);
static_assert(offsetof(AEffect, setParameter) == 0x18);
static_assert(offsetof(AEffect, getParameter) == 0x20);
static_assert(offsetof(AEffect, numPrograms) == 0x28);
static_assert(offsetof(AEffect, numOutputs) == 0x34);
static_assert(offsetof(AEffect, flags) == 0x38);
static_assert(offsetof(AEffect, resvd1) == 0x40);
static_assert(offsetof(AEffect, resvd2) == 0x48);
static_assert(offsetof(AEffect, initialDelay) == 0x50);
static_assert(offsetof(AEffect, uniqueID) == 0x70);
static_assert(offsetof(AEffect, version) == 0x74);
static_assert(offsetof(AEffect, processReplacing) == 0x78);
#else
static_assert(offsetof(AEffect, flags) == 36);
static_assert(offsetof(AEffect, resvd1) == 40);
static_assert(offsetof(AEffect, initialDelay) == 48);
static_assert(offsetof(AEffect, uniqueID) == 72);
static_assert(offsetof(AEffect, processReplacing) == 80);
#endif

// Flag bits the host tests or passes on.
enum : int32_t
{
    effFlagsHasEditor = 0x001,
    effFlagsCanMono = 0x008,
    effFlagsProgramChunks = 0x020,
    effFlagsIsSynth = 0x100,
    effFlagsNoSoundInStop = 0x200,
};

// Host-to-plug-in opcodes.
enum : int32_t
{
    effOpen = 0,
    effClose = 1,
    effSetProgram = 2,
    effGetProgram = 3,
    effSetProgramName = 4,
    effGetProgramName = 5,
    effGetParamLabel = 6,
    effGetParamDisplay = 7,
    effGetParamName = 8,
    effSetSampleRate = 10,
    effSetBlockSize = 11,
    effMainsChanged = 12,
    effEditGetRect = 13,
    effEditOpen = 14,
    effEditClose = 15,
    effEditIdle = 19,
    effGetChunk = 23,
    effSetChunk = 24,
    effCanBeAutomated = 26,
    effGetProgramNameIndexed = 29,
    effGetPlugCategory = 35,
    effSetSpeakerArrangement = 42,
    effGetEffectName = 45,
    effGetVendorString = 47,
    effGetProductString = 48,
    effGetVendorVersion = 49,
    effVendorSpecific = 50,
    effGetTailSize = 52,
    effIdle = 53,
    effGetParameterProperties = 56,
    effSetEditKnobMode = 61,
    effBeginSetProgram = 67,
    effEndSetProgram = 68,
    effShellGetNextPlugin = 70,
    effStartProcess = 71,
    effStopProcess = 72,
};

// Plug-in-to-host opcodes.
enum : int32_t
{
    audioMasterAutomate = 0,
    audioMasterVersion = 1,
    audioMasterCurrentId = 2,
    audioMasterIdle = 3,
    audioMasterGetTime = 7,
    audioMasterTempoAt = 10,
    audioMasterGetNumAutomatableParameters = 11,
    audioMasterNeedIdle = 14,
    audioMasterSizeWindow = 15,
    audioMasterGetSampleRate = 16,
    audioMasterGetBlockSize = 17,
    audioMasterWillReplaceOrAccumulate = 22,
    audioMasterGetVendorString = 32,
    audioMasterGetProductString = 33,
    audioMasterGetVendorVersion = 34,
    audioMasterCanDo = 37,
    audioMasterGetLanguage = 38,
    audioMasterGetDirectory = 41,
    audioMasterUpdateDisplay = 42,
    audioMasterBeginEdit = 43,
    audioMasterEndEdit = 44,
};

constexpr intptr_t kPlugCategoryShell = 10;
constexpr int32_t kShellScanIndex = 0x73744361;  // "stCA"
constexpr intptr_t kShellScanStart = 0x53745363; // "StSc"
constexpr intptr_t kShellScanEnd = 0x456E5363;   // "EnSc"

struct ERect
{
    int16_t top, left, bottom, right;
};

struct VstParameterProperties
{
    float stepFloat;
    float smallStepFloat;
    float largeStepFloat;
    char label[64];
    int32_t flags;
    int32_t minInteger;
    int32_t maxInteger;
    int32_t stepInteger;
    int32_t largeStepInteger;
    char shortLabel[8];
    char future[48];
};
static_assert(sizeof(VstParameterProperties) == 152);
static_assert(offsetof(VstParameterProperties, flags) == 76);
static_assert(offsetof(VstParameterProperties, shortLabel) == 96);

struct VstTimeInfo
{
    double samplePos;
    double sampleRate;
    double nanoSeconds;
    double ppqPos;
    double tempo;
    double barStartPos;
    double cycleStartPos;
    double cycleEndPos;
    int32_t timeSigNumerator;
    int32_t timeSigDenominator;
    int32_t smpteOffset;
    int32_t smpteFrameRate;
    int32_t samplesToNextClock;
    int32_t flags;
};
static_assert(sizeof(VstTimeInfo) == 88);

} // namespace vst2
