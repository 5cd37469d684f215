// .vstpreset images: the written bytes, round trips, refusals, and hostile images.
#include "hosting/memorystream.h"
#include "hosting/presetfile.h"
#include "stubplugin.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace vst3;
using vst3test::StubComponent;
using vst3test::StubController;

namespace {

const FUID kClass(0x11223344, 0x55667788, 0x99AABBCC, 0xDDEEFF00);

// Reads everything its stream offers, in small pieces, to see where a window ends.
std::string drain(IBStream* stream)
{
    std::string all;
    char buffer[7];
    for (int guard = 0; guard < 100000; ++guard)
    {
        int32 read = 0;
        if (stream->read(buffer, sizeof buffer, &read) != kResultOk || read <= 0) break;
        all.append(buffer, static_cast<size_t>(read));
    }
    return all;
}

// A stub whose state is a string: getState writes it, setState takes all its stream offers.
template <class Stub>
class WithState : public Stub
{
public:
    explicit WithState(std::string state = {}) : state(std::move(state)) {}
    tresult PLUGIN_API getState(IBStream* stream) override
    {
        int32 written = 0;
        return stream->write(state.data(), static_cast<int32>(state.size()), &written);
    }
    tresult PLUGIN_API setState(IBStream* stream) override
    {
        ++setStateCalls;
        state = drain(stream);
        return refuse ? kResultFalse : kResultOk;
    }

    std::string state;
    int setStateCalls = 0;
    bool refuse = false;
};

using StateComponent = WithState<StubComponent>;

class StateController : public WithState<StubController>
{
public:
    using WithState::WithState;
    tresult PLUGIN_API setComponentState(IBStream* stream) override
    {
        ++setComponentStateCalls;
        componentState = drain(stream);
        return kResultOk;
    }

    std::string componentState;
    int setComponentStateCalls = 0;
};

std::string image(const MemoryStream& stream)
{
    return std::string(stream.getData(), static_cast<size_t>(stream.getSize()));
}

std::string savedImage(const std::string& componentState, const std::string* controllerState)
{
    MemoryStream stream;
    StateComponent component(componentState);
    StateController controller(controllerState ? *controllerState : "");
    EXPECT_TRUE(PresetFile::savePreset(&stream, kClass, &component,
                                       controllerState ? &controller : nullptr));
    return image(stream);
}

bool load(const std::string& bytes, StateComponent& component, StateController* controller,
          bool& classMatched, const FUID& classId = kClass)
{
    MemoryStream view(bytes.data(), static_cast<TSize>(bytes.size()));
    classMatched = true;
    return PresetFile::loadPreset(&view, classId, &component, controller, nullptr, &classMatched);
}

std::string le32(uint32 v)
{
    return std::string{static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16),
                       static_cast<char>(v >> 24)};
}

std::string le64(uint64 v)
{
    return le32(static_cast<uint32>(v)) + le32(static_cast<uint32>(v >> 32));
}

} // namespace

TEST(PresetFile, WrittenBytesMatchTheFormat)
{
    const std::string controllerState = "xy";
    const std::string expected = "VST3" + le32(1) + "1122334455667788" + "99AABBCCDDEEFF00" +
                                 le64(53) + "ABC" + "xy" + "List" + le32(2) + "Comp" + le64(48) +
                                 le64(3) + "Cont" + le64(51) + le64(2);
    EXPECT_EQ(expected, savedImage("ABC", &controllerState));
}

TEST(PresetFile, RoundTripRestoresComponentAndController)
{
    const std::string controllerState = "controller state";
    const std::string bytes = savedImage(std::string("comp\0state", 10), &controllerState);
    StateComponent component;
    StateController controller;
    bool classMatched = false;
    ASSERT_TRUE(load(bytes, component, &controller, classMatched));
    EXPECT_TRUE(classMatched);
    EXPECT_EQ(std::string("comp\0state", 10), component.state) << "each chunk reads to its end";
    EXPECT_EQ(std::string("comp\0state", 10), controller.componentState);
    EXPECT_EQ(controllerState, controller.state);
}

TEST(PresetFile, APresetOfAnotherClassIsRefusedBeforeAnyStateIsTouched)
{
    const std::string bytes = savedImage("ABC", nullptr);
    StateComponent component("mine");
    StateController controller;
    bool classMatched = true;
    EXPECT_FALSE(load(bytes, component, &controller, classMatched, FUID(1, 2, 3, 4)));
    EXPECT_FALSE(classMatched);
    EXPECT_EQ(0, component.setStateCalls);
    EXPECT_EQ(0, controller.setComponentStateCalls);
    EXPECT_EQ("mine", component.state);

    // Another id the caller names as known passes the test.
    MemoryStream view(bytes.data(), static_cast<TSize>(bytes.size()));
    const std::vector<FUID> others = {kClass};
    EXPECT_TRUE(PresetFile::loadPreset(&view, FUID(1, 2, 3, 4), &component, nullptr, &others,
                                       &classMatched));
    EXPECT_TRUE(classMatched);
}

TEST(PresetFile, TheRightClassWithRefusedDataReportsTheMatch)
{
    const std::string bytes = savedImage("ABC", nullptr);
    StateComponent component;
    component.refuse = true;
    bool classMatched = false;
    EXPECT_FALSE(load(bytes, component, nullptr, classMatched));
    EXPECT_TRUE(classMatched);
}

TEST(PresetFile, AFileWithoutControllerChunkLoads)
{
    const std::string bytes = savedImage("ABC", nullptr);
    StateComponent component;
    StateController controller("untouched");
    bool classMatched = false;
    ASSERT_TRUE(load(bytes, component, &controller, classMatched));
    EXPECT_EQ("ABC", component.state);
    EXPECT_EQ("ABC", controller.componentState);
    EXPECT_EQ(0, controller.setStateCalls);
    EXPECT_EQ("untouched", controller.state);
}

TEST(PresetFile, EveryCutOfAFileIsRefused)
{
    const std::string controllerState = "xy";
    const std::string bytes = savedImage("ABCDEFGH", &controllerState);
    for (size_t length = 0; length < bytes.size(); ++length)
    {
        StateComponent component;
        StateController controller;
        bool classMatched = true;
        EXPECT_FALSE(load(bytes.substr(0, length), component, &controller, classMatched)) << length;
        EXPECT_FALSE(classMatched) << length;
        EXPECT_EQ(0, component.setStateCalls) << length;
    }
}

TEST(PresetFile, ChunksOutsideTheFileAreNeverRead)
{
    // A list that claims a component chunk running past the end of the file.
    const std::string bytes = "VST3" + le32(1) + "1122334455667788" + "99AABBCCDDEEFF00" +
                              le64(51) + "ABC" + "List" + le32(1) + "Comp" + le64(48) + le64(1000);
    StateComponent component;
    bool classMatched = false;
    EXPECT_FALSE(load(bytes, component, nullptr, classMatched));
    EXPECT_TRUE(classMatched);
    EXPECT_EQ(0, component.setStateCalls);
}

TEST(PresetFile, RandomlyDamagedImagesNeverReadOutsideTheirChunks)
{
    const std::string controllerState = "controller";
    const std::string original = savedImage("component state bytes", &controllerState);
    std::mt19937 random(20261123);
    int loaded = 0;
    for (int round = 0; round < 20000; ++round)
    {
        std::string bytes = original;
        const int damages = 1 + static_cast<int>(random() % 4);
        for (int d = 0; d < damages; ++d)
        {
            const size_t at = random() % bytes.size();
            switch (random() % 4)
            {
            case 0:
                bytes[at] = static_cast<char>(random());
                break;
            case 1:
                bytes.resize(at);
                break;
            case 2:
                bytes.insert(at, 1 + random() % 9, static_cast<char>(random()));
                break;
            default:
                // Numbers of the list are where a reader goes wrong: aim at them.
                if (bytes.size() > 70)
                    bytes[bytes.size() - 1 - random() % 44] =
                        static_cast<char>(random() % 3 == 0 ? 0x80 : random());
            }
            if (bytes.empty()) bytes = "V";
        }
        StateComponent component;
        StateController controller;
        bool classMatched = false;
        if (load(bytes, component, &controller, classMatched)) ++loaded;
        ASSERT_LE(component.state.size(), bytes.size());
        ASSERT_LE(controller.state.size(), bytes.size());
        ASSERT_LE(controller.componentState.size(), bytes.size());
    }
    std::printf("%d of 20000 damaged images still loaded\n", loaded);
}
