// Plain types of the VST3 binary interface: integer widths, text, result codes, record packing.
#pragma once

#include <cstdint>

namespace vst3 {

using int8 = int8_t;
using uint8 = uint8_t;
using int16 = int16_t;
using uint16 = uint16_t;
using int32 = int32_t;
using uint32 = uint32_t;
using int64 = int64_t;
using uint64 = uint64_t;
using TSize = int64;
using TBool = uint8;
using tresult = int32;

using char8 = char;
using char16 = char16_t;
using TChar = char16;
using CString = const char8*;
using FIDString = const char8*;
using String128 = TChar[128];

// Result codes as COM knows them: plug-ins built for Windows answer with these values.
enum : tresult
{
    kNoInterface = static_cast<tresult>(0x80004002),
    kResultOk = 0,
    kResultTrue = kResultOk,
    kResultFalse = 1,
    kInvalidArgument = static_cast<tresult>(0x80070057),
    kNotImplemented = static_cast<tresult>(0x80004001),
    kInternalError = static_cast<tresult>(0x80004005),
    kNotInitialized = static_cast<tresult>(0x8000FFFF),
    kOutOfMemory = static_cast<tresult>(0x8007000E),
};

} // namespace vst3

// Every interface method is __stdcall on 32-bit Windows; x64 has one convention only.
#if defined(_WIN64)
#define PLUGIN_API
#define VST3_PACK_PUSH _Pragma("pack(push, 16)")
#else
#define PLUGIN_API __stdcall
#define VST3_PACK_PUSH _Pragma("pack(push, 8)")
#endif
#define VST3_PACK_POP _Pragma("pack(pop)")
