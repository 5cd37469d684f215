// The shared body of the program plug-ins: several programs of several parameters each, and a log
// of the program switches a host makes, which a test in the same process reads back.
#pragma once

#include "testplugin.h"

#include <cstdio>

namespace program_bank {

constexpr int32_t kPrograms = 3;
constexpr int32_t kParams = 4;

struct Bank
{
    vst2::AEffect effect; // first, so the record's address is the object's
    bool indexedNames;
    int32_t current = 0;
    float values[kPrograms][kParams] = {};
    char names[kPrograms][testplugin::kTextCapacity] = {};
};

// Every switch a host makes, as "b" (begin), "s<n>" (set) and "e" (end), space-separated.
inline char g_log[512];

inline void Log(const char* entry)
{
    const std::size_t used = std::strlen(g_log);
    std::snprintf(g_log + used, sizeof(g_log) - used, "%s%s", used ? " " : "", entry);
}

inline Bank& bank_of(vst2::AEffect* effect)
{
    return *reinterpret_cast<Bank*>(effect);
}

inline void __cdecl set_parameter(vst2::AEffect* effect, int32_t index, float value)
{
    Bank& bank = bank_of(effect);
    if (index >= 0 && index < kParams) bank.values[bank.current][index] = value;
}

inline float __cdecl get_parameter(vst2::AEffect* effect, int32_t index)
{
    Bank& bank = bank_of(effect);
    return index >= 0 && index < kParams ? bank.values[bank.current][index] : 0.0f;
}

inline intptr_t __cdecl dispatch(vst2::AEffect* effect, int32_t opcode, int32_t index,
                                 intptr_t value, void* ptr, float)
{
    Bank& bank = bank_of(effect);
    switch (opcode)
    {
    case vst2::effGetProgram:
        return bank.current;
    case vst2::effSetProgram:
    {
        char entry[16];
        std::snprintf(entry, sizeof entry, "s%d", static_cast<int>(value));
        Log(entry);
        if (value >= 0 && value < kPrograms) bank.current = static_cast<int32_t>(value);
        return 0;
    }
    case vst2::effBeginSetProgram:
        Log("b");
        return 0;
    case vst2::effEndSetProgram:
        Log("e");
        return 0;
    case vst2::effGetProgramName:
        return testplugin::put_text(ptr, bank.names[bank.current]);
    case vst2::effSetProgramName:
        testplugin::get_text(bank.names[bank.current], ptr);
        return 0;
    case vst2::effGetProgramNameIndexed:
        if (!bank.indexedNames || index < 0 || index >= kPrograms) return 0;
        return testplugin::put_text(ptr, bank.names[index]);
    }
    static constexpr testplugin::Names kNames{"program bank", "tqvst", "tqvst test programs"};
    return testplugin::dispatch_plain(effect, opcode, ptr, kNames);
}

// Programs named "Program 1" to "Program 3", parameter i of program p at (4p + i + 1) / 16.
inline vst2::AEffect* make_bank(int32_t uniqueID, bool indexedNames)
{
    auto* bank = new Bank{testplugin::make_effect(dispatch, uniqueID), indexedNames};
    bank->effect.setParameter = set_parameter;
    bank->effect.getParameter = get_parameter;
    bank->effect.numPrograms = kPrograms;
    bank->effect.numParams = kParams;
    bank->effect.version = 2;
    for (int32_t p = 0; p < kPrograms; ++p)
    {
        std::snprintf(bank->names[p], sizeof bank->names[p], "Program %d", static_cast<int>(p + 1));
        for (int32_t i = 0; i < kParams; ++i)
            bank->values[p][i] = static_cast<float>(p * kParams + i + 1) / 16.0f;
    }
    g_log[0] = 0;
    return &bank->effect;
}

} // namespace program_bank

// Copies the switch log into text and clears it; returns the log's length.
extern "C" __declspec(dllexport) int __cdecl TqProgramLog(char* text, int capacity)
{
    const int length = static_cast<int>(std::strlen(program_bank::g_log));
    std::snprintf(text, static_cast<std::size_t>(capacity), "%s", program_bank::g_log);
    program_bank::g_log[0] = 0;
    return length;
}
