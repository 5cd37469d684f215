// ParseVersionString: version texts such as "1.2.3.4" as one comparable number.
#include "vst3version.h"

#include <algorithm>

namespace tqvst {

HRESULT ParseVersionString(std::string_view text, uint32_t* version) noexcept
{
    // Long runs of digits must not wrap: field and weight stop growing far above every bound.
    constexpr uint64_t kSaturated = 10'000'000'000'000ull;
    uint64_t fields[4] = {}; // d, c, b, a
    size_t ended = 0;
    uint64_t field = 0;
    uint64_t weight = 1;
    // One step beyond the first character: the start of the text ends the leftmost field.
    for (size_t i = text.size() + 1; i-- > 0;)
    {
        const char c = i > 0 ? text[i - 1] : '.';
        if (c >= '0' && c <= '9')
        {
            field = std::min(field + static_cast<uint64_t>(c - '0') * weight, kSaturated);
            weight = std::min(weight * 10, kSaturated);
        }
        else if (c == '.')
        {
            fields[std::min<size_t>(ended, 3)] = field;
            ++ended;
            field = 0;
            weight = 1;
        }
    }
    const uint64_t d = fields[0], c = fields[1], b = fields[2], a = fields[3];
    if (d > 999 || c > 99 || b > 99 || a > 428) return kVst3VersionOutOfRange;
    *version = static_cast<uint32_t>(((a * 100 + b) * 100 + c) * 1000 + d);
    return S_OK;
}

} // namespace tqvst
