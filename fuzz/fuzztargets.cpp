// The table of parsers under the fuzz program.
#include "fuzztarget.h"

namespace tqfuzz {

namespace {

// Markup and ids worth inserting, per format.
std::vector<std::string> XmlTokens()
{
    return {"<",        ">",         "/>",           "</",
            "<a>",      "</a>",      "<!--",         "-->",
            "--",       "<![CDATA[", "]]>",          "<?xml",
            "?>",       "<!DOCTYPE", "=\"",          "\"",
            "'",        "&amp;",     "&lt;",         "&",
            " x=\"1\"", "\xFF\xFE",  "\xEF\xBB\xBF", std::string("\0", 1)};
}

std::vector<std::string> AiffTokens()
{
    return {"FORM",
            "AIFF",
            "AIFC",
            "COMM",
            "SSND",
            "MARK",
            "NONE",
            "sowt",
            "fl32",
            "FVER",
            "ANNO",
            std::string("\x40\x0E\xAC\x44", 4),
            std::string("\x7F\xFF", 2)};
}

std::vector<std::string> SummaryTokens()
{
    return {"LIST",
            "INFO",
            "UNFO",
            "DISP",
            "INAM",
            "IART",
            std::string("\0\0\0\0", 4),
            std::string("\xFF\xFF\xFF\x7F", 4),
            std::string("\x01\0\0\0", 4)};
}

std::vector<std::string> BwfTokens()
{
    return {"bext",
            "BEXT",
            "iXML",
            "JUNK",
            "data",
            "<BWFXML>",
            "</BWFXML>",
            "<TRACK>",
            "</TRACK>",
            "<SYNC_POINT>",
            "<TRACK_LIST>",
            "<SPEED>",
            "&amp;",
            std::string("\0\0\0\0", 4),
            std::string("\xFF\xFF\xFF\x7F", 4),
            std::string("\x5A\x02\0\0", 4)};
}

std::vector<std::string> ProjectLinkTokens()
{
    return {"splv",
            "splp",
            "spcl",
            "sprg",
            "srtn",
            "srtd",
            "srat",
            "spca",
            "spcc",
            "spem",
            "JUNK",
            "TQPL",
            std::string("\0\0\0\x01", 4),
            std::string("\0\0\0\x02", 4),
            std::string("\x02\0\0\0", 4),
            std::string("\x10\0\0\0", 4)};
}

} // namespace

const std::vector<FuzzTarget>& Targets()
{
    static const std::vector<FuzzTarget> targets = {
        {"xml", XmlSeeds, XmlTokens(), 1u << 20, RunXml},
        {"aiff", AiffSeeds, AiffTokens(), 1u << 16, RunAiff},
        {"summary", SummarySeeds, SummaryTokens(), 1u << 14, RunSummary},
        {"bwf", BwfSeeds, BwfTokens(), 1u << 16, RunBwf},
        {"projectlink", ProjectLinkSeeds, ProjectLinkTokens(), 1u << 14, RunProjectLink},
    };
    return targets;
}

} // namespace tqfuzz
