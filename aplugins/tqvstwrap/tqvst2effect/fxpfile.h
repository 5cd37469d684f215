// The five preset and bank file layouts, their byte swapping and the block that holds one.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace tqvst::fxp {

constexpr int32_t FourCC(const char (&id)[5])
{
    return static_cast<int32_t>(uint32_t(uint8_t(id[0])) << 24 | uint32_t(uint8_t(id[1])) << 16 |
                                uint32_t(uint8_t(id[2])) << 8 | uint32_t(uint8_t(id[3])));
}

constexpr int32_t kChunkMagic = FourCC("CcnK");
constexpr int32_t kProgramMagic = FourCC("FxCk");
constexpr int32_t kProgramChunkMagic = FourCC("FPCh");
constexpr int32_t kBankMagic = FourCC("FxBk");
constexpr int32_t kBankChunkMagic = FourCC("FBCh");

// Every layout opens with these six words.
struct CommonHeader
{
    int32_t chunkMagic;
    int32_t byteSize; // bytes after this field
    int32_t fxMagic;
    int32_t version; // written as 0, never read
    int32_t fxID;
    int32_t fxVersion;
};

// "FxCk" without its parameter words, and the head of "FPCh".
struct ProgramHeader
{
    CommonHeader common;
    int32_t numParams;
    char prgName[28];
};

// "FPCh": the chunk follows.
struct ProgramChunkHeader
{
    ProgramHeader program;
    int32_t chunkSize;
};

// "FxBk": whole "FxCk" blocks follow.
struct BankHeader
{
    CommonHeader common;
    int32_t numPrograms;
    char reserved[128];
};

// "FBCh": the chunk follows.
struct BankChunkHeader
{
    BankHeader bank;
    int32_t chunkSize;
};

static_assert(sizeof(CommonHeader) == 24);
static_assert(sizeof(ProgramHeader) == 56);
static_assert(sizeof(ProgramChunkHeader) == 60);
static_assert(sizeof(BankHeader) == 156);
static_assert(sizeof(BankChunkHeader) == 160);

// byteSize is a signed word that leaves out the first 8 bytes, so no file can be larger.
constexpr uint64_t kMaxFileBytes = 8 + uint64_t(INT32_MAX);
// What a save or load of a layout beyond kMaxFileBytes gives.
constexpr HRESULT kFileTooLarge = static_cast<HRESULT>(0x80070000u | ERROR_FILE_TOO_LARGE);

// Sizes are counted in 64 bits: a plug-in's parameter or program count is untrusted, and in
// 32 bits four bytes per parameter wrap around at 0x40000000 of them.
constexpr uint64_t ProgramBytes(int32_t numParams)
{
    return sizeof(ProgramHeader) + 4 * uint64_t(numParams > 0 ? numParams : 0);
}

// Bytes of an "FxBk" bank of numPrograms "FxCk" blocks.
constexpr uint64_t BankBytes(int32_t numPrograms, int32_t numParams)
{
    return sizeof(BankHeader) +
           uint64_t(numPrograms > 0 ? numPrograms : 0) * ProgramBytes(numParams);
}

// Host to file reads a count before swapping it, file to host after.
enum SwapMode : int
{
    kHostToFile = 1,
    kFileToHost = -1,
};

void SwapCommonHeader(CommonHeader* header);
void SwapProgramHeader(ProgramChunkHeader* header);
void SwapBankChunkHeader(BankChunkHeader* header);
void SwapBankHeader(BankHeader* header);
// The head and then numParams parameter words behind it; the block must hold them all.
void SwapProgram(ProgramHeader* program, SwapMode mode);

// The parameter words behind an "FxCk" head.
inline float* ProgramParameters(ProgramHeader* program)
{
    return reinterpret_cast<float*>(program + 1);
}

// A zero-filled global-heap block, freed with its owner.
class FileBlock
{
public:
    explicit FileBlock(size_t bytes) noexcept : m_data(GlobalAlloc(GPTR, bytes)) {}
    ~FileBlock()
    {
        if (m_data) GlobalFree(m_data);
    }
    FileBlock(const FileBlock&) = delete;
    FileBlock& operator=(const FileBlock&) = delete;

    explicit operator bool() const noexcept { return m_data != nullptr; }
    template <class T>
    T* As() const noexcept
    {
        return static_cast<T*>(m_data);
    }

private:
    HGLOBAL m_data;
};

} // namespace tqvst::fxp
