// The hosting helpers drive a real .vst3 module, our stereo gain, from its export to a preset.
#include "hosting/hostmessage.h"
#include "hosting/memorystream.h"
#include "hosting/parameterchanges.h"
#include "hosting/parameterchangetransfer.h"
#include "hosting/presetfile.h"
#include "hosting/processdata.h"
#include "hosting/streamer.h"
#include "pluginterfaces/vst/ivstaudioprocessor.h"
#include "pluginterfaces/vst/ivsteditcontroller.h"
#include "pluginterfaces/vst/ivsthostapplication.h"
#include "support/testpaths.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using namespace vst3;

namespace {

// The least a host context must do: a name, and messages with attribute lists.
class TestHost final : public IHostApplication
{
public:
    tresult PLUGIN_API queryInterface(const TUID iid, void** obj) override
    {
        *obj = nullptr;
        if (!iidEqual(iid, FUnknown::iid) && !iidEqual(iid, IHostApplication::iid))
            return kNoInterface;
        *obj = this;
        return kResultOk;
    }
    uint32 PLUGIN_API addRef() override { return 1; }
    uint32 PLUGIN_API release() override { return 1; }
    tresult PLUGIN_API getName(String128 name) override
    {
        std::u16string text = u"Test Host";
        std::copy(text.begin(), text.end(), name);
        name[text.size()] = 0;
        return kResultOk;
    }
    tresult PLUGIN_API createInstance(TUID cid, TUID iid, void** obj) override
    {
        *obj = nullptr;
        if (iidEqual(cid, IMessage::iid) && iidEqual(iid, IMessage::iid))
            *obj = static_cast<IMessage*>(new HostMessage());
        else if (iidEqual(cid, IAttributeList::iid) && iidEqual(iid, IAttributeList::iid))
            *obj = static_cast<IAttributeList*>(new HostAttributeList());
        return *obj ? kResultOk : kResultFalse;
    }
};

template <class F>
F procAddress(HMODULE module, const char* name)
{
    return reinterpret_cast<F>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

template <class T>
T* query(FUnknown* object)
{
    void* obj = nullptr;
    return object && object->queryInterface(T::iid, &obj) == kResultOk ? static_cast<T*>(obj)
                                                                       : nullptr;
}

class GainModule : public ::testing::Test
{
protected:
    void SetUp() override
    {
        module = LoadLibraryW(tqtest::PluginPath(L"tqgain3.vst3").c_str());
        ASSERT_NE(nullptr, module);
        auto init = procAddress<InitModuleProc>(module, "InitDll");
        auto entry = procAddress<GetFactoryProc>(module, "GetPluginFactory");
        ASSERT_NE(nullptr, init);
        ASSERT_NE(nullptr, entry) << "the export carries its plain name on both architectures";
        ASSERT_NE(nullptr, GetProcAddress(module, "ExitDll"));
        ASSERT_TRUE(init());
        factory = entry();
        ASSERT_NE(nullptr, factory);
    }

    void TearDown() override
    {
        endPair();
        if (factory) factory->release();
        if (!module) return;
        procAddress<ExitModuleProc>(module, "ExitDll")();
        FreeLibrary(module);
    }

    // Component and controller of the audio class, initialised; the test ends them.
    void makePair()
    {
        PClassInfo2 info{};
        auto* factory2 = query<IPluginFactory2>(factory);
        ASSERT_NE(nullptr, factory2);
        ASSERT_EQ(kResultOk, factory2->getClassInfo2(0, &info));
        factory2->release();
        classId = FUID::fromTUID(info.cid);
        ASSERT_EQ(kResultOk, factory->createInstance(info.cid, IComponent::iid,
                                                     reinterpret_cast<void**>(&component)));
        ASSERT_EQ(kResultOk, component->initialize(&host));
        TUID controllerId;
        ASSERT_EQ(kResultOk, component->getControllerClassId(controllerId));
        ASSERT_EQ(kResultOk, factory->createInstance(controllerId, IEditController::iid,
                                                     reinterpret_cast<void**>(&controller)));
        ASSERT_EQ(kResultOk, controller->initialize(&host));
    }

    void endPair()
    {
        if (component) component->terminate();
        if (controller) controller->terminate();
        if (component) component->release();
        if (controller) controller->release();
        component = nullptr;
        controller = nullptr;
    }

    HMODULE module = nullptr;
    IPluginFactory* factory = nullptr;
    TestHost host;
    FUID classId;
    IComponent* component = nullptr;
    IEditController* controller = nullptr;
};

} // namespace

TEST_F(GainModule, DescribesOneAudioClassAndItsController)
{
    EXPECT_EQ(2, factory->countClasses());
    auto* factory2 = query<IPluginFactory2>(factory);
    ASSERT_NE(nullptr, factory2);
    PClassInfo2 audio{}, controller{};
    ASSERT_EQ(kResultOk, factory2->getClassInfo2(0, &audio));
    ASSERT_EQ(kResultOk, factory2->getClassInfo2(1, &controller));
    factory2->release();
    EXPECT_STREQ("Audio Module Class", audio.category);
    EXPECT_STREQ("TqGain3", audio.name);
    EXPECT_STREQ("1.2.3.4", audio.version);
    EXPECT_STREQ("Component Controller Class", controller.category);
    EXPECT_EQ(nullptr, query<IPluginFactory3>(factory));
}

TEST_F(GainModule, ConnectionCarriesTheProcessorStateAsABinaryAttribute)
{
    ASSERT_NO_FATAL_FAILURE(makePair());

    MemoryStream state;
    IBStreamer writer(&state);
    ASSERT_TRUE(writer.writeDouble(0.3) && writer.writeInt32(1));
    state.seek(0, IBStream::kIBSeekSet, nullptr);
    ASSERT_EQ(kResultOk, component->setState(&state));

    // Windows declares a COM interface of the same name: say which one.
    auto* processorPoint = query<vst3::IConnectionPoint>(component);
    auto* controllerPoint = query<vst3::IConnectionPoint>(controller);
    ASSERT_TRUE(processorPoint && controllerPoint);
    EXPECT_EQ(kResultOk, processorPoint->connect(controllerPoint));
    EXPECT_EQ(0.3, controller->getParamNormalized(0));
    EXPECT_EQ(1.0, controller->getParamNormalized(1));
    EXPECT_EQ(kResultOk, processorPoint->disconnect(controllerPoint));
    processorPoint->release();
    controllerPoint->release();
}

TEST_F(GainModule, ABlockCarriesChangesInAndThePeakOut)
{
    ASSERT_NO_FATAL_FAILURE(makePair());
    auto* processor = query<IAudioProcessor>(component);
    ASSERT_NE(nullptr, processor);
    ProcessSetup setup{kRealtime, kSample32, 64, 44100.0};
    ASSERT_EQ(kResultOk, processor->setupProcessing(setup));
    ASSERT_EQ(kResultOk, component->setActive(true));

    HostProcessData data;
    ASSERT_TRUE(data.prepare(*component, 64, kSample32));
    for (int c = 0; c < 2; ++c)
        std::fill(data.inputs[0].channelBuffers32[c], data.inputs[0].channelBuffers32[c] + 64,
                  0.5f);
    ParameterChangeTransfer toProcessor(4), fromProcessor(4);
    ParameterChanges inputChanges(4), outputChanges(4);
    toProcessor.addChange(0, 0.25, 0); // linear gain 0.5
    EXPECT_EQ(1, toProcessor.transferChangesTo(inputChanges));
    data.inputParameterChanges = &inputChanges;
    data.outputParameterChanges = &outputChanges;
    data.numSamples = 64;
    ASSERT_EQ(kResultOk, processor->process(data));
    EXPECT_EQ(0.25f, data.outputs[0].channelBuffers32[0][0]);
    EXPECT_EQ(0.25f, data.outputs[0].channelBuffers32[1][63]);

    fromProcessor.transferChangesFrom(outputChanges);
    ParamID id = 99;
    ParamValue peak = 0;
    int32 offset = -1;
    ASSERT_TRUE(fromProcessor.getNextChange(id, peak, offset));
    EXPECT_EQ(2u, id);
    EXPECT_EQ(0.25, peak);

    component->setActive(false);
    processor->release();
}

TEST_F(GainModule, APresetRestoresAFreshPairAndIsRefusedByAnotherClass)
{
    ASSERT_NO_FATAL_FAILURE(makePair());
    MemoryStream state;
    IBStreamer writer(&state);
    ASSERT_TRUE(writer.writeDouble(0.125) && writer.writeInt32(0));
    state.seek(0, IBStream::kIBSeekSet, nullptr);
    component->setState(&state);
    controller->setParamNormalized(3, 1.0);

    MemoryStream preset;
    ASSERT_TRUE(PresetFile::savePreset(&preset, classId, component, controller));
    endPair();

    ASSERT_NO_FATAL_FAILURE(makePair());
    bool classMatched = false;
    preset.seek(0, IBStream::kIBSeekSet, nullptr);
    EXPECT_FALSE(PresetFile::loadPreset(&preset, FUID(1, 2, 3, 4), component, controller, nullptr,
                                        &classMatched));
    EXPECT_FALSE(classMatched);
    EXPECT_EQ(0.5, controller->getParamNormalized(0));

    ASSERT_TRUE(
        PresetFile::loadPreset(&preset, classId, component, controller, nullptr, &classMatched));
    EXPECT_TRUE(classMatched);
    EXPECT_EQ(0.125, controller->getParamNormalized(0));
    EXPECT_EQ(1.0, controller->getParamNormalized(3));
    MemoryStream restored;
    component->getState(&restored);
    double gain = 0;
    restored.seek(0, IBStream::kIBSeekSet, nullptr);
    IBStreamer(&restored).readDouble(gain);
    EXPECT_EQ(0.125, gain);
}

TEST(SingleObjectModule, TheComponentIsItsOwnControllerAndCountsItsInitialisation)
{
    HMODULE module = LoadLibraryW(tqtest::PluginPath(L"single_object.vst3").c_str());
    ASSERT_NE(nullptr, module);
    IPluginFactory* factory = procAddress<GetFactoryProc>(module, "GetPluginFactory")();
    ASSERT_NE(nullptr, factory);
    PClassInfo info{};
    ASSERT_EQ(kResultOk, factory->getClassInfo(0, &info));
    IComponent* component = nullptr;
    ASSERT_EQ(kResultOk, factory->createInstance(info.cid, IComponent::iid,
                                                 reinterpret_cast<void**>(&component)));
    auto* controller = query<IEditController>(component);
    ASSERT_NE(nullptr, controller);
    auto* identityOfComponent = query<FUnknown>(component);
    auto* identityOfController = query<FUnknown>(controller);
    EXPECT_EQ(identityOfComponent, identityOfController);
    identityOfComponent->release();
    identityOfController->release();

    TestHost host;
    component->initialize(&host);
    EXPECT_EQ(0.1, controller->getParamNormalized(1));
    component->terminate();
    EXPECT_EQ(0.1, controller->getParamNormalized(2));
    controller->release();
    component->release();
    factory->release();
    FreeLibrary(module);
}
