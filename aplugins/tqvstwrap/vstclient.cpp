// Client-side activation: one server per location and host process, started on demand and
// reached under a class id that only the starting host knows.
#include "vstclient.h"

#include "clientfactory.h"
#include "comptr.h"
#include "effectfactory.h"
#include "errorreport.h"
#include "hostanchor.h"
#include "pluginexceptionfilter.h"
#include "procaddress.h"
#include "sharedeffect.h"
#include "tqvst2effect/hostcallback.h"
#include "machinetype.h"
#include "uniquehandle.h"

#include <shlwapi.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <new>
#include <string>

namespace {

struct LocationState
{
    CLSID clsid;
    DWORD processId;
    volatile LONG useCount;
};

// The parts of a proxy DLL's file list that registration reads. The platform's declaration of it
// does not compile as C++.
struct ProxyStubVtblHeader
{
    const IID* piid;
};
struct ProxyFileList
{
    const void* const* proxyVtbls;
    const ProxyStubVtblHeader* const* stubVtbls;
    const void* names;
    const void* delegatedIids;
    const void* iidLookup;
    unsigned short tableSize;
    unsigned short tableVersion;
};

LocationState g_locations[3];
wchar_t g_proxyStubPath[MAX_PATH];

constexpr DWORD kServerContext =
    CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
static_assert(kServerContext == 23);
constexpr DWORD kServerStartTimeoutMs = 5000;
// Once a server has signalled, its class is registered: the first request normally gets it. A
// class that a dead server left behind answers at once with an RPC error, so the wait is spent
// only on a machine too loaded to answer; on two cores at a load of twelve, one second was not
// always enough.
constexpr DWORD kServerReachTimeoutMs = 3000;
constexpr int kServerStartAttempts = 3;

#ifdef _WIN64
constexpr wchar_t kProxyStubFile[] = L"TqVstProxyStubx64.dll";
#else
constexpr wchar_t kProxyStubFile[] = L"TqVstProxyStubx86.dll";
#endif

HMODULE ClientModule()
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                           GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&ClientModule), &module);
    return module;
}

void ClientFolder(wchar_t (&folder)[MAX_PATH])
{
    GetModuleFileNameW(ClientModule(), folder, MAX_PATH);
    folder[MAX_PATH - 1] = 0;
    PathRemoveFileSpecW(folder);
}

// CoGetClassObject that hands out the object only on success: Wine can leave a stale value in
// the out pointer when the call fails, which must never be released.
template <class T>
HRESULT GetClassObject(const CLSID& clsid, DWORD context, REFIID riid, tq::ComPtr<T>& object)
{
    void* got = nullptr;
    const HRESULT hr = CoGetClassObject(clsid, context, nullptr, riid, &got);
    object = SUCCEEDED(hr) ? tq::ComPtr<T>::Attach(static_cast<T*>(got)) : tq::ComPtr<T>();
    return hr;
}

void EnsureProxyStubRegistered()
{
    if (!g_proxyStubPath[0])
    {
        ClientFolder(g_proxyStubPath);
        PathAppendW(g_proxyStubPath, kProxyStubFile);
    }
    // The proxy/stub's class object is registered per apartment: each host apartment needs it once.
    CLSID proxyClass;
    tq::ComPtr<IUnknown> registered;
    if (SUCCEEDED(CoGetPSClsid(IID_ITqVstEffectFactory, &proxyClass)) &&
        SUCCEEDED(GetClassObject(proxyClass, CLSCTX_INPROC_SERVER, IID_IUnknown, registered)))
        return;
    RegisterVstProxyStub(g_proxyStubPath, nullptr);
}

HRESULT GetInProcessFactory(REFIID riid, void** object, const wchar_t* vendor,
                            const wchar_t* product)
{
    SetHostStrings(vendor, product);
    auto factory = tq::ComPtr<ITqVstEffectFactory>::Attach(new (std::nothrow) CTqVstEffectFactory);
    if (!factory) return E_OUTOFMEMORY;
    return factory->QueryInterface(riid, object);
}

// The server's factory as hosts get it: its effects send their blocks through shared memory.
// An object that is no factory goes out as it is.
HRESULT WrapServerFactory(IUnknown* made, REFIID riid, void** object)
{
    tq::ComPtr<ITqVstEffectFactory> server;
    if (FAILED(made->QueryInterface(IID_ITqVstEffectFactory, server.PutVoid())))
        return made->QueryInterface(riid, object);
    auto* wrapper = new (std::nothrow) tqvst::CTqVstClientFactory(server.Get());
    if (!wrapper) return E_OUTOFMEMORY;
    auto factory = tq::ComPtr<ITqVstEffectFactory>::Attach(wrapper);
    const HRESULT hr = factory->QueryInterface(riid, object);
    return FAILED(hr) ? made->QueryInterface(riid, object) : hr;
}

std::wstring ServerCommandLine(int location, const wchar_t* eventName, const wchar_t* vendor,
                               const wchar_t* product)
{
    wchar_t server[MAX_PATH];
    ClientFolder(server);
    if (location == kTqVstServer32) PathAppendW(server, L"x86");
    PathAppendW(server, L"tqvstserver.exe");
    // Values are written as they are, quotation marks included: the server's switch rules are
    // the only contract.
    std::wstring line = server;
    line += L" -Event ";
    line += eventName;
    if (vendor) line.append(L" -Vendor \"").append(vendor).append(L"\"");
    if (product) line.append(L" -Product \"").append(product).append(L"\"");
    return line;
}

// Asks for the started server's class object until it can be had or `budgetMs` has passed since
// `fromTick`. The server registers it before it signals, but other processes learn of
// registrations only through a service process of the platform's own: a class not known there
// yet is asked for again, as long as the server lives.
HRESULT ReachServer(const CLSID& clsid, HANDLE process, DWORD fromTick, DWORD budgetMs,
                    tq::ComPtr<IClassFactory>& classObject)
{
    DWORD pauseMs = 5;
    for (;;)
    {
        const HRESULT hr = GetClassObject(clsid, kServerContext, IID_IClassFactory, classObject);
        if (hr != REGDB_E_CLASSNOTREG) return hr;
        const DWORD elapsed = GetTickCount() - fromTick;
        if (elapsed >= budgetMs) return hr;
        if (WaitForSingleObject(process, std::min(pauseMs, budgetMs - elapsed)) == WAIT_OBJECT_0)
            return hr;
        pauseMs = std::min<DWORD>(pauseMs * 2, 100);
    }
}

enum class StartOutcome
{
    Reached,     // the class object is in hand
    NotReady,    // the server died or did not signal in time
    Unreachable, // the server signalled, but its class could not be had
};

// Starts the location's server once and waits until its class object can be had. A server that
// cannot be reached is ended, since no host would ever hold it, and the location is left without
// one.
StartOutcome StartServerOnce(int location, const std::wstring& line, HANDLE ready,
                             tq::ComPtr<IClassFactory>& classObject, HRESULT& hr)
{
    STARTUPINFOW startup = {};
    PROCESS_INFORMATION started = {};
    std::wstring commandLine = line;
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                        nullptr, nullptr, &startup, &started))
        return StartOutcome::NotReady;
    tq::UniqueHandle process(started.hProcess);
    tq::UniqueHandle thread(started.hThread);

    LocationState& state = g_locations[location];
    state.processId = started.dwProcessId;
    state.clsid = ServerClassId(started.dwProcessId);
    // The crash monitor must know the process before its first instruction runs.
    ErrorReport_StartMonitoringProcess(started.dwProcessId, ClientModule());
    ResumeThread(thread.Get());

    // A server that dies before it is ready ends the wait at once instead of after the timeout.
    const HANDLE waitFor[] = {ready, process.Get()};
    StartOutcome outcome = StartOutcome::NotReady;
    if (WaitForMultipleObjects(2, waitFor, FALSE, kServerStartTimeoutMs) == WAIT_OBJECT_0)
    {
        const HRESULT reached = ReachServer(state.clsid, process.Get(), GetTickCount(),
                                            kServerReachTimeoutMs, classObject);
        if (SUCCEEDED(reached))
        {
            hr = reached;
            return StartOutcome::Reached;
        }
        if (reached != REGDB_E_CLASSNOTREG) hr = reached;
        outcome = StartOutcome::Unreachable;
    }
    ErrorReport_StopMonitoringProcess(started.dwProcessId);
    TerminateProcess(process.Get(), 1);
    state.processId = 0;
    state.clsid = CLSID{};
    return outcome;
}

// Starts the location's server. The server's class id comes from its process id, and process ids
// are reused: where the platform's registration service still holds the class of a server that
// died without revoking it (a crash, or a server ended as unreachable), the class of a new server
// with the same id can never be had. Such a server is replaced by a fresh one, which gets another
// process id. A server that was not ready in time leaves the caller the result of its first
// attempt.
HRESULT StartServer(int location, const wchar_t* vendor, const wchar_t* product,
                    tq::ComPtr<IClassFactory>& classObject, HRESULT firstAttempt)
{
    wchar_t eventName[64];
    _snwprintf(eventName, std::size(eventName), L"RkVstServerEvent_%d",
               static_cast<int>(GetCurrentProcessId()));
    eventName[std::size(eventName) - 1] = 0;
    tq::UniqueHandle ready(CreateEventW(nullptr, FALSE, FALSE, eventName));
    if (!ready) return firstAttempt;

    const std::wstring line = ServerCommandLine(location, eventName, vendor, product);
    HRESULT hr = firstAttempt;
    for (int attempt = 0; attempt < kServerStartAttempts; ++attempt)
    {
        if (StartServerOnce(location, line, ready.Get(), classObject, hr) !=
            StartOutcome::Unreachable)
            break;
    }
    return hr;
}

} // namespace

extern "C" HRESULT GetVstFactory(int location, REFIID riid, void** object, const wchar_t* vendor,
                                 const wchar_t* product, DWORD* serverProcessId, DWORD* useCount)
{
    if (serverProcessId) *serverProcessId = 0;
    if (useCount) *useCount = 0;
    if (!object) return E_POINTER;
    *object = nullptr;
    const bool plainProxy = (location & kTqVstPlainProxy) != 0;
    location &= ~kTqVstPlainProxy;
    if (location == kTqVstInProcess) return GetInProcessFactory(riid, object, vendor, product);
    if (location != kTqVstServer && location != kTqVstServer32) return E_INVALIDARG;

    EnsureProxyStubRegistered();
    tqvst::AnchorHostInterfaces(g_proxyStubPath);
    LocationState& state = g_locations[location];
    tq::ComPtr<IClassFactory> classObject;
    HRESULT hr = GetClassObject(state.clsid, kServerContext, IID_IClassFactory, classObject);
    if (FAILED(hr))
    {
        hr = StartServer(location, vendor, product, classObject, hr);
        if (FAILED(hr)) return hr;
    }
    tq::ComPtr<IUnknown> made;
    hr = classObject->CreateInstance(nullptr, riid, made.PutVoid());
    if (SUCCEEDED(hr))
        hr = plainProxy ? made->QueryInterface(riid, object)
                        : WrapServerFactory(made.Get(), riid, object);
    if (SUCCEEDED(hr))
    {
        const LONG count = InterlockedIncrement(&state.useCount);
        if (serverProcessId) *serverProcessId = state.processId;
        if (useCount) *useCount = static_cast<DWORD>(count);
    }
    return hr;
}

extern "C" HRESULT ReleaseVstFactory(int location, IUnknown* factory)
{
    if (!factory) return S_OK;
    location &= ~kTqVstPlainProxy;
    HRESULT hr = S_OK;
    const bool completed = tqvst::Guarded(
        [&] {
            if (location == kTqVstServer || location == kTqVstServer32)
            {
                LocationState& state = g_locations[location];
                // The last factory of a location retires its server: the next call starts anew.
                if (InterlockedDecrement(&state.useCount) == 0)
                {
                    hr = ErrorReport_StopMonitoringProcess(state.processId);
                    state.processId = 0;
                    state.clsid = CLSID{};
                }
            }
            factory->Release();
        },
        tqvst::PluginExceptionFilter);
    return completed ? hr : TQVST_E_PLUGINFAULT;
}

extern "C" HRESULT CreateEffectForFile(const wchar_t* path, UINT32 uniqueId, REFIID riid,
                                       void** object)
{
    if (!path || !object) return E_INVALIDARG;
    *object = nullptr;
#ifdef _WIN64
    constexpr WORD kOwnMachine = IMAGE_FILE_MACHINE_AMD64;
#else
    constexpr WORD kOwnMachine = IMAGE_FILE_MACHINE_I386;
#endif
    // A plug-in built for this process's machine loads here; any other goes to the 32-bit server.
    const int location =
        tqvst::ReadMachineType(path) == kOwnMachine ? kTqVstInProcess : kTqVstServer32;
    tq::ComPtr<ITqVstEffectFactory> factory;
    HRESULT hr = GetVstFactory(location, IID_ITqVstEffectFactory, factory.PutVoid(), nullptr,
                               nullptr, nullptr, nullptr);
    if (FAILED(hr)) return hr;
    hr = factory->CreateEffect(path, uniqueId, riid, object);
    ReleaseVstFactory(location, factory.Detach());
    return hr;
}

extern "C" HRESULT RegisterVstProxyStub(const wchar_t* path, DWORD* cookie)
{
    DWORD registration = 0;
    const auto finish = [&](HRESULT hr) {
        if (cookie) *cookie = registration;
        return hr;
    };
    HINSTANCE library = CoLoadLibrary(const_cast<LPOLESTR>(path), TRUE);
    if (!library) return finish(E_FAIL);

    using GetProxyDllInfoProc = void(STDAPICALLTYPE*)(const ProxyFileList***, const CLSID**);
    using GetClassObjectProc = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    auto getInfo = tq::GetProc<GetProxyDllInfoProc>(library, "GetProxyDllInfo");
    const ProxyFileList** files = nullptr;
    const CLSID* classId = nullptr;
    if (getInfo) getInfo(&files, &classId);
    auto getClassObject = tq::GetProc<GetClassObjectProc>(library, "DllGetClassObject");
    if (!files || !classId || !files[0] || files[0]->tableVersion != 2 || !getClassObject)
    {
        CoFreeLibrary(library);
        return finish(E_FAIL);
    }
    const CLSID proxyClass = *classId;
    tq::ComPtr<IUnknown> unknown;
    HRESULT hr = getClassObject(proxyClass, IID_IUnknown, unknown.PutVoid());
    if (SUCCEEDED(hr))
        hr = CoRegisterClassObject(proxyClass, unknown.Get(), CLSCTX_INPROC_SERVER,
                                   REGCLS_MULTIPLEUSE, &registration);
    if (SUCCEEDED(hr))
    {
        for (unsigned short i = 0; i < files[0]->tableSize; ++i)
        {
            hr = CoRegisterPSClsid(*files[0]->stubVtbls[i]->piid, proxyClass);
            if (FAILED(hr))
            {
                CoRevokeClassObject(registration);
                registration = 0;
                break;
            }
        }
    }
    if (FAILED(hr)) CoFreeLibrary(library);
    return finish(hr);
}

extern "C" void SetVstProcessTimeout(DWORD milliseconds)
{
    tqvst::SetSharedProcessTimeout(milliseconds);
}

extern "C" CLSID GetVstServerClassId(int location)
{
    if (location != kTqVstServer && location != kTqVstServer32) return CLSID{};
    return g_locations[location].clsid;
}
