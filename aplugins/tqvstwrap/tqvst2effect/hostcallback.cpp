// Host callback: answers plug-ins by itself where it can, and forwards to the host's
// ITqVstMaster through the object bound to the calling plug-in.
#include "hostcallback.h"

#include "tqlang.h"
#include "tqvst2effect.h"
#include "vst2log.h"

#include <cmath>
#include <cstring>

namespace {

char g_hostVendor[64];
char g_hostProduct[64];

constexpr intptr_t kHostVersion = 2300;
constexpr intptr_t kHostVendorVersion = 12000;
constexpr intptr_t kAutomatableParameters = 1024;

constexpr const char* kHostCanDo[] = {
    "shellCategory", "sizeWindow", "supplyIdle", "sendVstTimeInfo", "startStopProcess",
};

void StoreHostText(char (&field)[64], const wchar_t* text)
{
    if (!text) return;
    memset(field, 0, sizeof(field));
    if (text[0]) WideCharToMultiByte(CP_ACP, 0, text, -1, field, sizeof(field), nullptr, nullptr);
    field[sizeof(field) - 1] = 0;
}

intptr_t CopyHostText(const char (&field)[64], void* ptr)
{
    if (!ptr || !field[0]) return 0;
    memcpy(ptr, field, strlen(field) + 1);
    return 1;
}

// The language the kernel runs in, as plug-ins number languages.
intptr_t PluginLanguage()
{
    switch (TqLang_GetLCID(TqLang_GetKernelLang()) & 0x3FF)
    {
    case 7: // German
        return 2;
    case 12: // French
        return 3;
    case 16: // Italian
        return 4;
    case 17: // Japanese
        return 6;
    default:
        return 1;
    }
}

// Answers that are the same with and without a bound object. False when the opcode needs one.
bool CommonAnswer(int32_t opcode, void* ptr, intptr_t& answer)
{
    switch (opcode)
    {
    case vst2::audioMasterVersion:
        answer = kHostVersion;
        return true;
    case vst2::audioMasterGetNumAutomatableParameters:
        answer = kAutomatableParameters;
        return true;
    case vst2::audioMasterWillReplaceOrAccumulate:
        answer = 1;
        return true;
    case vst2::audioMasterGetVendorString:
        answer = CopyHostText(g_hostVendor, ptr);
        return true;
    case vst2::audioMasterGetProductString:
        answer = CopyHostText(g_hostProduct, ptr);
        return true;
    case vst2::audioMasterCanDo:
        answer = 0;
        if (ptr)
            for (const char* can : kHostCanDo)
                if (lstrcmpA(static_cast<const char*>(ptr), can) == 0) answer = 1;
        return true;
    case vst2::audioMasterGetLanguage:
        answer = PluginLanguage();
        return true;
    default:
        return false;
    }
}

// Without an object: during the entry point, or from a record the host has not bound.
intptr_t UnboundAnswer(int32_t opcode)
{
    switch (opcode)
    {
    case vst2::audioMasterCurrentId:
        return static_cast<intptr_t>(g_requestedPluginId);
    case vst2::audioMasterNeedIdle:
        g_needIdleDuringLoad = true;
        return 0;
    default:
        return 0;
    }
}

} // namespace

void SetHostStrings(const wchar_t* vendor, const wchar_t* product)
{
    StoreHostText(g_hostVendor, vendor);
    StoreHostText(g_hostProduct, product);
}

intptr_t __cdecl AudioMasterCallback(vst2::AEffect* effect, int32_t opcode, int32_t index,
                                     intptr_t value, void* ptr, float opt)
{
    if (opcode == vst2::audioMasterGetVendorVersion) return kHostVendorVersion;
    auto* bound = effect ? reinterpret_cast<CTqVstEffect*>(effect->resvd1) : nullptr;
    if (bound) return bound->OnHostCallback(opcode, index, value, ptr, opt);
    intptr_t answer = 0;
    if (!CommonAnswer(opcode, ptr, answer)) answer = UnboundAnswer(opcode);
    vst2::LogCallback(nullptr, opcode, index, value, ptr, opt, static_cast<int32_t>(answer));
    return answer;
}

intptr_t CTqVstEffect::OnHostCallback(int32_t opcode, int32_t index, intptr_t value, void* ptr,
                                      float opt)
{
    intptr_t answer = 0;
    if (!CommonAnswer(opcode, ptr, answer))
    {
        switch (opcode)
        {
        case vst2::audioMasterAutomate:
            m_master.Call([&](ITqVstMaster* master) {
                return master->Automate(static_cast<UINT32>(index), opt);
            });
            break;
        case vst2::audioMasterCurrentId:
            answer = m_effect ? m_effect->uniqueID : 0;
            break;
        case vst2::audioMasterIdle:
            if (!m_inIdle) m_master.Call([](ITqVstMaster* master) { return master->Idle(); });
            Idle();
            break;
        case vst2::audioMasterGetTime:
            answer = HostGetTime(static_cast<int32_t>(value));
            break;
        case vst2::audioMasterTempoAt:
        {
            INT32 tempo = 0;
            m_master.Call([&](ITqVstMaster* master) {
                return master->GetTempoAt(static_cast<UINT32>(value), &tempo);
            });
            answer = tempo;
            break;
        }
        case vst2::audioMasterNeedIdle:
            m_state |= kStateNeedsIdle;
            break;
        case vst2::audioMasterSizeWindow:
            if (m_state & kStateEditorOpen)
                m_master.Call([&](ITqVstMaster* master) {
                    return master->SizeWindow(static_cast<UINT32>(index),
                                              static_cast<UINT32>(value));
                });
            break;
        case vst2::audioMasterGetSampleRate:
            answer = static_cast<intptr_t>(m_sampleRate);
            break;
        case vst2::audioMasterGetBlockSize:
            answer = m_blockSize;
            break;
        case vst2::audioMasterGetDirectory:
            answer = HostGetDirectory();
            break;
        case vst2::audioMasterUpdateDisplay:
            m_master.Call([](ITqVstMaster* master) { return master->UpdateDisplay(); });
            answer = 1;
            break;
        case vst2::audioMasterBeginEdit:
            m_master.Call([&](ITqVstMaster* master) {
                return master->BeginEdit(static_cast<UINT32>(index));
            });
            break;
        case vst2::audioMasterEndEdit:
            m_master.Call(
                [&](ITqVstMaster* master) { return master->EndEdit(static_cast<UINT32>(index)); });
            break;
        default:
            break;
        }
    }
    vst2::LogCallback(m_log, opcode, index, value, ptr, opt, static_cast<int32_t>(answer));
    return answer;
}

intptr_t CTqVstEffect::HostGetTime(int32_t mask)
{
    TqVstMasterTime time = {};
    if (m_master.Call([&](ITqVstMaster* master) { return master->GetTime(&time); }) != S_OK)
        return 0;
    m_timeInfo = {};
    m_timeInfo.samplePos = time.samplePos;
    m_timeInfo.sampleRate = static_cast<double>(m_sampleRate);
    const auto valid = [&](int bit) { return (time.flags >> bit) & 1; };
    int32_t flags = 0;
    if (mask & 0x0100)
    {
        // Deliberately in 100-ns units, not nanoseconds: plug-ins in the field expect it.
        const auto rate = static_cast<int64_t>(m_sampleRate);
        const auto pos = static_cast<int64_t>(time.samplePos);
        m_timeInfo.nanoSeconds =
            rate ? std::trunc(static_cast<double>(pos) / static_cast<double>(rate) * 10000000.0 +
                              0.5)
                 : 0.0;
        flags |= 0x0100;
    }
    if ((mask & 0x0200) && valid(2))
    {
        m_timeInfo.ppqPos = time.ppqPos;
        flags |= 0x0200;
    }
    if ((mask & 0x0400) && valid(1))
    {
        m_timeInfo.tempo = time.tempo;
        flags |= 0x0400;
    }
    if ((mask & 0x0800) && valid(3))
    {
        m_timeInfo.barStartPos = time.barStartPos;
        flags |= 0x0800;
    }
    if ((mask & 0x1000) && valid(4))
    {
        m_timeInfo.cycleStartPos = time.cycleStartPos;
        m_timeInfo.cycleEndPos = time.cycleEndPos;
        flags |= 0x1000;
    }
    if ((mask & 0x2000) && valid(0))
    {
        m_timeInfo.timeSigNumerator = time.timeSigNumerator;
        m_timeInfo.timeSigDenominator = time.timeSigDenominator;
        flags |= 0x2000;
    }
    if (mask & 0x4000)
    {
        m_timeInfo.smpteFrameRate = time.smpteFrameRate;
        m_timeInfo.smpteOffset = time.smpteOffset;
        flags |= 0x4000;
    }
    // Transport state goes in whether or not the plug-in asked for it.
    if (valid(5)) flags |= 0x01;
    if (valid(6)) flags |= 0x02;
    if (valid(7)) flags |= 0x04;
    if (valid(8)) flags |= 0x08;
    m_timeInfo.flags = flags;
    return reinterpret_cast<intptr_t>(&m_timeInfo);
}

intptr_t CTqVstEffect::HostGetDirectory()
{
    memset(m_directoryAnswer, 0, sizeof(m_directoryAnswer));
    WideCharToMultiByte(CP_ACP, 0, m_path, -1, m_directoryAnswer, sizeof(m_directoryAnswer),
                        nullptr, nullptr);
    m_directoryAnswer[sizeof(m_directoryAnswer) - 1] = 0;
    return reinterpret_cast<intptr_t>(m_directoryAnswer);
}
