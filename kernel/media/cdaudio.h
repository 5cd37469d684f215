// CD audio track records: the "CDDA" RIFF files that describe one track of an audio CD.
#pragma once

#include "riff.h"

// The 24 bytes of the "fmt " chunk of a "CDDA" file.
typedef struct tRIFFCDDA
{
    WORD formatVersion;
    WORD track;
    DWORD discId;
    DWORD startSector;
    DWORD lengthSectors;
    BYTE startFrame; // 75 frames to the second
    BYTE startSecond;
    BYTE startMinute;
    BYTE unused[5];
} tRIFFCDDA;

// Reads the record from the start of the file: a form other than "CDDA" gives 0x8004E00B, a
// "fmt " of a size other than 24 0x8004E01C. The record is zeroed first.
TQKERNEL_API HRESULT riff_ReadRIFFCDDA(HANDLE file, tRIFFCDDA* record);
// Opens the file at path and reports the track, its start in sectors and in frames (minutes,
// seconds and frames of the record taken together), its length in sectors and the disc id. All
// outputs are optional, and all are 0 when the file cannot be opened (0x8004E007) or read.
TQKERNEL_API HRESULT riff_ReadCDAFile(const WCHAR* path, DWORD* track, DWORD* startSector,
                                      DWORD* startFrames, DWORD* lengthSectors, DWORD* discId);
