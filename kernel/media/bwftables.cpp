// The iXML element table and the value tables of its enumerated elements.
#include "bwf.h"

#include <iterator>

namespace {

constexpr DWORD V10 = 0x00000001;  // 1.0
constexpr DWORD V130 = 0x001E0001; // 1.30
constexpr DWORD V140 = 0x00280001; // 1.40
constexpr DWORD V152 = 0x00340001; // 1.52

constexpr INT32 C = TQIXML_KIND_CONTAINER;
constexpr INT32 L = TQIXML_KIND_LEAF;
constexpr INT32 G = TQIXML_KIND_GROUP_LEAF;

#define ROW(index, name, since, parent, kind)                                                      \
    {                                                                                              \
        TQMETA_IXML_##index, name, since, parent, kind                                             \
    }

constexpr _tagIxml_Info kInfo[] = {
    ROW(BWFXML, L"BWFXML", V10, nullptr, C),
    ROW(VERSION, L"IXML_VERSION", V10, L"BWFXML", L),
    ROW(PROJECT, L"PROJECT", V10, L"BWFXML", L),
    ROW(SCENE, L"SCENE", V10, L"BWFXML", L),
    ROW(TAKE, L"TAKE", V10, L"BWFXML", L),
    ROW(TAPE, L"TAPE", V10, L"BWFXML", L),
    ROW(CIRCLED, L"CIRCLED", V10, L"BWFXML", L),
    ROW(NO_GOOD, L"NO_GOOD", V152, L"BWFXML", L),
    ROW(FALSE_START, L"FALSE_START", V152, L"BWFXML", L),
    ROW(WILD_TRACK, L"WILD_TRACK", V152, L"BWFXML", L),
    ROW(FILE_UID, L"FILE_UID", V10, L"BWFXML", L),
    ROW(UBITS, L"UBITS", V10, L"BWFXML", L),
    ROW(NOTE, L"NOTE", V10, L"BWFXML", L),
    ROW(USER, L"USER", V10, L"BWFXML", L),
    ROW(PRE_RECORD_SAMPLECOUNT, L"PRE_RECORD_SAMPLECOUNT", V130, L"BWFXML", L),
    ROW(SPEED, L"SPEED", V10, L"BWFXML", C),
    ROW(SPEED_NOTE, L"NOTE", V10, L"SPEED", G),
    ROW(MASTER_SPEED, L"MASTER_SPEED", V10, L"SPEED", G),
    ROW(CURRENT_SPEED, L"CURRENT_SPEED", V10, L"SPEED", G),
    ROW(TIMECODE_FLAG, L"TIMECODE_FLAG", V10, L"SPEED", G),
    ROW(TIMECODE_RATE, L"TIMECODE_RATE", V10, L"SPEED", G),
    ROW(FILE_SAMPLE_RATE, L"FILE_SAMPLE_RATE", V10, L"SPEED", G),
    ROW(AUDIO_BIT_DEPTH, L"AUDIO_BIT_DEPTH", V10, L"SPEED", G),
    ROW(DIGITIZER_SAMPLE_RATE, L"DIGITIZER_SAMPLE_RATE", V10, L"SPEED", G),
    ROW(TIMESTAMP_HI, L"TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI", V10, L"SPEED", G),
    ROW(TIMESTAMP_LO, L"TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO", V10, L"SPEED", G),
    ROW(TIMESTAMP_SAMPLE_RATE, L"TIMESTAMP_SAMPLE_RATE", V10, L"SPEED", G),
    ROW(HISTORY, L"HISTORY", V10, L"BWFXML", C),
    ROW(ORIGINAL_FILENAME, L"ORIGINAL_FILENAME", V10, L"HISTORY", G),
    ROW(PARENT_FILENAME, L"PARENT_FILENAME", V10, L"HISTORY", G),
    ROW(PARENT_UID, L"PARENT_UID", V10, L"HISTORY", G),
    ROW(FILE_SET, L"FILE_SET", V10, L"BWFXML", C),
    ROW(TOTAL_FILES, L"TOTAL_FILES", V10, L"FILE_SET", G),
    ROW(FAMILY_UID, L"FAMILY_UID", V10, L"FILE_SET", G),
    ROW(FAMILY_NAME, L"FAMILY_NAME", V10, L"FILE_SET", G),
    ROW(FILE_SET_INDEX, L"FILE_SET_INDEX", V10, L"FILE_SET", G),
    ROW(BEXT, L"BEXT", V10, L"BWFXML", C),
    ROW(BWF_DESCRIPTION, L"BWF_DESCRIPTION", V10, L"BEXT", G),
    ROW(BWF_ORIGINATOR, L"BWF_ORIGINATOR", V10, L"BEXT", G),
    ROW(BWF_ORIGINATOR_REFERENCE, L"BWF_ORIGINATOR_REFERENCE", V10, L"BEXT", G),
    ROW(BWF_ORIGINATION_DATE, L"BWF_ORIGINATION_DATE", V10, L"BEXT", G),
    ROW(BWF_ORIGINATION_TIME, L"BWF_ORIGINATION_TIME", V10, L"BEXT", G),
    ROW(BWF_TIME_REFERENCE_LOW, L"BWF_TIME_REFERENCE_LOW", V10, L"BEXT", G),
    ROW(BWF_TIME_REFERENCE_HIGH, L"BWF_TIME_REFERENCE_HIGH", V10, L"BEXT", G),
    ROW(BWF_VERSION, L"BWF_VERSION", V10, L"BEXT", G),
    ROW(BWF_UMID, L"BWF_UMID", V10, L"BEXT", G),
    ROW(BWF_RESERVED, L"BWF_RESERVED", V10, L"BEXT", G),
    ROW(BWF_CODING_HISTORY, L"BWF_CODING_HISTORY", V10, L"BEXT", G),
    ROW(TRACK_LIST, L"TRACK_LIST", V10, L"BWFXML", C),
    ROW(TRACK_COUNT, L"TRACK_COUNT", V10, L"TRACK_LIST", L),
    ROW(TRACK, L"TRACK", V10, L"TRACK_LIST", C),
    ROW(CHANNEL_INDEX, L"CHANNEL_INDEX", V10, L"TRACK", G),
    ROW(INTERLEAVE_INDEX, L"INTERLEAVE_INDEX", V10, L"TRACK", G),
    ROW(NAME, L"NAME", V10, L"TRACK", G),
    ROW(FUNCTION, L"FUNCTION", V10, L"TRACK", G),
    ROW(SYNC_POINT_LIST, L"SYNC_POINT_LIST", V140, L"BWFXML", C),
    ROW(SYNC_POINT_COUNT, L"SYNC_POINT_COUNT", V140, L"SYNC_POINT_LIST", L),
    ROW(SYNC_POINT, L"SYNC_POINT", V140, L"SYNC_POINT_LIST", C),
    ROW(SYNC_POINT_TYPE, L"SYNC_POINT_TYPE", V140, L"SYNC_POINT", G),
    ROW(SYNC_POINT_FUNCTION, L"SYNC_POINT_FUNCTION", V140, L"SYNC_POINT", G),
    ROW(SYNC_POINT_COMMENT, L"SYNC_POINT_COMMENT", V140, L"SYNC_POINT", G),
    ROW(SYNC_POINT_LOW, L"SYNC_POINT_LOW", V140, L"SYNC_POINT", G),
    ROW(SYNC_POINT_HIGH, L"SYNC_POINT_HIGH", V140, L"SYNC_POINT", G),
    ROW(SYNC_POINT_EVENT_DURATION, L"SYNC_POINT_EVENT_DURATION", V140, L"SYNC_POINT", G),
    ROW(END, nullptr, V10, nullptr, L),
    ROW(UNKNOWN_LIST, L"<Unknown iXML Element List>", V10, L"BWFXML", C),
};

#undef ROW

constexpr const WCHAR* kInvalid = L"Invalid IXML Value";

constexpr _tagIxml_Value kSpeedFPS[] = {
    {0, L"24000/1001", L"23.976 fps = 24000/1001"},
    {1, L"24/1", L"24 fps = 24/1"},
    {2, L"25/1", L"25 fps = 25/1"},
    {3, L"30000/1001", L"29.97 fps = 30000/1001"},
    {4, L"30/1", L"30 fps = 30/1"},
    {5, L"50/1", L"50 fps = 50/1"},
    {6, L"60000/1001", L"59.94 fps = 60000/1001"},
    {7, L"60/1", L"60 fps = 60/1"},
    {-1, kInvalid, nullptr},
};

constexpr const WCHAR* kTrackFunctionNames[] = {
    L"M-MID_SIDE",   L"S-MID_SIDE",  L"X-X_Y",        L"Y-X_Y",        L"L-MIX",
    L"R-MIX",        L"MIX",         L"LEFT",         L"RIGHT",        L"F-DMS",
    L"8-DMS",        L"R-DMS",       L"L-LCR",        L"C-LCR",        L"R-LCR",
    L"L-LCRS",       L"C-LCRS",      L"R-LCRS",       L"S-LCRS",       L"L-5.1",
    L"C-5.1",        L"R-5.1",       L"Ls-5.1",       L"Rs-5.1",       L"LFE-5.1",
    L"L-7.1",        L"Lc-7.1",      L"C-7.1",        L"Rc-7.1",       L"R-7.1",
    L"Ls-7.1",       L"Rs-7.1",      L"LFE-7.1",      L"L-GENERIC",    L"Lc-GENERIC",
    L"C-GENERIC",    L"Rc-GENERIC",  L"R-GENERIC",    L"Ls-GENERIC",   L"Cs-GENERIC",
    L"Rs-GENERIC",   L"LFE-GENERIC", L"W-SOUNDFIELD", L"X-SOUNDFIELD", L"Y-SOUNDFIELD",
    L"Z-SOUNDFIELD", L"VIDEO"};

// The function table is long and uniform: built once from its names.
struct TrackFunctions
{
    _tagIxml_Value rows[std::size(kTrackFunctionNames) + 1];
    constexpr TrackFunctions() : rows()
    {
        for (size_t i = 0; i < std::size(kTrackFunctionNames); ++i)
            rows[i] = {static_cast<INT32>(i), kTrackFunctionNames[i], nullptr};
        rows[std::size(kTrackFunctionNames)] = {-1, kInvalid, nullptr};
    }
};
constexpr TrackFunctions kTrackFunctions;

constexpr _tagIxml_Value kSyncPointFunctions[] = {
    {0, L"PRE_RECORD_SAMPLECOUNT", nullptr}, {1, L"SLATE_GENERIC", nullptr},
    {2, L"MARKER_GENERIC", nullptr},         {3, L"MARKER_AUTOPLAY", nullptr},
    {4, L"MARKER_AUTOPLAYSTOP", nullptr},    {5, L"MARKER_AUTOPLAYLOOP", nullptr},
    {6, L"GROUP_OFFSET", nullptr},           {-1, kInvalid, nullptr},
};

constexpr _tagIxml_Value kSyncPointTypes[] = {
    {0, L"RELATIVE", nullptr}, {1, L"ABSOLUTE", nullptr}, {-1, kInvalid, nullptr}};
constexpr _tagIxml_Value kTimeCodeFlags[] = {
    {0, L"NDF", nullptr}, {1, L"DF", nullptr}, {-1, kInvalid, nullptr}};
constexpr _tagIxml_Value kBools[] = {
    {0, L"FALSE", nullptr}, {1, L"TRUE", nullptr}, {-1, kInvalid, nullptr}};

template <size_t N>
const _tagIxml_Value* Table(const _tagIxml_Value (&table)[N], INT32* rows)
{
    if (rows) *rows = static_cast<INT32>(N);
    return table;
}

} // namespace

TQKERNEL_API const _tagIxml_Info* GetTblIxmlInfo(INT32* rows)
{
    if (rows) *rows = static_cast<INT32>(std::size(kInfo));
    return kInfo;
}

TQKERNEL_API const _tagIxml_Value* GetTblIxmlSpeedFPS(INT32* rows)
{
    return Table(kSpeedFPS, rows);
}

TQKERNEL_API const _tagIxml_Value* GetTblIxmlTrackFuncts(INT32* rows)
{
    return Table(kTrackFunctions.rows, rows);
}

TQKERNEL_API const _tagIxml_Value* GetTblIxmlSyncPtFuncts(INT32* rows)
{
    return Table(kSyncPointFunctions, rows);
}

TQKERNEL_API const _tagIxml_Value* GetTblIxmlSyncPtTypes(INT32* rows)
{
    return Table(kSyncPointTypes, rows);
}

TQKERNEL_API const _tagIxml_Value* GetTblIxmlSpeedTimeCode(INT32* rows)
{
    return Table(kTimeCodeFlags, rows);
}

TQKERNEL_API const _tagIxml_Value* GetTblIxmlBools(INT32* rows)
{
    return Table(kBools, rows);
}

TQKERNEL_API BOOL IsKnownIxmlNodeGlobal(const WCHAR* name)
{
    if (!name) return FALSE;
    for (const _tagIxml_Info& row : kInfo)
    {
        if (row.index >= TQMETA_IXML_END) break;
        if (CompareStringOrdinal(row.name, -1, name, -1, TRUE) == CSTR_EQUAL) return TRUE;
    }
    return FALSE;
}

TQKERNEL_API INT32 GetIxmlInfoIndexForMetaIdxGlobal(const _tagTQBWF_Chunk*, INT32 index)
{
    for (size_t i = 0; i < std::size(kInfo); ++i)
        if (kInfo[i].index == index) return static_cast<INT32>(i);
    return -1;
}
