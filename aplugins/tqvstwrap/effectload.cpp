// Loading plug-ins for the class object: choice of implementation, facts, creation.
#include "effectload.h"

#include "comptr.h"
#include "errorreport.h"
#include "loadworker.h"
#include "tqvst2effect/tqvst2effect.h"
#include "tqvst3effect.h"

#include <shlwapi.h>

#include <new>

namespace tqvst {
namespace {

// Files that look like plug-ins to a folder scan but must never be loaded.
constexpr const wchar_t* kExcludedFiles[] = {L"wnaspi32.dll"};

constexpr HRESULT kWrongMachineType = HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT);
static_assert(kWrongMachineType == static_cast<HRESULT>(0x800700C1));

EffectLoadRequest g_loadRequest;

bool IsExcluded(const WCHAR* path)
{
    const WCHAR* file = PathFindFileNameW(path);
    for (const wchar_t* excluded : kExcludedFiles)
        if (lstrcmpiW(file, excluded) == 0) return true;
    return false;
}

} // namespace

ITqVstEffect* OpenEffectObject(const WCHAR* path, UINT32 uniqueId, HRESULT* result)
{
    if (lstrcmpiW(PathFindExtensionW(path), L".vst3") == 0)
        return new (std::nothrow) CTqVst3Effect(path, uniqueId, result);
    return new (std::nothrow) CTqVstEffect(path, uniqueId, result);
}

void ReadEffectFacts(EffectLoadRequest& request)
{
    auto effect = tq::ComPtr<ITqVstEffect>::Attach(
        OpenEffectObject(request.path, request.uniqueId, &request.result));
    if (!effect)
    {
        request.result = E_OUTOFMEMORY;
        return;
    }
    // The result stays the load result: a shell (TQVST_S_SHELL) is read too, and what the reads
    // answer does not change it.
    if (request.result >= 0)
    {
        effect->GetEffectName(request.name, kFactCapacity);
        effect->GetVendorName(request.vendor, kFactCapacity);
        effect->GetProductName(request.product, kFactCapacity);
        effect->GetEffectInfo(request.info);
    }
    if (request.result == kWrongMachineType && request.info) request.info->state &= ~1u;
}

HRESULT GetEffectInfoForFile(const WCHAR* path, UINT32 uniqueId, WCHAR* name, WCHAR* vendor,
                             WCHAR* product, TqVstEffectInfo* info, UINT32 timeoutMs)
{
    // Hosts get clean buffers whatever happens below.
    for (WCHAR* text : {name, vendor, product})
        if (text) ZeroMemory(text, kFactCapacity * sizeof(WCHAR));
    if (info) *info = {};
    if (!path) return E_INVALIDARG;
    if (IsExcluded(path)) return E_INVALIDARG;
    // A timed call loads on the worker, which can be abandoned when the plug-in hangs. Its block
    // is its own: the wait lets other calls in, and none of them may redirect its answers.
    if (timeoutMs != 0 && timeoutMs != INFINITE)
    {
        EffectLoadRequest request = {S_OK, uniqueId, path, name, vendor, product, info};
        return RunOnLoadWorker(request, timeoutMs);
    }
    g_loadRequest = {S_OK, uniqueId, path, name, vendor, product, info};
    ErrorReport_StartTrapBypass();
    ReadEffectFacts(g_loadRequest);
    ErrorReport_EndTrapBypass();
    return g_loadRequest.result;
}

HRESULT CreateEffect(const WCHAR* path, UINT32 uniqueId, REFIID riid, void** object)
{
    if (!path || !object) return E_INVALIDARG;
    *object = nullptr;
    HRESULT hr = S_FALSE;
    auto effect = tq::ComPtr<ITqVstEffect>::Attach(OpenEffectObject(path, uniqueId, &hr));
    if (effect && hr >= 0)
    {
        const HRESULT query = effect->QueryInterface(riid, object);
        if (FAILED(query)) hr = query;
    }
    return hr;
}

} // namespace tqvst
