// Shared pieces of the test plug-ins: the entry point, a sane default record, text answers.
#pragma once

#include "aeffect.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

// Hosts look the plug-in up by this name; extern "C" and cdecl keep the export undecorated on x86.
extern "C" __declspec(dllexport) vst2::AEffect* __cdecl VSTPluginMain(vst2::HostCallback host);

namespace testplugin {

// processReplacing is present; the host never tests this bit, so the shared header leaves it out.
constexpr int32_t kFlagCanReplacing = 0x10;

// Hosts hand out text buffers of at least this many bytes, terminator included.
constexpr std::size_t kTextCapacity = 64;

constexpr int32_t fourcc(const char (&id)[5])
{
    return static_cast<int32_t>(uint32_t(uint8_t(id[0])) << 24 | uint32_t(uint8_t(id[1])) << 16 |
                                uint32_t(uint8_t(id[2])) << 8 | uint32_t(uint8_t(id[3])));
}

// Copies text into a host's buffer, cut to fit; answers 1 as plug-ins do for a name.
inline intptr_t put_text(void* buffer, std::string_view text)
{
    if (!buffer) return 0;
    auto* out = static_cast<char*>(buffer);
    const std::size_t length = std::min(text.size(), kTextCapacity - 1);
    std::memcpy(out, text.data(), length);
    out[length] = 0;
    return 1;
}

// Copies a host's text into one of our buffers, cut to fit.
template <std::size_t N>
void get_text(char (&out)[N], const void* text)
{
    const std::string_view in = text ? static_cast<const char*>(text) : "";
    const std::size_t length = std::min(in.size(), N - 1);
    std::memcpy(out, in.data(), length);
    out[length] = 0;
}

// The three names a host asks every plug-in for.
struct Names
{
    const char* effect;
    const char* vendor;
    const char* product;
};

// The text for a name question, or null when the opcode asks something else.
inline const char* name_for(int32_t opcode, const Names& names)
{
    switch (opcode)
    {
    case vst2::effGetEffectName:
        return names.effect;
    case vst2::effGetVendorString:
        return names.vendor;
    case vst2::effGetProductString:
        return names.product;
    default:
        return nullptr;
    }
}

// Writes through a null pointer the compiler cannot see, so the fault is a real access violation
// rather than a trap instruction put in its place.
inline void write_null()
{
    volatile int* volatile target = nullptr;
    *target = 1;
}

inline void __cdecl ignore_parameter(vst2::AEffect*, int32_t, float)
{
}

inline float __cdecl zero_parameter(vst2::AEffect*, int32_t)
{
    return 0.0f;
}

// Copies each input to its output; memmove because hosts may pass the same buffer for both.
inline void __cdecl pass_through(vst2::AEffect* effect, float** inputs, float** outputs,
                                 int32_t frames)
{
    const int32_t channels = std::min(effect->numInputs, effect->numOutputs);
    for (int32_t channel = 0; channel < channels; ++channel)
        std::memmove(outputs[channel], inputs[channel], sizeof(float) * std::size_t(frames));
}

// A record a host can drive all the way: stereo pass-through, no parameters, no programs.
inline vst2::AEffect make_effect(vst2::DispatcherProc dispatcher, int32_t uniqueID)
{
    vst2::AEffect effect{};
    effect.magic = vst2::kEffectMagic;
    effect.dispatcher = dispatcher;
    effect.setParameter = ignore_parameter;
    effect.getParameter = zero_parameter;
    effect.numInputs = 2;
    effect.numOutputs = 2;
    effect.flags = kFlagCanReplacing;
    effect.uniqueID = uniqueID;
    effect.version = 1;
    effect.processReplacing = pass_through;
    return effect;
}

// Dispatcher answers of a plug-in whose whole state is a heap record: its names, the record freed
// on effClose, 0 for anything else.
inline intptr_t dispatch_plain(vst2::AEffect* effect, int32_t opcode, void* ptr, const Names& names)
{
    if (opcode == vst2::effClose)
    {
        delete effect;
        return 0;
    }
    if (const char* text = name_for(opcode, names)) return put_text(ptr, text);
    return 0;
}

} // namespace testplugin
