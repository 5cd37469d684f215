// The parameter changes of one block.
#include "parameterchanges.h"

#include <new>

namespace vst3 {

ParameterValueQueue::ParameterValueQueue(int32 maxPoints)
    : m_points(new (std::nothrow) Point[maxPoints > 0 ? maxPoints : 1])
{
    if (m_points) m_capacity = maxPoints > 0 ? maxPoints : 0;
}

tresult PLUGIN_API ParameterValueQueue::getPoint(int32 index, int32& sampleOffset,
                                                 ParamValue& value)
{
    if (index < 0 || index >= m_count) return kResultFalse;
    sampleOffset = m_points[index].sampleOffset;
    value = m_points[index].value;
    return kResultOk;
}

tresult PLUGIN_API ParameterValueQueue::addPoint(int32 sampleOffset, ParamValue value, int32& index)
{
    int32 at = 0;
    while (at < m_count && m_points[at].sampleOffset < sampleOffset)
        ++at;
    if (at < m_count && m_points[at].sampleOffset == sampleOffset)
    {
        m_points[at].value = value;
        index = at;
        return kResultOk;
    }
    if (m_count >= m_capacity) return kResultFalse;
    for (int32 i = m_count; i > at; --i)
        m_points[i] = m_points[i - 1];
    m_points[at] = {sampleOffset, value};
    ++m_count;
    index = at;
    return kResultOk;
}

ParameterChanges::ParameterChanges(int32 maxParameters)
{
    setMaxParameters(maxParameters);
}

void ParameterChanges::setMaxParameters(int32 maxParameters)
{
    m_used = 0;
    m_capacity = 0;
    m_queues.reset();
    if (maxParameters <= 0) return;
    m_queues.reset(new (std::nothrow) std::unique_ptr<ParameterValueQueue>[maxParameters]);
    if (!m_queues) return;
    for (int32 i = 0; i < maxParameters; ++i)
    {
        m_queues[i].reset(new (std::nothrow) ParameterValueQueue());
        if (!m_queues[i]) return;
        m_capacity = i + 1;
    }
}

IParamValueQueue* PLUGIN_API ParameterChanges::getParameterData(int32 index)
{
    if (index < 0 || index >= m_used) return nullptr;
    return m_queues[index].get();
}

IParamValueQueue* PLUGIN_API ParameterChanges::addParameterData(const ParamID& id, int32& index)
{
    for (int32 i = 0; i < m_used; ++i)
    {
        if (m_queues[i]->getParameterId() == id)
        {
            index = i;
            return m_queues[i].get();
        }
    }
    if (m_used >= m_capacity) return nullptr;
    ParameterValueQueue* queue = m_queues[m_used].get();
    queue->setParamID(id);
    queue->clear();
    index = m_used++;
    return queue;
}

} // namespace vst3
