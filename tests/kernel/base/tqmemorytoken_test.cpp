// Memory tokens across this process and a peer process: own blocks, mappings, copies through
// the owner's memory with write-back, and the owner's preparation of blocks a peer cannot reach.
#include "memorytokenpeer.h"

#include <gtest/gtest.h>

#include <string.h>
#include <vector>

namespace {

constexpr DWORD kRead = FILE_MAP_READ;
constexpr DWORD kWrite = FILE_MAP_WRITE;
constexpr DWORD kBoth = FILE_MAP_READ | FILE_MAP_WRITE;
constexpr DWORD kSize = 4099; // not a whole page, so a view's slack would go unnoticed

_tqmemorytoken PlainToken(const void* block, DWORD size, LONG offset = 0)
{
    _tqmemorytoken token = {};
    token.handle = ~0ull;
    token.address = reinterpret_cast<ULONG_PTR>(block);
    token.size = size;
    token.capacity = size;
    token.offset = offset;
    token.kind = TQMEMORYTOKEN_PLAIN;
    token.ownerProcessId = GetCurrentProcessId();
    return token;
}

void FillOwner(BYTE* block, size_t size)
{
    for (size_t i = 0; i < size; ++i)
        block[i] = tqtest::OwnerByte(i);
}

// Which pattern the block holds: 'o' owner's, 'p' peer's, '?' anything else.
char Pattern(const BYTE* block, size_t size)
{
    bool owner = true, peer = true;
    for (size_t i = 0; i < size; ++i)
    {
        owner = owner && block[i] == tqtest::OwnerByte(i);
        peer = peer && block[i] == tqtest::PeerByte(i);
    }
    return owner ? 'o' : peer ? 'p' : '?';
}

std::wstring MapArguments(DWORD access, bool expectOwner, const _tqmemorytoken& token)
{
    return L"map " + std::to_wstring(access) + (expectOwner ? L" owner " : L" zero ") +
           tqtest::TokenToText(token);
}

// A block in the upper half of a 64-bit address space, which a 32-bit peer cannot address.
struct HighBlock
{
    explicit HighBlock(SIZE_T size)
    {
        if constexpr (sizeof(void*) == 8)
            block = static_cast<BYTE*>(VirtualAlloc(
                nullptr, size, MEM_RESERVE | MEM_COMMIT | MEM_TOP_DOWN, PAGE_READWRITE));
    }
    ~HighBlock()
    {
        if (block) VirtualFree(block, 0, MEM_RELEASE);
    }
    bool IsHigh() const { return block && reinterpret_cast<UINT64>(block) > 0xFFFFFFFFull; }
    BYTE* block = nullptr;
};

TEST(MappingOfTqMemoryToken, OwnBlockIsAddressPlusOffsetWhateverTheKind)
{
    std::vector<BYTE> block(64);
    _tqmemorytoken token = PlainToken(block.data(), 16, 8);
    // A mapping token of this process is not mapped again: its bogus handle is never used.
    token.kind = TQMEMORYTOKEN_MAPPING;
    token.handle = 0x12345678;
    CMappingOfTqMemoryToken mapping(token, 0);
    EXPECT_EQ(mapping.Pointer(), block.data() + 8);
    EXPECT_EQ(mapping.DataSize(), 16);
    void* pointer = nullptr;
    EXPECT_EQ(mapping.GetPointer(&pointer), S_OK);
    EXPECT_EQ(pointer, block.data() + 8);
    mapping.Close();
    EXPECT_EQ(mapping.Pointer(), nullptr);
}

TEST(MappingOfTqMemoryToken, UnknownKindOrUnreachableOwnerFails)
{
    BYTE block[16] = {};
    _tqmemorytoken unknown = PlainToken(block, sizeof block);
    unknown.kind = 2;
    _tqmemorytoken foreignUnknown = unknown;
    foreignUnknown.ownerProcessId = 0xFFFFFFF0u;
    _tqmemorytoken noOwner = PlainToken(block, sizeof block);
    noOwner.ownerProcessId = 0xFFFFFFF0u;
    _tqmemorytoken noOwnerMapping = noOwner;
    noOwnerMapping.kind = TQMEMORYTOKEN_MAPPING;
    for (const _tqmemorytoken& token : {unknown, foreignUnknown, noOwner, noOwnerMapping})
    {
        CMappingOfTqMemoryToken mapping(token, kBoth);
        EXPECT_EQ(mapping.Pointer(), nullptr);
        EXPECT_EQ(mapping.DataSize(), -1);
        void* pointer = block;
        EXPECT_EQ(mapping.GetPointer(&pointer), E_FAIL);
        EXPECT_EQ(pointer, nullptr);
        mapping.Dispose();
        mapping.Dispose();
        EXPECT_EQ(mapping.Pointer(), nullptr);
    }
}

// The peer reads the owner's plain memory through a copy and, when it may write, its changes
// reach the owner on release; without read access it starts from zeros.
TEST(MappingOfTqMemoryToken, PeerCopiesOwnersMemoryAndWritesBack)
{
    struct Case
    {
        DWORD access;
        bool peerSeesOwner;
        char ownerAfter;
    } const cases[] = {
        {0, true, 'p'},
        {kBoth, true, 'p'},
        {kRead, true, 'o'},
        {kWrite, false, 'p'},
        // bits other than read and write are dropped
        {kRead | FILE_MAP_EXECUTE | FILE_MAP_COPY, true, 'o'},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.access);
        std::vector<BYTE> block(kSize + 32);
        FillOwner(block.data() + 32, kSize);
        const _tqmemorytoken token = PlainToken(block.data(), kSize, 32);
        ASSERT_EQ(tqtest::RunPeer(MapArguments(c.access, c.peerSeesOwner, token)), tqtest::kPeerOk);
        EXPECT_EQ(Pattern(block.data() + 32, kSize), c.ownerAfter);
        EXPECT_EQ(block[31], 0); // nothing written before the data
    }
}

// A mapping made by the owner is shared: what the peer writes is in the owner's view at once.
TEST(MappingOfTqMemoryToken, PeerMapsOwnersMapping)
{
    for (const DWORD access : {0ul, kBoth, kRead})
    {
        SCOPED_TRACE(access);
        tq::UniqueHandle mapping(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE,
                                                    0, kSize + 100, nullptr));
        ASSERT_TRUE(mapping);
        tq::UniqueView view(MapViewOfFile(mapping.Get(), FILE_MAP_ALL_ACCESS, 0, 0, 0));
        ASSERT_TRUE(view);
        auto* data = static_cast<BYTE*>(view.Get()) + 100;
        FillOwner(data, kSize);
        _tqmemorytoken token = PlainToken(view.Get(), kSize, 100);
        token.kind = TQMEMORYTOKEN_MAPPING;
        token.handle = reinterpret_cast<ULONG_PTR>(mapping.Get());
        token.capacity = kSize + 100;
        ASSERT_EQ(tqtest::RunPeer(MapArguments(access, true, token)), tqtest::kPeerOk);
        EXPECT_EQ(Pattern(data, kSize), access == kRead ? 'o' : 'p');
    }
}

TEST(MappingOfTqMemoryToken, PeerRejectsAMappingTokenThatPointsBeforeTheView)
{
    tq::UniqueHandle mapping(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 4096, nullptr));
    ASSERT_TRUE(mapping);
    _tqmemorytoken token = PlainToken(nullptr, 16, -16);
    token.kind = TQMEMORYTOKEN_MAPPING;
    token.handle = reinterpret_cast<ULONG_PTR>(mapping.Get());
    EXPECT_EQ(tqtest::RunPeer(MapArguments(kBoth, false, token)), tqtest::kPeerMapFailed);
}

TEST(OutOfProcessMemoryToken, ReachableBlocksPassUnchanged)
{
    std::vector<BYTE> block(64);
    _tqmemorytoken low = PlainToken(nullptr, 64);
    low.address = 0x10000; // never touched: nothing is copied for a token that passes
    _tqmemorytoken high = PlainToken(nullptr, 64);
    high.address = 0x123450000ull;
    _tqmemorytoken mapping = PlainToken(block.data(), 64);
    mapping.kind = TQMEMORYTOKEN_MAPPING;
    mapping.address = 0x123450000ull;
    mapping.handle = 0x44;
    struct Case
    {
        _tqmemorytoken token;
        int passThrough;
    } const cases[] = {{low, 0}, {high, 1}, {mapping, 0}};
    for (const Case& c : cases)
    {
        COutOfProcessMemoryToken prepared(c.token, kBoth, c.passThrough);
        _tqmemorytoken proxy;
        ASSERT_EQ(prepared.GetMemoryToken(&proxy), S_OK);
        EXPECT_EQ(memcmp(&proxy, &c.token, sizeof proxy), 0);
    }
}

// A block above 4 GB is moved into a mapping the peer can view; the peer's changes come back
// into the block when the preparation ends, if writing was asked for.
TEST(OutOfProcessMemoryToken, HighBlockTravelsThroughAMappingAndComesBack)
{
    HighBlock high(kSize + 32);
    if (!high.IsHigh()) GTEST_SKIP() << "no block above 4 GB in this process";
    for (const DWORD access : {0ul, kBoth, kRead, kWrite})
    {
        SCOPED_TRACE(access);
        FillOwner(high.block + 32, kSize);
        const _tqmemorytoken source = PlainToken(high.block, kSize, 32);
        {
            COutOfProcessMemoryToken prepared(source, access, 0);
            _tqmemorytoken proxy = {};
            ASSERT_EQ(prepared.GetMemoryToken(&proxy), S_OK);
            EXPECT_EQ(proxy.kind, TQMEMORYTOKEN_MAPPING);
            EXPECT_EQ(proxy.ownerProcessId, GetCurrentProcessId());
            EXPECT_EQ(proxy.size, kSize);
            EXPECT_EQ(proxy.capacity, kSize);
            EXPECT_EQ(proxy.offset, 0);
            // Without read access the mapping starts empty.
            ASSERT_EQ(tqtest::RunPeer(MapArguments(kBoth, access != kWrite, proxy)),
                      tqtest::kPeerOk);
            EXPECT_EQ(Pattern(high.block + 32, kSize), 'o'); // nothing back before the end
        }
        EXPECT_EQ(Pattern(high.block + 32, kSize), access == kRead ? 'o' : 'p');
    }
}

TEST(OutOfProcessMemoryToken, FailedPreparationGivesNoToken)
{
    _tqmemorytoken source = PlainToken(nullptr, 64);
    source.address = 0x123450000ull;
    source.ownerProcessId = 0xFFFFFFF0u; // no such process, so nothing can be read
    COutOfProcessMemoryToken prepared(source, kRead, 0);
    _tqmemorytoken proxy;
    memset(&proxy, 0xAB, sizeof proxy);
    EXPECT_EQ(prepared.GetMemoryToken(&proxy), E_FAIL);
    const auto* bytes = reinterpret_cast<const BYTE*>(&proxy);
    for (size_t i = 0; i < sizeof proxy; ++i)
        EXPECT_EQ(bytes[i], 0xAB);
}

} // namespace
