// JSON text for tqvsthost's machine-readable output: escaped UTF-8 strings and simple objects.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace tqhost {

// The text as a quoted JSON string in UTF-8, with quotes, backslashes and control characters
// escaped; an unpaired surrogate becomes U+FFFD rather than invalid UTF-8.
std::string JsonString(const std::wstring& text);

// Builds one object member by member, in the order added.
class JsonObject
{
public:
    JsonObject& Add(const char* key, const std::wstring& text);
    JsonObject& Add(const char* key, UINT32 number);
    JsonObject& Add(const char* key, const std::vector<UINT32>& numbers);
    JsonObject& AddNumber(const char* key, UINT64 number);
    // A value that is JSON text already: an object, an array.
    JsonObject& AddJson(const char* key, const std::string& json);
    std::string Text() const { return "{" + m_members + "}"; }

private:
    void Key(const char* key);
    std::string m_members;
};

// Values that are JSON text already, as an array.
std::string JsonArray(const std::vector<std::string>& values);

} // namespace tqhost
