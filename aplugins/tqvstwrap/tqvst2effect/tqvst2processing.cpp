// VST2 effect: the audio path. Not available yet: every operation answers E_NOTIMPL, so a host
// can tell an unsupported call from a failed one.
#include "tqvst2effect.h"

HRESULT STDMETHODCALLTYPE CTqVstEffect::Suspend(INT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVstEffect::Resume(INT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVstEffect::SetSampleType(UINT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVstEffect::SetChannelCount(INT32)
{
    return E_NOTIMPL;
}
HRESULT STDMETHODCALLTYPE CTqVstEffect::Process(BYTE*, UINT32, BYTE*, INT32, UINT32, UINT32)
{
    return E_NOTIMPL;
}
// Accumulating processing is obsolete; hosts always use Process.
HRESULT STDMETHODCALLTYPE CTqVstEffect::ProcessReplace()
{
    return E_NOTIMPL;
}
