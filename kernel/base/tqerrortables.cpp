// The built-in context and reason tables, the registry of callers' reason tables, and the
// look-ups of composition.
#include "tqerrorhandler.h"

#include "tqstrings.h"

namespace {

struct ContextRow
{
    UINT_PTR id;
    const wchar_t* text;
};

// The first row answers for ids the table does not know.
const ContextRow kContexts[] = {
    {0, TQS(ErrCtxGeneral)},
    {1, TQS(ErrCtxUndo)},
    {2, TQS(ErrCtxPluginLoad)},
    {3, TQS(ErrCtxEffectChain)},
    {4, TQS(ErrCtxProjectMedia)},
    {5, TQS(ErrCtxProjectLoad)},
    {6, TQS(ErrCtxProjectSave)},
    {7, TQS(ErrCtxMediaCreate)},
    {8, TQS(ErrCtxEdit)},
    {9, TQS(ErrCtxEdlImport)},
    {10, TQS(ErrCtxEdlExport)},
    {11, TQS(ErrCtxPlaybackStart)},
    {12, TQS(ErrCtxRecording)},
    {14, TQS(ErrCtxAudioDeviceOpen)},
    {15, TQS(ErrCtxPresetLoad)},
    {16, TQS(ErrCtxProjectNew)},
    {17, TQS(ErrCtxTrackNew)},
    {18, TQS(ErrCtxTimecodeIn)},
    {19, TQS(ErrCtxMidiTimecode)},
    {20, TQS(ErrCtxMidiClock)},
    {21, TQS(ErrCtxPlaybackFormat)},
    {22, TQS(ErrCtxFilesOpen)},
    {23, TQS(ErrCtxFilesSave)},
    {24, TQS(ErrCtxToolbar)},
    {25, TQS(ErrCtxTrackPlugins)},
    {26, TQS(ErrCtxAppStart)},
    {27, TQS(ErrCtxFormatPlugin)},
    {28, TQS(ErrCtxEncode)},
    {29, TQS(ErrCtxFileWrite)},
    {30, TQS(ErrCtxFileTransfer)},
    {31, TQS(ErrCtxDxRegister)},
    {32, TQS(ErrCtxDxUnregister)},
    {33, TQS(ErrCtxMediaImport)},
    {34, TQS(ErrCtxProxyCreate)},
    {35, TQS(ErrCtxDevicePreview)},
    {36, TQS(ErrCtxDeviceCapture)},
    {37, TQS(ErrCtxDeviceControl)},
    {38, TQS(ErrCtxDeviceFilePreview)},
    {39, TQS(ErrCtxDevicePrint)},
    {41, TQS(ErrCtxCameraScanner)},
    {43, TQS(ErrCtxDiskManagement)},
    {44, TQS(ErrCtxCdExtract)},
    {45, TQS(ErrCtxCommand)},
    {46, TQS(ErrCtxScript)},
    {47, TQS(ErrCtxOldProject)},
    {50, TQS(ErrCtxSourceProjectInfo)},
    {51, TQS(ErrCtxAafImport)},
    {52, TQS(ErrCtxAafExport)},
    {54, TQS(ErrCtxSourceProjectLaunch)},
    {56, TQS(ErrCtxCdNoInfo)},
    {57, TQS(ErrCtxFileRename)},
};

const _tqerror_table kReasons[] = {
    {(HRESULT)0x80004005, TQS(ErrUndetermined)},
    {(HRESULT)0x8000FFFF, TQS(ErrUnexpected)},
    {(HRESULT)0x80070057, TQS(ErrInvalidArg)},
    {(HRESULT)0x80004003, TQS(ErrInvalidPointer)},
    {(HRESULT)0x80030009, TQS(ErrInvalidPointer)},
    {(HRESULT)0x80004001, TQS(ErrNotImplemented)},
    {(HRESULT)0x8007000E, TQS(ErrLowMemory)},
    {(HRESULT)0x80030070, TQS(ErrLowMemory)},
    {(HRESULT)0x80070006, TQS(ErrInvalidHandle)},
    {(HRESULT)0x80004002, TQS(ErrNoInterface)},
    {(HRESULT)0x80070005, TQS(ErrAccessDenied)},
    {(HRESULT)0x80040154, TQS(ErrComInit)},
    {(HRESULT)0x8004E000, TQS(ErrMediaType)},
    {(HRESULT)0x0004E005, TQS(ErrNotConfigured)},
    {(HRESULT)0x8004E001, TQS(ErrNotEnabled)},
    {(HRESULT)0x8004E002, TQS(ErrDiskFull)},
    {(HRESULT)0x8004E003, TQS(ErrLowResources)},
    {(HRESULT)0x8004E004, TQS(ErrResourceAllocated)},
    {(HRESULT)0x8004E005, TQS(ErrBusy)},
    {(HRESULT)0x8004E00C, TQS(ErrCancelled)},
    {(HRESULT)0x8004E006, TQS(ErrFileCreate)},
    {(HRESULT)0x8004E032, TQS(ErrFileCreateExists)},
    {(HRESULT)0x8004E007, TQS(ErrFileOpen)},
    {(HRESULT)0x8004E05A, TQS(ErrFileOpenShared)},
    {(HRESULT)0x8004E05B, TQS(ErrFileOpenPermission)},
    {(HRESULT)0x8004E009, TQS(ErrFileWrite)},
    {(HRESULT)0x8003001D, TQS(ErrFileWrite)},
    {(HRESULT)0x8004E008, TQS(ErrFileRead)},
    {(HRESULT)0x8004E16D, TQS(ErrFileReadOnly)},
    {(HRESULT)0x8004E00B, TQS(ErrFileCorrupt)},
    {(HRESULT)0x8004E204, TQS(ErrPresetIncompatible)},
    {(HRESULT)0x8004E00D, TQS(ErrFileName)},
    {(HRESULT)0x8004E01C, TQS(ErrFileVersion)},
    {(HRESULT)0x8004E165, TQS(ErrFileBusy)},
    {(HRESULT)0x8004E00E, TQS(ErrResourceMissing)},
    {(HRESULT)0x8004E00F, TQS(ErrWindowCreate)},
    {(HRESULT)0x8004E010, TQS(ErrDriverOpen)},
    {(HRESULT)0x8004E011, TQS(ErrCodecOpen)},
    {(HRESULT)0x8004E01E, TQS(ErrCodecOpen)},
    {(HRESULT)0x8004E012, TQS(ErrCodecConvert)},
    {(HRESULT)0xC00D0BC3, TQS(ErrCodecConvert)},
    {(HRESULT)0xC00D0BC5, TQS(ErrCodecConvert)},
    {(HRESULT)0x8004E015, TQS(ErrDeviceUnavailable)},
    {(HRESULT)0x80040037, TQS(ErrDeviceMissing)},
    {(HRESULT)0x80040964, TQS(ErrDeviceInUse)},
    {(HRESULT)0x800404B0, TQS(ErrDeviceInvalid)},
    {(HRESULT)0x800404E0, TQS(ErrNoMoreDevices)},
    {(HRESULT)0x8004E0A0, TQS(ErrNoDevices)},
    {(HRESULT)0x8004E016, TQS(ErrUnsupportedFormat)},
    {(HRESULT)0x8004E017, TQS(ErrException)},
    {(HRESULT)0x8004E0A1, TQS(ErrPlaybackTimeout)},
    {(HRESULT)0x8004E080, TQS(ErrNoRiffHeader)},
    {(HRESULT)0x8004E081, TQS(ErrNoListHeader)},
    {(HRESULT)0x8004E082, TQS(ErrZeroChunk)},
    {(HRESULT)0x8004E083, TQS(ErrNeedsUpdate)},
    {(HRESULT)0x80030005, TQS(ErrStgAccess)},
    {(HRESULT)0x80030103, TQS(ErrStgWrite)},
    {(HRESULT)0x8004E084, TQS(ErrPluginsMissing)},
    {(HRESULT)0x0004E009, TQS(ErrPluginPresets)},
    {(HRESULT)0x0004E003, TQS(ErrMediaMissing)},
    {(HRESULT)0x8004E02E, TQS(ErrNoPluginRoom)},
    {(HRESULT)0x8004E02F, TQS(ErrPluginsNotOnTrack)},
    {(HRESULT)0x8004E030, TQS(ErrPluginsMediaType)},
    {(HRESULT)0x8004E031, TQS(ErrChainPartial)},
    {(HRESULT)0x8004E051, TQS(ErrFileInProject)},
    {(HRESULT)0x8004E0A3, TQS(ErrPeaks)},
    {(HRESULT)0x8004E01F, TQS(ErrNoVideoCodec)},
    {(HRESULT)0x0004E006, TQS(ErrNoVideoCodec)},
    {(HRESULT)0x8004E0A5, TQS(ErrNoTemplate)},
    {(HRESULT)0x8004E0AF, TQS(ErrTemplateInvalid)},
    {(HRESULT)0x8004E019, TQS(ErrDeleteFailed)},
    {(HRESULT)0x8004E0A6, TQS(ErrCommandFailed)},
    {(HRESULT)0x0004E000, TQS(ErrRecovered)},
    {(HRESULT)0x8004E00A, TQS(ErrNotFound)},
    {(HRESULT)0x8004E01A, TQS(ErrNoAudio)},
    {(HRESULT)0x8004E01B, TQS(ErrComponentInit)},
    {(HRESULT)0x8004E01D, TQS(ErrNoVideo)},
    {(HRESULT)0x8004E023, TQS(ErrShortAudio)},
    {(HRESULT)0x8004E050, TQS(ErrShortData)},
    {(HRESULT)0x8004E025, TQS(ErrMaybeCorrupt)},
    {(HRESULT)0x8004E026, TQS(ErrTooManyFiles)},
    {(HRESULT)0x8004E028, TQS(ErrCodecRate)},
    {(HRESULT)0x8004E0A8, TQS(ErrBandwidth)},
    {(HRESULT)0x8004E054, TQS(ErrTooSlow)},
    {(HRESULT)0x0004E007, TQS(ErrNoStream)},
    {(HRESULT)0x0004E008, TQS(ErrSomeStreams)},
    {(HRESULT)0x8004E035, TQS(ErrStreamUnrecognized)},
    {(HRESULT)0x8004E036, TQS(ErrStreamOpen)},
    {(HRESULT)0x8004E037, TQS(ErrStreamCreate)},
    {(HRESULT)0x8004E038, TQS(ErrStreamRead)},
    {(HRESULT)0x8004E039, TQS(ErrStreamWrite)},
    {(HRESULT)0x8004E171, TQS(ErrOtherStreamOpen)},
    {(HRESULT)0x8004E172, TQS(ErrStreamNumber)},
    {(HRESULT)0x8004E173, TQS(ErrUnnamedProject)},
    {(HRESULT)0x8004E033, TQS(ErrFileType)},
    {(HRESULT)0x8004E03A, TQS(ErrRenderTooBig)},
    {(HRESULT)0x8004E0C5, TQS(ErrIoctl)},
    {(HRESULT)0x0004E00B, TQS(ErrFileRenamed)},
    {(HRESULT)0x0004E00C, TQS(ErrStreamFormat)},
    {(HRESULT)0x0004E00E, TQS(ErrOlderProject)},
    {(HRESULT)0x8004E03B, TQS(ErrRenderSettings)},
    {(HRESULT)0x8004E03D, TQS(ErrInputChannels)},
    {(HRESULT)0x8004E03E, TQS(ErrFrameSize)},
    {(HRESULT)0x0004E010, TQS(ErrOtherVersion)},
    {(HRESULT)0x8004E163, TQS(ErrNoRenderer)},
    {(HRESULT)0x0004E015, TQS(ErrDevicesRemapped)},
    {(HRESULT)0x8004E0AB, TQS(ErrAudioBitrate)},
    {(HRESULT)0x8004E0B4, TQS(ErrPeakBitrate)},
    {(HRESULT)0x8004E142, TQS(ErrAdmin)},
    {(HRESULT)0x8004E047, TQS(ErrFormatPluginInit)},
    {(HRESULT)0x8004E02A, TQS(ErrBitDepth)},
    {(HRESULT)0x8004E02B, TQS(ErrChannels)},
    {(HRESULT)0xC00D0BC2, TQS(ErrWmAudioCodec)},
    {(HRESULT)0xC00D0BC4, TQS(ErrWmVideoCodec)},
    {(HRESULT)0xC00D0BCF, TQS(ErrWmNoSamples)},
    {(HRESULT)0xC00D002B, TQS(ErrWmState)},
    {(HRESULT)0xC00D0BC6, TQS(ErrWmProfile)},
    {(HRESULT)0x8004E020, TQS(ErrRenameFailed)},
    {(HRESULT)0x8004E162, TQS(ErrTwain)},
    {(HRESULT)0x8004E0B5, TQS(ErrNoWia)},
    {(HRESULT)0x8004E0B6, TQS(ErrWiaDialog)},
    {(HRESULT)0x8004E164, TQS(ErrFileTypeVersion)},
    {(HRESULT)0x8004E109, TQS(ErrCdMarkers)},
    {(HRESULT)0x8004E045, TQS(ErrCommandUnavailable)},
    {(HRESULT)0x8004E089, TQS(ErrNewerFile)},
    {(HRESULT)0x0004E01D, TQS(ErrOlderFileTracks)},
    {(HRESULT)0x0004E018, TQS(ErrConversionInexact)},
    {(HRESULT)0x8004E17C, TQS(ErrTrackLimit)},
    {(HRESULT)0x8004E17F, TQS(ErrConvertFile)},
    {(HRESULT)0x8004E05C, TQS(ErrLaunchSecurity)},
    {(HRESULT)0x8004E05D, TQS(ErrSourceInfo)},
    {(HRESULT)0x8004E05E, TQS(ErrSourceMissing)},
    {(HRESULT)0x8004E060, TQS(ErrDotNet)},
    {(HRESULT)0x8004E0D4, TQS(ErrNoAspi)},
    {(HRESULT)0x8004E03C, TQS(ErrBufferTooSmall)},
    {(HRESULT)0x8004E166, TQS(ErrClipboardOpen)},
    {(HRESULT)0x8004E0A9, TQS(ErrDuplicate)},
    {(HRESULT)0x800A0026, TQS(ErrEndOfFile)},
    {(HRESULT)0x8004E0EC, TQS(ErrNoInternet)},
    {(HRESULT)0x8004E0EE, TQS(ErrNoInternetData)},
    {(HRESULT)0x8004E0ED, TQS(ErrUrlOpen)},
    {(HRESULT)0x8004E0EF, TQS(ErrInternetRead)},
    {(HRESULT)0x8004E0AC, TQS(ErrInProgress)},
    {(HRESULT)0x8004E055, TQS(ErrCdTrack)},
    {(HRESULT)0x8004E0C9, TQS(ErrNoDisc)},
    {(HRESULT)0x8004E0C2, TQS(ErrDeviceNotConfigured)},
    {(HRESULT)0x8004E0AA, TQS(ErrRecordingBusy)},
    {(HRESULT)0x8004E024, TQS(ErrScriptRead)},
    {(HRESULT)0x8004E14F, TQS(ErrKeyStatus)},
    {(HRESULT)0x8004E08A, TQS(ErrTerminalServices)},
    {(HRESULT)0x8004E186, TQS(ErrFolderNesting)},
    {(HRESULT)0x8004E061, TQS(ErrSampleRate)},
    {(HRESULT)0x8004E16E, TQS(ErrMoveInUse)},
    {(HRESULT)0x8004E16F, TQS(ErrDeleteInUse)},
    {(HRESULT)0x8004E170, TQS(ErrFileExists)},
    {(HRESULT)0x8004E189, TQS(ErrCompressedSamples)},
    {(HRESULT)0x0004E019, TQS(ErrVst3Info)},
    {(HRESULT)0x0004E01A, TQS(ErrFileInvalid)},
    {(HRESULT)0x0004E01B, TQS(ErrNoVst3)},
    {(HRESULT)0x0004E01C, TQS(ErrVstVersion)},
};

struct RegisteredTable
{
    const _tqerror_table* rows;
    int count;
    HTQLANG lang; // null: the kernel language, whichever it is at the time of the look-up
};

constexpr int kMaxTables = 32;
RegisteredTable g_tables[kMaxTables];
int g_tableCount;
SRWLOCK g_tablesLock = SRWLOCK_INIT;

const _tqerror_table* FindRow(const _tqerror_table* rows, int count, HRESULT code)
{
    for (int i = 0; i < count; ++i)
        if (rows[i].code == code) return &rows[i];
    return nullptr;
}

} // namespace

TQKERNEL_API const wchar_t* TqErrorHandler_GetContextString(UINT_PTR context)
{
    if (!IS_INTRESOURCE(context))
        return TqGetStringSmart(nullptr, reinterpret_cast<const wchar_t*>(context));
    for (const ContextRow& row : kContexts)
        if (row.id == context) return TqGetString(nullptr, row.text);
    return TqGetString(nullptr, kContexts[0].text);
}

TQKERNEL_API const wchar_t* TqErrorHandler_GetHresultString(HRESULT code)
{
    const _tqerror_table* row = nullptr;
    HTQLANG lang = nullptr;
    AcquireSRWLockShared(&g_tablesLock);
    for (int i = 0; i < g_tableCount; ++i)
    {
        row = FindRow(g_tables[i].rows, g_tables[i].count, code);
        if (row)
        {
            lang = g_tables[i].lang;
            break;
        }
    }
    ReleaseSRWLockShared(&g_tablesLock);
    if (row) return TqGetStringSmart(lang, row->text);
    row = FindRow(kReasons, ARRAYSIZE(kReasons), code);
    return row ? TqGetString(nullptr, row->text) : nullptr;
}

TQKERNEL_API HRESULT TqErrorHandler_AddErrorTableLang(HTQLANG lang, const _tqerror_table* table,
                                                      int count)
{
    if (!table || count <= 0) return E_INVALIDARG;
    AcquireSRWLockExclusive(&g_tablesLock);
    const bool full = g_tableCount == kMaxTables;
    if (!full) g_tables[g_tableCount++] = {table, count, lang};
    ReleaseSRWLockExclusive(&g_tablesLock);
    return full ? S_FALSE : S_OK;
}

TQKERNEL_API HRESULT TqErrorHandler_AddErrorTable(const _tqerror_table* table, int count)
{
    return TqErrorHandler_AddErrorTableLang(nullptr, table, count);
}
