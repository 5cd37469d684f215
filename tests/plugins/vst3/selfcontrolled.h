// The base of small test plug-ins whose component is also their controller: one stereo object
// that answers every interface a host asks of it, has no parameters and no view, and keeps no
// state. A plug-in overrides only what makes it different. Initialize and terminate leave "S.init"
// and "S.term" in TQ_VST3_CALLS, so a test sees how often each came.
#pragma once

#include "callrecord.h"
#include "editcontroller.h"
#include "stereoeffect.h"

namespace vst3plugin {

class SelfControlled : public StereoEffect<EditController>
{
public:
    SelfControlled() : StereoEffect(u"Stereo", u"Stereo") {}

    tresult PLUGIN_API initialize(FUnknown*) override
    {
        recordCall("S.init");
        return kResultOk;
    }
    tresult PLUGIN_API terminate() override
    {
        recordCall("S.term");
        return kResultOk;
    }

    tresult PLUGIN_API getControllerClassId(TUID) override { return kNotImplemented; }
    // Serves both interfaces: one object, one (empty) state.
    tresult PLUGIN_API setState(IBStream*) override { return kResultOk; }
    tresult PLUGIN_API getState(IBStream*) override { return kResultOk; }

    // Leaves the outputs as the host gave them.
    tresult PLUGIN_API process(ProcessData&) override { return kResultOk; }

protected:
    ~SelfControlled() override = default;
};

} // namespace vst3plugin
