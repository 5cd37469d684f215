// Extending the coding history of raw "bext" data, which the host passes on as it found it.
#include "codinghistory.h"

#include "bwf.h"

namespace tqhost {
namespace {

// The fixed part of the chunk, as the kernel's record holds it: its text arrays are one longer
// than their fields for the terminator. The coding history begins behind it.
using Bext = _tagTQBWF_Chunk;
constexpr size_t kFixedBytes =
    (sizeof(Bext::description) - 1) + (sizeof(Bext::originator) - 1) +
    (sizeof(Bext::originatorReference) - 1) + (sizeof(Bext::originationDate) - 1) +
    (sizeof(Bext::originationTime) - 1) + sizeof(Bext::timeReferenceLow) +
    sizeof(Bext::timeReferenceHigh) + sizeof(Bext::version) + sizeof(Bext::umid) +
    sizeof(Bext::loudness) + sizeof(Bext::reserved);

} // namespace

bool AppendCodingHistory(std::vector<BYTE>& chunk, const std::string& line)
{
    if (chunk.size() < kFixedBytes) return false;
    while (chunk.size() > kFixedBytes && chunk.back() == 0)
        chunk.pop_back();
    if (chunk.size() > kFixedBytes && chunk.back() != '\n')
    {
        chunk.push_back('\r');
        chunk.push_back('\n');
    }
    chunk.insert(chunk.end(), line.begin(), line.end());
    chunk.push_back('\r');
    chunk.push_back('\n');
    return true;
}

} // namespace tqhost
