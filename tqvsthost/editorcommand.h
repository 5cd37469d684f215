// tqvsthost editor: shows a plug-in's editor for a while.
#pragma once

#include "options.h"

namespace tqhost {

// Returns the process exit code.
int RunEditor(const Options& options);

// The top-level window an editor is opened in; the caller destroys it.
HWND CreateEditorWindow(const wchar_t* title);

} // namespace tqhost
