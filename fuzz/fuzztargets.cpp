// The table of parsers under the fuzz program.
#include "fuzztarget.h"

#include "riff64.h"

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
            "FL64",
            "FVER",
            "cue ",
            "LIST",
            "adtl",
            "labl",
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
            "RIFF",
            "RF64",
            "ds64",
            "data",
            "INAM",
            "IART",
            std::string("\0\0\0\0", 4),
            std::string("\xFF\xFF\xFF\x7F", 4),
            std::string("\x01\0\0\0", 4)};
}

// The Wave64 ids of lists and their entries as they stand in a file, and 64-bit sizes.
std::vector<std::string> Summary64Tokens()
{
    const auto bytes = [](const GUID& g) {
        return std::string(reinterpret_cast<const char*>(&g), sizeof g);
    };
    std::vector<std::string> tokens = {bytes(RIFF64_GUID_LIST),
                                       bytes(RIFF64_GUID_JUNK),
                                       bytes(RIFF64_GUID_RIFF),
                                       bytes(RIFF64_GUID_DATA),
                                       std::string("\x18\x00\x00\x00\x00\x00\x00\x00", 8),
                                       std::string("\xF8\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8),
                                       std::string("\x00\x00\x00\x00\x01\x00\x00\x00", 8)};
    for (const char* id : {"INFO", "UNFO", "DISP", "INAM", "IART"})
    {
        GUID guid = RIFF64_GUID_FMT;
        guid.Data1 = RIFF_ID(id[0], id[1], id[2], id[3]);
        tokens.push_back(bytes(guid));
    }
    return tokens;
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

std::vector<std::string> RiffTokens()
{
    return {"RIFF",
            "WAVE",
            "LIST",
            "INFO",
            "fmt ",
            "data",
            "JUNK",
            "bext",
            "CDDA",
            "INAM",
            std::string("\xFF\xFF\xFF\xFF", 4),
            std::string("\x01\x00\x00\x00", 4)};
}

// The GUIDs of a Wave64 file as they stand in it.
std::vector<std::string> W64Tokens()
{
    const auto bytes = [](const GUID& g) {
        return std::string(reinterpret_cast<const char*>(&g), sizeof g);
    };
    return {bytes(RIFF64_GUID_RIFF),
            bytes(RIFF64_GUID_LIST),
            bytes(RIFF64_GUID_WAVE),
            bytes(RIFF64_GUID_FMT),
            bytes(RIFF64_GUID_DATA),
            bytes(RIFF64_GUID_JUNK),
            std::string("\x18\x00\x00\x00\x00\x00\x00\x00", 8),
            std::string("\xF8\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 8),
            std::string("\x00\x00\x00\x00\x00\x00\x00\x40", 8)};
}

std::vector<std::string> Rf64Tokens()
{
    std::vector<std::string> tokens = RiffTokens();
    for (const char* more : {"RF64", "ds64"})
        tokens.push_back(more);
    tokens.push_back(std::string("\x00\x00\x00\x00\x01\x00\x00\x00", 8)); // 4 GiB in ds64
    return tokens;
}

} // namespace

const std::vector<FuzzTarget>& Targets()
{
    static const std::vector<FuzzTarget> targets = {
        {"xml", XmlSeeds, XmlTokens(), 1u << 20, RunXml},
        {"aiff", AiffSeeds, AiffTokens(), 1u << 16, RunAiff},
        {"summary", SummarySeeds, SummaryTokens(), 1u << 14, RunSummary},
        {"summary64", Summary64Seeds, Summary64Tokens(), 1u << 14, RunSummary64},
        {"bwf", BwfSeeds, BwfTokens(), 1u << 16, RunBwf},
        {"projectlink", ProjectLinkSeeds, ProjectLinkTokens(), 1u << 14, RunProjectLink},
        {"riff", RiffSeeds, RiffTokens(), 1u << 16, RunRiff},
        {"w64", W64Seeds, W64Tokens(), 1u << 16, RunW64},
        {"rf64", Rf64Seeds, Rf64Tokens(), 1u << 16, RunRf64},
    };
    return targets;
}

} // namespace tqfuzz
