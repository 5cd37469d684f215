// The handler a VST3 controller calls back on, and the store of what the effect knows about the
// plug-in's parameters, MIDI assignment and the changes travelling between its threads.
#pragma once

#include "hosting/eventlist.h"
#include "hosting/memorystream.h"
#include "hosting/parameterchanges.h"
#include "hosting/parameterchangetransfer.h"
#include "hosting/processdata.h"
#include "pluginterfaces/vst/ivstcomponent.h"
#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "pluginterfaces/vst/ivstunits.h"

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <utility>
#include <vector>

class CTqVst3Effect;

namespace tqvst {

class Vst3ComponentHandler final : public vst3::IComponentHandler, public vst3::IPlugFrame
{
public:
    // The server's none-value for a parameter id.
    static constexpr vst3::ParamID kNoParam = 0xFEFEFEFE;
    static constexpr int kMidiChannels = 16;
    static constexpr int kMidiControllers = 130;

    // Registers with controller (which may be null) and reads its MIDI assignment. Both are
    // borrowed: the effect outlives the handler.
    Vst3ComponentHandler(CTqVst3Effect* effect, vst3::IEditController* controller);
    // Leaves the controller's handler in place: the controller must not call back once teardown
    // has begun, so it is not given the chance.
    ~Vst3ComponentHandler();
    Vst3ComponentHandler(const Vst3ComponentHandler&) = delete;
    Vst3ComponentHandler& operator=(const Vst3ComponentHandler&) = delete;

    // Only the two interfaces; not even FUnknown on its own.
    vst3::tresult PLUGIN_API queryInterface(const vst3::TUID iid, void** obj) override;
    vst3::uint32 PLUGIN_API addRef() override;
    vst3::uint32 PLUGIN_API release() override;

    vst3::tresult PLUGIN_API beginEdit(vst3::ParamID id) override;
    // An edit in the plug-in's own window goes to the processor only; the host's master hears
    // nothing of it and sees the value when it next asks.
    vst3::tresult PLUGIN_API performEdit(vst3::ParamID id, vst3::ParamValue value) override;
    vst3::tresult PLUGIN_API endEdit(vst3::ParamID id) override;
    vst3::tresult PLUGIN_API restartComponent(vst3::int32 flags) override;
    // Sizing goes only from host to view; a view asking for a new size is refused.
    vst3::tresult PLUGIN_API resizeView(vst3::IPlugView* view, vst3::ViewRect* newSize) override;

    // A change from the host: to the processor always, to the controller unless skipController.
    void QueueParameterChange(vst3::ParamID id, vst3::ParamValue value, vst3::int32 sampleOffset,
                              bool skipController);
    // Reads the controller's parameters once at load, sizes the rings and finds the
    // program-change parameter of each MIDI channel's unit.
    void BuildParameterList();
    // Asks the controller which parameter each MIDI controller of each channel drives.
    void BuildMidiMapping();

    // The parameters the host sees: (ParamID, controller index), in the controller's order.
    const std::vector<std::pair<vst3::ParamID, vst3::int32>>& ParameterList() const
    {
        return m_parameterList;
    }
    // Controller index of a listed parameter, or -1.
    vst3::int32 ParameterIndex(vst3::ParamID id) const;
    vst3::ParamID BypassId() const { return m_bypassId; }
    vst3::ParamID ProgramParamId() const { return m_programParamId; }
    vst3::int32 ProgramParamIndex() const { return m_programParamIndex; }
    // For a plug-in whose program-change parameter has no program list behind it: the parameter
    // is not served from then on.
    void ForgetProgramParam()
    {
        m_programParamId = kNoParam;
        m_programParamIndex = -1;
    }
    // The program-change parameter of a MIDI channel's unit, or kNoParam and -1.
    vst3::ParamID ChannelProgramParamId(int channel) const { return m_channelProgramIds[channel]; }
    vst3::int32 ChannelProgramParamIndex(int channel) const
    {
        return m_channelProgramIndices[channel];
    }
    // The parameter a MIDI controller drives, or kNoParam.
    vst3::ParamID MidiAssignment(int channel, int controller) const;

    // Indexed by ParamID though sized by the parameter count: ids at or above the count have no
    // entry and travel in the ring alone. Negative means nothing pending.
    std::vector<float>& PendingValues() { return m_pendingValues; }
    vst3::ParameterChanges& InputChanges() { return m_inputChanges; }
    vst3::ParameterChanges& OutputChanges() { return m_outputChanges; }
    vst3::ParameterChangeTransfer& ToProcessor() { return m_toProcessor; }
    vst3::ParameterChangeTransfer& FromProcessor() { return m_fromProcessor; }
    vst3::ParameterChangeTransfer& ToController() { return m_toController; }
    vst3::IUnitInfo* UnitInfo() const { return m_unitInfo.get(); }
    // The records of one block, kept here so that no block allocates them.
    vst3::HostProcessData& ProcessData() { return m_processData; }
    vst3::ProcessContext& ProcessContext() { return m_processContext; }
    vst3::EventList& Events() { return m_eventList; }
    CTqVst3Effect* Effect() const { return effect; }

    // The component's and the controller's state framed in a buffer of the handler's own: two
    // little-endian 64-bit sizes, then the two states. *out points into the handler and stays
    // valid until the next call. 0, with *out untouched, when both states are empty.
    vst3::int64 GetStateBlob(const void** out, vst3::IComponent* component,
                             vst3::IEditController* controller);
    // Restores both from such a frame, read in place. A frame whose sizes do not fit its bytes
    // restores nothing. Always 0: what the plug-in answers is not looked at.
    vst3::int32 SetStateBlob(const void* data, vst3::int64 size, vst3::IComponent* component,
                             vst3::IEditController* controller);

private:
    struct Release
    {
        void operator()(vst3::FUnknown* p) const;
    };
    template <class I>
    using Owned = std::unique_ptr<I, Release>;
    using MidiRow = std::array<vst3::ParamID, kMidiControllers>;

    void StorePending(vst3::ParamID id, vst3::ParamValue value);
    void FindChannelProgramParams(const std::vector<vst3::ParameterInfo>& programParams,
                                  const std::vector<vst3::int32>& programIndices);

    std::atomic<vst3::uint32> m_refCount{1};

    vst3::ParameterChanges m_inputChanges;
    vst3::ParameterChanges m_outputChanges;
    // Single writer, single reader each: m_toProcessor is written by the host's calls and the
    // controller's edits and read by the processing call; m_fromProcessor is written by the
    // processing call; both it and m_toController are read when flushing to the controller.
    vst3::ParameterChangeTransfer m_toProcessor;
    vst3::ParameterChangeTransfer m_fromProcessor;
    vst3::ParameterChangeTransfer m_toController;
    std::vector<float> m_pendingValues;
    CTqVst3Effect* effect;
    vst3::IEditController* controller;
    std::vector<std::pair<vst3::ParamID, vst3::int32>> m_parameterList;
    std::map<vst3::ParamID, vst3::int32> m_parameterMap;
    vst3::ParamID m_bypassId = kNoParam;
    vst3::ParamID m_programParamId = kNoParam;
    vst3::int32 m_programParamIndex = -1;
    Owned<vst3::IUnitInfo> m_unitInfo;
    Owned<vst3::IMidiMapping> m_midiMapping;
    // Kept current though nothing reads it yet: the server feeds no MIDI to plug-ins.
    std::unique_ptr<MidiRow[]> m_midiTable;
    std::array<vst3::ParamID, kMidiChannels> m_channelProgramIds;
    std::array<vst3::int32, kMidiChannels> m_channelProgramIndices;
    // The server feeds no events; the list is there because processors expect one.
    vst3::EventList m_eventList;
    vst3::HostProcessData m_processData;
    vst3::ProcessContext m_processContext = {};
    // The last frame GetStateBlob made.
    vst3::MemoryStream m_stateStream;
};

} // namespace tqvst
