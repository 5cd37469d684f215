// Inside the error handler: its process-wide state as composition, the error box and the
// exception filter share it, and the rule for caller texts that may carry arguments.
#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <wchar.h>

#include <memory>

#include <windows.h>

namespace tq::errorhandler {

constexpr size_t kMessageChars = 2048;
// A context this long leaves no room worth having for a reason.
constexpr size_t kContextLimit = 1948;
constexpr size_t kDetailsBytes = 16384;
constexpr size_t kDetailsChars = kDetailsBytes / sizeof(wchar_t);
constexpr size_t kLinkAddressChars = 2083;
constexpr size_t kLinkTextChars = 2048;
// Flag bits that tell the box to offer the details.
constexpr UINT kDetailsFlags = 0xC000;

// Heap text that a failed allocation leaves null instead of throwing.
using OwnedText = std::unique_ptr<wchar_t[]>;
OwnedText AllocateText(size_t chars);

// The one message buffer, kMessageChars long. Composition writes it without a lock: it is not
// re-entrant across threads, and callers that need the text keep a copy.
wchar_t* MessageBuffer();

// Appends a finished line to the details, under the one-writer and size rules.
HRESULT AppendDetailLine(HRESULT code, const wchar_t* line);

// A copy of the details text and its length in characters; null when there are no lines.
OwnedText CopyDetails(size_t* length);

// What the box shows besides its text, taken out of the state in the same step that clears it.
struct PendingBox
{
    UINT flags = 0; // the caller's flags, 0xC000 set exactly when details came along
    OwnedText details;
    OwnedText linkAddress; // null when no link was set
    OwnedText linkText;
};
PendingBox TakePendingBox(UINT flags);

// Records an exception's dump (ANSI, cut to 4095 characters) as the details of the next box,
// behind the line that says an unhandled exception occurred.
void RecordExceptionDetails(const char* dump);

// A caller's text with its arguments. It goes through the formatter only when it holds "$" or
// "%", so plain text such as a file name is taken as it stands; if memory runs out the text is
// taken unformatted.
class FormattedText
{
public:
    FormattedText(const wchar_t* format, va_list args, size_t capacity);
    const wchar_t* Get() const noexcept { return m_text; } // null only for a null format

private:
    OwnedText m_buffer;
    const wchar_t* m_text = nullptr;
};

} // namespace tq::errorhandler
