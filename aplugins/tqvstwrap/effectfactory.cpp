// The class object and its registration under the per-process class id.
#include "effectfactory.h"

#include "blockchannel.h"
#include "comptr.h"
#include "effectload.h"
#include "serverlifetime.h"
#include "tqvst2effect/hostcallback.h"
#include "tqvst3effect.h"

#include <new>

// {3E804EF0-C7F4-4A23-B4BE-14BD8A8F5011}
const CLSID CLSID_TqVstServerBase = {
    0x3E804EF0, 0xC7F4, 0x4A23, {0xB4, 0xBE, 0x14, 0xBD, 0x8A, 0x8F, 0x50, 0x11}};

namespace {
DWORD g_classCookie = 0;
}

CLSID ServerClassId(DWORD processId)
{
    CLSID id = CLSID_TqVstServerBase;
    id.Data1 ^= processId;
    return id;
}

HRESULT STDMETHODCALLTYPE CTqVstEffectFactory::QueryInterface(REFIID riid, void** object)
{
    if (!object) return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IClassFactory || riid == IID_ITqVstEffectFactory)
    {
        *object = static_cast<ITqVstEffectFactory*>(this);
        AddRef();
        return S_OK;
    }
    if (riid == IID_IExternalConnection)
    {
        *object = static_cast<IExternalConnection*>(this);
        AddRef();
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

ULONG STDMETHODCALLTYPE CTqVstEffectFactory::AddRef()
{
    return InterlockedIncrement(&m_refCount);
}

ULONG STDMETHODCALLTYPE CTqVstEffectFactory::Release()
{
    const ULONG count = InterlockedDecrement(&m_refCount);
    if (count == 0)
    {
        delete this;
        ReleaseVst3HostIfUnused();
    }
    return count;
}

// The class object is its own instance: asking it for the factory interface gives itself. The
// one thing it makes anew is a Process channel, which a host sets up beside each effect.
HRESULT STDMETHODCALLTYPE CTqVstEffectFactory::CreateInstance(IUnknown* outer, REFIID riid,
                                                              void** object)
{
    if (outer) return CLASS_E_NOAGGREGATION;
    if (riid == IID_ITqVstBlockChannel)
    {
        if (!object) return E_POINTER;
        auto* made = new (std::nothrow) tqvst::CTqVstBlockChannel;
        if (!made) return E_OUTOFMEMORY;
        auto channel = tq::ComPtr<ITqVstBlockChannel>::Attach(made);
        return channel->QueryInterface(riid, object);
    }
    return QueryInterface(riid, object);
}

HRESULT STDMETHODCALLTYPE CTqVstEffectFactory::LockServer(BOOL lock)
{
    if (lock)
        InterlockedIncrement(&g_lockCount);
    else
        InterlockedDecrement(&g_lockCount);
    CheckServerQuit();
    return S_OK;
}

DWORD STDMETHODCALLTYPE CTqVstEffectFactory::AddConnection(DWORD type, DWORD)
{
    if (!(type & EXTCONN_STRONG) || !m_published) return 0;
    LockServer(TRUE);
    return static_cast<DWORD>(InterlockedIncrement(&m_hostConnections));
}

DWORD STDMETHODCALLTYPE CTqVstEffectFactory::ReleaseConnection(DWORD type, DWORD, BOOL)
{
    if (!(type & EXTCONN_STRONG) || m_hostConnections <= 0) return 0;
    const LONG left = InterlockedDecrement(&m_hostConnections);
    LockServer(FALSE);
    return static_cast<DWORD>(left);
}

HRESULT STDMETHODCALLTYPE CTqVstEffectFactory::GetEffectInfoForFile(const WCHAR* path,
                                                                    UINT32 uniqueId, WCHAR* name,
                                                                    WCHAR* vendor, WCHAR* product,
                                                                    TqVstEffectInfo* info,
                                                                    UINT32 timeoutMs)
{
    return tqvst::GetEffectInfoForFile(path, uniqueId, name, vendor, product, info, timeoutMs);
}

HRESULT STDMETHODCALLTYPE CTqVstEffectFactory::CreateEffect(const WCHAR* path, UINT32 uniqueId,
                                                            REFIID riid, void** object)
{
    return tqvst::CreateEffect(path, uniqueId, riid, object);
}

HRESULT RegisterVstClassObject(DWORD threadId, const wchar_t* vendor, const wchar_t* product)
{
    if (g_quitThreadId == 0) g_quitThreadId = threadId;
    if (g_classCookie != 0) return S_FALSE;
    SetHostStrings(vendor, product);
    auto* made = new (std::nothrow) CTqVstEffectFactory;
    if (!made) return E_OUTOFMEMORY;
    auto factory = tq::ComPtr<ITqVstEffectFactory>::Attach(made);
    const CLSID clsid = ServerClassId(GetCurrentProcessId());
    const HRESULT hr = CoRegisterClassObject(clsid, factory.Get(), CLSCTX_LOCAL_SERVER,
                                             REGCLS_MULTIPLEUSE, &g_classCookie);
    made->MarkPublished();
    return hr;
}

HRESULT RevokeVstClassObject()
{
    if (g_classCookie == 0) return S_FALSE;
    const HRESULT hr = CoRevokeClassObject(g_classCookie);
    g_classCookie = 0;
    return hr;
}
