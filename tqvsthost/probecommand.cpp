// tqvsthost probe: the container, format, length and data offset of audio files, and every
// metadata chunk decoded, as text or as JSON.
#include "probecommand.h"

#include "bwf.h"
#include "hostlog.h"
#include "hresulttext.h"
#include "jsonwriter.h"
#include "mediafile.h"
#include "pluginsession.h"
#include "projectlink.h"
#include "riff64.h"
#include "summary.h"
#include "xmldocument.h"
#include "xmlescapes.h"

#include <cstdio>
#include <cstring>

namespace tqhost {
namespace {

constexpr DWORD kList = RIFF_ID('L', 'I', 'S', 'T');
constexpr DWORD kDisp = RIFF_ID('D', 'I', 'S', 'P');
constexpr DWORD kInfo = RIFF_ID('I', 'N', 'F', 'O');
constexpr DWORD kUnfo = RIFF_ID('U', 'N', 'F', 'O');

struct InfoLabel
{
    DWORD id;
    const wchar_t* label;
};

// How a file properties view names the items of a summary list.
constexpr InfoLabel kInfoLabels[] = {
    {RIFF_ID('I', 'A', 'R', 'T'), L"Artist"},
    {RIFF_ID('I', 'C', 'M', 'T'), L"Comment"},
    {RIFF_ID('I', 'C', 'O', 'P'), L"Copyright"},
    {RIFF_ID('I', 'C', 'R', 'D'), L"Year"},
    {RIFF_ID('I', 'E', 'N', 'G'), L"Author"},
    {RIFF_ID('I', 'G', 'N', 'R'), L"Genre"},
    {RIFF_ID('I', 'N', 'A', 'M'), L"Title"},
    {RIFF_ID('I', 'S', 'B', 'J'), L"Subject"},
    {RIFF_ID('I', 'S', 'R', 'C'), L"Album/source"},
    {RIFF_ID('I', 'S', 'F', 'T'), L"Software"},
    {RIFF_ID('T', 'L', 'E', 'N'), L"Text length"},
    {RIFF_ID('T', 'R', 'C', 'K'), L"Track"},
    {RIFF_ID('T', 'U', 'R', 'L'), L"Web page"},
    {RIFF_ID('D', 'I', 'S', 'P'), L"Sound scheme title"},
    {RIFF_ID('T', 'V', 'E', 'R'), L"Track version"},
    {RIFF_ID('L', 'O', 'C', 'A'), L"Location"},
    {RIFF_ID('T', 'O', 'R', 'G'), L"Organization"},
    {RIFF_ID('T', 'A', 'P', 'E'), L"Tape Name"},
    {RIFF_ID('D', 'T', 'I', 'M'), L"Recorded"},
    {RIFF_ID('V', 'M', 'A', 'J'), L"Version"},
};

std::wstring IdText(DWORD id)
{
    std::wstring text;
    for (int i = 0; i < 4; ++i)
    {
        const wchar_t c = static_cast<wchar_t>((id >> (8 * i)) & 0xFF);
        text += c >= 0x20 && c <= 0x7E ? c : L'.';
    }
    return text;
}

std::wstring Narrow(const BYTE* bytes, size_t size, UINT codePage)
{
    size_t length = 0;
    while (length < size && bytes[length])
        ++length;
    if (!length) return {};
    const int chars = MultiByteToWideChar(codePage, 0, reinterpret_cast<const char*>(bytes),
                                          static_cast<int>(length), nullptr, 0);
    std::wstring text(static_cast<size_t>(std::max(chars, 0)), L'\0');
    MultiByteToWideChar(codePage, 0, reinterpret_cast<const char*>(bytes), static_cast<int>(length),
                        text.data(), chars);
    return text;
}

// The broadcast-wave record of a file, freed with it.
struct BwfRecord
{
    BwfRecord() = default;
    BwfRecord(const BwfRecord&) = delete;
    BwfRecord& operator=(const BwfRecord&) = delete;
    ~BwfRecord() { FreeBwfChunkGlobal(&chunk); }
    _tagTQBWF_Chunk chunk = {};
};

// The metadata the kernel reads from a file of the RIFF family; AIFF carries none of it.
void LoadKernelMetadata(HANDLE file, Container container, BwfRecord& bwf, CTqLinkProjectInfo& link,
                        bool& linkFound)
{
    if (container == Container::Aiff) return;
    const bool wave64 = container == Container::Wave64;
    // What could not be read shows as an unreadable chunk where the layout lists it.
    BOOL bwfFound = FALSE;
    if (wave64)
        bwfriff64_LoadInfo(file, &bwf.chunk, &bwfFound);
    else
        bwfriffRF64_LoadInfo(file, &bwf.chunk, &bwfFound);
    BOOL found = FALSE;
    const HRESULT hr = wave64 ? ProjectLinkRiff64_LoadInfo(file, &link, &found)
                              : ProjectLinkRiffRF64_LoadInfo(file, &link, &found);
    linkFound = SUCCEEDED(hr) && found;
}

std::wstring Trimmed(const std::wstring& text)
{
    const size_t first = text.find_first_not_of(L" \t\r\n");
    if (first == std::wstring::npos) return {};
    return text.substr(first, text.find_last_not_of(L" \t\r\n") - first + 1);
}

// Deeper nesting than any recorder writes is not shown, which also bounds the recursion.
constexpr int kMaxIxmlDepth = 64;

struct IxmlLine
{
    int depth;
    std::wstring name;
    std::wstring text;
};

// The elements below element (null: the top level) in document order, each with its text.
void OutlineElements(CTqXML_Document& document, tagTQXML_ELEMENT* element, int depth,
                     std::vector<IxmlLine>& lines)
{
    if (depth >= kMaxIxmlDepth) return;
    tagTQXML_CONTENT* content = nullptr;
    const TQXML_FINDCURSOR cursor = document.FindContentFirst(element, &content);
    if (cursor == TQXML_NOCURSOR) return;
    const size_t own = lines.empty() ? 0 : lines.size() - 1;
    do
    {
        if (content->type == XML_CONTENT_ELEMENT)
        {
            lines.push_back(
                {depth, content->data.element.name ? content->data.element.name : L"", {}});
            OutlineElements(document, &content->data.element, depth + 1, lines);
        }
        else if (element && content->data.text &&
                 (content->type == XML_CONTENT_CHARDATA || content->type == XML_CONTENT_CDATA))
        {
            std::wstring text = content->data.text;
            if (content->type == XML_CONTENT_CHARDATA)
                text.resize(TqXML_RemoveEscapes(text.data()));
            lines[own].text += Trimmed(text);
        }
    } while (SUCCEEDED(document.FindContentNext(cursor, &content)));
    document.FindContentClose(cursor);
}

// A summary list the kernel loaded, freed with it.
struct SummaryList
{
    SummaryList() = default;
    SummaryList(const SummaryList&) = delete;
    SummaryList& operator=(const SummaryList&) = delete;
    ~SummaryList() { TqSummary_Free(&list); }
    tSUMMARYLIST list = {};
};

// The entries at the cursor, within bound, by the loader of the list's framing.
HRESULT LoadSummary(HANDLE file, Container container, bool wave64List, bool unfo, ULONGLONG bound,
                    tSUMMARYLIST& list)
{
    if (wave64List)
        return unfo ? TqSummary_LoadUNFO64(file, &list, &bound)
                    : TqSummary_Load64(file, &list, &bound);
    if (container == Container::Rf64)
        return unfo ? TqSummary_LoadUNFORF64(file, &list, &bound)
                    : TqSummary_LoadRF64(file, &list, &bound);
    DWORD bound32 = static_cast<DWORD>(bound);
    return unfo ? TqSummary_LoadUNFO(file, &list, &bound32) : TqSummary_Load(file, &list, &bound32);
}

// What probe says about one file, built as text and JSON side by side.
class Report
{
public:
    explicit Report(const Options& options) : m_options(options) {}

    void Line(int depth, const std::wstring& text)
    {
        m_text += std::wstring(2 * depth, L' ') + text + L"\n";
    }
    const std::wstring& Text() const { return m_text; }

    std::string Bext(const _tagTQBWF_Chunk& bwf, UINT32 rate)
    {
        JsonObject json;
        if (!bwf.bextRead)
        {
            Line(2, L"could not be read");
            return json.Add("error", L"unreadable").Text();
        }
        const auto text = [](const char* field, size_t size) {
            return Narrow(reinterpret_cast<const BYTE*>(field), size, CP_ACP);
        };
        const std::wstring description = text(bwf.description, sizeof(bwf.description));
        const std::wstring originator = text(bwf.originator, sizeof(bwf.originator));
        const std::wstring reference =
            text(bwf.originatorReference, sizeof(bwf.originatorReference));
        const std::wstring date = text(bwf.originationDate, sizeof(bwf.originationDate));
        const std::wstring time = text(bwf.originationTime, sizeof(bwf.originationTime));
        const UINT64 timeReference = UINT64(bwf.timeReferenceHigh) << 32 | bwf.timeReferenceLow;
        const char* historyText = GetIxmlCodingHistoryValueGlobal(&bwf);
        const std::wstring history =
            historyText ? text(historyText, std::strlen(historyText)) : std::wstring();
        const std::wstring position =
            FramesToText(m_options.timeFormat, timeReference, rate, false);
        Line(2, L"Description: " + description);
        Line(2, L"Originator: " + originator);
        Line(2, L"Originator reference: " + reference);
        Line(2, L"Origination: " + date + L" " + time);
        Line(2, L"Time reference: " + position + L" (" + std::to_wstring(timeReference) +
                    L" samples)");
        Line(2, L"Version: " + std::to_wstring(bwf.version));
        Line(2, L"Coding history:");
        for (size_t start = 0; start < history.size();)
        {
            size_t end = history.find_first_of(L"\r\n", start);
            if (end == std::wstring::npos) end = history.size();
            if (end > start) Line(3, history.substr(start, end - start));
            start = end + 1;
        }
        return json.Add("description", description)
            .Add("originator", originator)
            .Add("originatorReference", reference)
            .Add("date", date)
            .Add("time", time)
            .AddNumber("timeReference", timeReference)
            .Add("position", position)
            .Add("version", bwf.version)
            .Add("codingHistory", history)
            .Text();
    }

    std::string Ixml(const MediaChunk& chunk)
    {
        CTqXML_Document reader;
        std::vector<IxmlLine> lines;
        // iXML is UTF-8 whatever it declares.
        if (SUCCEEDED(
                reader.OpenMemoryUtf8(chunk.data.data(), static_cast<DWORD>(chunk.data.size()))))
        {
            reader.ParseFile(); // a damaged document still shows its readable part
            OutlineElements(reader, nullptr, 0, lines);
            reader.CloseMemory();
        }
        std::vector<std::string> elements;
        for (const IxmlLine& line : lines)
        {
            Line(2 + line.depth, line.text.empty() ? line.name : line.name + L": " + line.text);
            elements.push_back(JsonObject()
                                   .Add("depth", static_cast<UINT32>(line.depth))
                                   .Add("name", line.name)
                                   .Add("text", line.text)
                                   .Text());
        }
        return JsonArray(elements);
    }

    // What a rendered file remembers of the project that made it.
    std::string ProjectLink(const CTqLinkProjectInfo& link)
    {
        JsonObject json;
        Line(1, L"Project link");
        wchar_t version[16];
        swprintf(version, 16, L"0x%08X", static_cast<unsigned>(link.GetVersion()));
        Line(2, std::wstring(L"Version: ") + version);
        json.Add("version", static_cast<UINT32>(link.GetVersion()));
        const DWORD valid = link.GetValid();
        const auto textField = [&](DWORD bit, const char* key, const wchar_t* label,
                                   const WCHAR* value) {
            if (!(valid & bit) || !value) return;
            Line(2, std::wstring(label) + L": " + value);
            json.Add(key, value);
        };
        const auto blockField = [&](DWORD bit, const char* key, const wchar_t* label, DWORD size) {
            if (!(valid & bit)) return;
            Line(2, std::wstring(label) + L": " + std::to_wstring(size) + L" bytes");
            json.Add(key, static_cast<UINT32>(size));
        };
        textField(TQLINK_PROJECTPATH, "projectPath", L"Project", link.GetProjectPath());
        textField(TQLINK_COMMANDLINE, "commandLine", L"Command line", link.GetCommandLine());
        if (valid & TQLINK_RENDERER)
        {
            wchar_t guid[40] = {};
            StringFromGUID2(link.GetRendererGuid(), guid, 40);
            Line(2, std::wstring(L"Renderer: ") + guid);
            json.Add("renderer", guid);
        }
        textField(TQLINK_TEMPLATENAME, "templateName", L"Template", link.GetTemplateName());
        blockField(TQLINK_TEMPLATEDATA, "templateDataBytes", L"Template data",
                   link.GetTemplateDataSize());
        blockField(TQLINK_APPTEMPLATEDATA, "appTemplateDataBytes", L"Application template data",
                   link.GetAppTemplateDataSize());
        textField(TQLINK_CREATORAPPINFO, "creator", L"Creator", link.GetCreatorAppInfo());
        textField(TQLINK_CREATORWNDCLASS, "creatorWindowClass", L"Creator window class",
                  link.GetCreatorWndClassName());
        blockField(TQLINK_PROJECTDATA, "projectDataBytes", L"Project data",
                   link.GetProjectDataSize());
        return json.Text();
    }

    // The entries of a LIST INFO (8-bit text) or UNFO (16-bit text), read by the kernel's loader
    // for the list's framing (a Wave64 list frames its entries with GUIDs).
    std::string Summary(HANDLE file, Container container, const MediaChunk& chunk, bool wave64List,
                        bool unfo)
    {
        const UINT64 header = container == Container::Wave64 ? 24 : 8;
        const UINT64 typeBytes = wave64List ? 16 : 4;
        LARGE_INTEGER entries;
        entries.QuadPart = static_cast<LONGLONG>(chunk.offset + header + typeBytes);
        ULONGLONG bound = chunk.data.size() - typeBytes;
        SummaryList list;
        const HRESULT hr = SetFilePointerEx(file, entries, nullptr, FILE_BEGIN)
                               ? LoadSummary(file, container, wave64List, unfo, bound, list.list)
                               : TQ_E_READFAILED;
        if (FAILED(hr))
        {
            Line(2, L"could not be read: " + HexCode(hr));
            return JsonObject().Add("error", HexCode(hr)).Text();
        }
        std::vector<std::string> items;
        for (INT32 i = 0; i < list.list.count; ++i)
        {
            const tSUMMARYITEM& item = list.list.items[i];
            const std::wstring value = item.text ? item.text : L"";
            std::wstring label = IdText(item.id);
            for (const InfoLabel& row : kInfoLabels)
                if (row.id == item.id) label = row.label;
            Line(2, label + L": " + value);
            items.push_back(JsonObject()
                                .Add("id", IdText(item.id))
                                .Add("label", label)
                                .Add("text", value)
                                .Text());
        }
        return JsonArray(items);
    }

    std::string Disp(const std::vector<BYTE>& data)
    {
        JsonObject json;
        if (data.size() < 4)
        {
            Line(2, L"too short for its format");
            return json.Add("error", L"too short").Text();
        }
        DWORD format;
        std::memcpy(&format, data.data(), 4);
        json.Add("format", format).AddNumber("bytes", data.size() - 4);
        if (format == CF_TEXT)
        {
            const std::wstring text = Narrow(data.data() + 4, data.size() - 4, CP_ACP);
            Line(2, L"Text: " + text);
            json.Add("text", text);
        }
        else
            Line(2, L"Clipboard format " + std::to_wstring(format) + L", " +
                        std::to_wstring(data.size() - 4) + L" bytes");
        return json.Text();
    }

private:
    const Options& m_options;
    std::wstring m_text;
};

// Probes one file; false with the message printed when it cannot be read.
bool Probe(const Options& options, const std::wstring& path, std::string& json)
{
    tq::UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.Get() == INVALID_HANDLE_VALUE)
    {
        ReportFailure(L"could not open " + path, HRESULT_FROM_WIN32(GetLastError()),
                      {ResultArea::Wave, path});
        return false;
    }
    MediaLayout layout;
    const HRESULT hr = ReadMediaLayout(file.Get(), layout);
    if (FAILED(hr))
    {
        std::wstring what =
            path + (hr == TQ_E_NORIFFHEADER ? L" is not a WAV, RF64, Wave64 or AIFF file"
                                            : L" is damaged: no usable format or sample data");
        if (!layout.warnings.empty()) what += L" (" + layout.warnings.front() + L")";
        ReportFailure(what, hr, {ResultArea::Wave, path});
        return false;
    }
    const WAVEFORMATEX* format = layout.Header();
    BwfRecord bwf;
    CTqLinkProjectInfo link;
    bool linkFound = false;
    LoadKernelMetadata(file.Get(), layout.container, bwf, link, linkFound);
    Report report(options);
    const std::wstring container =
        std::wstring(ContainerName(layout.container)) + (layout.aifc ? L" (AIFF-C)" : L"");
    const std::wstring length =
        FramesToText(options.timeFormat, layout.Frames(), format->nSamplesPerSec, true);
    report.Line(0, path);
    report.Line(1, L"Container: " + container);
    report.Line(
        1, L"Format: " + std::to_wstring(format->nChannels) + L" channels, " +
               std::to_wstring(format->nSamplesPerSec) + L" Hz, " +
               SampleTypeName(layout.sampleType) + L" (format tag 0x" +
               [&] {
                   wchar_t hex[8];
                   swprintf(hex, 8, L"%04X", format->wFormatTag);
                   return std::wstring(hex);
               }() +
               L")");
    report.Line(1, L"Length: " + length + L" (" + std::to_wstring(layout.Frames()) + L" frames)");
    report.Line(1, L"Data offset: " + std::to_wstring(layout.dataStart));
    if (layout.declaredDataBytes != layout.dataBytes)
        report.Line(1, L"The header claims " + std::to_wstring(layout.declaredDataBytes) +
                           L" bytes of samples; the file holds " +
                           std::to_wstring(layout.dataBytes) + L" in whole frames");
    std::vector<std::string> chunks;
    for (const MediaChunk& chunk : layout.chunks)
    {
        JsonObject entry;
        entry.Add("id", chunk.Name())
            .AddNumber("offset", chunk.offset)
            .AddNumber("bytes", chunk.data.size());
        std::wstring title = L"Chunk " + chunk.Name();
        // A RIFF list names its type in four characters, a Wave64 list by a GUID of the family
        // that spells them in its first field.
        const bool wave64List =
            !chunk.aiff && chunk.guid == RIFF64_GUID_LIST && chunk.data.size() >= 16;
        const bool riffList = wave64List || (!chunk.aiff && chunk.guid == Wave64Guid(kList) &&
                                             chunk.data.size() >= 4);
        DWORD listType = 0;
        if (wave64List)
        {
            GUID type;
            std::memcpy(&type, chunk.data.data(), 16);
            listType = FourccOfWave64Guid(type);
        }
        else if (riffList)
            std::memcpy(&listType, chunk.data.data(), 4);
        if (listType)
        {
            title += L" " + IdText(listType);
            entry.Add("type", IdText(listType));
        }
        report.Line(1, title + L" (" + std::to_wstring(chunk.data.size()) + L" bytes)");
        if (chunk.aiff) // AIFF's own chunks are listed, not decoded
        {
        }
        else if (riffList && (listType == kInfo || listType == kUnfo))
            entry.AddJson("items", report.Summary(file.Get(), layout.container, chunk, wave64List,
                                                  listType == kUnfo));
        else if ((chunk.fourcc == RIFF_ID_BEXT || chunk.fourcc == RIFF_ID_BEXT_UPPER))
            entry.AddJson("bext", report.Bext(bwf.chunk, format->nSamplesPerSec));
        else if (chunk.fourcc == RIFF_ID_IXML)
            entry.AddJson("ixml", report.Ixml(chunk));
        else if (chunk.fourcc == kDisp)
            entry.AddJson("disp", report.Disp(chunk.data));
        chunks.push_back(entry.Text());
    }
    const std::string linkJson = linkFound ? report.ProjectLink(link) : "null";
    std::vector<std::string> warnings;
    for (const std::wstring& warning : layout.warnings)
    {
        report.Line(1, L"Damage: " + warning);
        warnings.push_back(JsonString(warning));
    }
    json = JsonObject()
               .Add("file", path)
               .Add("container", container)
               .AddJson("format", JsonObject()
                                      .Add("channels", format->nChannels)
                                      .Add("rate", static_cast<UINT32>(format->nSamplesPerSec))
                                      .Add("type", SampleTypeName(layout.sampleType))
                                      .Add("formatTag", format->wFormatTag)
                                      .Text())
               .AddNumber("frames", layout.Frames())
               .Add("length", length)
               .AddNumber("dataOffset", layout.dataStart)
               .AddNumber("dataBytes", layout.dataBytes)
               .AddNumber("declaredDataBytes", layout.declaredDataBytes)
               .AddJson("chunks", JsonArray(chunks))
               .AddJson("projectLink", linkJson)
               .AddJson("damage", JsonArray(warnings))
               .Text();
    if (!options.json) wprintf(L"%ls", report.Text().c_str());
    return true;
}

} // namespace

int RunProbe(const Options& options)
{
    if (options.arguments.empty())
    {
        fwprintf(stderr, L"tqvsthost: probe needs FILE... (see --help)\n");
        return 1;
    }
    bool allRead = true;
    std::vector<std::string> files;
    for (const std::wstring& argument : options.arguments)
    {
        std::wstring path;
        if (!FullPath(argument, path)) path = argument;
        std::string json;
        if (Probe(options, path, json))
            files.push_back(json);
        else
            allRead = false;
    }
    if (options.json)
    {
        fputs(JsonArray(files).c_str(), stdout);
        fputs("\n", stdout);
    }
    return allRead ? 0 : 1;
}

} // namespace tqhost
