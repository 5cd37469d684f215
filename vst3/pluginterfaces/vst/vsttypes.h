// Value types shared by the VST interfaces.
#pragma once

#include "pluginterfaces/base/ftypes.h"

namespace vst3 {

using ParamID = uint32;
using ParamValue = double;
using ProgramListID = int32;
using UnitID = int32;
using TSamples = int64;
using TQuarterNotes = double;
using SampleRate = double;
using Sample32 = float;
using Sample64 = double;
using SpeakerArrangement = uint64;
using Speaker = uint64;
using MediaType = int32;
using BusDirection = int32;
using BusType = int32;
using IoMode = int32;
using CtrlNumber = int16;
using NoteExpressionTypeID = uint32;
using NoteExpressionValue = double;

constexpr ParamID kNoParamId = 0xFFFFFFFF;

} // namespace vst3
