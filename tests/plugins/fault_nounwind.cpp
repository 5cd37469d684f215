// Faults on effOpen in code without unwind data, two calls deep: only a guard that copes with such
// code catches it.
#include "aeffect.h"

#include <cstdint>

extern "C" {
// fault_nounwind_<arch>.S: writes to address 0 from a routine called by a routine, neither with
// unwind data.
void tq_nounwind_write_null();

__declspec(dllexport) vst2::AEffect* __cdecl VSTPluginMain(vst2::HostCallback host);
}

namespace {

intptr_t __cdecl Dispatch(vst2::AEffect* effect, int32_t opcode, int32_t, intptr_t, void*, float)
{
    if (opcode == vst2::effOpen)
        tq_nounwind_write_null();
    else if (opcode == vst2::effClose)
        delete effect;
    return 0;
}

void __cdecl Process(vst2::AEffect*, float**, float**, int32_t)
{
}

void __cdecl SetParameter(vst2::AEffect*, int32_t, float)
{
}

float __cdecl GetParameter(vst2::AEffect*, int32_t)
{
    return 0;
}

} // namespace

vst2::AEffect* VSTPluginMain(vst2::HostCallback)
{
    auto* effect = new vst2::AEffect{};
    effect->magic = vst2::kEffectMagic;
    effect->dispatcher = Dispatch;
    effect->process = Process;
    effect->setParameter = SetParameter;
    effect->getParameter = GetParameter;
    effect->numPrograms = 1;
    effect->numInputs = 2;
    effect->numOutputs = 2;
    effect->flags = 0x10;          // processReplacing present
    effect->uniqueID = 0x54714E55; // "TqNU"
    effect->version = 1;
    effect->processReplacing = Process;
    return effect;
}
