// The component handler against a controller of our own: what it answers, which parameters the
// host sees, where edits go and how the rings behave when nobody empties them.
#include "vst3componenthandler.h"

#include "pluginterfaces/vst/ivstcomponent.h"
#include "uniquehandle.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <vector>

#include <windows.h>

using namespace vst3;
using tqvst::Vst3ComponentHandler;

namespace {

constexpr ParamID kNone = Vst3ComponentHandler::kNoParam;

struct Param
{
    ParamID id;
    int32 flags;
    UnitID unit = kRootUnitId;
};

// A controller that lists the given parameters and maps MIDI controller n of channel c to
// parameter 1000 * c + n + shift, or to nothing for odd n. With unit information its units are
// 0 (program list 1), 5 (list 2), 6 (no list) and 7 (list 3); MIDI channels 0 to 4 belong to
// units 0, 5, 6, 7 and an unknown 9, higher channels to none.
class FakeController final : public IEditController, public IMidiMapping, public IUnitInfo
{
public:
    explicit FakeController(std::vector<Param> params) : m_params(std::move(params)) {}

    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        *obj = nullptr;
        if (iidEqual(iid, IEditController::iid))
            *obj = static_cast<IEditController*>(this);
        else if (iidEqual(iid, IMidiMapping::iid) && m_hasMidiMapping)
            *obj = static_cast<IMidiMapping*>(this);
        else if (iidEqual(iid, IUnitInfo::iid) && m_hasUnitInfo)
            *obj = static_cast<IUnitInfo*>(this);
        else
            return kNoInterface;
        addRef();
        return kResultOk;
    }
    uint32 PLUGIN_API addRef() override { return ++m_refs; }
    uint32 PLUGIN_API release() override { return --m_refs; }
    tresult PLUGIN_API initialize(FUnknown*) override { return kResultOk; }
    tresult PLUGIN_API terminate() override { return kResultOk; }
    tresult PLUGIN_API setComponentState(IBStream*) override { return kResultOk; }
    tresult PLUGIN_API setState(IBStream*) override { return kResultOk; }
    tresult PLUGIN_API getState(IBStream*) override { return kResultOk; }
    int32 PLUGIN_API getParameterCount() override { return static_cast<int32>(m_params.size()); }
    tresult PLUGIN_API getParameterInfo(int32 index, ParameterInfo& info) override
    {
        if (index == m_failingIndex) return kResultFalse;
        info.id = m_params[index].id;
        info.flags = m_params[index].flags;
        info.unitId = m_params[index].unit;
        return kResultOk;
    }
    tresult PLUGIN_API getParamStringByValue(ParamID, ParamValue, String128) override
    {
        return kResultFalse;
    }
    tresult PLUGIN_API getParamValueByString(ParamID, TChar*, ParamValue&) override
    {
        return kResultFalse;
    }
    ParamValue PLUGIN_API normalizedParamToPlain(ParamID, ParamValue v) override { return v; }
    ParamValue PLUGIN_API plainParamToNormalized(ParamID, ParamValue v) override { return v; }
    ParamValue PLUGIN_API getParamNormalized(ParamID) override { return 0; }
    tresult PLUGIN_API setParamNormalized(ParamID, ParamValue) override { return kResultOk; }
    tresult PLUGIN_API setComponentHandler(IComponentHandler* handler) override
    {
        m_handler = handler;
        return kResultOk;
    }
    IPlugView* PLUGIN_API createView(FIDString) override { return nullptr; }
    tresult PLUGIN_API getMidiControllerAssignment(int32 bus, int16 channel, CtrlNumber number,
                                                   ParamID& id) override
    {
        ++m_midiQueries;
        if (bus != 0 || number % 2) return kResultFalse;
        id = 1000 * channel + number + m_midiShift;
        return kResultOk;
    }

    int32 PLUGIN_API getUnitCount() override { return 4; }
    tresult PLUGIN_API getUnitInfo(int32 index, UnitInfo& info) override
    {
        const UnitInfo units[] = {{0, kNoParentUnitId, {}, 1},
                                  {5, 0, {}, 2},
                                  {6, 0, {}, kNoProgramListId},
                                  {7, 0, {}, 3}};
        if (index < 0 || index >= 4) return kResultFalse;
        info = units[index];
        return kResultOk;
    }
    int32 PLUGIN_API getProgramListCount() override { return 0; }
    tresult PLUGIN_API getProgramListInfo(int32, ProgramListInfo&) override { return kResultFalse; }
    tresult PLUGIN_API getProgramName(ProgramListID, int32, String128) override
    {
        return kResultFalse;
    }
    tresult PLUGIN_API getProgramInfo(ProgramListID, int32, CString, String128) override
    {
        return kResultFalse;
    }
    tresult PLUGIN_API hasProgramPitchNames(ProgramListID, int32) override { return kResultFalse; }
    tresult PLUGIN_API getProgramPitchName(ProgramListID, int32, int16, String128) override
    {
        return kResultFalse;
    }
    UnitID PLUGIN_API getSelectedUnit() override { return 0; }
    tresult PLUGIN_API selectUnit(UnitID) override { return kResultFalse; }
    tresult PLUGIN_API getUnitByBus(MediaType type, BusDirection dir, int32 bus, int32 channel,
                                    UnitID& unit) override
    {
        const UnitID units[] = {0, 5, 6, 7, 9};
        if (type != kEvent || dir != kInput || bus != 0 || channel < 0 || channel >= 5)
            return kResultFalse;
        unit = units[channel];
        return kResultOk;
    }
    tresult PLUGIN_API setUnitProgramData(int32, int32, IBStream*) override { return kResultFalse; }

    std::vector<Param> m_params;
    bool m_hasUnitInfo = false;
    int32 m_failingIndex = -1;
    bool m_hasMidiMapping = true;
    ParamID m_midiShift = 0;
    int m_midiQueries = 0;
    IComponentHandler* m_handler = nullptr;
    uint32 m_refs = 1;
};

// Empties a ring into a list of (id, value, offset).
struct Change
{
    ParamID id;
    ParamValue value;
    int32 offset;
    bool operator==(const Change&) const = default;
};
std::vector<Change> Drain(ParameterChangeTransfer& ring)
{
    std::vector<Change> changes;
    Change c{};
    while (ring.getNextChange(c.id, c.value, c.offset))
        changes.push_back(c);
    return changes;
}

TEST(Vst3ComponentHandler, AnswersItsTwoInterfacesAndNothingElse)
{
    auto* handler = new Vst3ComponentHandler(nullptr, nullptr);
    void* obj = nullptr;
    EXPECT_EQ(kResultOk, handler->queryInterface(IComponentHandler::iid, &obj));
    EXPECT_EQ(static_cast<IComponentHandler*>(handler), obj);
    EXPECT_EQ(kResultOk, handler->queryInterface(IPlugFrame::iid, &obj));
    EXPECT_EQ(static_cast<IPlugFrame*>(handler), obj);
    for (const FUID* iid : {&FUnknown::iid, &IComponentHandler2::iid, &IPlugView::iid})
    {
        obj = handler;
        EXPECT_EQ(kNoInterface, handler->queryInterface(*iid, &obj));
        EXPECT_EQ(nullptr, obj);
    }
    EXPECT_EQ(2u, handler->release());
    EXPECT_EQ(1u, handler->release());
    EXPECT_EQ(0u, handler->release());
}

TEST(Vst3ComponentHandler, RegistersWithTheControllerAndReadsItsMidiMapping)
{
    FakeController controller({});
    auto* handler = new Vst3ComponentHandler(nullptr, &controller);
    EXPECT_EQ(static_cast<IComponentHandler*>(handler), controller.m_handler);
    EXPECT_EQ(16 * 130, controller.m_midiQueries);
    EXPECT_EQ(0u, handler->MidiAssignment(0, 0));
    EXPECT_EQ(15 * 1000 + 128u, handler->MidiAssignment(15, 128));
    EXPECT_EQ(kNone, handler->MidiAssignment(3, 7));
    EXPECT_EQ(kNone, handler->MidiAssignment(16, 0));
    EXPECT_EQ(kNone, handler->MidiAssignment(0, 130));
    handler->release();
    // The query for the mapping took a reference that the handler gives back; the handler
    // stays registered, as the controller must not call back during teardown.
    EXPECT_EQ(1u, controller.m_refs);
    EXPECT_NE(nullptr, controller.m_handler);
}

TEST(Vst3ComponentHandler, WithoutMidiMappingHasNoTable)
{
    FakeController controller({});
    controller.m_hasMidiMapping = false;
    Vst3ComponentHandler handler(nullptr, &controller);
    EXPECT_EQ(0, controller.m_midiQueries);
    EXPECT_EQ(kNone, handler.MidiAssignment(0, 0));
}

TEST(Vst3ComponentHandler, RestartAcceptsOnlyValueTitleAndMidiChanges)
{
    FakeController controller({});
    Vst3ComponentHandler handler(nullptr, &controller);
    const struct
    {
        int32 flags;
        tresult result;
        bool remaps;
    } cases[] = {
        {kParamValuesChanged, kResultOk, false},
        {kParamTitlesChanged, kResultOk, false},
        {kMidiCCAssignmentChanged, kResultOk, true},
        {kParamValuesChanged | kMidiCCAssignmentChanged, kResultOk, true},
        {kLatencyChanged | kParamTitlesChanged, kResultOk, false},
        {kLatencyChanged, kResultFalse, false},
        {kReloadComponent, kResultFalse, false},
        {kIoChanged, kResultFalse, false},
        {kIoTitlesChanged, kResultFalse, false},
        {0, kResultFalse, false},
        // Only the low eight bits count.
        {kRoutingInfoChanged, kResultFalse, false},
        {kParamValuesChanged << 8, kResultFalse, false},
    };
    for (const auto& c : cases)
    {
        controller.m_midiQueries = 0;
        ++controller.m_midiShift;
        EXPECT_EQ(c.result, handler.restartComponent(c.flags)) << c.flags;
        EXPECT_EQ(c.remaps ? 16 * 130 : 0, controller.m_midiQueries) << c.flags;
        EXPECT_EQ(c.remaps, handler.MidiAssignment(1, 2) == 1002 + controller.m_midiShift)
            << c.flags;
    }
}

TEST(Vst3ComponentHandler, RefusesEveryResizeFromTheView)
{
    Vst3ComponentHandler handler(nullptr, nullptr);
    ViewRect rect{0, 0, 300, 200};
    EXPECT_EQ(kResultFalse, handler.resizeView(nullptr, &rect));
    EXPECT_EQ(kResultFalse, handler.resizeView(nullptr, nullptr));
    EXPECT_EQ(300, rect.right);
}

TEST(Vst3ComponentHandler, ListsOnlyParametersTheHostMaySet)
{
    FakeController controller({
        {10, ParameterInfo::kIsBypass},
        {11, ParameterInfo::kIsReadOnly},
        {12, ParameterInfo::kCanAutomate},
        {13, ParameterInfo::kIsProgramChange, 5},
        {14, ParameterInfo::kIsProgramChange},
        {15, ParameterInfo::kIsBypass | ParameterInfo::kIsReadOnly},
        {16, ParameterInfo::kCanAutomate},
        {17, 0},
    });
    controller.m_failingIndex = 6;
    Vst3ComponentHandler handler(nullptr, &controller);
    handler.BuildParameterList();

    const std::vector<std::pair<ParamID, int32>> expected{{12, 2}, {17, 7}};
    EXPECT_EQ(expected, handler.ParameterList());
    EXPECT_EQ(2, handler.ParameterIndex(12));
    EXPECT_EQ(-1, handler.ParameterIndex(16)); // its info failed
    EXPECT_EQ(-1, handler.ParameterIndex(10));
    EXPECT_EQ(10u, handler.BypassId());       // the first bypass wins
    EXPECT_EQ(14u, handler.ProgramParamId()); // the one on the root unit
    EXPECT_EQ(4, handler.ProgramParamIndex());
    EXPECT_EQ(std::vector<float>(8, -1.0f), handler.PendingValues());
    // No unit information: no channel has a program-change parameter.
    EXPECT_EQ(kNone, handler.ChannelProgramParamId(0));
    EXPECT_EQ(-1, handler.ChannelProgramParamIndex(0));
}

TEST(Vst3ComponentHandler, FindsTheProgramChangeParameterOfEachMidiChannel)
{
    FakeController controller({
        {20, ParameterInfo::kCanAutomate, 5},
        {21, ParameterInfo::kIsProgramChange, 5},
        {22, ParameterInfo::kIsProgramChange, 6},
        {23, ParameterInfo::kIsProgramChange},
        {24, ParameterInfo::kIsProgramChange, 5},
    });
    controller.m_hasUnitInfo = true;
    auto* handler = new Vst3ComponentHandler(nullptr, &controller);
    handler->BuildParameterList();
    const struct
    {
        ParamID id;
        int32 index;
    } expected[16] = {
        {23, 3},     // root unit
        {21, 1},     // the first of unit 5
        {kNone, -1}, // unit 6 has no program list
        {kNone, -1}, // unit 7 has a list but no parameter
        {kNone, -1}, // unit 9 is not among the units
    };
    for (int channel = 0; channel < 16; ++channel)
    {
        const ParamID id = channel < 5 ? expected[channel].id : kNone;
        const int32 index = channel < 5 ? expected[channel].index : -1;
        EXPECT_EQ(id, handler->ChannelProgramParamId(channel)) << channel;
        EXPECT_EQ(index, handler->ChannelProgramParamIndex(channel)) << channel;
    }
    handler->release();
    EXPECT_EQ(1u, controller.m_refs); // unit information and MIDI mapping given back
}

TEST(Vst3ComponentHandler, EditsReachTheProcessorAndPendingValuesOnly)
{
    FakeController controller({{0, 0}, {1, 0}, {7, 0}});
    Vst3ComponentHandler handler(nullptr, &controller);
    handler.BuildParameterList();

    EXPECT_EQ(kResultOk, handler.beginEdit(1));
    EXPECT_EQ(kResultOk, handler.performEdit(1, 0.25));
    EXPECT_EQ(kResultOk, handler.performEdit(7, 0.5)); // id beyond the count: ring only
    EXPECT_EQ(kResultOk, handler.endEdit(1));
    handler.QueueParameterChange(0, 0.75, 12, false);
    handler.QueueParameterChange(2, 1.0, 3, true);

    EXPECT_EQ((std::vector<Change>{{1, 0.25, 0}, {7, 0.5, 0}, {0, 0.75, 12}, {2, 1.0, 3}}),
              Drain(handler.ToProcessor()));
    EXPECT_EQ((std::vector<Change>{{0, 0.75, 12}}), Drain(handler.ToController()));
    EXPECT_TRUE(Drain(handler.FromProcessor()).empty());
    EXPECT_EQ((std::vector<float>{0.75f, 0.25f, 1.0f}), handler.PendingValues());
}

TEST(Vst3ComponentHandler, AFullRingKeepsTheOldestChanges)
{
    FakeController controller({{0, 0}, {1, 0}, {2, 0}});
    Vst3ComponentHandler handler(nullptr, &controller);
    handler.BuildParameterList();
    // Twice the count plus one edits without a processing call in between.
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(kResultOk, handler.performEdit(i % 3, i / 10.0));
    const std::vector<Change> kept = Drain(handler.ToProcessor());
    ASSERT_EQ(5u, kept.size());
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ((Change{ParamID(i % 3), i / 10.0, 0}), kept[i]);
    // The pending values saw every edit, including the dropped ones.
    EXPECT_EQ((std::vector<float>{0.6f, 0.4f, 0.5f}), handler.PendingValues());
    // Emptied, the ring takes changes again.
    handler.performEdit(2, 0.9);
    EXPECT_EQ((std::vector<Change>{{2, 0.9, 0}}), Drain(handler.ToProcessor()));
}

TEST(Vst3ComponentHandler, EditsFromTheControllersThreadArriveInOrder)
{
    constexpr int kEdits = 5000;
    std::vector<Param> params;
    for (ParamID id = 0; id < 4; ++id)
        params.push_back({id, 0});
    FakeController controller(params);
    Vst3ComponentHandler handler(nullptr, &controller);
    handler.BuildParameterList();

    // The controller edits on a thread of its own while this thread plays the processing call.
    // The ring holds 7 changes, so some edits are dropped; what arrives must be in order.
    struct Editor
    {
        Vst3ComponentHandler* handler;
        std::atomic<bool> finished = false;
        static DWORD WINAPI Run(void* context)
        {
            auto* self = static_cast<Editor*>(context);
            for (int i = 0; i < kEdits; ++i)
                self->handler->performEdit(i % 4, i);
            self->finished = true;
            return 0;
        }
    } editor{&handler};
    const tq::UniqueHandle thread(CreateThread(nullptr, 0, Editor::Run, &editor, 0, nullptr));
    ASSERT_TRUE(thread.Get());
    std::vector<Change> seen;
    for (;;)
    {
        // Whatever the editor wrote before it finished is in the ring by the next drain.
        const bool last = editor.finished;
        const std::vector<Change> batch = Drain(handler.ToProcessor());
        seen.insert(seen.end(), batch.begin(), batch.end());
        if (last) break;
        SwitchToThread();
    }
    ASSERT_FALSE(seen.empty());
    for (size_t i = 1; i < seen.size(); ++i)
        ASSERT_LT(seen[i - 1].value, seen[i].value);
    for (const Change& c : seen)
        ASSERT_EQ(ParamID(static_cast<int>(c.value) % 4), c.id);
    printf("%zu of %d edits arrived\n", seen.size(), kEdits);
}

} // namespace
