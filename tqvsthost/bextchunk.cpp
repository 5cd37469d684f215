// Reading the fixed fields of "bext" and extending its coding history.
#include "bextchunk.h"

#include <cstring>

namespace tqhost {
namespace {

// Where the fixed part of the chunk ends and the coding history begins.
constexpr size_t kFixedBytes = 602;

// 8-bit text of a field up to its first zero byte, in the system code page as writers put it.
std::wstring FieldText(const BYTE* field, size_t size)
{
    size_t length = 0;
    while (length < size && field[length])
        ++length;
    if (length == 0) return {};
    std::wstring text(length, L'\0');
    const int made =
        MultiByteToWideChar(CP_ACP, 0, reinterpret_cast<const char*>(field),
                            static_cast<int>(length), text.data(), static_cast<int>(length));
    text.resize(made > 0 ? static_cast<size_t>(made) : 0);
    return text;
}

} // namespace

std::optional<BextFields> ParseBext(const std::vector<BYTE>& chunk)
{
    if (chunk.size() < kFixedBytes) return std::nullopt;
    const BYTE* p = chunk.data();
    BextFields fields;
    fields.description = FieldText(p, 256);
    fields.originator = FieldText(p + 256, 32);
    fields.originatorReference = FieldText(p + 288, 32);
    fields.date = FieldText(p + 320, 10);
    fields.time = FieldText(p + 330, 8);
    UINT32 low, high;
    std::memcpy(&low, p + 338, 4);
    std::memcpy(&high, p + 342, 4);
    fields.timeReference = UINT64(high) << 32 | low;
    std::memcpy(&fields.version, p + 346, 2);
    fields.codingHistory = FieldText(p + kFixedBytes, chunk.size() - kFixedBytes);
    return fields;
}

bool AppendCodingHistory(std::vector<BYTE>& chunk, const std::string& line)
{
    if (chunk.size() < kFixedBytes) return false;
    while (chunk.size() > kFixedBytes && chunk.back() == 0)
        chunk.pop_back();
    if (chunk.size() > kFixedBytes && chunk.back() != '\n')
    {
        chunk.push_back('\r');
        chunk.push_back('\n');
    }
    chunk.insert(chunk.end(), line.begin(), line.end());
    chunk.push_back('\r');
    chunk.push_back('\n');
    return true;
}

} // namespace tqhost
