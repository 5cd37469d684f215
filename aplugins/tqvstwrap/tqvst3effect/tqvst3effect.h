// The VST3 implementation of ITqVstEffect: one class of a .vst3 module and everything the host
// drives on it.
#pragma once

#include "masterrelay.h"
#include "pluginptr.h"
#include "pluginterfaces/base/ibstream.h"
#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "tqsamplecopy.h"
#include "tqvst.h"
#include "tqvsteffectmethods.h"
#include "vst3module.h"
#include "vst3plugprovider.h"

#include <memory>
#include <string>
#include <vector>

namespace tqvst {
class Vst3ComponentHandler;
class Vst3Host;
} // namespace tqvst

// The one host context every VST3 class is initialised with. Made by the first effect that finds
// none; deleted when the class object goes while no effect is left.
extern tqvst::Vst3Host* g_vst3Host;
// Deletes g_vst3Host if no effect is alive; the class object calls it when it goes.
void ReleaseVst3HostIfUnused();

class CTqVst3Effect final : public ITqVstEffect
{
public:
    enum : UINT32
    {
        kFlagEditorOpen = 0x01,
        kFlagShell = 0x04,
    };

    // Loads the class of path whose ShellId is requestedId (0: the only one); the load result goes
    // to *result. The object exists in every case and counts toward the server's life until it is
    // released.
    CTqVst3Effect(const wchar_t* path, UINT32 requestedId, HRESULT* result);

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // ITqVstEffect
    TQVST_EFFECT_METHODS

    // Restores component and controller from a preset image: 0, 1 when the class was right but
    // the data was refused, 0x8004E204 for a preset of another class.
    virtual HRESULT ApplyPresetStream(vst3::IBStream* stream);
    // Runs one block of silence so that changes still queued for the processor reach its state.
    virtual HRESULT FlushParametersToProcessor();

    // Hands the changes the processor reported and those the host made to the controller.
    void FlushToController();

private:
    ~CTqVst3Effect();

    // Loading and teardown (tqvst3effect.cpp).
    HRESULT LoadPlugin(const wchar_t* path, UINT32 requestedId);
    void FinishLoad();
    void ReleasePlugin();
    void ConnectPoints(bool connect);

    // Identity, parameters and programs (tqvst3identity.cpp).
    HRESULT ParameterInfoAt(UINT32 index, vst3::ParameterInfo* info);
    void BuildProgramList();
    bool FindUnitProgramList();
    HRESULT SelectProgram(INT32 index);
    void GetProgramNameAt(INT32 index, WCHAR* name, UINT32 capacity);
    bool HasEditor();

    // The audio path (tqvst3processing.cpp).
    bool SetupProcessing();
    void RestartProcessing(bool dropBuffers);
    HRESULT StartProcessing();
    void PrepareProcessContext();
    void PrepareParameterChanges();
    void CopyInputBlock(const BYTE* input, UINT32 inputChannels, UINT32 frames);
    void CopyOutputBlock(BYTE* output, INT32 outputChannels, UINT32 frames);
    void FinishBlock();

    // Preset folders (tqvst3presets.cpp): appends the .vstpreset files below the folder to
    // m_presetPaths and m_presetNames and answers how many it found.
    int ScanPresetFolder(const wchar_t* root, bool nested);

    // The host's master; calls on other threads than the one that set it are relayed.
    tqvst::MasterRelay m_master;
    // timeGetTime at the start of the last Process, 0 before the first.
    volatile DWORD m_lastProcessTime = 0;
    volatile LONG m_refCount = 1;
    UINT32 m_flags = 0;
    // ShellId of the class, 0 for a shell whose walk has not started.
    UINT32 m_uniqueId = 0;
    UINT32 m_version = 0;
    float m_sampleRate = 44100.0f;
    INT32 m_blockSize = 1000;
    TQSAMPLETYPE m_hostSampleType = TQSAMPLE_FLOAT32;
    // Samples inside the plug-in are always 32-bit float.
    TQSAMPLETYPE m_plugSampleType = TQSAMPLE_FLOAT32;
    TQAUDIO_COPYCHANNELSFUNC m_copyIn = nullptr;
    TQAUDIO_COPYCHANNELSFUNC m_copyOut = nullptr;
    WCHAR m_vendorName[64] = {};
    WCHAR m_effectName[64] = {};
    INT32 m_classCount = 0;
    bool m_connected = false;
    // Active and processing.
    bool m_running = false;
    // The start sequence ran; it runs once in the life of the object.
    bool m_started = false;
    INT64 m_framesDone = 0;
    HWND m_parentWindow = nullptr;

    std::unique_ptr<tqvst::Vst3Module> m_module;
    std::unique_ptr<tqvst::Vst3PlugProvider> m_provider;
    tqvst::PluginPtr<vst3::IComponent> m_component;
    tqvst::PluginPtr<vst3::IAudioProcessor> m_processor;
    tqvst::PluginPtr<vst3::IEditController> m_controller;
    // Ours, but plug-ins hold references to it: it goes by release.
    tqvst::Vst3ComponentHandler* m_handler = nullptr;
    // The open editor's view.
    tqvst::PluginPtr<vst3::IPlugView> m_view;
    tqvst::BusLayout m_busLayout;

    // The flat program list the host sees: the root unit's program list, or else the preset
    // files found in the user's preset folders, from m_firstFilePreset on.
    INT32 m_firstFilePreset = -1;
    INT32 m_programCount = 0;
    INT32 m_currentProgram = 0;
    INT32 m_programListIndex = -1;
    // In step: full path and name without extension of each preset file found.
    std::vector<std::wstring> m_presetPaths;
    std::vector<std::wstring> m_presetNames;
};
