// The host's anchor stubs, made once in the process's multithreaded apartment.
#include "hostanchor.h"

#include "anchor.h"
#include "comptr.h"
#include "procaddress.h"
#include "tqvst.h"
#include "uniquehandle.h"
#include "vstclient.h"

#include <objbase.h>

#include <new>

namespace tqvst {

namespace {

// Stands for a host's master in the anchor's stub and is never called: no server learns of it.
class CAnchorMaster final : public CAnchorObject<ITqVstMaster, &IID_ITqVstMaster>
{
public:
    HRESULT STDMETHODCALLTYPE Automate(UINT32, float) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE Idle() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE UpdateDisplay() override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetTime(TqVstMasterTime*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE GetTempoAt(UINT32, INT32*) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE SizeWindow(UINT32, UINT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE BeginEdit(UINT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE EndEdit(UINT32) override { return E_UNEXPECTED; }
    HRESULT STDMETHODCALLTYPE LoadPresetFile(const WCHAR*) override { return E_UNEXPECTED; }
};

INIT_ONCE g_once = INIT_ONCE_STATIC_INIT;
// Never given back: the apartment and the anchors live as long as the process.
HANDLE g_mtaUsage = nullptr;

// Runs in the multithreaded apartment, which outlives this thread through the usage cookie.
DWORD WINAPI AnchorInApartment(void* proxyStub)
{
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return 0;
    RegisterVstProxyStub(static_cast<const wchar_t*>(proxyStub), nullptr);
    auto master = tq::ComPtr<ITqVstMaster>::Attach(new (std::nothrow) CAnchorMaster);
    tq::ComPtr<IStream> stream;
    CreateStreamOnHGlobal(nullptr, TRUE, stream.Put());
    // The marshal data is never released, so the stubs stay when the streams go.
    MarshalForLife(master.Get(), IID_ITqVstMaster);
    MarshalForLife(stream.Get(), IID_IStream);
    CoUninitialize();
    return 0;
}

BOOL CALLBACK AnchorOnce(INIT_ONCE*, void* proxyStub, void**)
{
    // Looked up: the build targets systems older than the call, where hosts go without anchors.
    using IncrementMtaUsage = HRESULT(WINAPI*)(HANDLE*);
    const auto increment =
        tq::GetProc<IncrementMtaUsage>(GetModuleHandleW(L"ole32.dll"), "CoIncrementMTAUsage");
    if (!increment || FAILED(increment(&g_mtaUsage))) return TRUE;
    // A thread of its own: the caller's apartment is usually single-threaded.
    tq::UniqueHandle thread(CreateThread(nullptr, 64 * 1024, AnchorInApartment, proxyStub,
                                         STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    if (thread) WaitForSingleObject(thread.Get(), INFINITE);
    return TRUE;
}

} // namespace

void AnchorHostInterfaces(const wchar_t* proxyStub)
{
    InitOnceExecuteOnce(&g_once, AnchorOnce, const_cast<wchar_t*>(proxyStub), nullptr);
}

} // namespace tqvst
