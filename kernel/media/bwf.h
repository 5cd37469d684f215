// Broadcast-wave metadata: the "bext" record and the "iXML" document of a wave file, read into
// one record and written back, with the iXML elements this code does not know kept in place.
#pragma once

#include "riff.h"

#define RIFF_ID_BEXT RIFF_ID('b', 'e', 'x', 't')
#define RIFF_ID_BEXT_UPPER RIFF_ID('B', 'E', 'X', 'T')
#define RIFF_ID_IXML RIFF_ID('i', 'X', 'M', 'L')

// Which chunk an update or deletion is about.
typedef enum BWF_CHUNK_ENUM
{
    BWF_CHUNK_BEXT = 0,
    BWF_CHUNK_IXML = 1,
} BWF_CHUNK_ENUM;

// Which framing a writer goes through.
typedef enum BWF_RIFF_TYPE
{
    BWF_RIFF = 0,
    BWF_WAVE64 = 1,
    BWF_RF64 = 2,
} BWF_RIFF_TYPE;

// Metadata indices: 0 the whole bext chunk, 1-15 its fields, 16-79 the iXML elements, 80 the
// end of the table, 81 the list of unknown elements.
typedef enum TQMETA_BWFINFO_TYPE
{
    TQMETA_BEXT_CHUNK = 0,
    TQMETA_BEXT_DESCRIPTION,
    TQMETA_BEXT_ORIGINATOR,
    TQMETA_BEXT_ORIGINATOR_REFERENCE,
    TQMETA_BEXT_ORIGINATION_DATE,
    TQMETA_BEXT_ORIGINATION_TIME,
    TQMETA_BEXT_TIME_REFERENCE_LOW,
    TQMETA_BEXT_TIME_REFERENCE_HIGH,
    TQMETA_BEXT_VERSION,
    TQMETA_BEXT_UMID,
    TQMETA_BEXT_LOUDNESS,
    TQMETA_BEXT_RESERVED,
    TQMETA_BEXT_CODING_HISTORY,
    TQMETA_IXML_BWFXML = 16,
    TQMETA_IXML_VERSION,
    TQMETA_IXML_PROJECT,
    TQMETA_IXML_SCENE,
    TQMETA_IXML_TAKE,
    TQMETA_IXML_TAPE,
    TQMETA_IXML_CIRCLED,
    TQMETA_IXML_NO_GOOD,
    TQMETA_IXML_FALSE_START,
    TQMETA_IXML_WILD_TRACK,
    TQMETA_IXML_FILE_UID,
    TQMETA_IXML_UBITS,
    TQMETA_IXML_NOTE,
    TQMETA_IXML_USER,
    TQMETA_IXML_PRE_RECORD_SAMPLECOUNT,
    TQMETA_IXML_SPEED,
    TQMETA_IXML_SPEED_NOTE,
    TQMETA_IXML_MASTER_SPEED,
    TQMETA_IXML_CURRENT_SPEED,
    TQMETA_IXML_TIMECODE_FLAG,
    TQMETA_IXML_TIMECODE_RATE,
    TQMETA_IXML_FILE_SAMPLE_RATE,
    TQMETA_IXML_AUDIO_BIT_DEPTH,
    TQMETA_IXML_DIGITIZER_SAMPLE_RATE,
    TQMETA_IXML_TIMESTAMP_HI,
    TQMETA_IXML_TIMESTAMP_LO,
    TQMETA_IXML_TIMESTAMP_SAMPLE_RATE,
    TQMETA_IXML_HISTORY,
    TQMETA_IXML_ORIGINAL_FILENAME,
    TQMETA_IXML_PARENT_FILENAME,
    TQMETA_IXML_PARENT_UID,
    TQMETA_IXML_FILE_SET,
    TQMETA_IXML_TOTAL_FILES,
    TQMETA_IXML_FAMILY_UID,
    TQMETA_IXML_FAMILY_NAME,
    TQMETA_IXML_FILE_SET_INDEX,
    TQMETA_IXML_BEXT,
    TQMETA_IXML_BWF_DESCRIPTION,
    TQMETA_IXML_BWF_ORIGINATOR,
    TQMETA_IXML_BWF_ORIGINATOR_REFERENCE,
    TQMETA_IXML_BWF_ORIGINATION_DATE,
    TQMETA_IXML_BWF_ORIGINATION_TIME,
    TQMETA_IXML_BWF_TIME_REFERENCE_LOW,
    TQMETA_IXML_BWF_TIME_REFERENCE_HIGH,
    TQMETA_IXML_BWF_VERSION,
    TQMETA_IXML_BWF_UMID,
    TQMETA_IXML_BWF_RESERVED,
    TQMETA_IXML_BWF_CODING_HISTORY,
    TQMETA_IXML_TRACK_LIST,
    TQMETA_IXML_TRACK_COUNT,
    TQMETA_IXML_TRACK,
    TQMETA_IXML_CHANNEL_INDEX,
    TQMETA_IXML_INTERLEAVE_INDEX,
    TQMETA_IXML_NAME,
    TQMETA_IXML_FUNCTION,
    TQMETA_IXML_SYNC_POINT_LIST,
    TQMETA_IXML_SYNC_POINT_COUNT,
    TQMETA_IXML_SYNC_POINT,
    TQMETA_IXML_SYNC_POINT_TYPE,
    TQMETA_IXML_SYNC_POINT_FUNCTION,
    TQMETA_IXML_SYNC_POINT_COMMENT,
    TQMETA_IXML_SYNC_POINT_LOW,
    TQMETA_IXML_SYNC_POINT_HIGH,
    TQMETA_IXML_SYNC_POINT_EVENT_DURATION,
    TQMETA_IXML_END = 80,
    TQMETA_IXML_UNKNOWN_LIST = 81,
    TQMETA_BWFINFO_COUNT = 82,
} TQMETA_BWFINFO_TYPE;

// Kinds of the element table.
#define TQIXML_KIND_CONTAINER (-2)
#define TQIXML_KIND_LEAF (-1)
#define TQIXML_KIND_GROUP_LEAF 0

// A row of the element table. since: major version in the low 16 bits, minor in hundredths in
// the high 16 bits (0x340001 is 1.52).
typedef struct _tagIxml_Info
{
    TQMETA_BWFINFO_TYPE index;
    const WCHAR* name; // null for the end row
    DWORD since;
    const WCHAR* parent; // null for the root
    INT32 kind;
} _tagIxml_Info;

// A row of a value table; every table ends with -1, "Invalid IXML Value".
typedef struct _tagIxml_Value
{
    INT32 code;
    const WCHAR* value;
    const WCHAR* label; // null where the value is its own label
} _tagIxml_Value;

// An element of the iXML document that has no place in the record, kept with what is needed to
// write it back where it stood: in the known container parentIndex (for a TRACK or SYNC_POINT,
// its entry), behind the known sibling afterIndex (for a TRACK or SYNC_POINT, behind its entry
// `entry`; 0 when it came before every known sibling). Elements below an unknown one hang from
// its child with anchors unused. All texts are locked global-heap blocks owned by the tree.
typedef struct _tagLISTUNKNOWN
{
    WCHAR* name;
    WCHAR* attributes; // as written, each with a leading space; null for none
    WCHAR* text;       // the character data, without entities; null for none
    INT32 parentIndex;
    INT32 afterIndex;
    INT32 entry;
    struct _tagLISTUNKNOWN* child; // first element below
    struct _tagLISTUNKNOWN* next;  // next sibling
} LISTUNKNOWN;

#define TQBWF_VALID_TIMESTAMP 0x1  // date, time, time reference and version came from bext
#define TQBWF_VALID_SAMPLERATE 0x2 // sampleRate came from "fmt "

#define TQBWF_MAX_TRACKS 128
#define TQBWF_MAX_SYNC_POINTS 128
#define TQBWF_TRACK_FIELDS 4      // CHANNEL_INDEX to FUNCTION
#define TQBWF_SYNC_POINT_FIELDS 6 // SYNC_POINT_TYPE to SYNC_POINT_EVENT_DURATION

// The metadata of a broadcast-wave file. A zero-filled record is empty; every pointer in it is
// owned by it and freed by FreeBwfChunkGlobal. bext texts are 8-bit and terminated (the arrays
// are one longer than their fields); iXML values are wide, without entities.
typedef struct _tagTQBWF_Chunk
{
    DWORD valid;
    DWORD sampleRate;

    BOOL bextRead;
    char description[257];
    char originator[33];
    char originatorReference[33];
    char originationDate[11]; // "YYYY-MM-DD"
    char originationTime[9];  // "hh:mm:ss"
    DWORD timeReferenceLow;   // samples since midnight
    DWORD timeReferenceHigh;
    WORD version;
    BYTE umid[64];
    BYTE loudness[10]; // five 16-bit words, kept as they are
    BYTE reserved[180];
    char* codingHistory; // locked block, terminated; null for none

    BOOL ixmlRead;
    INT32 nodeLevel; // indentation of the writer's outermost element
    // Values of the elements that occur once, by metadata index; null where absent.
    WCHAR* values[TQMETA_BWFINFO_COUNT];
    INT32 trackCount;
    WCHAR* tracks[TQBWF_MAX_TRACKS][TQBWF_TRACK_FIELDS];
    INT32 syncPointCount;
    WCHAR* syncPoints[TQBWF_MAX_SYNC_POINTS][TQBWF_SYNC_POINT_FIELDS];
    // Its children are the unknown elements, in document order.
    LISTUNKNOWN unknownRoot;
} _tagTQBWF_Chunk;

// --- Tables ---

// The element table and its row count.
TQKERNEL_API const _tagIxml_Info* GetTblIxmlInfo(INT32* rows);
TQKERNEL_API const _tagIxml_Value* GetTblIxmlSpeedFPS(INT32* rows);
TQKERNEL_API const _tagIxml_Value* GetTblIxmlTrackFuncts(INT32* rows);
TQKERNEL_API const _tagIxml_Value* GetTblIxmlSyncPtFuncts(INT32* rows);
TQKERNEL_API const _tagIxml_Value* GetTblIxmlSyncPtTypes(INT32* rows);
TQKERNEL_API const _tagIxml_Value* GetTblIxmlSpeedTimeCode(INT32* rows);
TQKERNEL_API const _tagIxml_Value* GetTblIxmlBools(INT32* rows);
// True when an element of that name (any case) is in the table.
TQKERNEL_API BOOL IsKnownIxmlNodeGlobal(const WCHAR* name);
// The row of the element table for a metadata index, or -1.
TQKERNEL_API INT32 GetIxmlInfoIndexForMetaIdxGlobal(const _tagTQBWF_Chunk* chunk, INT32 index);

// --- The record ---

// Frees everything the record owns and zero-fills it.
TQKERNEL_API void FreeBwfChunkGlobal(_tagTQBWF_Chunk* chunk);
TQKERNEL_API LISTUNKNOWN* GetIxmlUnknownTagRoot(_tagTQBWF_Chunk* chunk);
TQKERNEL_API void SetNodeLevelGlobal(_tagTQBWF_Chunk* chunk, INT32 level);
TQKERNEL_API INT32 GetNodeLevelGlobal(const _tagTQBWF_Chunk* chunk);
// The coding history (8-bit, terminated) or null.
TQKERNEL_API const char* GetIxmlCodingHistoryValueGlobal(const _tagTQBWF_Chunk* chunk);
// Stores a copy (null removes it); E_OUTOFMEMORY leaves the old one.
TQKERNEL_API HRESULT SetIxmlCodingHistoryValueGlobal(_tagTQBWF_Chunk* chunk, const char* text);
// The value of an element that occurs once, or null.
TQKERNEL_API const WCHAR* GetIxmlValueGlobal(const _tagTQBWF_Chunk* chunk, INT32 index);
// Stores a copy (null removes it). An index that is no single leaf gives E_INVALIDARG.
TQKERNEL_API HRESULT SetIxmlValueGlobal(_tagTQBWF_Chunk* chunk, INT32 index, const WCHAR* text);
// A field of a TRACK or SYNC_POINT entry by its metadata index, or null.
TQKERNEL_API const WCHAR* GetIxmlEntryValueGlobal(const _tagTQBWF_Chunk* chunk, INT32 entry,
                                                  INT32 index);
// Stores a copy; an entry one past the last adds an entry. Other entries, or an index that is
// no field of TRACK or SYNC_POINT, give E_INVALIDARG.
TQKERNEL_API HRESULT SetIxmlEntryValueGlobal(_tagTQBWF_Chunk* chunk, INT32 entry, INT32 index,
                                             const WCHAR* text);

// --- Building chunks ---

// Walks the iXML document in data (size bytes; UTF-8, or UTF-16 after FF FE) into the record,
// whose iXML part is freed first (bext stays). E_FAIL for a document without BWFXML.
TQKERNEL_API HRESULT ExtractIxmlContent(const void* data, DWORD size, _tagTQBWF_Chunk* chunk);
// The data of a chunk of the given kind made from the record: bext, or an iXML document of the
// elements first to last (unknown elements only when last reaches TQMETA_IXML_END). buffer gets
// a locked global-heap block the caller unlocks and frees; a null buffer asks for the size only.
// A null chunk gives S_OK and no output; a non-null buffer without size, a first index above
// the last or a kind other than the two give E_INVALIDARG.
TQKERNEL_API HRESULT BuildRawBwfIxmlChunkGlobal(const _tagTQBWF_Chunk* chunk, void** buffer,
                                                DWORD* size, DWORD type, INT32 first, INT32 last);
// Builds the whole iXML document and puts it in the file by the update of its framing
// (BWF_RIFF_TYPE).
TQKERNEL_API HRESULT BuildAndWriteRawIxmlChunk(HANDLE file, const _tagTQBWF_Chunk* chunk,
                                               DWORD riffType);

// --- RIFF files (the cursor of `file` is moved) ---

// Reads "fmt ", bext (or BEXT) and iXML into the record, freed first. *found is set when the
// file held either. Damaged or missing chunks are passed over: what could be read stands.
TQKERNEL_API HRESULT bwfriff_LoadInfo(HANDLE file, _tagTQBWF_Chunk* chunk, BOOL* found);
// Opens path for reading and takes the sample rate and the timestamp fields of bext alone.
TQKERNEL_API HRESULT bwfriff_LoadTimestampInfoQuick(const WCHAR* path, _tagTQBWF_Chunk* chunk,
                                                    BOOL* found);
// Sample rate, bits per sample and channel count of "fmt " (each optional).
TQKERNEL_API HRESULT ReadFilePropsFromFormatChunk(HANDLE file, DWORD* sampleRate,
                                                  WORD* bitsPerSample, WORD* channels);
// Replaces the chunk of that kind by data: in place when the old one is as large (zeroes fill
// the rest), otherwise the old one becomes "JUNK" and the new one goes behind the RIFF data.
// Audio data never moves. written (optional) gets the bytes the file grew by.
TQKERNEL_API HRESULT bwfriff_UpdateStreamChunk(DWORD kind, HANDLE file, const void* data,
                                               DWORD size, DWORD* written);
// Removes the chunk of that kind, moving the rest of the file down; a missing chunk is no
// failure. bytes (optional) gets the bytes removed.
TQKERNEL_API HRESULT bwfriff_DeleteChunk(DWORD kind, HANDLE file, DWORD* bytes);
// Both chunks; bytes adds up.
TQKERNEL_API HRESULT bwfriff_DeleteAllChunks(HANDLE file, DWORD* bytes);

// --- Wave64 and RF64 files: the same on those framings. The RF64 forms also take plain RIFF
// files (without ds64), so callers need not tell the two apart. ---

TQKERNEL_API HRESULT bwfriff64_LoadInfo(HANDLE file, _tagTQBWF_Chunk* chunk, BOOL* found);
TQKERNEL_API HRESULT bwfriffRF64_LoadInfo(HANDLE file, _tagTQBWF_Chunk* chunk, BOOL* found);
TQKERNEL_API HRESULT ReadFilePropsFromFormatChunk64(HANDLE file, DWORD* sampleRate,
                                                    WORD* bitsPerSample, WORD* channels);
TQKERNEL_API HRESULT ReadFilePropsFromFormatChunkRF64(HANDLE file, DWORD* sampleRate,
                                                      WORD* bitsPerSample, WORD* channels);
TQKERNEL_API HRESULT bwfriff64_UpdateStreamChunk(DWORD kind, HANDLE file, const void* data,
                                                 DWORD size, ULONGLONG* written);
TQKERNEL_API HRESULT bwfRF64_UpdateStreamChunk(DWORD kind, HANDLE file, const void* data,
                                               DWORD size, ULONGLONG* written);
TQKERNEL_API HRESULT bwfriff64_DeleteChunk(DWORD kind, HANDLE file, ULONGLONG* bytes);
TQKERNEL_API HRESULT bwfRF64_DeleteChunk(DWORD kind, HANDLE file, ULONGLONG* bytes);
TQKERNEL_API HRESULT bwfriff64_DeleteAllChunks(HANDLE file, ULONGLONG* bytes);
