// VST3 effect: preset images and the user's preset folders. Not served yet.
#include "tqvst3effect.h"

HRESULT STDMETHODCALLTYPE CTqVst3Effect::SavePreset(IStream*, UINT32*)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::LoadPreset(IStream*)
{
    return E_NOTIMPL;
}

// There are no banks on VST3.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::SaveBank(IStream*, UINT32*)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::LoadBank(IStream*, UINT32)
{
    return E_NOTIMPL;
}

HRESULT CTqVst3Effect::ApplyPresetStream(vst3::IBStream*)
{
    return E_NOTIMPL;
}

int CTqVst3Effect::ScanPresetFolder(const wchar_t*, bool)
{
    return 0;
}
