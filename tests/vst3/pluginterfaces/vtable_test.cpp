// Every interface method sits in the vtable slot plug-ins built for Windows expect. Each call
// goes to a probe object whose slots record their number and jump straight back, so no
// argument is ever looked at.
#include "pluginterfaces/base/ipluginbase.h"
#include "pluginterfaces/gui/iplugview.h"
#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "pluginterfaces/vst/ivsthostapplication.h"
#include "pluginterfaces/vst/ivstunits.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

using namespace vst3;

namespace {

void* g_jump[5];
int g_slot = -1;

// Never returns, so a __stdcall slot called with any arguments leaves the stack to the jump.
template <int N>
void PLUGIN_API recordSlot()
{
    g_slot = N;
    __builtin_longjmp(g_jump, 1);
}

template <int... N>
constexpr auto makeSlots(std::integer_sequence<int, N...>)
{
    return std::array<void (*)(), sizeof...(N)>{reinterpret_cast<void (*)()>(&recordSlot<N>)...};
}

const auto kSlots = makeSlots(std::make_integer_sequence<int, 24>());

struct Probe
{
    const void* vtable = kSlots.data();
};

template <class I, class Call>
__attribute__((noinline)) int slotOf(Call call)
{
    Probe probe;
    g_slot = -1;
    if (__builtin_setjmp(g_jump) == 0) call(reinterpret_cast<I*>(&probe));
    return g_slot;
}

#define EXPECT_SLOT(I, n, call) EXPECT_EQ(slotOf<I>([](I* p) { p->call; }), n) << #I "::" #call

TUID tuid;
BusInfo busInfo;
RoutingInfo routing;
SpeakerArrangement arrangement;
ProcessSetup setup;
ProcessData data;
ParameterInfo parameterInfo;
String128 text;
double number;
int32 integer;
int64 bigInteger;
const void* blob;
uint32 blobSize;
UnitInfo unitInfo;
ProgramListInfo listInfo;
Event event;
ParamID paramId;

} // namespace

TEST(Vtable, BaseAndFactoryInterfaces)
{
    EXPECT_SLOT(FUnknown, 0, queryInterface(nullptr, nullptr));
    EXPECT_SLOT(FUnknown, 1, addRef());
    EXPECT_SLOT(FUnknown, 2, release());
    EXPECT_SLOT(IPluginBase, 3, initialize(nullptr));
    EXPECT_SLOT(IPluginBase, 4, terminate());
    EXPECT_SLOT(IPluginFactory3, 3, getFactoryInfo(nullptr));
    EXPECT_SLOT(IPluginFactory3, 4, countClasses());
    EXPECT_SLOT(IPluginFactory3, 5, getClassInfo(0, nullptr));
    EXPECT_SLOT(IPluginFactory3, 6, createInstance(nullptr, nullptr, nullptr));
    EXPECT_SLOT(IPluginFactory3, 7, getClassInfo2(0, nullptr));
    EXPECT_SLOT(IPluginFactory3, 8, getClassInfoUnicode(0, nullptr));
    EXPECT_SLOT(IPluginFactory3, 9, setHostContext(nullptr));
    EXPECT_SLOT(IBStream, 3, read(nullptr, 0, nullptr));
    EXPECT_SLOT(IBStream, 4, write(nullptr, 0, nullptr));
    EXPECT_SLOT(IBStream, 5, seek(0, 0, nullptr));
    EXPECT_SLOT(IBStream, 6, tell(nullptr));
}

TEST(Vtable, ComponentAndProcessor)
{
    EXPECT_SLOT(IComponent, 3, initialize(nullptr));
    EXPECT_SLOT(IComponent, 5, getControllerClassId(tuid));
    EXPECT_SLOT(IComponent, 6, setIoMode(0));
    EXPECT_SLOT(IComponent, 7, getBusCount(0, 0));
    EXPECT_SLOT(IComponent, 8, getBusInfo(0, 0, 0, busInfo));
    EXPECT_SLOT(IComponent, 9, getRoutingInfo(routing, routing));
    EXPECT_SLOT(IComponent, 10, activateBus(0, 0, 0, 1));
    EXPECT_SLOT(IComponent, 11, setActive(1));
    EXPECT_SLOT(IComponent, 12, setState(nullptr));
    EXPECT_SLOT(IComponent, 13, getState(nullptr));
    EXPECT_SLOT(IAudioProcessor, 3, setBusArrangements(nullptr, 0, nullptr, 0));
    EXPECT_SLOT(IAudioProcessor, 4, getBusArrangement(0, 0, arrangement));
    EXPECT_SLOT(IAudioProcessor, 5, canProcessSampleSize(0));
    EXPECT_SLOT(IAudioProcessor, 6, getLatencySamples());
    EXPECT_SLOT(IAudioProcessor, 7, setupProcessing(setup));
    EXPECT_SLOT(IAudioProcessor, 8, setProcessing(1));
    EXPECT_SLOT(IAudioProcessor, 9, process(data));
    EXPECT_SLOT(IAudioProcessor, 10, getTailSamples());
}

TEST(Vtable, ControllerAndItsCompanions)
{
    EXPECT_SLOT(IEditController, 4, terminate());
    EXPECT_SLOT(IEditController, 5, setComponentState(nullptr));
    EXPECT_SLOT(IEditController, 6, setState(nullptr));
    EXPECT_SLOT(IEditController, 7, getState(nullptr));
    EXPECT_SLOT(IEditController, 8, getParameterCount());
    EXPECT_SLOT(IEditController, 9, getParameterInfo(0, parameterInfo));
    EXPECT_SLOT(IEditController, 10, getParamStringByValue(0, 0.0, text));
    EXPECT_SLOT(IEditController, 11, getParamValueByString(0, text, number));
    EXPECT_SLOT(IEditController, 12, normalizedParamToPlain(0, 0.0));
    EXPECT_SLOT(IEditController, 13, plainParamToNormalized(0, 0.0));
    EXPECT_SLOT(IEditController, 14, getParamNormalized(0));
    EXPECT_SLOT(IEditController, 15, setParamNormalized(0, 0.0));
    EXPECT_SLOT(IEditController, 16, setComponentHandler(nullptr));
    EXPECT_SLOT(IEditController, 17, createView(nullptr));
    EXPECT_SLOT(IMidiMapping, 3, getMidiControllerAssignment(0, 0, 0, paramId));
    EXPECT_SLOT(IUnitInfo, 3, getUnitCount());
    EXPECT_SLOT(IUnitInfo, 4, getUnitInfo(0, unitInfo));
    EXPECT_SLOT(IUnitInfo, 5, getProgramListCount());
    EXPECT_SLOT(IUnitInfo, 6, getProgramListInfo(0, listInfo));
    EXPECT_SLOT(IUnitInfo, 7, getProgramName(0, 0, text));
    EXPECT_SLOT(IUnitInfo, 8, getProgramInfo(0, 0, nullptr, text));
    EXPECT_SLOT(IUnitInfo, 9, hasProgramPitchNames(0, 0));
    EXPECT_SLOT(IUnitInfo, 10, getProgramPitchName(0, 0, 0, text));
    EXPECT_SLOT(IUnitInfo, 11, getSelectedUnit());
    EXPECT_SLOT(IUnitInfo, 12, selectUnit(0));
    EXPECT_SLOT(IUnitInfo, 13, getUnitByBus(0, 0, 0, 0, integer));
    EXPECT_SLOT(IUnitInfo, 14, setUnitProgramData(0, 0, nullptr));
}

TEST(Vtable, HostSideInterfaces)
{
    EXPECT_SLOT(IComponentHandler, 3, beginEdit(0));
    EXPECT_SLOT(IComponentHandler, 4, performEdit(0, 0.0));
    EXPECT_SLOT(IComponentHandler, 5, endEdit(0));
    EXPECT_SLOT(IComponentHandler, 6, restartComponent(0));
    EXPECT_SLOT(IComponentHandler2, 3, setDirty(0));
    EXPECT_SLOT(IComponentHandler2, 4, requestOpenEditor(nullptr));
    EXPECT_SLOT(IComponentHandler2, 5, startGroupEdit());
    EXPECT_SLOT(IComponentHandler2, 6, finishGroupEdit());
    EXPECT_SLOT(IHostApplication, 3, getName(text));
    EXPECT_SLOT(IHostApplication, 4, createInstance(tuid, tuid, nullptr));
    EXPECT_SLOT(IConnectionPoint, 3, connect(nullptr));
    EXPECT_SLOT(IConnectionPoint, 4, disconnect(nullptr));
    EXPECT_SLOT(IConnectionPoint, 5, notify(nullptr));
    EXPECT_SLOT(IMessage, 3, getMessageID());
    EXPECT_SLOT(IMessage, 4, setMessageID(nullptr));
    EXPECT_SLOT(IMessage, 5, getAttributes());
    EXPECT_SLOT(IAttributeList, 3, setInt(nullptr, 0));
    EXPECT_SLOT(IAttributeList, 4, getInt(nullptr, bigInteger));
    EXPECT_SLOT(IAttributeList, 5, setFloat(nullptr, 0.0));
    EXPECT_SLOT(IAttributeList, 6, getFloat(nullptr, number));
    EXPECT_SLOT(IAttributeList, 7, setString(nullptr, nullptr));
    EXPECT_SLOT(IAttributeList, 8, getString(nullptr, nullptr, 0));
    EXPECT_SLOT(IAttributeList, 9, setBinary(nullptr, nullptr, 0));
    EXPECT_SLOT(IAttributeList, 10, getBinary(nullptr, blob, blobSize));
    EXPECT_SLOT(IParameterChanges, 3, getParameterCount());
    EXPECT_SLOT(IParameterChanges, 4, getParameterData(0));
    EXPECT_SLOT(IParameterChanges, 5, addParameterData(paramId, integer));
    EXPECT_SLOT(IParamValueQueue, 3, getParameterId());
    EXPECT_SLOT(IParamValueQueue, 4, getPointCount());
    EXPECT_SLOT(IParamValueQueue, 5, getPoint(0, integer, number));
    EXPECT_SLOT(IParamValueQueue, 6, addPoint(0, 0.0, integer));
    EXPECT_SLOT(IEventList, 3, getEventCount());
    EXPECT_SLOT(IEventList, 4, getEvent(0, event));
    EXPECT_SLOT(IEventList, 5, addEvent(event));
}

TEST(Vtable, ViewAndFrame)
{
    EXPECT_SLOT(IPlugView, 3, isPlatformTypeSupported(nullptr));
    EXPECT_SLOT(IPlugView, 4, attached(nullptr, nullptr));
    EXPECT_SLOT(IPlugView, 5, removed());
    EXPECT_SLOT(IPlugView, 6, onWheel(0.0f));
    EXPECT_SLOT(IPlugView, 7, onKeyDown(0, 0, 0));
    EXPECT_SLOT(IPlugView, 8, onKeyUp(0, 0, 0));
    EXPECT_SLOT(IPlugView, 9, getSize(nullptr));
    EXPECT_SLOT(IPlugView, 10, onSize(nullptr));
    EXPECT_SLOT(IPlugView, 11, onFocus(0));
    EXPECT_SLOT(IPlugView, 12, setFrame(nullptr));
    EXPECT_SLOT(IPlugView, 13, canResize());
    EXPECT_SLOT(IPlugView, 14, checkSizeConstraint(nullptr));
    EXPECT_SLOT(IPlugFrame, 3, resizeView(nullptr, nullptr));
}
