// The VST2 implementation of ITqVstEffect: one loaded plug-in and everything the host drives on it.
#pragma once

#include "aeffect.h"
#include "channelblock.h"
#include "clog.h"
#include "masterrelay.h"
#include "tqsamplecopy.h"
#include "tqvst.h"
#include "tqvsteffectmethods.h"
#include "uniquehandle.h"

#include <cstdint>

// Process-wide values for the plug-in's entry point, which runs before it has a host object.
extern uint32_t g_requestedPluginId;
extern bool g_needIdleDuringLoad;

class CTqVstEffect final : public ITqVstEffect
{
public:
    enum : uint32_t
    {
        kStateEditorOpen = 0x01,
        kStateNeedsIdle = 0x02,
        kStateShell = 0x04,
        kStateShellScan = 0x08,
        kStateProcessing = 0x10,
        kStateMainsOn = 0x20,
    };

    // Loads the plug-in; the load result goes to *result. The object exists in every case and
    // counts toward the server's life until it is released.
    CTqVstEffect(const wchar_t* path, UINT32 uniqueId, HRESULT* result);

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // ITqVstEffect
    TQVST_EFFECT_METHODS

    // Guarded calls into the plug-in's dispatcher; -1 after a fault.
    int32_t Dispatch(int32_t opcode, int32_t index, intptr_t value, void* ptr, float opt);
    int32_t DispatchGetText(int32_t opcode, int32_t index, WCHAR* text, UINT32 capacity);
    int32_t DispatchSetText(int32_t opcode, int32_t index, const WCHAR* text);

    // The plug-in's record, null when none is loaded (preset files read its counts and flags).
    vst2::AEffect* Effect() const { return m_effect; }

    // The part of the host callback that needs the bound object.
    intptr_t OnHostCallback(int32_t opcode, int32_t index, intptr_t value, void* ptr, float opt);

private:
    ~CTqVstEffect();
    HRESULT LoadPlugin2(const wchar_t* path, UINT32 uniqueId);
    void UnloadPlugin2();
    // The prelude shared by the three name operations; S_OK means go on.
    HRESULT PrepareNameBuffer(WCHAR* name, UINT32 capacity) const;
    bool IsUnselectedShell() const;
    void FileBaseName(wchar_t (&base)[_MAX_FNAME]) const;
    void SwitchProgram(int32_t program);
    intptr_t HostGetTime(int32_t mask);
    intptr_t HostGetDirectory();
    // The audio path: buffers sized for frames, the host's block in, the plug-in's block out.
    bool EnsureBuffers32(UINT32 frames);
    bool EnsureBuffers64(UINT32 frames);
    bool EnsureBuffers(UINT32 frames, UINT32 sampleBytes);
    void PrepareInputBlock(const BYTE* input, UINT32 inputChannels, UINT32 frames);
    void DeliverOutputBlock(BYTE* output, INT32 outputChannels, UINT32 frames);

    volatile LONG m_refCount = 1;
    CRITICAL_SECTION m_lock;
    wchar_t m_path[MAX_PATH] = {};
    tq::UniqueModule m_module;
    vst2::AEffect* m_effect = nullptr;
    // The host's master; plug-ins call back on threads of their own as well.
    tqvst::MasterRelay m_master;
    uint32_t m_state = 0;
    float m_sampleRate = 0.0f;
    int32_t m_blockSize = 0;
    volatile LONG m_inIdle = 0;
    volatile LONG m_inEditorIdle = 0;
    vst2::VstTimeInfo m_timeInfo = {};
    vst2::ChannelBlock m_inputs;
    vst2::ChannelBlock m_outputs;
    // Capacity of one channel in bytes; the blocks only ever grow.
    int32_t m_bufferBytes = 0;
    TQSAMPLETYPE m_hostSampleType = TQSAMPLE_FLOAT32;
    TQSAMPLETYPE m_pluginSampleType = TQSAMPLE_FLOAT32;
    TQAUDIO_COPYCHANNELSFUNC m_copyIn = nullptr;
    TQAUDIO_COPYCHANNELSFUNC m_copyOut = nullptr;
    // Nothing attaches a log yet; the lines are formatted all the same.
    CLog* m_log = nullptr;
    // A buffer that lives only during one audioMasterGetDirectory call.
    char m_directoryAnswer[MAX_PATH] = {};
};
