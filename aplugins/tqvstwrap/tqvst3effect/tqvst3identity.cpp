// VST3 effect: names, facts, the walk through a shell's classes, parameters by the host's index,
// and the flat program list over a unit's program list or the user's preset files.
#include "tqvst3effect.h"

#include "pluginterfaces/vst/ivstunits.h"
#include "shellid.h"
#include "vst3componenthandler.h"

#include <shlobj.h>

#include <algorithm>
#include <cstring>

using tqvst::CallPlugin;
using namespace vst3;

namespace {

constexpr HRESULT kClassInfoUnreadable = 0x0004E019;
// Plug-in texts are held to this many characters, whatever the host's buffer.
constexpr UINT32 kTextLimit = 128;

// Copies a plug-in's text into the host's buffer, cut to capacity with a terminator.
void CopyText(WCHAR* out, UINT32 capacity, const TChar* text, UINT32 limit)
{
    if (!out || capacity == 0) return;
    const UINT32 room = std::min(capacity, limit);
    UINT32 i = 0;
    for (; i + 1 < room && text[i]; ++i)
        out[i] = static_cast<WCHAR>(text[i]);
    out[i] = 0;
}

// An ANSI class name into the host's buffer, with a terminator in its last place.
template <size_t N>
void WidenName(const char (&text)[N], WCHAR* out, INT32 capacity)
{
    if (!out || capacity <= 0) return;
    out[0] = 0;
    const int length = static_cast<int>(strnlen(text, N));
    if (length == 0) return;
    WCHAR wide[N + 1] = {};
    const int made = MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, text, length, wide, N);
    lstrcpynW(out, wide, std::min<int>(capacity, made + 1));
    out[capacity - 1] = 0;
}

bool IsAudioClass(const PClassInfo2& info)
{
    return strncmp(info.category, kVstAudioEffectClass, sizeof(info.category)) == 0;
}

HRESULT CopyName(const WCHAR (&source)[64], WCHAR* name, UINT32 capacity)
{
    if (capacity > 0) lstrcpynW(name, source, static_cast<int>(capacity));
    return S_OK;
}

} // namespace

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetEffectName(WCHAR* name, UINT32 capacity)
{
    if (!name) return E_INVALIDARG;
    ZeroMemory(name, capacity * sizeof(WCHAR));
    if (!m_handler) return TQVST_E_NOSELECTION;
    return CopyName(m_effectName, name, capacity);
}

// The factory's vendor, not the class's.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetVendorName(WCHAR* name, INT32 capacity)
{
    if (!name) return E_INVALIDARG;
    const UINT32 room = capacity > 0 ? static_cast<UINT32>(capacity) : 0;
    ZeroMemory(name, room * sizeof(WCHAR));
    if (!m_handler) return TQVST_E_NOSELECTION;
    return CopyName(m_vendorName, name, room);
}

// VST3 has no product text; the file name is no stand-in for one.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetProductName(WCHAR* name, UINT32 capacity)
{
    if (name && capacity > 0) name[0] = 0;
    return S_OK;
}

bool CTqVst3Effect::HasEditor()
{
    if (!m_controller) return false;
    IEditController* controller = m_controller.Get();
    IPlugView* view = nullptr;
    CallPlugin([&] { view = controller->createView("editor"); });
    // Made only to learn that there is one: released without ever being attached.
    tqvst::PluginPtr<IPlugView> made(view);
    return static_cast<bool>(made);
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetEffectInfo(TqVstEffectInfo* info)
{
    if (!info) return E_INVALIDARG;
    // A shell without a class, and a load that failed, have nothing to tell.
    if (!m_handler) return TQVST_E_NOSELECTION;
    *info = {};
    info->uniqueId = m_uniqueId;
    info->version = m_version;

    // Preset files come and go between looks, so the list is read afresh and the current file
    // followed to its new place.
    std::wstring currentFile;
    if (m_firstFilePreset != -1 && m_currentProgram >= m_firstFilePreset &&
        m_currentProgram - m_firstFilePreset < static_cast<INT32>(m_presetPaths.size()))
        currentFile = m_presetPaths[m_currentProgram - m_firstFilePreset];
    const INT32 oldCount = m_programCount;
    BuildProgramList();
    if (m_programCount != oldCount && !currentFile.empty())
    {
        for (size_t i = 0; i < m_presetPaths.size(); ++i)
        {
            if (lstrcmpiW(m_presetPaths[i].c_str(), currentFile.c_str()) != 0) continue;
            m_currentProgram = m_firstFilePreset + static_cast<INT32>(i);
            break;
        }
    }
    if (m_currentProgram >= m_programCount && m_currentProgram != 0) m_currentProgram = 0;
    info->numPrograms = static_cast<UINT32>(m_programCount);
    info->numParameters = static_cast<UINT32>(m_handler->ParameterList().size());
    info->numInputs = static_cast<UINT32>(m_busLayout.mainInputChannels);
    info->numOutputs = static_cast<UINT32>(m_busLayout.mainOutputChannels);
    if ((m_flags & kFlagEditorOpen) || HasEditor()) info->flags |= 1;
    info->state = 3;
    return S_OK;
}

// The walk's state is m_uniqueId itself: 0 before the first class, then the ShellId of the class
// the last call gave.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetNextShellPlugin(UINT32* id, WCHAR* name, INT32 capacity)
{
    if (id) *id = 0;
    if (name && capacity > 0) name[0] = 0;
    if (!(m_flags & kFlagShell) || m_classCount <= 0 || !m_module) return S_FALSE;
    bool past = m_uniqueId == 0;
    for (INT32 index = 0; index < m_classCount; ++index)
    {
        PClassInfo2 info = {};
        uint8 cid[16];
        if (!m_module->GetClassInfoAt(index, &info, cid))
            return m_module->faulted() ? TQVST_E_PLUGINFAULT : kClassInfoUnreadable;
        const UINT32 shellId = tqvst::ShellId(cid);
        if (!past)
        {
            past = shellId == m_uniqueId;
            continue;
        }
        if (!IsAudioClass(info)) continue;
        m_uniqueId = shellId;
        if (id) *id = shellId;
        WidenName(info.name, name, capacity);
        return shellId == 0 ? S_FALSE : S_OK;
    }
    return S_FALSE;
}

HRESULT CTqVst3Effect::ParameterInfoAt(UINT32 index, ParameterInfo* info)
{
    if (!m_handler || !m_controller) return E_NOTIMPL;
    const auto& list = m_handler->ParameterList();
    if (index >= list.size()) return E_NOTIMPL;
    std::memset(info, 0, sizeof(*info));
    IEditController* controller = m_controller.Get();
    const int32 controllerIndex = list[index].second;
    tresult result = kResultFalse;
    if (!CallPlugin([&] { result = controller->getParameterInfo(controllerIndex, *info); }) ||
        result != kResultOk)
        return E_NOTIMPL;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameterProperties(UINT32 index,
                                                                TqVstParameterProperties* props)
{
    ParameterInfo info;
    const HRESULT hr = ParameterInfoAt(index, &info);
    if (hr != S_OK) return hr;
    if (!props) return S_OK;
    const int32 steps = info.stepCount;
    CopyText(props->label, std::size(props->label), info.title, kTextLimit);
    // Hosts show at most seven characters of a label, whatever the title holds.
    props->label[7] = 0;
    CopyText(props->shortLabel, std::size(props->shortLabel), info.shortTitle, kTextLimit);
    props->stepFloat = 0.01f;
    props->smallStepFloat = 0.001f;
    props->largeStepFloat = 0.1f;
    props->minInteger = 0;
    props->maxInteger = steps;
    props->stepInteger = 1;
    props->largeStepInteger = 1;
    // The low seven bits describe the kind of control; the caller's other bits stay.
    const INT32 kind = steps == 0 ? 4 : steps == 1 ? 1 : 2;
    props->flags = (props->flags & ~0x7F) | kind;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::CanParameterBeAutomated(UINT32, UINT32* yes)
{
    if (yes) *yes = 1;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameterName(UINT32 index, WCHAR* text,
                                                          UINT32 capacity)
{
    ParameterInfo info;
    const HRESULT hr = ParameterInfoAt(index, &info);
    if (hr != S_OK) return hr;
    CopyText(text, capacity, info.title, kTextLimit);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameterLabel(UINT32 index, WCHAR* text,
                                                           UINT32 capacity)
{
    ParameterInfo info;
    const HRESULT hr = ParameterInfoAt(index, &info);
    if (hr != S_OK) return hr;
    CopyText(text, capacity, info.units, kTextLimit);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameterDisplay(UINT32 index, WCHAR* text,
                                                             UINT32 capacity)
{
    ParameterInfo info;
    const HRESULT hr = ParameterInfoAt(index, &info);
    if (hr != S_OK) return hr;
    IEditController* controller = m_controller.Get();
    String128 display = {};
    tresult result = kResultFalse;
    if (!CallPlugin([&] {
            const ParamValue value = controller->getParamNormalized(info.id);
            result = controller->getParamStringByValue(info.id, value, display);
        }) ||
        result != kResultOk)
        return E_NOTIMPL;
    display[kTextLimit - 1] = 0;
    CopyText(text, capacity, display, kTextLimit);
    return S_OK;
}

// The controller's value: a change still queued shows only once it has been flushed to it.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetParameter(UINT32 index, float* value)
{
    ParameterInfo info;
    const HRESULT hr = ParameterInfoAt(index, &info);
    if (hr != S_OK) return hr;
    if (!value) return E_INVALIDARG;
    IEditController* controller = m_controller.Get();
    ParamValue normalized = 0;
    if (!CallPlugin([&] { normalized = controller->getParamNormalized(info.id); }))
        return TQVST_E_PLUGINFAULT;
    *value = static_cast<float>(normalized);
    return S_OK;
}

// A normalised value from 0 to 1, passed on unclamped.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetParameter(UINT32 index, float value)
{
    ParameterInfo info;
    const HRESULT hr = ParameterInfoAt(index, &info);
    if (hr != S_OK) return hr;
    m_handler->QueueParameterChange(info.id, value, 0, false);
    FlushToController();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetInitialDelay(UINT32* frames)
{
    if (!frames) return E_INVALIDARG;
    *frames = 0;
    IAudioProcessor* processor = m_processor.Get();
    int32 latency = 0;
    if (processor &&
        CallPlugin([&] { latency = static_cast<int32>(processor->getLatencySamples()); }))
        *frames = static_cast<UINT32>(std::max(latency, 0));
    return S_OK;
}

// An infinite tail reads as none.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetTailSize(UINT32* frames)
{
    if (!frames) return E_INVALIDARG;
    *frames = 0;
    IAudioProcessor* processor = m_processor.Get();
    int32 tail = 0;
    if (processor && CallPlugin([&] { tail = static_cast<int32>(processor->getTailSamples()); }))
        *frames = static_cast<UINT32>(std::max(tail, 0));
    return S_OK;
}

bool CTqVst3Effect::FindUnitProgramList()
{
    IUnitInfo* units = m_handler->UnitInfo();
    if (!units) return false;
    int32 listCount = 0, unitCount = 0;
    if (!CallPlugin([&] {
            listCount = units->getProgramListCount();
            unitCount = units->getUnitCount();
        }) ||
        listCount <= 0 || unitCount <= 0)
        return false;
    ProgramListID listId = kNoProgramListId;
    bool rootFound = false;
    for (int32 u = 0; u < unitCount && !rootFound; ++u)
    {
        UnitInfo unit = {};
        tresult result = kResultFalse;
        if (!CallPlugin([&] { result = units->getUnitInfo(u, unit); }) || result != kResultOk)
            continue;
        if (unit.id != kRootUnitId) continue;
        rootFound = true;
        listId = unit.programListId;
    }
    if (!rootFound || listId == kNoProgramListId) return false;
    for (int32 l = 0; l < listCount; ++l)
    {
        ProgramListInfo list = {};
        tresult result = kResultFalse;
        if (!CallPlugin([&] { result = units->getProgramListInfo(l, list); }) ||
            result != kResultOk || list.id != listId)
            continue;
        m_programListIndex = l;
        m_programCount = std::max(list.programCount, 0);
        return true;
    }
    return false;
}

// One source or the other, never both: the root unit's program list when the plug-in has a
// program-change parameter for it, else the preset files in the user's folders.
void CTqVst3Effect::BuildProgramList()
{
    m_firstFilePreset = -1;
    m_programListIndex = -1;
    m_programCount = 0;
    m_presetPaths.clear();
    m_presetNames.clear();
    if (!m_handler) return;
    if (m_handler->ProgramParamId() != tqvst::Vst3ComponentHandler::kNoParam)
    {
        FindUnitProgramList();
        // A program-change parameter without a list behind it is not served again.
        if (m_programListIndex == -1) m_handler->ForgetProgramParam();
    }
    if (m_handler->ProgramParamId() != tqvst::Vst3ComponentHandler::kNoParam) return;

    int found = 0;
    for (int folder : {CSIDL_APPDATA, CSIDL_PERSONAL})
    {
        WCHAR root[MAX_PATH] = {};
        if (SUCCEEDED(SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, root)))
            found += ScanPresetFolder(root, false);
    }
    if (found == 0) return;
    m_firstFilePreset = m_programCount;
    m_programCount += found;
}

HRESULT CTqVst3Effect::SelectProgram(INT32 index)
{
    if (m_programCount == 0)
    {
        m_currentProgram = 0;
        return S_FALSE;
    }
    if (index < 0 || index >= m_programCount) return E_INVALIDARG;
    if (m_firstFilePreset != -1 && index >= m_firstFilePreset)
    {
        const size_t file = static_cast<size_t>(index - m_firstFilePreset);
        if (file >= m_presetPaths.size()) return E_INVALIDARG;
        // The host opens the file and drives LoadPreset itself.
        const wchar_t* path = m_presetPaths[file].c_str();
        const HRESULT hr =
            m_master.Call([&](ITqVstMaster* master) { return master->LoadPresetFile(path); });
        if (hr == tqvst::MasterRelay::kNoMaster) return E_FAIL;
        if (FAILED(hr)) return hr;
        m_currentProgram = index;
        return hr;
    }
    ParameterInfo info = {};
    IEditController* controller = m_controller.Get();
    const int32 controllerIndex = m_handler->ProgramParamIndex();
    tresult result = kResultFalse;
    if (!controller ||
        !CallPlugin([&] { result = controller->getParameterInfo(controllerIndex, info); }) ||
        result != kResultOk || info.stepCount < 1 || index > info.stepCount)
        return E_INVALIDARG;
    m_currentProgram = index;
    m_handler->QueueParameterChange(m_handler->ProgramParamId(),
                                    static_cast<double>(index) / info.stepCount, 0, false);
    return S_OK;
}

void CTqVst3Effect::GetProgramNameAt(INT32 index, WCHAR* name, UINT32 capacity)
{
    if (!name || capacity == 0) return;
    name[0] = 0;
    if (m_firstFilePreset != -1 && index >= m_firstFilePreset)
    {
        const size_t file = static_cast<size_t>(index - m_firstFilePreset);
        if (file < m_presetNames.size())
            lstrcpynW(name, m_presetNames[file].c_str(), static_cast<int>(capacity));
        return;
    }
    if (m_programListIndex < 0 || !m_handler || !m_handler->UnitInfo()) return;
    IUnitInfo* units = m_handler->UnitInfo();
    const int32 listIndex = m_programListIndex;
    String128 text = {};
    tresult result = kResultFalse;
    if (!CallPlugin([&] {
            ProgramListInfo list = {};
            if (units->getProgramListInfo(listIndex, list) != kResultOk) return;
            result = units->getProgramName(list.id, index, text);
        }) ||
        result != kResultOk)
        return;
    text[kTextLimit - 1] = 0;
    CopyText(name, capacity, text, kTextLimit);
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetProgram(UINT32* program)
{
    if (!program) return E_INVALIDARG;
    *program = static_cast<UINT32>(m_currentProgram);
    return m_programCount < 1 ? S_FALSE : S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetProgram(INT32 program)
{
    const HRESULT hr = SelectProgram(program);
    if (FAILED(hr) || hr == S_FALSE) return hr;
    FlushToController();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::GetProgramName(INT32 program, WCHAR* name, UINT32 capacity)
{
    if (!name) return E_INVALIDARG;
    if (m_programCount < 1)
    {
        ZeroMemory(name, capacity * sizeof(WCHAR));
        return S_FALSE;
    }
    if (program == -1) program = m_currentProgram;
    if (program < 0 || program >= m_programCount) return E_INVALIDARG;
    GetProgramNameAt(program, name, capacity);
    return S_OK;
}

// Programs of a VST3 plug-in cannot be renamed.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetProgramName(const WCHAR*)
{
    return S_FALSE;
}
