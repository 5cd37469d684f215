// What editor_child saw of its host's editor calls, as a host in the same process reads it back.
#pragma once

#include <cstdint>

namespace editor_child {

struct Record
{
    intptr_t parent;   // the window effEditOpen was given
    intptr_t child;    // the window the editor made in it, 0 once closed
    int32_t opens;     // effEditOpen calls
    int32_t closes;    // effEditClose calls
    int32_t editIdles; // effEditIdle calls
    int32_t knobMode;  // the last effSetEditKnobMode value, -1 before any
};

// The corners the plug-in reports, deliberately mixed up: top 100, left 50, bottom 20, right 10.
constexpr int16_t kTop = 100, kLeft = 50, kBottom = 20, kRight = 10;

// effEditIdle asks for this size on its third call; effIdle asks for the other one every time;
// effEditOpen asks for a third one before it returns.
constexpr uint32_t kEditIdleAfter = 3;
constexpr uint32_t kEditIdleWidth = 200, kEditIdleHeight = 120;
constexpr uint32_t kIdleWidth = 300, kIdleHeight = 150;
constexpr uint32_t kOpenWidth = 111, kOpenHeight = 222;

// The text of the child window, so a host can tell it from its own windows.
constexpr wchar_t kChildText[] = L"editor_child";

// Exported by editor_child.dll as TqEditorChildRecord.
using ReadRecord = void(__cdecl*)(Record* record);

} // namespace editor_child
