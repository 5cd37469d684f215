// The handler a VST3 controller calls back on, and the effect's store of parameter knowledge.
#include "vst3componenthandler.h"

#include "pluginexceptionfilter.h"
#include "pluginterfaces/vst/ivstcomponent.h"

#include <cstring>
#include <new>

namespace tqvst {

using namespace vst3;

namespace {

// Flags that the handler accepts; every other restart request is refused.
constexpr int32 kAcceptedRestarts =
    kParamValuesChanged | kParamTitlesChanged | kMidiCCAssignmentChanged;

template <class I>
I* QueryController(IEditController* controller)
{
    void* obj = nullptr;
    tresult result = kResultFalse;
    if (!CallPlugin([&] { result = controller->queryInterface(I::iid, &obj); })) return nullptr;
    return result == kResultOk ? static_cast<I*>(obj) : nullptr;
}

} // namespace

void Vst3ComponentHandler::Release::operator()(FUnknown* p) const
{
    CallPlugin([p] { p->release(); });
}

Vst3ComponentHandler::Vst3ComponentHandler(CTqVst3Effect* owner, IEditController* editController)
    : effect(owner), controller(editController)
{
    m_eventList.setMaxSize(1024);
    m_processData.processContext = &m_processContext;
    m_channelProgramIds.fill(kNoParam);
    m_channelProgramIndices.fill(-1);
    if (!controller) return;
    CallPlugin([this] { controller->setComponentHandler(this); });
    m_unitInfo.reset(QueryController<IUnitInfo>(controller));
    m_midiMapping.reset(QueryController<IMidiMapping>(controller));
    BuildMidiMapping();
}

Vst3ComponentHandler::~Vst3ComponentHandler() = default;

tresult PLUGIN_API Vst3ComponentHandler::queryInterface(const TUID iid, void** obj)
{
    if (!obj) return kInvalidArgument;
    *obj = nullptr;
    if (!iid) return kInvalidArgument;
    if (iidEqual(iid, IComponentHandler::iid))
        *obj = static_cast<IComponentHandler*>(this);
    else if (iidEqual(iid, IPlugFrame::iid))
        *obj = static_cast<IPlugFrame*>(this);
    else
        return kNoInterface;
    addRef();
    return kResultOk;
}

uint32 PLUGIN_API Vst3ComponentHandler::addRef()
{
    return ++m_refCount;
}

uint32 PLUGIN_API Vst3ComponentHandler::release()
{
    const uint32 left = --m_refCount;
    if (left == 0) delete this;
    return left;
}

tresult PLUGIN_API Vst3ComponentHandler::beginEdit(ParamID)
{
    return kResultOk;
}

tresult PLUGIN_API Vst3ComponentHandler::performEdit(ParamID id, ParamValue value)
{
    m_toProcessor.addChange(id, value, 0);
    StorePending(id, value);
    return kResultOk;
}

tresult PLUGIN_API Vst3ComponentHandler::endEdit(ParamID)
{
    return kResultOk;
}

tresult PLUGIN_API Vst3ComponentHandler::restartComponent(int32 flags)
{
    // Only the low eight bits are looked at. Reload, I/O and latency changes are refused on
    // purpose, and a title change does not rebuild the parameter list.
    flags &= 0xFF;
    if (flags & kMidiCCAssignmentChanged) BuildMidiMapping();
    return (flags & kAcceptedRestarts) ? kResultOk : kResultFalse;
}

tresult PLUGIN_API Vst3ComponentHandler::resizeView(IPlugView*, ViewRect*)
{
    return kResultFalse;
}

void Vst3ComponentHandler::QueueParameterChange(ParamID id, ParamValue value, int32 sampleOffset,
                                                bool skipController)
{
    if (!skipController) m_toController.addChange(id, value, sampleOffset);
    m_toProcessor.addChange(id, value, sampleOffset);
    StorePending(id, value);
}

void Vst3ComponentHandler::StorePending(ParamID id, ParamValue value)
{
    if (id < m_pendingValues.size()) m_pendingValues[id] = static_cast<float>(value);
}

int32 Vst3ComponentHandler::ParameterIndex(ParamID id) const
{
    const auto found = m_parameterMap.find(id);
    return found == m_parameterMap.end() ? -1 : found->second;
}

ParamID Vst3ComponentHandler::MidiAssignment(int channel, int number) const
{
    if (!m_midiTable || channel < 0 || channel >= kMidiChannels || number < 0 ||
        number >= kMidiControllers)
        return kNoParam;
    return m_midiTable[channel][number];
}

void Vst3ComponentHandler::BuildMidiMapping()
{
    if (!m_midiMapping) return;
    if (!m_midiTable)
    {
        m_midiTable.reset(new (std::nothrow) MidiRow[kMidiChannels]);
        if (!m_midiTable) return;
    }
    IMidiMapping* mapping = m_midiMapping.get();
    for (int16 channel = 0; channel < kMidiChannels; ++channel)
    {
        for (int16 number = 0; number < kMidiControllers; ++number)
        {
            ParamID id = kNoParam;
            tresult result = kResultFalse;
            const bool returned = CallPlugin(
                [&] { result = mapping->getMidiControllerAssignment(0, channel, number, id); });
            m_midiTable[channel][number] = returned && result == kResultOk ? id : kNoParam;
        }
    }
}

void Vst3ComponentHandler::BuildParameterList()
{
    m_parameterList.clear();
    m_parameterMap.clear();
    m_pendingValues.clear();
    m_bypassId = kNoParam;
    m_programParamId = kNoParam;
    m_programParamIndex = -1;
    std::vector<ParameterInfo> programParams;
    std::vector<int32> programIndices;

    int32 count = 0;
    if (controller && !CallPlugin([&] { count = controller->getParameterCount(); })) count = 0;
    if (count < 0) count = 0;
    m_pendingValues.assign(count, -1.0f);
    for (int32 i = 0; i < count; ++i)
    {
        ParameterInfo info;
        std::memset(&info, 0, sizeof(info));
        tresult result = kResultFalse;
        if (!CallPlugin([&] { result = controller->getParameterInfo(i, info); }) ||
            result != kResultOk)
            continue;
        if (info.flags & ParameterInfo::kIsBypass)
        {
            if (m_bypassId == kNoParam) m_bypassId = info.id;
        }
        else if (info.flags & ParameterInfo::kIsProgramChange)
        {
            programParams.push_back(info);
            programIndices.push_back(i);
            if (info.unitId == kRootUnitId && m_programParamId == kNoParam)
            {
                m_programParamId = info.id;
                m_programParamIndex = i;
            }
        }
        else if (!(info.flags & ParameterInfo::kIsReadOnly))
        {
            m_parameterList.emplace_back(info.id, i);
            m_parameterMap[info.id] = i;
        }
    }

    m_toProcessor.setMaxParameters(count);
    m_fromProcessor.setMaxParameters(count);
    m_toController.setMaxParameters(count);
    m_inputChanges.setMaxParameters(count);
    m_outputChanges.setMaxParameters(count);
    FindChannelProgramParams(programParams, programIndices);
}

void Vst3ComponentHandler::FindChannelProgramParams(const std::vector<ParameterInfo>& programParams,
                                                    const std::vector<int32>& programIndices)
{
    m_channelProgramIds.fill(kNoParam);
    m_channelProgramIndices.fill(-1);
    IUnitInfo* units = m_unitInfo.get();
    if (!units) return;
    int32 unitCount = 0;
    if (!CallPlugin([&] { unitCount = units->getUnitCount(); })) return;
    for (int32 channel = 0; channel < kMidiChannels; ++channel)
    {
        UnitID unitId = 0;
        tresult result = kResultFalse;
        if (!CallPlugin(
                [&] { result = units->getUnitByBus(kEvent, kInput, 0, channel, unitId); }) ||
            result != kResultOk)
            continue;
        bool hasProgramList = false;
        for (int32 u = 0; u < unitCount; ++u)
        {
            vst3::UnitInfo info;
            std::memset(&info, 0, sizeof(info));
            if (!CallPlugin([&] { result = units->getUnitInfo(u, info); }) || result != kResultOk)
                continue;
            if (info.id != unitId) continue;
            hasProgramList = info.programListId != kNoProgramListId;
            break;
        }
        if (!hasProgramList) continue;
        for (size_t p = 0; p < programParams.size(); ++p)
        {
            if (programParams[p].unitId != unitId) continue;
            m_channelProgramIds[channel] = programParams[p].id;
            m_channelProgramIndices[channel] = programIndices[p];
            break;
        }
    }
}

} // namespace tqvst
