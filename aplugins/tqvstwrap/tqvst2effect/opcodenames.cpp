// Opcode name tables; the position in each table is the opcode number.
#include "opcodenames.h"

#include <iterator>

namespace vst2 {
namespace {

constexpr const char* kEffectOpcodes[] = {
    "effOpen",
    "effClose",
    "effSetProgram",
    "effGetProgram",
    "effSetProgramName",
    "effGetProgramName",
    "effGetParamLabel",
    "effGetParamDisplay",
    "effGetParamName",
    "effGetVu",
    "effSetSampleRate",
    "effSetBlockSize",
    "effMainsChanged",
    "effEditGetRect",
    "effEditOpen",
    "effEditClose",
    "effEditDraw",
    "effEditMouse",
    "effEditKey",
    "effEditIdle",
    "effEditTop",
    "effEditSleep",
    "effIdentify",
    "effGetChunk",
    "effSetChunk",
    "effProcessEvents",
    "effCanBeAutomated",
    "effString2Parameter",
    "effGetNumProgramCategories",
    "effGetProgramNameIndexed",
    "effCopyProgram",
    "effConnectInput",
    "effConnectOutput",
    "effGetInputProperties",
    "effGetOutputProperties",
    "effGetPlugCategory",
    "effGetCurrentPosition",
    "effGetDestinationBuffer",
    "effOfflineNotify",
    "effOfflinePrepare",
    "effOfflineRun",
    "effProcessVarIo",
    "effSetSpeakerArrangement",
    "effSetBlockSizeAndSampleRate",
    "effSetBypass",
    "effGetEffectName",
    "effGetErrorText",
    "effGetVendorString",
    "effGetProductString",
    "effGetVendorVersion",
    "effVendorSpecific",
    "effCanDo",
    "effGetTailSize",
    "effIdle",
    "effGetIcon",
    "effSetViewPosition",
    "effGetParameterProperties",
    "effKeysRequired",
    "effGetVstVersion",
    "effEditKeyDown",
    "effEditKeyUp",
    "effSetEditKnobMode",
    "effGetMidiProgramName",
    "effGetCurrentMidiProgram",
    "effGetMidiProgramCategory",
    "effHasMidiProgramsChanged",
    "effGetMidiKeyName",
    "effBeginSetProgram",
    "effEndSetProgram",
    "effGetSpeakerArrangement",
    "effShellGetNextPlugin",
    "effStartProcess",
    "effStopProcess",
    "effSetTotalSampleToProcess",
    "effSetPanLaw",
    "effBeginLoadBank",
    "effBeginLoadProgram",
    "effNumV2_3Opcodes",
};
static_assert(std::size(kEffectOpcodes) == 78);

constexpr const char* kHostOpcodes[] = {
    "audioMasterAutomate",
    "audioMasterVersion",
    "audioMasterCurrentId",
    "audioMasterIdle",
    "audioMasterPinConnected",
    "S_NULL",
    "audioMasterWantMidi",
    "audioMasterGetTime",
    "audioMasterProcessEvents",
    "audioMasterSetTime",
    "audioMasterTempoAt",
    "audioMasterGetNumAutomatableParameters",
    "audioMasterGetParameterQuantization",
    "audioMasterIOChanged",
    "audioMasterNeedIdle",
    "audioMasterSizeWindow",
    "audioMasterGetSampleRate",
    "audioMasterGetBlockSize",
    "audioMasterGetInputLatency",
    "audioMasterGetOutputLatency",
    "audioMasterGetPreviousPlug",
    "audioMasterGetNextPlug",
    "audioMasterWillReplaceOrAccumulate",
    "audioMasterGetCurrentProcessLevel",
    "audioMasterGetAutomationState",
    "audioMasterOfflineStart",
    "audioMasterOfflineRead",
    "audioMasterOfflineWrite",
    "audioMasterOfflineGetCurrentPass",
    "audioMasterOfflineGetCurrentMetaPass",
    "audioMasterSetOutputSampleRate",
    "audioMasterGetOutputSpeakerArrangement",
    "audioMasterGetVendorString",
    "audioMasterGetProductString",
    "audioMasterGetVendorVersion",
    "audioMasterVendorSpecific",
    "audioMasterSetIcon",
    "audioMasterCanDo",
    "audioMasterGetLanguage",
    "audioMasterOpenWindow",
    "audioMasterCloseWindow",
    "audioMasterGetDirectory",
    "audioMasterUpdateDisplay",
    "audioMasterBeginEdit",
    "audioMasterEndEdit",
    "audioMasterOpenFileSelector",
    "audioMasterCloseFileSelector",
    "audioMasterEditFile",
    "audioMasterGetChunkFile",
    "audioMasterGetInputSpeakerArrangement",
};
static_assert(std::size(kHostOpcodes) == 50);

template <size_t N>
const char* Lookup(const char* const (&table)[N], int32_t opcode)
{
    return opcode >= 0 && static_cast<size_t>(opcode) < N ? table[opcode] : "<unknown>";
}

} // namespace

const char* EffectOpcodeName(int32_t opcode)
{
    return Lookup(kEffectOpcodes, opcode);
}
const char* HostOpcodeName(int32_t opcode)
{
    return Lookup(kHostOpcodes, opcode);
}

} // namespace vst2
