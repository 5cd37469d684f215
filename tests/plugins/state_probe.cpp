// A stereo pass-through that remembers the mains, processing and speaker calls a host makes.
#include "state_probe_record.h"
#include "speakerarrangement.h"
#include "testplugin.h"

#include <algorithm>

namespace {

constexpr testplugin::Names kNames{"StateProbe", "tqvst", "tqvst test state probe"};

state_probe::Record g_record;

void Remember(const vst2::VstSpeakerArrangement* arrangement, intptr_t value)
{
    g_record.arrangementType = arrangement->type;
    g_record.numChannels = arrangement->numChannels;
    g_record.sameInBoth = value == reinterpret_cast<intptr_t>(arrangement);
    const int count = std::min(arrangement->numChannels, state_probe::kMaxSpeakers);
    const vst2::VstSpeakerProperties* speakers = arrangement->speakers;
    for (int i = 0; i < count; ++i)
    {
        state_probe::Speaker& out = g_record.speakers[i];
        out.azimuth = speakers[i].azimuth;
        out.elevation = speakers[i].elevation;
        out.radius = speakers[i].radius;
        std::memcpy(out.name, speakers[i].name, sizeof(out.name));
        out.type = speakers[i].type;
    }
}

intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t value, void* ptr,
                          float)
{
    switch (opcode)
    {
    case vst2::effSetSpeakerArrangement:
        if (ptr) Remember(static_cast<vst2::VstSpeakerArrangement*>(ptr), value);
        [[fallthrough]];
    case vst2::effMainsChanged:
    case vst2::effStartProcess:
    case vst2::effStopProcess:
        if (g_record.eventCount < state_probe::kMaxEvents)
            g_record.events[g_record.eventCount++] = {opcode, value};
        return 1;
    }
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

} // namespace

extern "C" __declspec(dllexport) void __cdecl TqStateProbeRead(state_probe::Record* record)
{
    *record = g_record;
    g_record.eventCount = 0;
}

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    g_record = {};
    return new vst2::AEffect(testplugin::make_effect(dispatch, testplugin::fourcc("TqSp")));
}
