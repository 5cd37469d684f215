// What a VST3 editor test plug-in's view saw of its host, as a host in the same process reads it
// back.
#pragma once

#include "pluginterfaces/gui/iplugview.h"

#include <cstdint>

namespace childview {

using namespace vst3;

struct Record
{
    intptr_t parent;       // the window attached was given
    intptr_t child;        // the window the view made in it, 0 once removed
    int32 views;           // views made by createView
    int32 viewsAlive;      // views not yet destroyed
    int32 attaches;        // attached calls with "HWND"
    int32 removes;         // removed calls
    int32 framesSet;       // setFrame with a frame
    int32 framesCleared;   // setFrame with null
    int32 resizeAnswer;    // the frame's answer to resizeView asked from attached; -1 if none
    int32 onSizes;         // onSize calls
    ViewRect lastOnSize;   // the rectangle of the last onSize
    int32 constraintCalls; // checkSizeConstraint calls
};

// The text of the child window, so a host can find it among its own windows.
constexpr wchar_t kChildText[] = L"tqvst view";

// Exported by each editor test plug-in as TqChildViewRecord.
using ReadRecord = void(__cdecl*)(Record* record);

} // namespace childview
