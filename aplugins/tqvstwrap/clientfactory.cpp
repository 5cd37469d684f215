// The host's view of a server's factory: calls go to the server, effects come back wrapped.
#include "clientfactory.h"

#include "sharedeffect.h"

namespace tqvst {

HRESULT STDMETHODCALLTYPE CTqVstClientFactory::QueryInterface(REFIID riid, void** object)
{
    if (!object) return E_POINTER;
    *object = nullptr;
    if (riid != IID_IUnknown && riid != IID_IClassFactory && riid != IID_ITqVstEffectFactory)
        return E_NOINTERFACE;
    *object = static_cast<ITqVstEffectFactory*>(this);
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CTqVstClientFactory::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_refCount));
}

ULONG STDMETHODCALLTYPE CTqVstClientFactory::Release()
{
    const LONG count = InterlockedDecrement(&m_refCount);
    if (count == 0) delete this;
    return static_cast<ULONG>(count);
}

// Like the server's class object, this one is its own instance; anything else is the server's.
HRESULT STDMETHODCALLTYPE CTqVstClientFactory::CreateInstance(IUnknown* outer, REFIID riid,
                                                              void** object)
{
    if (outer) return CLASS_E_NOAGGREGATION;
    if (riid == IID_IUnknown || riid == IID_IClassFactory || riid == IID_ITqVstEffectFactory)
        return QueryInterface(riid, object);
    return m_server->CreateInstance(nullptr, riid, object);
}

HRESULT STDMETHODCALLTYPE CTqVstClientFactory::LockServer(BOOL lock)
{
    return m_server->LockServer(lock);
}

HRESULT STDMETHODCALLTYPE CTqVstClientFactory::GetEffectInfoForFile(const WCHAR* path,
                                                                    UINT32 uniqueId, WCHAR* name,
                                                                    WCHAR* vendor, WCHAR* product,
                                                                    TqVstEffectInfo* info,
                                                                    UINT32 timeoutMs)
{
    return m_server->GetEffectInfoForFile(path, uniqueId, name, vendor, product, info, timeoutMs);
}

HRESULT STDMETHODCALLTYPE CTqVstClientFactory::CreateEffect(const WCHAR* path, UINT32 uniqueId,
                                                            REFIID riid, void** object)
{
    if (riid != IID_IUnknown && riid != IID_ITqVstEffect)
        return m_server->CreateEffect(path, uniqueId, riid, object);
    if (!object) return m_server->CreateEffect(path, uniqueId, riid, object);
    tq::ComPtr<ITqVstEffect> proxy;
    const HRESULT hr = m_server->CreateEffect(path, uniqueId, IID_ITqVstEffect, proxy.PutVoid());
    *object = nullptr;
    if (FAILED(hr) || !proxy) return hr;
    // A server that cannot set up the channel still serves the effect the ordinary way.
    tq::ComPtr<ITqVstEffect> shared;
    if (FAILED(CTqVstSharedEffect::Create(m_server.Get(), proxy.Get(), shared.Put())))
        shared = proxy;
    const HRESULT asked = shared->QueryInterface(riid, object);
    return FAILED(asked) ? asked : hr;
}

} // namespace tqvst
