// The audio processor: bus arrangements, setup and the per-block process call with its records.
#pragma once

#include "ivstcomponent.h"
#include "ivstevents.h"
#include "ivstparameterchanges.h"
#include "ivstprocesscontext.h"

namespace vst3 {

enum SymbolicSampleSizes : int32
{
    kSample32 = 0,
    kSample64,
};

enum ProcessModes : int32
{
    kRealtime = 0,
    kPrefetch,
    kOffline,
};

enum ComponentFlags : uint32
{
    kDistributable = 1 << 0,
    kSimpleModeSupported = 1 << 1,
};

constexpr uint32 kNoTail = 0;
constexpr uint32 kInfiniteTail = 0xFFFFFFFF;

VST3_PACK_PUSH

struct ProcessSetup
{
    int32 processMode;
    int32 symbolicSampleSize;
    int32 maxSamplesPerBlock;
    SampleRate sampleRate;
};

struct AudioBusBuffers
{
    int32 numChannels;
    uint64 silenceFlags;
    union
    {
        Sample32** channelBuffers32;
        Sample64** channelBuffers64;
    };
};

struct ProcessData
{
    int32 processMode;
    int32 symbolicSampleSize;
    int32 numSamples;
    int32 numInputs;
    int32 numOutputs;
    AudioBusBuffers* inputs;
    AudioBusBuffers* outputs;
    IParameterChanges* inputParameterChanges;
    IParameterChanges* outputParameterChanges;
    IEventList* inputEvents;
    IEventList* outputEvents;
    ProcessContext* processContext;
};

VST3_PACK_POP

class IAudioProcessor : public FUnknown
{
public:
    virtual tresult PLUGIN_API setBusArrangements(SpeakerArrangement* inputs, int32 numIns,
                                                  SpeakerArrangement* outputs, int32 numOuts) = 0;
    virtual tresult PLUGIN_API getBusArrangement(BusDirection dir, int32 index,
                                                 SpeakerArrangement& arr) = 0;
    virtual tresult PLUGIN_API canProcessSampleSize(int32 symbolicSampleSize) = 0;
    virtual uint32 PLUGIN_API getLatencySamples() = 0;
    virtual tresult PLUGIN_API setupProcessing(ProcessSetup& setup) = 0;
    virtual tresult PLUGIN_API setProcessing(TBool state) = 0;
    virtual tresult PLUGIN_API process(ProcessData& data) = 0;
    virtual uint32 PLUGIN_API getTailSamples() = 0;

    static constexpr FUID iid{0x42043F99, 0xB7DA453C, 0xA569E79D, 0x9AAEC33D};
};

} // namespace vst3
