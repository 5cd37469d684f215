// The class object: its own instance, and the only way a host reaches plug-ins.
#pragma once

#include "tqvst.h"

// Base of every server's class id; Data1 is XORed with the server's process id.
extern const CLSID CLSID_TqVstServerBase;

// The class id of the server with the given process id.
CLSID ServerClassId(DWORD processId);

// Hosts hold the server through their connections to the class object: the COM runtime reports
// each one through IExternalConnection, and each counts as a LockServer lock, so a server does not
// end between two calls of a host that still holds its factory.
class CTqVstEffectFactory final : public ITqVstEffectFactory, public IExternalConnection
{
public:
    // Starts with one reference, owned by the caller.
    CTqVstEffectFactory() = default;

    // From now on, new external connections are hosts'; earlier ones belong to the class table.
    void MarkPublished() { m_published = true; }

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

    // IExternalConnection
    DWORD STDMETHODCALLTYPE AddConnection(DWORD type, DWORD reserved) override;
    DWORD STDMETHODCALLTYPE ReleaseConnection(DWORD type, DWORD reserved,
                                              BOOL lastReleaseCloses) override;

private:
    ~CTqVstEffectFactory() = default;
    volatile LONG m_refCount = 1;
    volatile LONG m_hostConnections = 0;
    bool m_published = false;
};

// Publishes a new class object under this process's class id; the first caller's thread is the
// one that receives WM_QUIT when the server is no longer held. S_FALSE if already published.
HRESULT RegisterVstClassObject(DWORD threadId, const wchar_t* vendor, const wchar_t* product);
HRESULT RevokeVstClassObject();
