// The process's one monitored start of OLE, and the watching spy it registers around COM start-up.
#pragma once

#include "tqkernelapi.h"

#include <objbase.h>

// enable TRUE starts OLE on the calling thread, FALSE ends what an earlier TRUE started. A call in
// the sense already in force does nothing and returns S_FALSE; otherwise the result of
// OleInitialize, or S_OK for the end.
TQKERNEL_API HRESULT TqOleInit(BOOL enable);

#ifdef __cplusplus
// Starts and ends COM and OLE with an initialize spy registered around the start. The spy watches
// and never interferes: it passes every result on unchanged.
class CMonitored_CoInitializeEx : public IInitializeSpy
{
public:
    HRESULT CoInitialize(void* reserved);
    HRESULT CoInitializeEx(void* reserved, DWORD flags);
    HRESULT OleInitialize(void* reserved);
    void CoUninitialize();
    void OleUninitialize();

    // IUnknown: a static object, so no counting.
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;
    // IInitializeSpy
    STDMETHODIMP PreInitialize(DWORD flags, DWORD currentApartmentRefs) override;
    STDMETHODIMP PostInitialize(HRESULT result, DWORD flags, DWORD newApartmentRefs) override;
    STDMETHODIMP PreUninitialize(DWORD currentApartmentRefs) override;
    STDMETHODIMP PostUninitialize(DWORD newApartmentRefs) override;

private:
    void Register();
    void Revoke();

    ULARGE_INTEGER m_cookie = {};
    bool m_registered = false;
};
#endif
