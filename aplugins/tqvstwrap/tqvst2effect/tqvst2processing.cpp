// VST2 effect: the audio path between the host's interleaved blocks and the plug-in's float
// planes, and the state changes around it.
#include "tqvst2effect.h"

#include "pluginexceptionfilter.h"
#include "speakerarrangement.h"
#include "tqchannels.h"
#include "tqinterleave.h"

#include <algorithm>
#include <cstring>

using tqvst::CallPlugin;

HRESULT STDMETHODCALLTYPE CTqVstEffect::Suspend(INT32 full)
{
    HRESULT hr = S_FALSE;
    if (m_state & kStateProcessing)
    {
        Dispatch(vst2::effStopProcess, 0, 0, nullptr, 0.0f);
        m_state &= ~kStateProcessing;
        hr = S_OK;
    }
    if (full && (m_state & kStateMainsOn))
    {
        Dispatch(vst2::effMainsChanged, 0, 0, nullptr, 0.0f);
        m_state &= ~kStateMainsOn;
        hr = S_OK;
    }
    return hr;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::Resume(INT32 force)
{
    HRESULT hr = S_FALSE;
    if (force || !(m_state & kStateMainsOn))
    {
        Dispatch(vst2::effMainsChanged, 0, 1, nullptr, 0.0f);
        hr = S_OK;
    }
    if ((m_state & kStateProcessing) && (m_state & kStateMainsOn)) return hr;
    // The mains flag is only set here, on the way into processing: hosts rely on a second
    // Resume without force doing nothing at all.
    Dispatch(vst2::effStartProcess, 0, 0, nullptr, 0.0f);
    m_state |= kStateProcessing | kStateMainsOn;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::SetSampleType(UINT32 sampleType)
{
    m_hostSampleType = static_cast<TQSAMPLETYPE>(sampleType);
    m_pluginSampleType = TQSAMPLE_FLOAT32;
    m_copyIn = TqAudio_GetCopyChannelsFunction2(m_pluginSampleType, m_hostSampleType);
    m_copyOut = TqAudio_GetCopyChannelsFunction2(m_hostSampleType, m_pluginSampleType);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::SetChannelCount(INT32 channels)
{
    if (channels < 0) return E_INVALIDARG;
    vst2::SpeakerArrangementPtr arrangement = vst2::MakeSpeakerArrangement(channels);
    if (!arrangement) return E_OUTOFMEMORY;
    // Sent whatever the mains flag says, and the flag is left as it was.
    Dispatch(vst2::effMainsChanged, 0, 0, nullptr, 0.0f);
    Dispatch(vst2::effSetSpeakerArrangement, 0, reinterpret_cast<intptr_t>(arrangement.get()),
             arrangement.get(), 0.0f);
    Dispatch(vst2::effMainsChanged, 0, 1, nullptr, 0.0f);
    return S_OK;
}

bool CTqVstEffect::EnsureBuffers(UINT32 frames, UINT32 sampleBytes)
{
    const uint64_t wanted = uint64_t(frames) * sampleBytes;
    if (wanted > INT32_MAX) return false;
    // A plug-in may change its channel counts; blocks of the old counts would be indexed past
    // their tables.
    const int32_t numInputs = std::max(m_effect->numInputs, 0);
    const int32_t numOutputs = std::max(m_effect->numOutputs, 0);
    if (!m_inputs.Table() || m_bufferBytes < static_cast<int32_t>(wanted) ||
        m_inputs.Channels() != numInputs || m_outputs.Channels() != numOutputs)
    {
        m_bufferBytes = 0;
        m_inputs.Free();
        m_outputs.Free();
        if (!m_inputs.Allocate(numInputs, frames, sampleBytes)) return false;
        if (!m_outputs.Allocate(numOutputs, frames, sampleBytes))
        {
            m_inputs.Free();
            return false;
        }
        m_bufferBytes = static_cast<int32_t>(wanted);
        return true;
    }
    // Clears as many bytes as one channel holds times the channel count, from the first
    // channel's start: with a stride of twice the capacity that is the lower half of the sample
    // area, and the upper half keeps what earlier blocks left there.
    m_inputs.ClearFromFirstChannel(size_t(m_bufferBytes) * size_t(m_inputs.Channels()));
    m_outputs.ClearFromFirstChannel(size_t(m_bufferBytes) * size_t(m_outputs.Channels()));
    return true;
}

bool CTqVstEffect::EnsureBuffers32(UINT32 frames)
{
    return EnsureBuffers(frames, sizeof(float));
}

bool CTqVstEffect::EnsureBuffers64(UINT32 frames)
{
    return EnsureBuffers(frames, sizeof(double));
}

void CTqVstEffect::PrepareInputBlock(const BYTE* input, UINT32 inputChannels, UINT32 frames)
{
    if (!input || inputChannels < 1) return;
    const int32_t numInputs = m_inputs.Channels();
    const int32_t numOutputs = m_outputs.Channels();
    const long count = static_cast<long>(frames);
    const size_t planeBytes = size_t(frames) * TqAudio_BytesFromSampleType(m_pluginSampleType);

    if (inputChannels == 1)
    {
        if (numInputs >= 1) m_copyIn(m_inputs.Channel(0), 1, 0, input, 1, 0, count);
        if (numInputs == 2 && (m_effect->flags & vst2::effFlagsCanMono))
            std::memcpy(m_inputs.Channel(1), m_inputs.Channel(0), planeBytes);
    }
    else if (inputChannels == 2 && numInputs == 2 && m_hostSampleType == m_pluginSampleType)
    {
        TqAudio_DeInterleaveStereo(m_inputs.Channel(0), m_inputs.Channel(1), input,
                                   m_hostSampleType, count);
    }
    else
    {
        const int32_t channels = std::min<int64_t>(numInputs, inputChannels);
        for (int32_t i = 0; i < channels; ++i)
            m_copyIn(m_inputs.Channel(i), 1, 0, input, inputChannels, static_cast<unsigned long>(i),
                     count);
    }

    // Outputs start as the inputs, so a channel the plug-in leaves alone passes the sound on.
    const int32_t seeded = std::min(numOutputs, numInputs);
    for (int32_t i = 0; i < seeded; ++i)
        std::memcpy(m_outputs.Channel(i), m_inputs.Channel(i), planeBytes);
}

void CTqVstEffect::DeliverOutputBlock(BYTE* output, INT32 outputChannels, UINT32 frames)
{
    if (!output || outputChannels < 1) return;
    const long count = static_cast<long>(frames);
    // The fast path is chosen on the plug-in's input count, not its output count, as hosts have
    // always seen it; the second output must exist all the same.
    if (m_hostSampleType == m_pluginSampleType && m_effect->numInputs == 2 &&
        m_outputs.Channels() >= 2 && outputChannels == 2)
    {
        TqAudio_InterleaveStereo(output, m_outputs.Channel(0), m_outputs.Channel(1),
                                 m_hostSampleType, count);
        return;
    }
    const UINT stride = static_cast<UINT>(outputChannels);
    for (UINT i = 0; i < stride; ++i)
    {
        if (static_cast<int32_t>(i) < m_outputs.Channels())
            m_copyOut(output, stride, i, m_outputs.Channel(static_cast<int32_t>(i)), 1, 0, count);
        else
            TqAudio_MuteChannel(output, m_hostSampleType, stride, i, count);
    }
}

HRESULT STDMETHODCALLTYPE CTqVstEffect::Process(BYTE* input, UINT32 inputChannels, BYTE* output,
                                                INT32 outputChannels, UINT32 frames,
                                                UINT32 bytesPerSample)
{
    if (bytesPerSample != TqAudio_BytesFromSampleType(m_hostSampleType)) return E_INVALIDARG;
    vst2::AEffect* effect = m_effect;
    if (!effect || IsUnselectedShell()) return TQVST_E_NOSELECTION;
    // A host that keeps the default type may skip SetSampleType; one that set a type the copy
    // tables do not know gets an error instead of a null routine.
    if (!m_copyIn || !m_copyOut) SetSampleType(m_hostSampleType);
    if (!m_copyIn || !m_copyOut) return E_INVALIDARG;
    if (frames > INT32_MAX) return E_INVALIDARG;

    const bool sized =
        m_pluginSampleType == TQSAMPLE_FLOAT64 ? EnsureBuffers64(frames) : EnsureBuffers32(frames);
    if (!sized) return E_OUTOFMEMORY;
    PrepareInputBlock(input, inputChannels, frames);
    float** inputs = m_inputs.Table();
    float** outputs = m_outputs.Table();
    const int32_t count = static_cast<int32_t>(frames);
    // A fault is swallowed: the outputs stand as the plug-in left them, at worst the seeded input.
    CallPlugin([&] { effect->processReplacing(effect, inputs, outputs, count); });
    DeliverOutputBlock(output, outputChannels, frames);
    return S_OK;
}

// Accumulating processing is obsolete; hosts always use Process.
HRESULT STDMETHODCALLTYPE CTqVstEffect::ProcessReplace()
{
    return E_NOTIMPL;
}
