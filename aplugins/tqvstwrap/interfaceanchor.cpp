// The stubs that keep the server's interfaces registered, and the object behind the effect's.
#include "interfaceanchor.h"

#include "anchor.h"
#include "blockchannel.h"
#include "comptr.h"
#include "effectfactory.h"
#include "tqvst.h"

#include <objbase.h>

#include <new>

namespace tqvst {

namespace {

// Stands for an effect in the anchor's stub and is never called: no host learns of it.
class CAnchorEffect final : public CAnchorObject<ITqVstEffect, &IID_ITqVstEffect>
{
public:
    HRESULT STDMETHODCALLTYPE GetEffectName(WCHAR*, UINT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetVendorName(WCHAR*, INT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetProductName(WCHAR*, UINT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetEffectInfo(TqVstEffectInfo*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetNextShellPlugin(UINT32*, WCHAR*, INT32) override
    {
        return E_UNEXPECTED;
    }
    HRESULT STDMETHODCALLTYPE SetMaster(IUnknown*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE Idle() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE Suspend(INT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE Resume(INT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE SetSampleRate(double) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE SetSampleType(UINT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE SetChannelCount(INT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE SetBlockSize(INT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetParameterProperties(UINT32, TqVstParameterProperties*) override
    {
        return E_UNEXPECTED;
    }
    HRESULT STDMETHODCALLTYPE CanParameterBeAutomated(UINT32, UINT32*) override
    {
        return E_UNEXPECTED;
    }
    HRESULT STDMETHODCALLTYPE GetParameterName(UINT32, WCHAR*, UINT32) override
    {
        return E_UNEXPECTED;
    }
    HRESULT STDMETHODCALLTYPE GetParameterDisplay(UINT32, WCHAR*, UINT32) override
    {
        return E_UNEXPECTED;
    }
    HRESULT STDMETHODCALLTYPE GetParameterLabel(UINT32, WCHAR*, UINT32) override
    {
        return E_UNEXPECTED;
    }
    HRESULT STDMETHODCALLTYPE GetParameter(UINT32, float*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE SetParameter(UINT32, float) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetInitialDelay(UINT32*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetTailSize(UINT32*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE Process(BYTE*, UINT32, BYTE*, INT32, UINT32, UINT32) override
    {
        return E_UNEXPECTED;
    }
    HRESULT STDMETHODCALLTYPE ProcessReplace() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetProgram(UINT32*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE SetProgram(INT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetProgramName(INT32, WCHAR*, UINT32) override
    {
        return E_UNEXPECTED;
    }
    HRESULT STDMETHODCALLTYPE SetProgramName(const WCHAR*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE SavePreset(IStream*, UINT32*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE LoadPreset(IStream*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE SaveBank(IStream*, UINT32*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE LoadBank(IStream*, UINT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE OpenEditor(HWND, UINT32*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE EditorIdle() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE CloseEditor() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE ResizeEditor(INT32, INT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE CanResizeEditor(UINT32*) override { return E_UNEXPECTED; }
};

// The marshalled forms that hold the stubs; released at the end with their marshal data.
tq::ComPtr<IStream> g_anchors[3];

} // namespace

void AnchorInterfaces()
{
    auto effect = tq::ComPtr<ITqVstEffect>::Attach(new (std::nothrow) CAnchorEffect);
    auto channel = tq::ComPtr<ITqVstBlockChannel>::Attach(new (std::nothrow) CTqVstBlockChannel);
    // Never published, so its connections do not hold the server.
    auto factory = tq::ComPtr<ITqVstEffectFactory>::Attach(new (std::nothrow) CTqVstEffectFactory);
    g_anchors[0] = MarshalForLife(effect.Get(), IID_ITqVstEffect);
    g_anchors[1] = MarshalForLife(channel.Get(), IID_ITqVstBlockChannel);
    // A host that lets go of its factory right after a call on it, as CreateEffectForFile does,
    // would otherwise take the factory's interface with it.
    g_anchors[2] = MarshalForLife(factory.Get(), IID_ITqVstEffectFactory);
}

void ReleaseInterfaceAnchors()
{
    for (tq::ComPtr<IStream>& held : g_anchors)
    {
        if (!held) continue;
        const LARGE_INTEGER start = {};
        held->Seek(start, STREAM_SEEK_SET, nullptr);
        CoReleaseMarshalData(held.Get());
        held.Reset();
    }
}

} // namespace tqvst
