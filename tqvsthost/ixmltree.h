// An iXML document as an indented outline: one line per element, a leaf with its text.
#pragma once

#include <string>
#include <vector>

namespace tqhost {

struct XmlLine
{
    int depth = 0;
    std::wstring name;
    std::wstring text; // of a leaf; empty for an element holding others
};

// The elements of the document in order. Declarations, comments and attributes are left out;
// broken markup ends the outline where it breaks, and nesting deeper than a sane bound is cut.
std::vector<XmlLine> OutlineXml(const std::string& utf8);

} // namespace tqhost
