// VST2 effect: preset and bank files. Not available yet: every operation answers E_NOTIMPL.
#include "tqvst2effect.h"

HRESULT STDMETHODCALLTYPE CTqVstEffect::SavePreset(IStream*, UINT32* bytes)
{
    if (bytes) *bytes = 0;
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVstEffect::LoadPreset(IStream*)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVstEffect::SaveBank(IStream*, UINT32* bytes)
{
    if (bytes) *bytes = 0;
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVstEffect::LoadBank(IStream*, UINT32)
{
    return E_NOTIMPL;
}
