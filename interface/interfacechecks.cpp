// Compile-time checks that the records crossing the process boundary keep their fixed layout.
#include "tqvst.h"

#include <cstddef>

static_assert(sizeof(TqVstEffectInfo) == 40);
static_assert(offsetof(TqVstEffectInfo, flags) == 32);
static_assert(offsetof(TqVstEffectInfo, state) == 36);

static_assert(sizeof(TqVstParameterProperties) == 176);
static_assert(offsetof(TqVstParameterProperties, shortLabel) == 128);
static_assert(offsetof(TqVstParameterProperties, stepFloat) == 144);
static_assert(offsetof(TqVstParameterProperties, minInteger) == 156);
static_assert(offsetof(TqVstParameterProperties, flags) == 172);

static_assert(sizeof(TqVstMasterTime) == 72);
static_assert(offsetof(TqVstMasterTime, samplePos) == 0);
static_assert(offsetof(TqVstMasterTime, timeSigNumerator) == 8);
static_assert(offsetof(TqVstMasterTime, timeSigDenominator) == 12);
static_assert(offsetof(TqVstMasterTime, tempo) == 16);
static_assert(offsetof(TqVstMasterTime, ppqPos) == 24);
static_assert(offsetof(TqVstMasterTime, barStartPos) == 32);
static_assert(offsetof(TqVstMasterTime, cycleStartPos) == 40);
static_assert(offsetof(TqVstMasterTime, cycleEndPos) == 48);
static_assert(offsetof(TqVstMasterTime, smpteFrameRate) == 56);
static_assert(offsetof(TqVstMasterTime, smpteOffset) == 60);
static_assert(offsetof(TqVstMasterTime, flags) == 64);

// The block token is the kernel's memory token as it crosses the interface.
static_assert(sizeof(TqVstBlockToken) == 40);
static_assert(offsetof(TqVstBlockToken, address) == 8);
static_assert(offsetof(TqVstBlockToken, size) == 16);
static_assert(offsetof(TqVstBlockToken, capacity) == 20);
static_assert(offsetof(TqVstBlockToken, offset) == 24);
static_assert(offsetof(TqVstBlockToken, kind) == 32);
static_assert(offsetof(TqVstBlockToken, ownerProcessId) == 36);
