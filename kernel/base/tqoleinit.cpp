// Monitored COM and OLE start-up: a spy registered around the start, and the process's one OLE.
#include "tqoleinit.h"

HRESULT CMonitored_CoInitializeEx::CoInitialize(void* reserved)
{
    Register();
    return ::CoInitialize(reserved);
}

HRESULT CMonitored_CoInitializeEx::CoInitializeEx(void* reserved, DWORD flags)
{
    Register();
    return ::CoInitializeEx(reserved, flags);
}

HRESULT CMonitored_CoInitializeEx::OleInitialize(void* reserved)
{
    Register();
    return ::OleInitialize(reserved);
}

void CMonitored_CoInitializeEx::CoUninitialize()
{
    Revoke();
    ::CoUninitialize();
}

void CMonitored_CoInitializeEx::OleUninitialize()
{
    Revoke();
    ::OleUninitialize();
}

// A failed registration only costs the watching; the start itself goes ahead.
void CMonitored_CoInitializeEx::Register()
{
    if (m_registered) return;
    m_registered = SUCCEEDED(CoRegisterInitializeSpy(this, &m_cookie));
}

void CMonitored_CoInitializeEx::Revoke()
{
    if (!m_registered) return;
    CoRevokeInitializeSpy(m_cookie);
    m_registered = false;
}

STDMETHODIMP CMonitored_CoInitializeEx::QueryInterface(REFIID iid, void** object)
{
    if (!object) return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IInitializeSpy))
    {
        *object = static_cast<IInitializeSpy*>(this);
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CMonitored_CoInitializeEx::AddRef()
{
    return 1;
}

STDMETHODIMP_(ULONG) CMonitored_CoInitializeEx::Release()
{
    return 1;
}

STDMETHODIMP CMonitored_CoInitializeEx::PreInitialize(DWORD, DWORD)
{
    return S_OK;
}

STDMETHODIMP CMonitored_CoInitializeEx::PostInitialize(HRESULT result, DWORD, DWORD)
{
    return result;
}

STDMETHODIMP CMonitored_CoInitializeEx::PreUninitialize(DWORD)
{
    return S_OK;
}

STDMETHODIMP CMonitored_CoInitializeEx::PostUninitialize(DWORD)
{
    return S_OK;
}

TQKERNEL_API HRESULT TqOleInit(BOOL enable)
{
    static CMonitored_CoInitializeEx monitor;
    static bool started = false;
    if (!enable == !started) return S_FALSE;
    if (!enable)
    {
        monitor.OleUninitialize();
        started = false;
        return S_OK;
    }
    const HRESULT result = monitor.OleInitialize(nullptr);
    started = SUCCEEDED(result);
    return result;
}
