// The transfer ring: full, empty and wrapping, with one writer thread and one reader thread.
#include "hosting/parameterchangetransfer.h"
#include "hosting/parameterchanges.h"

#include <gtest/gtest.h>

#include <windows.h>

using namespace vst3;

TEST(ParameterChangeTransfer, AFullRingDropsTheNewestChanges)
{
    const int32 count = 3;
    ParameterChangeTransfer ring(count);
    // 2 x count + 1 changes without a reader: the first 2 x count - 1 stay.
    for (int32 i = 0; i < 2 * count + 1; ++i)
        EXPECT_EQ(i < 2 * count - 1, ring.addChange(static_cast<ParamID>(i), i * 0.25, i)) << i;
    ParamID id;
    ParamValue value;
    int32 offset;
    for (int32 i = 0; i < 2 * count - 1; ++i)
    {
        ASSERT_TRUE(ring.getNextChange(id, value, offset));
        EXPECT_EQ(static_cast<ParamID>(i), id);
        EXPECT_EQ(i * 0.25, value);
        EXPECT_EQ(i, offset);
    }
    EXPECT_FALSE(ring.getNextChange(id, value, offset));
}

TEST(ParameterChangeTransfer, KeepsOrderAcrossTheWrap)
{
    ParameterChangeTransfer ring(2);
    ParamID id;
    ParamValue value;
    int32 offset;
    ParamID next = 0;
    for (int32 round = 0; round < 10; ++round)
    {
        for (int32 i = 0; i < 3; ++i)
            ASSERT_TRUE(ring.addChange(next + static_cast<ParamID>(i), 0, 0));
        for (int32 i = 0; i < 3; ++i)
        {
            ASSERT_TRUE(ring.getNextChange(id, value, offset));
            EXPECT_EQ(next++, id);
        }
        EXPECT_FALSE(ring.getNextChange(id, value, offset));
    }
}

TEST(ParameterChangeTransfer, EmptyOrUnsizedRingsGiveNothing)
{
    ParameterChangeTransfer unsized;
    EXPECT_FALSE(unsized.addChange(1, 0.5, 0));
    ParamID id;
    ParamValue value;
    int32 offset;
    EXPECT_FALSE(unsized.getNextChange(id, value, offset));

    ParameterChangeTransfer ring(1);
    EXPECT_TRUE(ring.addChange(1, 0.5, 0));
    ring.removeChanges();
    EXPECT_FALSE(ring.getNextChange(id, value, offset));
    ring.setMaxParameters(4);
    EXPECT_FALSE(ring.getNextChange(id, value, offset));
}

TEST(ParameterChangeTransfer, MovesChangesIntoAndOutOfParameterChanges)
{
    ParameterChangeTransfer ring(4);
    ring.addChange(5, 0.25, 0);
    ring.addChange(6, 0.5, 3);
    ring.addChange(5, 0.75, 0);
    ParameterChanges changes(4);
    EXPECT_EQ(3, ring.transferChangesTo(changes));
    EXPECT_EQ(0, ring.transferChangesTo(changes));
    ASSERT_EQ(2, changes.getParameterCount());
    IParamValueQueue* five = changes.getParameterData(0);
    EXPECT_EQ(5u, five->getParameterId());
    ASSERT_EQ(1, five->getPointCount()) << "the same offset keeps the newest value";
    int32 offset;
    ParamValue value;
    five->getPoint(0, offset, value);
    EXPECT_EQ(0.75, value);

    ParameterChangeTransfer back(4);
    back.transferChangesFrom(changes);
    ParamID id;
    ASSERT_TRUE(back.getNextChange(id, value, offset));
    EXPECT_EQ(5u, id);
    ASSERT_TRUE(back.getNextChange(id, value, offset));
    EXPECT_EQ(6u, id);
    EXPECT_EQ(3, offset);
    EXPECT_FALSE(back.getNextChange(id, value, offset));
}

namespace {

constexpr ParamID kChangeCount = 200000;

DWORD WINAPI writeSequence(void* context)
{
    auto* ring = static_cast<ParameterChangeTransfer*>(context);
    for (ParamID i = 0; i < kChangeCount;)
    {
        if (ring->addChange(i, i * 0.5, static_cast<int32>(i)))
            ++i;
        else
            SwitchToThread();
    }
    return 0;
}

} // namespace

TEST(ParameterChangeTransfer, AReaderThreadSeesEveryChangeOfAWriterThreadInOrder)
{
    ParameterChangeTransfer ring(8);
    HANDLE writer = CreateThread(nullptr, 0, writeSequence, &ring, 0, nullptr);
    ASSERT_NE(nullptr, writer);
    ParamID expected = 0;
    bool intact = true;
    const DWORD start = GetTickCount();
    while (expected < kChangeCount && GetTickCount() - start < 30000)
    {
        ParamID id;
        ParamValue value;
        int32 offset;
        if (!ring.getNextChange(id, value, offset))
        {
            SwitchToThread();
            continue;
        }
        intact = intact && id == expected && value == expected * 0.5 &&
                 offset == static_cast<int32>(expected);
        ++expected;
    }
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(writer, 30000));
    CloseHandle(writer);
    EXPECT_EQ(kChangeCount, expected);
    EXPECT_TRUE(intact);
}
