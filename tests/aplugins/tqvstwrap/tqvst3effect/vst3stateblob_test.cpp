// The handler's state frame against the gain's real processor and controller: its layout, a
// round trip, frames whose sizes lie, and a plug-in with no state at all.
#include "vst3componenthandler.h"

#include "hosting/memorystream.h"
#include "hosting/streamer.h"
#include "pluginterfaces/base/ipluginbase.h"
#include "support/testpaths.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace vst3;
using tqvst::Vst3ComponentHandler;

namespace {

const FUID kGainProcessor(0x7E5A3B10, 0x4C1D4E2A, 0x9B3F6C71, 0x0D2E8A41);
const FUID kGainController(0x7E5A3B11, 0x4C1D4E2A, 0x9B3F6C71, 0x0D2E8A41);
const FUID kFixedView(0x6C1E7A21, 0x5B3D4F81, 0x9A02C4E6, 0x71D8B3F5);

// One class of a test module, made straight from its factory.
template <class I>
class Made
{
public:
    Made(const wchar_t* file, const FUID& cid)
        : m_module(LoadLibraryW(tqtest::PluginPath(file).c_str()))
    {
        if (!m_module) return;
        using Entry = IPluginFactory*(PLUGIN_API*)();
        const auto entry = reinterpret_cast<Entry>(
            reinterpret_cast<void (*)()>(GetProcAddress(m_module, "GetPluginFactory")));
        m_factory = entry ? entry() : nullptr;
        if (m_factory) m_factory->createInstance(cid, I::iid, reinterpret_cast<void**>(&m_object));
        if (m_object) m_object->initialize(nullptr);
    }
    ~Made()
    {
        if (m_object)
        {
            m_object->terminate();
            m_object->release();
        }
        if (m_factory) m_factory->release();
        if (m_module) FreeLibrary(m_module);
    }
    Made(const Made&) = delete;
    Made& operator=(const Made&) = delete;

    I* Get() const { return m_object; }

private:
    HMODULE m_module;
    IPluginFactory* m_factory = nullptr;
    I* m_object = nullptr;
};

// The gain's component state: normalised gain, bypass.
std::vector<char> GainState(double gain, int32 bypass)
{
    std::vector<char> bytes(12);
    std::memcpy(bytes.data(), &gain, 8);
    std::memcpy(bytes.data() + 8, &bypass, 4);
    return bytes;
}

std::vector<char> Frame(const std::vector<char>& first, const std::vector<char>& second)
{
    std::vector<char> frame(16);
    const int64 sizes[] = {static_cast<int64>(first.size()), static_cast<int64>(second.size())};
    std::memcpy(frame.data(), sizes, 16);
    frame.insert(frame.end(), first.begin(), first.end());
    frame.insert(frame.end(), second.begin(), second.end());
    return frame;
}

class StateBlob : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_NE(component.Get(), nullptr);
        ASSERT_NE(controller.Get(), nullptr);
    }

    std::vector<char> Blob()
    {
        const void* data = nullptr;
        const int64 size = handler->GetStateBlob(&data, component.Get(), controller.Get());
        if (size <= 0 || !data) return {};
        const char* bytes = static_cast<const char*>(data);
        return std::vector<char>(bytes, bytes + size);
    }

    Made<IComponent> component{L"tqgain3.vst3", kGainProcessor};
    Made<IEditController> controller{L"tqgain3.vst3", kGainController};
    Vst3ComponentHandler* handler = new Vst3ComponentHandler(nullptr, nullptr);

    void TearDown() override { handler->release(); }
};

TEST_F(StateBlob, FramesBothStatesAndRestoresThem)
{
    const double program = 0.0;
    std::vector<char> controllerState(8);
    std::memcpy(controllerState.data(), &program, 8);
    EXPECT_EQ(Blob(), Frame(GainState(0.5, 0), controllerState)) << "the plug-in's defaults";

    const double chosen = 1.0;
    std::memcpy(controllerState.data(), &chosen, 8);
    const std::vector<char> frame = Frame(GainState(0.125, 1), controllerState);
    EXPECT_EQ(handler->SetStateBlob(frame.data(), static_cast<int64>(frame.size()), component.Get(),
                                    controller.Get()),
              0);
    EXPECT_EQ(Blob(), frame) << "processor and controller both took their part";
    EXPECT_EQ(controller.Get()->getParamNormalized(0), 0.125) << "the controller saw the gain";
}

TEST_F(StateBlob, AFrameWhoseSizesDoNotFitRestoresNothing)
{
    const std::vector<char> before = Blob();
    const std::vector<char> good = Frame(GainState(0.25, 1), std::vector<char>(8, 0));
    const auto withSizes = [&](int64 first, int64 second) {
        std::vector<char> frame = good;
        std::memcpy(frame.data(), &first, 8);
        std::memcpy(frame.data() + 8, &second, 8);
        return frame;
    };
    for (const std::vector<char>& frame :
         {withSizes(-1, 8), withSizes(12, -8), withSizes(13, 8), withSizes(12, 9),
          withSizes(INT64_MAX, 1), withSizes(12, INT64_MAX),
          std::vector<char>(good.begin(), good.begin() + 15)})
    {
        EXPECT_EQ(handler->SetStateBlob(frame.data(), static_cast<int64>(frame.size()),
                                        component.Get(), controller.Get()),
                  0);
        EXPECT_EQ(Blob(), before);
    }
    EXPECT_EQ(handler->SetStateBlob(good.data(), static_cast<int64>(good.size()), nullptr,
                                    controller.Get()),
              0)
        << "no component: nothing to restore";
    EXPECT_EQ(Blob(), before);
}

TEST(StateBlobEmpty, APluginWithoutStateGivesNothingAndLeavesTheOutputAlone)
{
    Made<IComponent> view(L"view_fixed.vst3", kFixedView);
    ASSERT_NE(view.Get(), nullptr);
    Vst3ComponentHandler* handler = new Vst3ComponentHandler(nullptr, nullptr);
    const void* data = &handler;
    EXPECT_EQ(handler->GetStateBlob(&data, view.Get(), nullptr), 0);
    EXPECT_EQ(data, &handler);
    handler->release();
}

} // namespace
