// VST2 effect: names, facts, shell enumeration, parameters, programs, rate and block size.
#include "tqvst2effect.h"

#include "pluginexceptionfilter.h"

#include <cmath>
#include <cstdlib>
#include <cwchar>
#include <iterator>

using tqvst::CallPlugin;

namespace {

constexpr wchar_t kBitnessMark[] = L" (64)";
constexpr size_t kBitnessMarkLength = std::size(kBitnessMark) - 1;

// Plug-ins that only take a new block size once a parameter has been written after it.
constexpr int32_t kNudgeOnBlockSize[] = {
    0x4F455153, // OEQS
    0x45787053, // ExpS
    0x4C463135, // LF15
    0x4C464353, // LFCS
    0x4F4D7853, // OMxS
    0x4F637443, // OctC
};

void NarrowToWide(const char* narrow, WCHAR* wide, int capacity)
{
    wide[0] = 0;
    if (!narrow[0]) return;
    wchar_t converted[260] = {};
    MultiByteToWideChar(CP_ACP, 0, narrow, -1, converted, static_cast<int>(std::size(converted)));
    lstrcpynW(wide, converted, capacity);
    wide[capacity - 1] = 0;
}

} // namespace

bool CTqVstEffect::IsUnselectedShell() const
{
    return (m_state & kStateShell) && m_effect && m_effect->uniqueID == 0;
}

HRESULT CTqVstEffect::PrepareNameBuffer(WCHAR* name, UINT32 capacity) const
{
    if (!name) return E_INVALIDARG;
    if (capacity > 0) name[0] = 0;
    if (IsUnselectedShell()) return TQVST_E_NOSELECTION;
    return S_OK;
}

void CTqVstEffect::FileBaseName(wchar_t (&base)[_MAX_FNAME]) const
{
    _wsplitpath(m_path, nullptr, nullptr, base, nullptr);
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetEffectName(WCHAR* name, UINT32 capacity)
{
    if (HRESULT hr = PrepareNameBuffer(name, capacity); hr != S_OK) return hr;
    if (capacity == 0) return S_OK;
    DispatchGetText(vst2::effGetEffectName, 0, name, capacity);
    if (name[0] && lstrcmpiW(name, L"VITA") != 0) return S_OK;
    // Unnamed plug-ins, and those that give a placeholder name, are named by their file; the
    // mark of a 64-bit build is dropped so both builds share one name.
    wchar_t base[_MAX_FNAME] = {};
    FileBaseName(base);
    const size_t length = wcslen(base);
    if (length > kBitnessMarkLength &&
        _wcsicmp(base + length - kBitnessMarkLength, kBitnessMark) == 0)
        base[length - kBitnessMarkLength] = 0;
    lstrcpynW(name, base, static_cast<int>(capacity));
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetVendorName(WCHAR* name, INT32 capacity)
{
    const UINT32 size = capacity > 0 ? static_cast<UINT32>(capacity) : 0;
    if (HRESULT hr = PrepareNameBuffer(name, size); hr != S_OK) return hr;
    DispatchGetText(vst2::effGetVendorString, 0, name, size);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetProductName(WCHAR* name, UINT32 capacity)
{
    if (HRESULT hr = PrepareNameBuffer(name, capacity); hr != S_OK) return hr;
    if (capacity == 0) return S_OK;
    DispatchGetText(vst2::effGetProductString, 0, name, capacity);
    if (!name[0])
    {
        wchar_t base[_MAX_FNAME] = {};
        FileBaseName(base);
        lstrcpynW(name, base, static_cast<int>(capacity));
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetEffectInfo(TqVstEffectInfo* info)
{
    if (!info) return E_INVALIDARG;
    if (!m_effect || IsUnselectedShell()) return TQVST_E_NOSELECTION;
    *info = {};
    info->uniqueId = static_cast<UINT32>(m_effect->uniqueID);
    info->version = static_cast<UINT32>(m_effect->version);
    info->vendorVersion =
        static_cast<UINT32>(Dispatch(vst2::effGetVendorVersion, 0, 0, nullptr, 0));
    info->numPrograms = static_cast<UINT32>(m_effect->numPrograms);
    info->numParameters = static_cast<UINT32>(m_effect->numParams);
    info->numInputs = static_cast<UINT32>(m_effect->numInputs);
    info->numOutputs = static_cast<UINT32>(m_effect->numOutputs);
    info->initialDelay = static_cast<UINT32>(m_effect->initialDelay);
    info->flags = static_cast<UINT32>(m_effect->flags) & 0x309;
    info->state = 1; // loadable; bit 1 clear marks VST2
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetNextShellPlugin(UINT32* id, WCHAR* name, INT32 capacity)
{
    if (name && capacity > 0) name[0] = 0;
    if (!(m_state & kStateShell)) return S_FALSE;
    if (!(m_state & kStateShellScan))
    {
        Dispatch(vst2::effVendorSpecific, vst2::kShellScanIndex, vst2::kShellScanStart, nullptr,
                 0.0f);
        m_state |= kStateShellScan;
    }
    char buffer[1024] = {};
    const uint32_t next =
        static_cast<uint32_t>(Dispatch(vst2::effShellGetNextPlugin, 0, 0, buffer, 0.0f));
    buffer[sizeof(buffer) - 1] = 0;
    if (id) *id = next;
    if (name && capacity > 0) NarrowToWide(buffer, name, capacity);
    if (next != 0) return S_OK;
    if (m_state & kStateShellScan)
    {
        Dispatch(vst2::effVendorSpecific, vst2::kShellScanIndex, vst2::kShellScanEnd, nullptr,
                 0.0f);
        m_state &= ~kStateShellScan;
    }
    return S_FALSE;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::SetMaster(IUnknown* master)
{
    return m_master.Reset(master);
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::SetSampleRate(double rate)
{
    // Compared after widening the stored value, so a rate f32 cannot hold is sent every time.
    if (rate == static_cast<double>(m_sampleRate)) return S_FALSE;
    m_sampleRate = static_cast<float>(rate);
    Dispatch(vst2::effSetSampleRate, 0, 0, nullptr, m_sampleRate);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::SetBlockSize(INT32 frames)
{
    if (frames == m_blockSize) return S_FALSE;
    m_blockSize = frames;
    Dispatch(vst2::effSetBlockSize, 0, frames, nullptr, 0.0f);
    if (!m_effect) return S_OK;
    for (int32_t id : kNudgeOnBlockSize)
    {
        if (m_effect->uniqueID == id)
        {
            float value = 0.0f;
            GetParameter(0, &value);
            SetParameter(0, value);
            break;
        }
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetParameterProperties(UINT32 index,
                                                               TqVstParameterProperties* props)
{
    vst2::VstParameterProperties record = {};
    if (Dispatch(vst2::effGetParameterProperties, static_cast<int32_t>(index), 0, &record, 0) == 0)
        return E_NOTIMPL;
    if (!props) return S_OK;
    record.label[sizeof(record.label) - 1] = 0;
    record.shortLabel[sizeof(record.shortLabel) - 1] = 0;
    NarrowToWide(record.label, props->label, 64);
    NarrowToWide(record.shortLabel, props->shortLabel, 8);
    props->stepFloat = record.stepFloat;
    props->smallStepFloat = record.smallStepFloat;
    props->largeStepFloat = record.largeStepFloat;
    props->minInteger = record.minInteger;
    props->maxInteger = record.maxInteger;
    props->stepInteger = record.stepInteger;
    props->largeStepInteger = record.largeStepInteger;
    props->flags = record.flags;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::CanParameterBeAutomated(UINT32 index, UINT32* yes)
{
    if (!yes) return S_OK;
    *yes = Dispatch(vst2::effCanBeAutomated, static_cast<int32_t>(index), 0, nullptr, 0) != 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetParameterName(UINT32 index, WCHAR* text, UINT32 capacity)
{
    if (text) DispatchGetText(vst2::effGetParamName, static_cast<int32_t>(index), text, capacity);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetParameterDisplay(UINT32 index, WCHAR* text,
                                                            UINT32 capacity)
{
    if (text)
        DispatchGetText(vst2::effGetParamDisplay, static_cast<int32_t>(index), text, capacity);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetParameterLabel(UINT32 index, WCHAR* text,
                                                          UINT32 capacity)
{
    if (text) DispatchGetText(vst2::effGetParamLabel, static_cast<int32_t>(index), text, capacity);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetParameter(UINT32 index, float* value)
{
    if (!value) return E_POINTER;
    vst2::AEffect* effect = m_effect;
    if (!effect) return TQVST_E_NOSELECTION;
    float read = 0.0f;
    if (!CallPlugin([&] { read = effect->getParameter(effect, static_cast<int32_t>(index)); }))
    {
        *value = 0.0f;
        return TQVST_E_PLUGINFAULT;
    }
    // NaN is passed on as it is: clamping would hide a broken plug-in.
    if (read < 0.0f)
        read = 0.0f;
    else if (read > 1.0f)
        read = 1.0f;
    *value = read;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::SetParameter(UINT32 index, float value)
{
    vst2::AEffect* effect = m_effect;
    if (!effect) return TQVST_E_NOSELECTION;
    if (!CallPlugin([&] { effect->setParameter(effect, static_cast<int32_t>(index), value); }))
        return TQVST_E_PLUGINFAULT;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetInitialDelay(UINT32* frames)
{
    if (!frames) return E_POINTER;
    const int32_t delay = m_effect ? m_effect->initialDelay : 0;
    *frames = delay > 0 ? static_cast<UINT32>(delay) : 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetTailSize(UINT32* frames)
{
    if (!frames) return E_POINTER;
    const int32_t tail = Dispatch(vst2::effGetTailSize, 0, 0, nullptr, 0.0f);
    // 1 means "no tail" to plug-ins, as does 0.
    *frames = tail < 2 ? 0 : static_cast<UINT32>(tail);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetProgram(UINT32* program)
{
    if (!program) return E_POINTER;
    *program = 0;
    if (!m_effect || m_effect->numPrograms < 1) return S_FALSE;
    *program = static_cast<UINT32>(Dispatch(vst2::effGetProgram, 0, 0, nullptr, 0.0f));
    return S_OK;
}

void CTqVstEffect::SwitchProgram(int32_t program)
{
    Dispatch(vst2::effBeginSetProgram, 0, 0, nullptr, 0.0f);
    Dispatch(vst2::effSetProgram, 0, program, nullptr, 0.0f);
    Dispatch(vst2::effEndSetProgram, 0, 0, nullptr, 0.0f);
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::SetProgram(INT32 program)
{
    if (!m_effect || m_effect->numPrograms == 0) return S_FALSE;
    if (program < 0 || program >= m_effect->numPrograms) return E_INVALIDARG;
    if (Dispatch(vst2::effGetProgram, 0, 0, nullptr, 0.0f) == program) return S_FALSE;
    SwitchProgram(program);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::GetProgramName(INT32 program, WCHAR* name, UINT32 capacity)
{
    if (!name) return E_POINTER;
    if (capacity > 0) name[0] = 0;
    if (!m_effect || m_effect->numPrograms == 0) return S_FALSE;
    if (program == -1)
    {
        DispatchGetText(vst2::effGetProgramName, 0, name, capacity);
        return S_OK;
    }
    if (program < 0 || program >= m_effect->numPrograms) return E_INVALIDARG;
    if (DispatchGetText(vst2::effGetProgramNameIndexed, program, name, capacity) != 0) return S_OK;
    // Plug-ins without indexed names are switched to the program, asked, and switched back.
    const int32_t current = Dispatch(vst2::effGetProgram, 0, 0, nullptr, 0.0f);
    if (current == program)
    {
        DispatchGetText(vst2::effGetProgramName, 0, name, capacity);
        return S_OK;
    }
    SwitchProgram(program);
    DispatchGetText(vst2::effGetProgramName, 0, name, capacity);
    SwitchProgram(current);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::SetProgramName(const WCHAR* name)
{
    if (!name) return E_POINTER;
    if (!m_effect || m_effect->numPrograms < 1) return S_FALSE;
    WCHAR current[64] = {};
    DispatchGetText(vst2::effGetProgramName, 0, current, 64);
    if (lstrcmpW(current, name) == 0) return S_FALSE;
    DispatchSetText(vst2::effSetProgramName, 0, name);
    return S_OK;
}
