// The parameter changes of one block: queues of points, all of their memory taken at setup.
#pragma once

#include "objectbase.h"
#include "pluginterfaces/vst/ivstparameterchanges.h"

#include <memory>

namespace vst3 {

class ParameterValueQueue final : public IParamValueQueue
{
public:
    static constexpr int32 kDefaultMaxPoints = 64;

    explicit ParameterValueQueue(int32 maxPoints = kDefaultMaxPoints);
    ParameterValueQueue(const ParameterValueQueue&) = delete;
    ParameterValueQueue& operator=(const ParameterValueQueue&) = delete;

    VST3_OBJECT_METHODS(IParamValueQueue)

    ParamID PLUGIN_API getParameterId() override { return m_id; }
    int32 PLUGIN_API getPointCount() override { return m_count; }
    tresult PLUGIN_API getPoint(int32 index, int32& sampleOffset, ParamValue& value) override;
    // Points stay ordered by sample offset; a second point at the same offset replaces the
    // value. When the queue is full a new offset is refused with kResultFalse.
    tresult PLUGIN_API addPoint(int32 sampleOffset, ParamValue value, int32& index) override;

    void setParamID(ParamID id) { m_id = id; }
    void clear() { m_count = 0; }

private:
    struct Point
    {
        int32 sampleOffset;
        ParamValue value;
    };

    ParamID m_id = kNoParamId;
    int32 m_count = 0;
    int32 m_capacity = 0;
    std::unique_ptr<Point[]> m_points;
};

class ParameterChanges final : public IParameterChanges
{
public:
    explicit ParameterChanges(int32 maxParameters = 0);
    ParameterChanges(const ParameterChanges&) = delete;
    ParameterChanges& operator=(const ParameterChanges&) = delete;

    VST3_OBJECT_METHODS(IParameterChanges)

    int32 PLUGIN_API getParameterCount() override { return m_used; }
    IParamValueQueue* PLUGIN_API getParameterData(int32 index) override;
    // Returns the queue of that id if one is in use, else the next free one; null when all
    // queues are taken.
    IParamValueQueue* PLUGIN_API addParameterData(const ParamID& id, int32& index) override;

    // Sizes the pool of queues. Allocates: call it at setup, never while processing.
    void setMaxParameters(int32 maxParameters);
    void clearQueue() { m_used = 0; }

private:
    int32 m_used = 0;
    int32 m_capacity = 0;
    std::unique_ptr<std::unique_ptr<ParameterValueQueue>[]> m_queues;
};

} // namespace vst3
