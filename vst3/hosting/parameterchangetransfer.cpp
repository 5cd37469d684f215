// A ring of parameter changes between two threads.
#include "parameterchangetransfer.h"

#include "parameterchanges.h"

#include <new>

namespace vst3 {

ParameterChangeTransfer::ParameterChangeTransfer(int32 maxParameters)
{
    setMaxParameters(maxParameters);
}

void ParameterChangeTransfer::setMaxParameters(int32 maxParameters)
{
    m_changes.reset();
    m_size = 0;
    m_readIndex = 0;
    m_writeIndex = 0;
    if (maxParameters <= 0 || maxParameters > (1 << 28)) return;
    m_changes.reset(new (std::nothrow) Change[maxParameters * 2]);
    if (m_changes) m_size = maxParameters * 2;
}

bool ParameterChangeTransfer::addChange(ParamID id, ParamValue value, int32 sampleOffset)
{
    if (m_size == 0) return false;
    const int32 write = m_writeIndex.load(std::memory_order_relaxed);
    const int32 next = write + 1 == m_size ? 0 : write + 1;
    if (next == m_readIndex.load(std::memory_order_acquire)) return false;
    m_changes[write] = {id, sampleOffset, value};
    m_writeIndex.store(next, std::memory_order_release);
    return true;
}

bool ParameterChangeTransfer::getNextChange(ParamID& id, ParamValue& value, int32& sampleOffset)
{
    const int32 read = m_readIndex.load(std::memory_order_relaxed);
    if (read == m_writeIndex.load(std::memory_order_acquire)) return false;
    id = m_changes[read].id;
    value = m_changes[read].value;
    sampleOffset = m_changes[read].sampleOffset;
    m_readIndex.store(read + 1 == m_size ? 0 : read + 1, std::memory_order_release);
    return true;
}

void ParameterChangeTransfer::removeChanges()
{
    m_readIndex.store(m_writeIndex.load(std::memory_order_acquire), std::memory_order_release);
}

int32 ParameterChangeTransfer::transferChangesTo(ParameterChanges& changes)
{
    int32 taken = 0;
    ParamID id;
    ParamValue value;
    int32 sampleOffset;
    while (getNextChange(id, value, sampleOffset))
    {
        ++taken;
        int32 queueIndex = 0;
        if (IParamValueQueue* queue = changes.addParameterData(id, queueIndex))
        {
            int32 pointIndex = 0;
            queue->addPoint(sampleOffset, value, pointIndex);
        }
    }
    return taken;
}

void ParameterChangeTransfer::transferChangesFrom(ParameterChanges& changes)
{
    const int32 count = changes.getParameterCount();
    for (int32 i = 0; i < count; ++i)
    {
        IParamValueQueue* queue = changes.getParameterData(i);
        if (!queue) continue;
        const ParamID id = queue->getParameterId();
        const int32 points = queue->getPointCount();
        for (int32 p = 0; p < points; ++p)
        {
            int32 sampleOffset = 0;
            ParamValue value = 0;
            if (queue->getPoint(p, sampleOffset, value) == kResultOk)
                addChange(id, value, sampleOffset);
        }
    }
}

} // namespace vst3
