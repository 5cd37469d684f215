// Making effect objects for files, and reading a plug-in's facts through a short-lived object.
#pragma once

#include "tqvst.h"

namespace tqvst {

// Characters in each of the name, vendor and product buffers a load fills.
constexpr UINT32 kFactCapacity = 64;

// One load with its fact buffers. A single process-wide block: loads come one at a time.
struct EffectLoadRequest
{
    HRESULT result;
    UINT32 uniqueId;
    const WCHAR* path;
    WCHAR* name;
    WCHAR* vendor;
    WCHAR* product;
    TqVstEffectInfo* info;
};

// Picks the implementation by the file's extension (".vst3" or a VST2 DLL) and loads it. Null
// when the object's memory cannot be had; *result is then left as it was.
ITqVstEffect* OpenEffectObject(const WCHAR* path, UINT32 uniqueId, HRESULT* result);

// Loads the plug-in of the request, fills the request's buffers and releases it again.
void ReadEffectFacts(EffectLoadRequest& request);

HRESULT GetEffectInfoForFile(const WCHAR* path, UINT32 uniqueId, WCHAR* name, WCHAR* vendor,
                             WCHAR* product, TqVstEffectInfo* info, UINT32 timeoutMs);
HRESULT CreateEffect(const WCHAR* path, UINT32 uniqueId, REFIID riid, void** object);

} // namespace tqvst
