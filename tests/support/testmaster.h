// A host's ITqVstMaster for tests: records each call as a line and answers time and tempo as told.
#pragma once

#include "tqvst.h"

#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

namespace tqtest {

class TestMaster final : public ITqVstMaster
{
public:
    // What GetTime answers and the record it hands back.
    HRESULT timeResult = S_OK;
    TqVstMasterTime time = {};
    INT32 tempo = 0;

    // One line per call, in arrival order, e.g. "Automate 3 0.25".
    const std::vector<std::string>& Calls() const { return m_calls; }
    void ClearCalls() { m_calls.clear(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override
    {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (riid != IID_IUnknown && riid != IID_ITqVstMaster) return E_NOINTERFACE;
        *object = static_cast<ITqVstMaster*>(this);
        AddRef();
        return S_OK;
    }
    // The test owns the object; the count only shows that every reference was given back.
    ULONG STDMETHODCALLTYPE AddRef() override { return ULONG(InterlockedIncrement(&m_refCount)); }
    ULONG STDMETHODCALLTYPE Release() override { return ULONG(InterlockedDecrement(&m_refCount)); }
    LONG References() const { return m_refCount; }

    HRESULT STDMETHODCALLTYPE Automate(UINT32 index, float value) override
    {
        return Record("Automate %u %g", index, double(value));
    }
    HRESULT STDMETHODCALLTYPE Idle() override { return Record("Idle"); }
    HRESULT STDMETHODCALLTYPE UpdateDisplay() override { return Record("UpdateDisplay"); }
    HRESULT STDMETHODCALLTYPE GetTime(TqVstMasterTime* out) override
    {
        Record("GetTime");
        if (out) *out = time;
        return timeResult;
    }
    HRESULT STDMETHODCALLTYPE GetTempoAt(UINT32 samplePos, INT32* out) override
    {
        if (out) *out = tempo;
        return Record("GetTempoAt %u", samplePos);
    }
    HRESULT STDMETHODCALLTYPE SizeWindow(UINT32 width, UINT32 height) override
    {
        return Record("SizeWindow %u %u", width, height);
    }
    HRESULT STDMETHODCALLTYPE BeginEdit(UINT32 index) override
    {
        return Record("BeginEdit %u", index);
    }
    HRESULT STDMETHODCALLTYPE EndEdit(UINT32 index) override { return Record("EndEdit %u", index); }
    HRESULT STDMETHODCALLTYPE LoadPresetFile(const WCHAR*) override
    {
        return Record("LoadPresetFile");
    }

private:
    template <class... Args>
    HRESULT Record(const char* format, Args... args)
    {
        char line[96];
        std::snprintf(line, sizeof(line), format, args...);
        m_calls.emplace_back(line);
        return S_OK;
    }

    volatile LONG m_refCount = 0;
    std::vector<std::string> m_calls;
};

} // namespace tqtest
