// Escaping and assembling JSON text.
#include "jsonwriter.h"

#include <cstdio>

namespace tqhost {

std::string JsonString(const std::wstring& text)
{
    std::wstring escaped = L"\"";
    for (size_t i = 0; i < text.size(); ++i)
    {
        const wchar_t c = text[i];
        const bool high = c >= 0xD800 && c <= 0xDBFF;
        const bool low = c >= 0xDC00 && c <= 0xDFFF;
        if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF)
        {
            escaped += c;
            escaped += text[++i];
        }
        else if (high || low)
            escaped += L'\xFFFD';
        else if (c == L'"' || c == L'\\')
        {
            escaped += L'\\';
            escaped += c;
        }
        else if (c == L'\n')
            escaped += L"\\n";
        else if (c == L'\r')
            escaped += L"\\r";
        else if (c == L'\t')
            escaped += L"\\t";
        else if (c < 0x20)
        {
            wchar_t code[8];
            swprintf(code, 8, L"\\u%04x", static_cast<unsigned>(c));
            escaped += code;
        }
        else
            escaped += c;
    }
    escaped += L'"';
    const int bytes = WideCharToMultiByte(
        CP_UTF8, 0, escaped.data(), static_cast<int>(escaped.size()), nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, escaped.data(), static_cast<int>(escaped.size()), utf8.data(),
                        bytes, nullptr, nullptr);
    return utf8;
}

void JsonObject::Key(const char* key)
{
    if (!m_members.empty()) m_members += ", ";
    m_members += "\"";
    m_members += key;
    m_members += "\": ";
}

JsonObject& JsonObject::Add(const char* key, const std::wstring& text)
{
    Key(key);
    m_members += JsonString(text);
    return *this;
}

JsonObject& JsonObject::Add(const char* key, UINT32 number)
{
    Key(key);
    m_members += std::to_string(number);
    return *this;
}

JsonObject& JsonObject::Add(const char* key, const std::vector<UINT32>& numbers)
{
    Key(key);
    m_members += "[";
    for (size_t i = 0; i < numbers.size(); ++i)
        m_members += (i ? ", " : "") + std::to_string(numbers[i]);
    m_members += "]";
    return *this;
}

JsonObject& JsonObject::AddNumber(const char* key, UINT64 number)
{
    Key(key);
    m_members += std::to_string(number);
    return *this;
}

JsonObject& JsonObject::AddJson(const char* key, const std::string& json)
{
    Key(key);
    m_members += json;
    return *this;
}

std::string JsonArray(const std::vector<std::string>& values)
{
    std::string text = "[";
    for (size_t i = 0; i < values.size(); ++i)
        text += (i ? ", " : "") + values[i];
    return text + "]";
}

} // namespace tqhost
