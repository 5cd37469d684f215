// How the internationals record is filled, open to the tests with a locale of their choice.
#pragma once

#include "tqlang.h"

namespace tq::inat {

// Fills record from locale, all but the language tag, which is left as it is.
void Fill(TQINTERNATIONALS& record, LCID locale);

// Grouping as GetLocaleInfo gives it ("3;2;0") in the form NUMBERFMT takes (32).
UINT32 GroupingFromLocaleText(const wchar_t* text);

// A decimal separator equal to the thousands separator would make numbers unreadable; it
// becomes "." (or "," when the thousands separator starts with ".").
void SeparateDecimalFromThousands(TQINTERNATIONALS& record);

} // namespace tq::inat
