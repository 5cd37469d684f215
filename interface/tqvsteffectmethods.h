// ITqVstEffect's methods as a class that implements them declares them: the in-process effects of
// both plug-in kinds and the client's shared-block effect implement the same list, which changes
// with the interface in this one place.
#pragma once

#include "tqvst.h"

#define TQVST_EFFECT_METHODS                                                                       \
    HRESULT STDMETHODCALLTYPE GetEffectName(WCHAR* name, UINT32 capacity) override;                \
    HRESULT STDMETHODCALLTYPE GetVendorName(WCHAR* name, INT32 capacity) override;                 \
    HRESULT STDMETHODCALLTYPE GetProductName(WCHAR* name, UINT32 capacity) override;               \
    HRESULT STDMETHODCALLTYPE GetEffectInfo(TqVstEffectInfo* info) override;                       \
    HRESULT STDMETHODCALLTYPE GetNextShellPlugin(UINT32* id, WCHAR* name, INT32 capacity)          \
        override;                                                                                  \
    HRESULT STDMETHODCALLTYPE SetMaster(IUnknown* master) override;                                \
    HRESULT STDMETHODCALLTYPE Idle() override;                                                     \
    HRESULT STDMETHODCALLTYPE Suspend(INT32 full) override;                                        \
    HRESULT STDMETHODCALLTYPE Resume(INT32 force) override;                                        \
    HRESULT STDMETHODCALLTYPE SetSampleRate(double rate) override;                                 \
    HRESULT STDMETHODCALLTYPE SetSampleType(UINT32 sampleType) override;                           \
    HRESULT STDMETHODCALLTYPE SetChannelCount(INT32 channels) override;                            \
    HRESULT STDMETHODCALLTYPE SetBlockSize(INT32 frames) override;                                 \
    HRESULT STDMETHODCALLTYPE GetParameterProperties(UINT32 index,                                 \
                                                     TqVstParameterProperties* props) override;    \
    HRESULT STDMETHODCALLTYPE CanParameterBeAutomated(UINT32 index, UINT32* yes) override;         \
    HRESULT STDMETHODCALLTYPE GetParameterName(UINT32 index, WCHAR* text, UINT32 capacity)         \
        override;                                                                                  \
    HRESULT STDMETHODCALLTYPE GetParameterDisplay(UINT32 index, WCHAR* text, UINT32 capacity)      \
        override;                                                                                  \
    HRESULT STDMETHODCALLTYPE GetParameterLabel(UINT32 index, WCHAR* text, UINT32 capacity)        \
        override;                                                                                  \
    HRESULT STDMETHODCALLTYPE GetParameter(UINT32 index, float* value) override;                   \
    HRESULT STDMETHODCALLTYPE SetParameter(UINT32 index, float value) override;                    \
    HRESULT STDMETHODCALLTYPE GetInitialDelay(UINT32* frames) override;                            \
    HRESULT STDMETHODCALLTYPE GetTailSize(UINT32* frames) override;                                \
    HRESULT STDMETHODCALLTYPE Process(BYTE* input, UINT32 inputChannels, BYTE* output,             \
                                      INT32 outputChannels, UINT32 frames, UINT32 bytesPerSample)  \
        override;                                                                                  \
    HRESULT STDMETHODCALLTYPE ProcessReplace() override;                                           \
    HRESULT STDMETHODCALLTYPE GetProgram(UINT32* program) override;                                \
    HRESULT STDMETHODCALLTYPE SetProgram(INT32 program) override;                                  \
    HRESULT STDMETHODCALLTYPE GetProgramName(INT32 program, WCHAR* name, UINT32 capacity)          \
        override;                                                                                  \
    HRESULT STDMETHODCALLTYPE SetProgramName(const WCHAR* name) override;                          \
    HRESULT STDMETHODCALLTYPE SavePreset(IStream* stream, UINT32* bytes) override;                 \
    HRESULT STDMETHODCALLTYPE LoadPreset(IStream* stream) override;                                \
    HRESULT STDMETHODCALLTYPE SaveBank(IStream* stream, UINT32* bytes) override;                   \
    HRESULT STDMETHODCALLTYPE LoadBank(IStream* stream, UINT32 program) override;                  \
    HRESULT STDMETHODCALLTYPE OpenEditor(HWND parent, UINT32* rect) override;                      \
    HRESULT STDMETHODCALLTYPE EditorIdle() override;                                               \
    HRESULT STDMETHODCALLTYPE CloseEditor() override;                                              \
    HRESULT STDMETHODCALLTYPE ResizeEditor(INT32 width, INT32 height) override;                    \
    HRESULT STDMETHODCALLTYPE CanResizeEditor(UINT32* yes) override;
