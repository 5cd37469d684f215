// The bext chunk: its fixed record of 602 bytes and the coding history behind it.
#include "bwfinternal.h"
#include "lockedblock.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr DWORD kDescription = 0;
constexpr DWORD kOriginator = 256;
constexpr DWORD kOriginatorReference = 288;
constexpr DWORD kDate = 320;
constexpr DWORD kTime = 330;
constexpr DWORD kTimeReferenceLow = 338;
constexpr DWORD kTimeReferenceHigh = 342;
constexpr DWORD kVersion = 346;
constexpr DWORD kUmid = 348;
constexpr DWORD kLoudness = 412;
constexpr DWORD kReserved = 422;
constexpr DWORD kCodingHistory = 602;
constexpr DWORD kSmallestBext = 8;

// A text field of the record; the destination is one longer than the field and stays
// terminated.
template <size_t N>
void TakeText(char (&field)[N], const BYTE* record, DWORD offset)
{
    std::memcpy(field, record + offset, N - 1);
    field[N - 1] = 0;
}

template <size_t N>
void PutText(BYTE* record, DWORD offset, const char (&field)[N])
{
    std::memcpy(record + offset, field, strnlen(field, N - 1));
}

} // namespace

namespace tq::bwf {

HRESULT ParseBext(const BYTE* data, DWORD size, _tagTQBWF_Chunk* chunk, bool full) noexcept
{
    if (size < kSmallestBext) return TQ_E_CORRUPTFILE;
    // A short chunk reads as if its missing fields were zero.
    BYTE record[kCodingHistory] = {};
    std::memcpy(record, data, std::min(size, kCodingHistory));

    TakeText(chunk->originationDate, record, kDate);
    TakeText(chunk->originationTime, record, kTime);
    std::memcpy(&chunk->timeReferenceLow, record + kTimeReferenceLow, 4);
    std::memcpy(&chunk->timeReferenceHigh, record + kTimeReferenceHigh, 4);
    std::memcpy(&chunk->version, record + kVersion, 2);
    chunk->valid |= TQBWF_VALID_TIMESTAMP;
    if (!full) return S_OK;

    TakeText(chunk->description, record, kDescription);
    TakeText(chunk->originator, record, kOriginator);
    TakeText(chunk->originatorReference, record, kOriginatorReference);
    std::memcpy(chunk->umid, record + kUmid, sizeof chunk->umid);
    std::memcpy(chunk->loudness, record + kLoudness, sizeof chunk->loudness);
    std::memcpy(chunk->reserved, record + kReserved, sizeof chunk->reserved);
    chunk->bextRead = TRUE;

    tq::media::FreeLocked(chunk->codingHistory);
    chunk->codingHistory = nullptr;
    if (size <= kCodingHistory) return S_OK;
    // One byte more than the text, so that a history without its terminator ends.
    const DWORD length = size - kCodingHistory;
    auto* history = static_cast<char*>(tq::media::AllocLocked(static_cast<SIZE_T>(length) + 1));
    if (!history) return E_OUTOFMEMORY;
    std::memcpy(history, data + kCodingHistory, length);
    chunk->codingHistory = history;
    return S_OK;
}

} // namespace tq::bwf

namespace {

// The chunk's data for the record: the fixed part, then the history with its terminator.
DWORD BextSize(const _tagTQBWF_Chunk* chunk)
{
    const size_t history = chunk->codingHistory ? std::strlen(chunk->codingHistory) : 0;
    return kCodingHistory + static_cast<DWORD>(history ? history + 1 : 0);
}

} // namespace

namespace tq::bwf {

HRESULT BuildBext(const _tagTQBWF_Chunk* chunk, void** buffer, DWORD* size) noexcept
{
    const DWORD bytes = BextSize(chunk);
    if (size) *size = bytes;
    if (!buffer) return S_OK;
    auto* record = static_cast<BYTE*>(tq::media::AllocLocked(bytes));
    if (!record) return E_OUTOFMEMORY;
    PutText(record, kDescription, chunk->description);
    PutText(record, kOriginator, chunk->originator);
    PutText(record, kOriginatorReference, chunk->originatorReference);
    PutText(record, kDate, chunk->originationDate);
    PutText(record, kTime, chunk->originationTime);
    std::memcpy(record + kTimeReferenceLow, &chunk->timeReferenceLow, 4);
    std::memcpy(record + kTimeReferenceHigh, &chunk->timeReferenceHigh, 4);
    std::memcpy(record + kVersion, &chunk->version, 2);
    std::memcpy(record + kUmid, chunk->umid, sizeof chunk->umid);
    std::memcpy(record + kLoudness, chunk->loudness, sizeof chunk->loudness);
    std::memcpy(record + kReserved, chunk->reserved, sizeof chunk->reserved);
    if (bytes > kCodingHistory)
        std::memcpy(record + kCodingHistory, chunk->codingHistory, bytes - kCodingHistory);
    *buffer = record;
    return S_OK;
}

} // namespace tq::bwf
