// Queues keep their points ordered and bounded; the change list hands out one queue per id.
#include "hosting/parameterchanges.h"

#include <gtest/gtest.h>

#include <vector>

using namespace vst3;

namespace {

std::vector<std::pair<int32, ParamValue>> points(IParamValueQueue& queue)
{
    std::vector<std::pair<int32, ParamValue>> result;
    for (int32 i = 0; i < queue.getPointCount(); ++i)
    {
        int32 offset = 0;
        ParamValue value = 0;
        EXPECT_EQ(kResultOk, queue.getPoint(i, offset, value));
        result.emplace_back(offset, value);
    }
    return result;
}

} // namespace

TEST(ParameterValueQueue, PointsAreOrderedByOffsetAndAnOffsetHoldsOneValue)
{
    ParameterValueQueue queue;
    int32 index = -1;
    queue.addPoint(10, 0.1, index);
    EXPECT_EQ(0, index);
    queue.addPoint(0, 0.2, index);
    EXPECT_EQ(0, index);
    queue.addPoint(5, 0.3, index);
    EXPECT_EQ(1, index);
    queue.addPoint(10, 0.4, index);
    EXPECT_EQ(2, index);
    using P = std::vector<std::pair<int32, ParamValue>>;
    EXPECT_EQ((P{{0, 0.2}, {5, 0.3}, {10, 0.4}}), points(queue));

    int32 offset = 0;
    ParamValue value = 0;
    EXPECT_EQ(kResultFalse, queue.getPoint(3, offset, value));
    EXPECT_EQ(kResultFalse, queue.getPoint(-1, offset, value));
}

TEST(ParameterValueQueue, AFullQueueRefusesNewOffsetsButStillTakesNewValues)
{
    ParameterValueQueue queue(3);
    int32 index = -1;
    for (int32 offset : {0, 1, 2})
        ASSERT_EQ(kResultOk, queue.addPoint(offset, 0.5, index));
    EXPECT_EQ(kResultFalse, queue.addPoint(3, 0.9, index));
    EXPECT_EQ(kResultFalse, queue.addPoint(-1, 0.9, index));
    EXPECT_EQ(kResultOk, queue.addPoint(1, 0.75, index));
    EXPECT_EQ(1, index);
    using P = std::vector<std::pair<int32, ParamValue>>;
    EXPECT_EQ((P{{0, 0.5}, {1, 0.75}, {2, 0.5}}), points(queue));
}

TEST(ParameterChanges, OneQueuePerIdUntilThePoolIsUsedUp)
{
    ParameterChanges changes(2);
    int32 index = -1;
    IParamValueQueue* first = changes.addParameterData(7, index);
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(0, index);
    EXPECT_EQ(7u, first->getParameterId());
    IParamValueQueue* second = changes.addParameterData(9, index);
    EXPECT_EQ(1, index);
    EXPECT_EQ(first, changes.addParameterData(7, index));
    EXPECT_EQ(0, index);
    EXPECT_EQ(nullptr, changes.addParameterData(11, index));
    EXPECT_EQ(2, changes.getParameterCount());
    EXPECT_EQ(second, changes.getParameterData(1));
    EXPECT_EQ(nullptr, changes.getParameterData(2));
    EXPECT_EQ(nullptr, changes.getParameterData(-1));
}

TEST(ParameterChanges, ClearingHandsOutEmptyQueuesAgain)
{
    ParameterChanges changes(1);
    int32 index = 0;
    changes.addParameterData(1, index)->addPoint(0, 0.5, index);
    changes.clearQueue();
    EXPECT_EQ(0, changes.getParameterCount());
    IParamValueQueue* queue = changes.addParameterData(2, index);
    ASSERT_NE(nullptr, queue);
    EXPECT_EQ(2u, queue->getParameterId());
    EXPECT_EQ(0, queue->getPointCount());
}

TEST(ParameterChanges, WithoutAPoolNothingIsTaken)
{
    ParameterChanges changes;
    int32 index = -1;
    EXPECT_EQ(nullptr, changes.addParameterData(1, index));
    EXPECT_EQ(0, changes.getParameterCount());
}
