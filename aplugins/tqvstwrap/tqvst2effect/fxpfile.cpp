// Byte swapping of the preset and bank layouts between big-endian files and the host's order.
#include "fxpfile.h"

namespace tqvst::fxp {

namespace {

void SwapWords(void* words, size_t count)
{
    auto* bytes = static_cast<uint8_t*>(words);
    for (size_t i = 0; i < count; ++i, bytes += 4)
    {
        uint32_t word;
        CopyMemory(&word, bytes, 4);
        word = __builtin_bswap32(word);
        CopyMemory(bytes, &word, 4);
    }
}

constexpr size_t kCommonWords = sizeof(CommonHeader) / 4;

} // namespace

void SwapCommonHeader(CommonHeader* header)
{
    SwapWords(header, kCommonWords);
}

void SwapProgramHeader(ProgramChunkHeader* header)
{
    SwapWords(header, kCommonWords + 1);
    SwapWords(&header->chunkSize, 1);
}

void SwapBankChunkHeader(BankChunkHeader* header)
{
    SwapWords(header, kCommonWords + 1);
    SwapWords(&header->chunkSize, 1);
}

void SwapBankHeader(BankHeader* header)
{
    SwapWords(header, kCommonWords + 1);
}

void SwapProgram(ProgramHeader* program, SwapMode mode)
{
    int32_t count = mode == kHostToFile ? program->numParams : 0;
    SwapWords(program, kCommonWords + 1);
    if (mode == kFileToHost) count = program->numParams;
    if (count > 0) SwapWords(ProgramParameters(program), static_cast<size_t>(count));
}

} // namespace tqvst::fxp
