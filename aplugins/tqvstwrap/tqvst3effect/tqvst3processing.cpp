// VST3 effect: the audio path between the host's interleaved blocks and the processor's planar
// float buses, the processor's setup and start, and the parameter changes around each block.
#include "tqvst3effect.h"

#include "tqchannels.h"
#include "tqinterleave.h"
#include "vst3componenthandler.h"
#include "vst3speakerarrangement.h"

#include <mmsystem.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

using tqvst::CallPlugin;
using namespace vst3;

namespace {

// 120 beats per minute, in the host's ten-thousandths.
constexpr INT32 kDefaultTempo = 1200000;

// The channel buffers of the main bus of one direction, and how many of them the copies may use:
// no more than the plug-in reported and no more than the block holds.
struct MainBus
{
    Sample32** channels = nullptr;
    int32 count = 0;
};

MainBus MainBusOf(AudioBusBuffers* buses, int32 busCount, int32 index, int32 reported)
{
    if (!buses || index < 0 || index >= busCount) return {};
    return {buses[index].channelBuffers32, std::min(reported, buses[index].numChannels)};
}

} // namespace

HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetSampleRate(double rate)
{
    if (static_cast<double>(m_sampleRate) == rate) return S_FALSE;
    m_sampleRate = static_cast<float>(rate);
    RestartProcessing(false);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetSampleType(UINT32 sampleType)
{
    m_hostSampleType = static_cast<TQSAMPLETYPE>(sampleType);
    m_plugSampleType = TQSAMPLE_FLOAT32;
    m_copyIn = TqAudio_GetCopyChannelsFunction2(m_plugSampleType, m_hostSampleType);
    m_copyOut = TqAudio_GetCopyChannelsFunction2(m_hostSampleType, m_plugSampleType);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetBlockSize(INT32 frames)
{
    if (frames == m_blockSize) return S_FALSE;
    if (frames < 1) return E_INVALIDARG;
    m_blockSize = frames;
    RestartProcessing(true);
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::SetChannelCount(INT32 channels)
{
    if (m_busLayout.mainInputChannels == channels && m_busLayout.mainOutputChannels == channels)
        return S_OK;
    if (!m_handler || !m_processor || !m_component) return TQVST_E_NOSELECTION;
    IComponent* component = m_component.Get();
    IAudioProcessor* processor = m_processor.Get();

    // Every bus keeps its arrangement but the two main buses.
    std::vector<SpeakerArrangement> inputs, outputs;
    for (BusDirection direction : {kInput, kOutput})
    {
        int32 count = 0;
        if (!CallPlugin([&] { count = component->getBusCount(kAudio, direction); })) return S_FALSE;
        std::vector<SpeakerArrangement>& arrangements = direction == kInput ? inputs : outputs;
        arrangements.assign(std::max(count, 0), 0);
        for (int32 i = 0; i < count; ++i)
        {
            tresult result = kResultFalse;
            if (!CallPlugin([&] {
                    result = processor->getBusArrangement(direction, i, arrangements[i]);
                }) ||
                result != kResultOk)
                return S_FALSE;
        }
    }
    SpeakerArrangement wanted = 0;
    if (!tqvst::SpeakerArrangementForChannels(channels, &wanted)) return S_FALSE;
    const int32 mainIn = m_busLayout.mainInputIndex;
    const int32 mainOut = m_busLayout.mainOutputIndex;
    if (mainIn >= 0 && mainIn < static_cast<int32>(inputs.size())) inputs[mainIn] = wanted;
    if (mainOut >= 0 && mainOut < static_cast<int32>(outputs.size())) outputs[mainOut] = wanted;
    tresult result = kResultFalse;
    // The processor is not stopped for this: plug-ins take arrangements while active.
    if (!CallPlugin([&] {
            result =
                processor->setBusArrangements(inputs.data(), static_cast<int32>(inputs.size()),
                                              outputs.data(), static_cast<int32>(outputs.size()));
        }) ||
        result != kResultOk)
        return S_FALSE;

    // What the plug-in made of the request counts, not what was asked.
    BusInfo inputInfo = {}, outputInfo = {};
    tresult inputResult = kResultFalse, outputResult = kResultFalse;
    if (!CallPlugin([&] {
            inputResult = component->getBusInfo(kAudio, kInput, mainIn, inputInfo);
            outputResult = component->getBusInfo(kAudio, kOutput, mainOut, outputInfo);
        }) ||
        inputResult != kResultOk || outputResult != kResultOk)
        return S_FALSE;
    const bool changed = inputInfo.channelCount != m_busLayout.mainInputChannels ||
                         outputInfo.channelCount != m_busLayout.mainOutputChannels;
    m_busLayout.mainInputChannels = inputInfo.channelCount;
    m_busLayout.mainOutputChannels = outputInfo.channelCount;
    if (changed) RestartProcessing(true);
    return S_OK;
}

bool CTqVst3Effect::SetupProcessing()
{
    IAudioProcessor* processor = m_processor.Get();
    tresult result = kResultFalse;
    if (!CallPlugin([&] { result = processor->canProcessSampleSize(kSample32); }) ||
        result != kResultOk)
        return false;
    ProcessSetup setup = {kRealtime, kSample32, m_blockSize, static_cast<double>(m_sampleRate)};
    return CallPlugin([&] { result = processor->setupProcessing(setup); }) && result == kResultOk;
}

// Processing goes off before the component goes inactive, and the component is active again
// before processing goes on.
void CTqVst3Effect::RestartProcessing(bool dropBuffers)
{
    if (!m_running) return;
    IAudioProcessor* processor = m_processor.Get();
    IComponent* component = m_component.Get();
    CallPlugin([&] { processor->setProcessing(false); });
    CallPlugin([&] { component->setActive(false); });
    m_running = false;
    SetupProcessing();
    // The next block then allocates for the new size.
    if (dropBuffers) m_handler->ProcessData().unprepare();
    CallPlugin([&] { component->setActive(true); });
    CallPlugin([&] { processor->setProcessing(true); });
    m_running = true;
}

// Runs once in the life of the object: Suspend and Resume do not touch it.
HRESULT CTqVst3Effect::StartProcessing()
{
    // Not started: the next block tries again.
    if (!SetupProcessing()) return S_FALSE;
    m_started = true;
    m_framesDone = 0;
    IComponent* component = m_component.Get();
    tresult result = kResultFalse;
    if (!CallPlugin([&] { result = component->setActive(true); })) return TQVST_E_PLUGINFAULT;
    // Started but not running: later blocks go straight on to process.
    if (result != kResultOk) return E_FAIL;
    IAudioProcessor* processor = m_processor.Get();
    CallPlugin([&] { processor->setProcessing(true); });
    m_running = true;
    return S_OK;
}

void CTqVst3Effect::PrepareProcessContext()
{
    INT32 tempo = kDefaultTempo;
    // The host's answer code is not looked at; a master that fails leaves the default.
    m_master.Call([&](ITqVstMaster* master) { return master->GetTempoAt(0, &tempo); });
    ProcessContext& context = m_handler->ProcessContext();
    context.state = ProcessContext::kTempoValid;
    context.tempo = tempo / 10000.0;
    context.sampleRate = m_sampleRate;
    context.projectTimeSamples = m_framesDone;
}

void CTqVst3Effect::PrepareParameterChanges()
{
    tqvst::Vst3ComponentHandler& handler = *m_handler;
    ParameterChanges& input = handler.InputChanges();
    // The table keeps the newest value of each parameter even where the ring dropped changes.
    // It is only looked at when the ring brought something.
    if (handler.ToProcessor().transferChangesTo(input) > 0)
    {
        std::vector<float>& pending = handler.PendingValues();
        for (size_t i = 0; i < pending.size(); ++i)
        {
            if (pending[i] < 0.0f) continue;
            int32 queueIndex = 0;
            if (IParamValueQueue* queue =
                    input.addParameterData(static_cast<ParamID>(i), queueIndex))
            {
                int32 pointIndex = 0;
                queue->addPoint(0, pending[i], pointIndex);
            }
            pending[i] = -1.0f;
        }
    }
    HostProcessData& data = handler.ProcessData();
    data.inputParameterChanges = &input;
    data.outputParameterChanges = &handler.OutputChanges();
    data.inputEvents = &handler.Events();
    data.outputEvents = nullptr;
    handler.OutputChanges().clearQueue();
}

void CTqVst3Effect::CopyInputBlock(const BYTE* input, UINT32 inputChannels, UINT32 frames)
{
    HostProcessData& data = m_handler->ProcessData();
    const MainBus in = MainBusOf(data.inputs, data.numInputs, m_busLayout.mainInputIndex,
                                 m_busLayout.mainInputChannels);
    const MainBus out = MainBusOf(data.outputs, data.numOutputs, m_busLayout.mainOutputIndex,
                                  m_busLayout.mainOutputChannels);
    // Without input the buses keep what they held.
    if (!input || inputChannels < 1) return;
    const long count = static_cast<long>(frames);
    if (inputChannels == 1)
    {
        // Only the first channel is fed; the others keep what they held.
        if (in.count >= 1) m_copyIn(in.channels[0], 1, 0, input, 1, 0, count);
    }
    else if (inputChannels == 2 && in.count == 2 && m_hostSampleType == m_plugSampleType)
    {
        TqAudio_DeInterleaveStereo(in.channels[0], in.channels[1], input, m_hostSampleType, count);
    }
    else
    {
        // Host channels beyond the plug-in's are dropped.
        for (int32 c = 0; c < in.count && static_cast<UINT32>(c) != inputChannels; ++c)
            m_copyIn(in.channels[c], 1, 0, input, inputChannels, static_cast<unsigned long>(c),
                     count);
    }
    // Outputs start as the inputs, so a plug-in that leaves a channel alone passes it on dry.
    for (int32 c = 0; c < out.count && c < in.count; ++c)
        std::memcpy(out.channels[c], in.channels[c], size_t(frames) * sizeof(Sample32));
}

void CTqVst3Effect::CopyOutputBlock(BYTE* output, INT32 outputChannels, UINT32 frames)
{
    if (!output || outputChannels < 1) return;
    HostProcessData& data = m_handler->ProcessData();
    const MainBus out = MainBusOf(data.outputs, data.numOutputs, m_busLayout.mainOutputIndex,
                                  m_busLayout.mainOutputChannels);
    const long count = static_cast<long>(frames);
    // The fast path is chosen on the main input's channel count, as hosts have always seen it;
    // the second output must exist all the same.
    if (m_hostSampleType == m_plugSampleType && m_busLayout.mainInputChannels == 2 &&
        outputChannels == 2 && out.count >= 2)
    {
        TqAudio_InterleaveStereo(output, out.channels[0], out.channels[1], m_hostSampleType, count);
        return;
    }
    const UINT stride = static_cast<UINT>(outputChannels);
    for (UINT c = 0; c < stride; ++c)
    {
        if (static_cast<int32>(c) < out.count)
            m_copyOut(output, stride, c, out.channels[c], 1, 0, count);
        else
            TqAudio_MuteChannel(output, m_hostSampleType, stride, c, count);
    }
}

void CTqVst3Effect::FinishBlock()
{
    m_handler->FromProcessor().transferChangesFrom(m_handler->OutputChanges());
    m_handler->InputChanges().clearQueue();
    m_handler->Events().clear();
}

HRESULT STDMETHODCALLTYPE CTqVst3Effect::Process(BYTE* input, UINT32 inputChannels, BYTE* output,
                                                 INT32 outputChannels, UINT32 frames,
                                                 UINT32 bytesPerSample)
{
    if (!m_handler || !m_processor || !m_component) return E_FAIL;
    if (bytesPerSample != TqAudio_BytesFromSampleType(m_hostSampleType)) return E_INVALIDARG;
    // A host that keeps the default type may skip SetSampleType; one that set a type the copy
    // tables do not know gets an error instead of a null routine.
    if (!m_copyIn || !m_copyOut) SetSampleType(m_hostSampleType);
    if (!m_copyIn || !m_copyOut) return E_INVALIDARG;
    if (frames > INT32_MAX) return E_INVALIDARG;
    // The buffers hold one block size; a longer block grows them rather than be written past
    // their end.
    if (static_cast<INT32>(frames) > m_blockSize) SetBlockSize(static_cast<INT32>(frames));
    m_lastProcessTime = timeGetTime();

    if (!m_started)
    {
        const HRESULT started = StartProcessing();
        if (started != S_OK) return started;
    }
    PrepareProcessContext();

    HostProcessData& data = m_handler->ProcessData();
    IComponent* component = m_component.Get();
    bool prepared = false;
    if (!CallPlugin([&] { prepared = data.prepare(*component, m_blockSize, kSample32); }))
        return TQVST_E_PLUGINFAULT;
    if (!prepared) return E_OUTOFMEMORY;
    data.numSamples = static_cast<int32>(frames);
    PrepareParameterChanges();
    CopyInputBlock(input, inputChannels, frames);

    IAudioProcessor* processor = m_processor.Get();
    tresult result = kResultFalse;
    // On failure the rest is skipped: the input changes stay queued for the next block.
    if (!CallPlugin([&] { result = processor->process(data); })) return TQVST_E_PLUGINFAULT;
    if (result != kResultOk) return E_FAIL;
    CopyOutputBlock(output, outputChannels, frames);
    FinishBlock();
    m_framesDone += frames;
    return S_OK;
}

// Accumulating processing does not exist on VST3.
HRESULT STDMETHODCALLTYPE CTqVst3Effect::ProcessReplace()
{
    return E_NOTIMPL;
}

// The block counts like any other: the start sequence runs if it has not, and the frame counter
// moves on by a block.
HRESULT CTqVst3Effect::FlushParametersToProcessor()
{
    const UINT32 bytes = TqAudio_BytesFromSampleType(m_hostSampleType);
    const UINT32 inputs = std::max(m_busLayout.mainInputChannels, 0);
    const UINT32 outputs = std::max(m_busLayout.mainOutputChannels, 0);
    const size_t frames = static_cast<size_t>(std::max(m_blockSize, 0));
    std::unique_ptr<BYTE[]> input(new (std::nothrow) BYTE[inputs * bytes * frames + 1]());
    std::unique_ptr<BYTE[]> output(new (std::nothrow) BYTE[outputs * bytes * frames + 1]);
    if (!input || !output) return E_OUTOFMEMORY;
    return Process(input.get(), inputs, output.get(), static_cast<INT32>(outputs),
                   static_cast<UINT32>(frames), bytes);
}
