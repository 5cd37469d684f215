// The factory a host gets for a server location: the server's own, but for the effects it makes,
// which come wrapped so that their blocks take the shared channel.
#pragma once

#include "comptr.h"
#include "tqvst.h"

namespace tqvst {

class CTqVstClientFactory final : public ITqVstEffectFactory
{
public:
    // Wraps the server's factory proxy; starts with one reference, owned by the caller.
    explicit CTqVstClientFactory(ITqVstEffectFactory* server) : m_server(server) {}

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // IClassFactory
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

    // ITqVstEffectFactory
    HRESULT STDMETHODCALLTYPE GetEffectInfoForFile(const WCHAR* path, UINT32 uniqueId, WCHAR* name,
                                                   WCHAR* vendor, WCHAR* product,
                                                   TqVstEffectInfo* info,
                                                   UINT32 timeoutMs) override;
    HRESULT STDMETHODCALLTYPE CreateEffect(const WCHAR* path, UINT32 uniqueId, REFIID riid,
                                           void** object) override;

private:
    ~CTqVstClientFactory() = default;
    volatile LONG m_refCount = 1;
    tq::ComPtr<ITqVstEffectFactory> m_server;
};

} // namespace tqvst
