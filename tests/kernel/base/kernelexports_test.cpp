// The server exports the kernel: a sample of every area's functions in its export directory.
#include "support/testpaths.h"
#include "uniquehandle.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

// The names in an image's export directory, read without running or resolving the image.
std::set<std::string> ExportedNames(const std::wstring& path)
{
    std::set<std::string> names;
    tq::UniqueModule image(LoadLibraryExW(
        path.c_str(), nullptr, LOAD_LIBRARY_AS_IMAGE_RESOURCE | LOAD_LIBRARY_AS_DATAFILE));
    if (!image) return names;
    // The low bits of a handle to an image loaded as a resource mark it as such.
    const auto* base = reinterpret_cast<const BYTE*>(reinterpret_cast<ULONG_PTR>(image.Get()) &
                                                     ~static_cast<ULONG_PTR>(3));
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    if (dos->e_magic != IMAGE_DOS_SIGNATURE) return names;
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    if (nt->Signature != IMAGE_NT_SIGNATURE) return names;
    const IMAGE_DATA_DIRECTORY& entry =
        nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    if (!entry.VirtualAddress) return names;
    const auto* exports =
        reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base + entry.VirtualAddress);
    const auto* nameRvas = reinterpret_cast<const DWORD*>(base + exports->AddressOfNames);
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        names.insert(reinterpret_cast<const char*>(base + nameRvas[i]));
    return names;
}

// A few functions of each kernel area, under their plain C names.
const char* const kSample[] = {
    // start-up, CPU and OS services
    "TqKernel_EarlyInitialize",
    "TqKernel_LateTerminate",
    "TqGetCPUSupport",
    "TqGetOS",
    "TqOSVersionOK",
    "TqGetMicrosec",
    "TqVersion_GetString",
    "TqOleInit",
    // lists and queues
    "TqList_CreateExZ",
    "TqList_Sort",
    "TqQueueInsert",
    "TqQueueRemove",
    // formatted printing and number text
    "TqPrintF",
    "TqCchPrintF",
    "TqPrintF_AddToken",
    "TqLongToText",
    // timecode, nano-time and music-time text
    "TQSMPTE_FrameCountToSMPTE",
    "TQSMPTE_TextToSMPTE",
    "TQSMPTE_DeccrementByFrame",
    "TqNanoTimeToText",
    "TqNanoTimeToTextExN",
    "TqTextToNanoTimeToken2",
    "TqTicksToText",
    // language and string resources
    "TqLang_Open",
    "TqGetString",
    "TqGetInat",
    "TqLoadCursor",
    // error handler
    "TqErrorHandler_ComposeErrorText",
    "TqErrorHandler_DetailsAddString",
    // paths and special folders
    "TqAddSlashToPathName",
    "TqReplaceExtensionOnPathName",
    "TqIsMatchWildCard",
    "TqGetFileNamePtrRelative",
    "TqCreateTempFileAndNameEx",
    "TqGetSpecialFolderVer",
    "TqCalcPathEllipsisEx",
    // settings store
    "TqMetric_Open",
    "TqGetMetricEx",
    "TqSetMetricStream",
    // the log, a class exported under its C++ names
    "_ZN4CLog4InitEPKwmii",
    "_ZN4CLog5WriteEmPKciPKwz",
    "_ZN4CLog8ShutdownEv",
    // memory tokens and handle passing, the classes under their C++ names
    "DuplicateHandleFromProcessId",
    "DuplicateHandleToProcessId",
    "_ZN23CMappingOfTqMemoryTokenC1ERK14_tqmemorytokenm",
    "_ZNK24COutOfProcessMemoryToken14GetMemoryTokenEP14_tqmemorytoken",
    // audio data
    "TqAudio_GetSampleType",
    "TqAudio_GetCopyFunction2",
    "TqAudioCopy_UnitTest",
    "TqAudio_InterleaveStereo",
    "TqAudio_GetFormatText",
    // chunk files
    "riff_FindChunkHeader",
    "riff_UpdateRIFFSize",
    "mriff_GetWfx",
    "iff_FindChunkHeader",
    "iff_GetAIFFWfx",
    "aiff_CreateRate",
    "TqSummary_Load",
    "TqSummary_SaveUNFO",
    "TqSummary_Merge",
    "displist_Load",
    "displist_Save",
    "TqSummary_Load64",
    "TqSummaryRF64_Save",
    "displist64_Load",
    "displistRF64_Load",
    "displist_CreateBitmapFromFile",
    "bwfriff_LoadInfo",
    "bwfriff_UpdateStreamChunk",
    "BuildRawBwfIxmlChunkGlobal",
    "ExtractIxmlContent",
    "bwfriff64_LoadInfo",
    "bwfRF64_UpdateStreamChunk",
    "ProjectLinkRiff_LoadInfo",
    "ProjectLinkRiffRF64_LoadInfo",
    "_ZN18CTqLinkProjectInfo14SetProjectPathEPKw",
    "riff64_FindChunkHeader",
    "riff64_CompleteChunk",
    "RF64_FindChunk",
    "SeekToRF64End",
    "TqGetFileWfx",
    "TqInsertW64Header",
    "TqFixTrashedWav",
    // XML document: the class under its C++ names, the entity helpers under plain ones
    "_ZN15CTqXML_DocumentC1Ev",
    "_ZN15CTqXML_Document8OpenFileEPKw",
    "_ZN15CTqXML_Document9ParseFileEv",
    "TqXML_RemoveEscapes",
};

TEST(KernelExports, ServerExportsEveryAreasFunctions)
{
    const std::wstring server = tqtest::ProgramFolder() + L"\\tqvstserver.exe";
    ASSERT_TRUE(tqtest::FileExists(server));
    const std::set<std::string> names = ExportedNames(server);
    ASSERT_FALSE(names.empty()) << "no export directory";
    for (const char* name : kSample)
        EXPECT_TRUE(names.count(name)) << name;
}

} // namespace
