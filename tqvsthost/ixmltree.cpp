// A forgiving outline of XML: enough to show what a field recorder wrote, never more trusting
// than the text deserves.
#include "ixmltree.h"

#include <windows.h>

namespace tqhost {
namespace {

constexpr int kMaxDepth = 64;

std::wstring Wide(const std::string& text)
{
    if (text.empty()) return {};
    const int size =
        MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(std::max(size, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(), size);
    return wide;
}

// The five predefined entities; others stay as written.
std::string Unescape(const std::string& text)
{
    static const std::pair<const char*, char> kEntities[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string plain;
    for (size_t i = 0; i < text.size();)
    {
        bool replaced = false;
        for (const auto& [entity, c] : kEntities)
            if (text.compare(i, std::char_traits<char>::length(entity), entity) == 0)
            {
                plain += c;
                i += std::char_traits<char>::length(entity);
                replaced = true;
                break;
            }
        if (!replaced) plain += text[i++];
    }
    return plain;
}

std::string Trimmed(const std::string& text)
{
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

} // namespace

std::vector<XmlLine> OutlineXml(const std::string& utf8)
{
    std::vector<XmlLine> lines;
    int depth = 0;
    bool openLeaf = false; // the last line is an element that has not yet shown a child
    size_t at = 0;
    while (at < utf8.size())
    {
        const size_t open = utf8.find('<', at);
        const std::string text =
            Trimmed(utf8.substr(at, open == std::string::npos ? open : open - at));
        if (!text.empty() && openLeaf) lines.back().text += Wide(Unescape(text));
        if (open == std::string::npos) break;
        const size_t close = utf8.find('>', open);
        if (close == std::string::npos) break;
        const std::string tag = utf8.substr(open + 1, close - open - 1);
        at = close + 1;
        if (tag.empty() || tag[0] == '?' || tag[0] == '!') continue;
        if (tag[0] == '/')
        {
            depth = std::max(depth - 1, 0);
            openLeaf = false;
            continue;
        }
        const size_t nameEnd = tag.find_first_of(" \t\r\n/");
        const std::string name = tag.substr(0, nameEnd);
        if (name.empty()) break;
        if (depth < kMaxDepth) lines.push_back({depth, Wide(name), {}});
        const bool selfClosing = tag.back() == '/';
        openLeaf = !selfClosing && depth < kMaxDepth;
        if (!selfClosing) ++depth;
    }
    return lines;
}

} // namespace tqhost
