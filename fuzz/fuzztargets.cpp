// The table of parsers under the fuzz program.
#include "fuzztarget.h"

namespace tqfuzz {

const std::vector<FuzzTarget>& Targets()
{
    static const std::vector<FuzzTarget> targets = {
        {"xml",
         XmlSeeds,
         {"<",        ">",         "/>",           "</",
          "<a>",      "</a>",      "<!--",         "-->",
          "--",       "<![CDATA[", "]]>",          "<?xml",
          "?>",       "<!DOCTYPE", "=\"",          "\"",
          "'",        "&amp;",     "&lt;",         "&",
          " x=\"1\"", "\xFF\xFE",  "\xEF\xBB\xBF", std::string("\0", 1)},
         1u << 20,
         RunXml},
    };
    return targets;
}

} // namespace tqfuzz
