// A ring of parameter changes between two threads: one writes, the other reads, no lock.
#pragma once

#include "pluginterfaces/vst/vsttypes.h"

#include <atomic>
#include <memory>

namespace vst3 {

class ParameterChanges;

class ParameterChangeTransfer
{
public:
    explicit ParameterChangeTransfer(int32 maxParameters = 0);

    // The ring gets twice as many slots as parameters and holds one change fewer than its
    // slots. Allocates and forgets queued changes: call it at setup, with neither side active.
    void setMaxParameters(int32 maxParameters);

    // Writer side. A full ring drops this, the newest, change and answers false: the write
    // position never passes the read position.
    bool addChange(ParamID id, ParamValue value, int32 sampleOffset);
    // Moves every point of every queue into the ring, in queue order.
    void transferChangesFrom(ParameterChanges& changes);

    // Reader side.
    bool getNextChange(ParamID& id, ParamValue& value, int32& sampleOffset);
    // Moves every queued change into a queue of its parameter; answers how many were taken.
    int32 transferChangesTo(ParameterChanges& changes);
    void removeChanges();

private:
    struct Change
    {
        ParamID id;
        int32 sampleOffset;
        ParamValue value;
    };

    std::unique_ptr<Change[]> m_changes;
    int32 m_size = 0;
    std::atomic<int32> m_readIndex{0};
    std::atomic<int32> m_writeIndex{0};
};

} // namespace vst3
