// Preset (.fxp), bank (.fxb) and VST3 preset (.vstpreset) files between a file and an effect,
// through file streams.
#pragma once

#include "tqvst.h"

#include <string>

namespace tqhost {

// True for a name ending in .fxb (any case): a bank rather than a single program.
bool IsBankFile(const std::wstring& path);

// True for a name ending in .vstpreset (any case): a VST3 plug-in's whole state.
bool IsVst3PresetFile(const std::wstring& path);

HRESULT LoadPresetFile(ITqVstEffect* effect, const std::wstring& path);
HRESULT LoadBankFile(ITqVstEffect* effect, const std::wstring& path, UINT32 program);

// Writes the current program (or the bank) under a temporary name and renames it to path only
// when the effect finished writing, so a failure leaves an existing file as it was.
HRESULT SavePresetOrBankFile(ITqVstEffect* effect, const std::wstring& path, UINT32* bytes);

} // namespace tqhost
