// The VST3 effect as hosts see it, in process and through servers of both bitnesses: what each
// test plug-in loads as, the walk through a shell, parameters by the host's index, programs from
// a unit's program list, and faults that leave the effect or the server serving.
#include "comptr.h"
#include "pluginterfaces/base/funknown.h"
#include "shellid.h"
#include "support/effectplace.h"
#include "support/sampletypes.h"
#include "support/testmaster.h"
#include "tqvst3effect.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace tqtest::sampletypes;

constexpr HRESULT kNoVst3Plugin = 0x0004E01B;

UINT32 ShellIdOf(const vst3::FUID& cid)
{
    return tqvst::ShellId(cid.toTUID());
}

const UINT32 kGainId = ShellIdOf(vst3::FUID(0x7E5A3B10, 0x4C1D4E2A, 0x9B3F6C71, 0x0D2E8A41));
const UINT32 kShellFirstId = ShellIdOf(vst3::FUID(0x3A61C0DE, 0x11E24B7A, 0x8C5D0F13, 0x6E9B2A01));
const UINT32 kShellSecondId = ShellIdOf(vst3::FUID(0x3A61C0DE, 0x11E24B7A, 0x8C5D0F13, 0x6E9B2A03));
const UINT32 kShellThirdId = ShellIdOf(vst3::FUID(0x3A61C0DE, 0x11E24B7A, 0x8C5D0F13, 0x6E9B2A04));

class Vst3Effect : public tqtest::PlacedTest
{
protected:
    ITqVstEffectFactory* Factory() const { return m_factory->Get(); }

    tq::ComPtr<ITqVstEffect> Create(const wchar_t* file, UINT32 id = 0, HRESULT* hr = nullptr)
    {
        return m_factory->Create(file, id, hr);
    }
};

std::wstring Text(HRESULT (STDMETHODCALLTYPE ITqVstEffect::*get)(UINT32, WCHAR*, UINT32),
                  ITqVstEffect* effect, UINT32 index, HRESULT expected = S_OK)
{
    WCHAR text[128] = L"untouched";
    EXPECT_EQ((effect->*get)(index, text, 128), expected) << index;
    return text;
}

TEST_P(Vst3Effect, EachTestPluginLoadsAsItsBusesAndClassesSay)
{
    struct Case
    {
        const wchar_t* file;
        UINT32 id;
        HRESULT hr;
        const wchar_t* name;
        UINT32 uniqueId, version, programs, parameters, inputs, outputs;
    };
    const Case cases[] = {
        // The controller class beside the audio class makes no shell; bypass, read-only and
        // program-change parameters are not the host's.
        {L"tqgain3.vst3", 0, S_OK, L"TqGain3", kGainId, 10203004, 3, 1, 2, 2},
        {L"tqgain3.vst3", kGainId, S_OK, L"TqGain3", kGainId, 10203004, 3, 1, 2, 2},
        {L"single_object.vst3", 0, S_OK, L"Single Object", 0, 100000, 0, 1, 2, 2},
        {L"sparse_param_ids.vst3", 0, S_OK, L"Sparse Ids", 0, 100000, 0, 3, 2, 2},
        // No audio buses, but the one class served without them: one channel each way.
        {L"exempt_class.vst3", 0, S_OK, L"Exempt Class", 0, 100000, 0, 0, 1, 1},
        {L"tqshell3.vst3", 0, TQVST_S_SHELL, L"", 0, 0, 0, 0, 0, 0},
        {L"tqshell3.vst3", 0x12345678, E_UNEXPECTED, L"", 0, 0, 0, 0, 0, 0},
        // The shell's classes cannot be made, and one's version is beyond numbering.
        {L"tqshell3.vst3", kShellThirdId, kNoVst3Plugin, L"", 0, 0, 0, 0, 0, 0},
        {L"tqshell3.vst3", kShellSecondId, 0x0004E01C, L"", 0, 0, 0, 0, 0, 0},
        {L"instrument_no_input.vst3", 0, kNoVst3Plugin, L"", 0, 0, 0, 0, 0, 0},
        {L"zero_controller_id.vst3", 0, kNoVst3Plugin, L"", 0, 0, 0, 0, 0, 0},
        {L"fault_in_initialize.vst3", 0, TQVST_E_PLUGINFAULT, L"", 0, 0, 0, 0, 0, 0},
        {L"tqgain3.vst3", 0, S_OK, L"TqGain3", kGainId, 10203004, 3, 1, 2, 2},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.file << " id " << c.id);
        WCHAR name[64], vendor[64], product[64];
        TqVstEffectInfo info = {};
        EXPECT_EQ(Factory()->GetEffectInfoForFile(m_factory->Plugin(c.file).c_str(), c.id, name,
                                                  vendor, product, &info, 0),
                  c.hr);
        EXPECT_STREQ(name, c.name);
        EXPECT_STREQ(product, L"");
        if (c.hr != S_OK) continue;
        EXPECT_STREQ(vendor, L"tqvst");
        EXPECT_EQ(info.uniqueId, c.uniqueId ? c.uniqueId : info.uniqueId);
        EXPECT_NE(info.uniqueId, 0u);
        EXPECT_EQ(info.version, c.version);
        EXPECT_EQ(info.numPrograms, c.programs);
        EXPECT_EQ(info.numParameters, c.parameters);
        EXPECT_EQ(info.numInputs, c.inputs);
        EXPECT_EQ(info.numOutputs, c.outputs);
        EXPECT_EQ(info.flags, 0u) << "no test plug-in here has a view";
        EXPECT_EQ(info.state, 3u);
    }
    // The timed form reads the same facts on the load worker.
    WCHAR name[64], vendor[64], product[64];
    TqVstEffectInfo info = {};
    ASSERT_EQ(Factory()->GetEffectInfoForFile(m_factory->Plugin(L"tqgain3.vst3").c_str(), 0, name,
                                              vendor, product, &info, 20000),
              S_OK);
    EXPECT_STREQ(name, L"TqGain3");
    EXPECT_EQ(info.uniqueId, kGainId);
    EXPECT_EQ(info.numPrograms, 3u);
}

TEST_P(Vst3Effect, ShellWalkGivesEachAudioClassOnceThenEnds)
{
    HRESULT hr = E_FAIL;
    auto shell = Create(L"tqshell3.vst3", 0, &hr);
    ASSERT_EQ(hr, TQVST_S_SHELL);
    ASSERT_TRUE(shell);
    WCHAR name[64];
    TqVstEffectInfo info;
    EXPECT_EQ(shell->GetEffectName(name, 64), TQVST_E_NOSELECTION);
    EXPECT_EQ(shell->GetEffectInfo(&info), TQVST_E_NOSELECTION);

    struct Step
    {
        UINT32 id;
        const wchar_t* name;
    };
    const Step steps[] = {{kShellFirstId, L"Shell First"},
                          {kShellSecondId, L"Shell Second"},
                          {kShellThirdId, L"Shell Third"}};
    for (const Step& step : steps)
    {
        UINT32 id = 0;
        ASSERT_EQ(shell->GetNextShellPlugin(&id, name, 64), S_OK);
        EXPECT_EQ(id, step.id);
        EXPECT_STREQ(name, step.name);
    }
    UINT32 id = 1;
    EXPECT_EQ(shell->GetNextShellPlugin(&id, name, 64), S_FALSE);
    EXPECT_EQ(id, 0u);
    EXPECT_STREQ(name, L"");
    // A name cut to the host's buffer keeps its terminator.
    auto again = Create(L"tqshell3.vst3");
    ASSERT_TRUE(again);
    ASSERT_EQ(again->GetNextShellPlugin(&id, name, 6), S_OK);
    EXPECT_STREQ(name, L"Shell");

    auto plain = Create(L"tqgain3.vst3");
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->GetNextShellPlugin(&id, name, 64), S_FALSE) << "no shell";
}

TEST_P(Vst3Effect, ParametersAreTheControllersInItsOrderWithoutTheHiddenKinds)
{
    auto gain = Create(L"tqgain3.vst3");
    ASSERT_TRUE(gain);
    EXPECT_EQ(Text(&ITqVstEffect::GetParameterName, gain.Get(), 0), L"Gain");
    EXPECT_EQ(Text(&ITqVstEffect::GetParameterLabel, gain.Get(), 0), L"x");
    EXPECT_EQ(Text(&ITqVstEffect::GetParameterDisplay, gain.Get(), 0), L"1.000");
    float value = -1;
    ASSERT_EQ(gain->GetParameter(0, &value), S_OK);
    EXPECT_EQ(value, 0.5f);
    // The controller hears of a change at once, though the processor only with the next block.
    ASSERT_EQ(gain->SetParameter(0, 0.25f), S_OK);
    ASSERT_EQ(gain->GetParameter(0, &value), S_OK);
    EXPECT_EQ(value, 0.25f);
    EXPECT_EQ(Text(&ITqVstEffect::GetParameterDisplay, gain.Get(), 0), L"0.500");

    TqVstParameterProperties props = {};
    props.flags = 0x300 | 0x7F;
    ASSERT_EQ(gain->GetParameterProperties(0, &props), S_OK);
    EXPECT_STREQ(props.label, L"Gain");
    EXPECT_STREQ(props.shortLabel, L"Gain");
    EXPECT_EQ(props.flags, 0x300 | 4) << "a continuous control; the host's own bits stay";
    EXPECT_EQ(props.maxInteger, 0);
    EXPECT_EQ(props.largeStepFloat, 0.1f);
    UINT32 yes = 0;
    EXPECT_EQ(gain->CanParameterBeAutomated(7, &yes), S_OK);
    EXPECT_EQ(yes, 1u);

    // Bypass, peak and program follow the gain in the controller; none of them is an index.
    Text(&ITqVstEffect::GetParameterName, gain.Get(), 1, E_NOTIMPL);
    Text(&ITqVstEffect::GetParameterDisplay, gain.Get(), 1, E_NOTIMPL);
    EXPECT_EQ(gain->GetParameter(1, &value), E_NOTIMPL);
    EXPECT_EQ(gain->SetParameter(1, 0.5f), E_NOTIMPL);
    EXPECT_EQ(gain->GetParameterProperties(1, &props), E_NOTIMPL);

    // Ids that are not indices, one of them beyond the parameter count.
    auto sparse = Create(L"sparse_param_ids.vst3");
    ASSERT_TRUE(sparse);
    const wchar_t* const names[] = {L"Gain", L"Pan", L"Mix"};
    for (UINT32 i = 0; i < 3; ++i)
        EXPECT_EQ(Text(&ITqVstEffect::GetParameterName, sparse.Get(), i), names[i]);
    ASSERT_EQ(sparse->SetParameter(2, 0.75f), S_OK);
    EXPECT_EQ(Text(&ITqVstEffect::GetParameterDisplay, sparse.Get(), 2), L"77:0.75");
    ASSERT_EQ(sparse->SetParameter(0, 0.125f), S_OK);
    ASSERT_EQ(sparse->GetParameter(0, &value), S_OK);
    EXPECT_EQ(value, 0.125f);
    EXPECT_EQ(Text(&ITqVstEffect::GetParameterDisplay, sparse.Get(), 0), L"1000:0.12");
}

TEST_P(Vst3Effect, ProgramsComeFromTheRootUnitsListAndSwitchTheProcessor)
{
    auto gain = Create(L"tqgain3.vst3");
    ASSERT_TRUE(gain);
    UINT32 program = 9;
    ASSERT_EQ(gain->GetProgram(&program), S_OK);
    EXPECT_EQ(program, 0u);
    WCHAR name[64];
    const wchar_t* const names[] = {L"Unity", L"Half", L"Silence"};
    for (INT32 i = 0; i < 3; ++i)
    {
        ASSERT_EQ(gain->GetProgramName(i, name, 64), S_OK);
        EXPECT_STREQ(name, names[i]);
    }
    EXPECT_EQ(gain->GetProgramName(3, name, 64), E_INVALIDARG);
    EXPECT_EQ(gain->GetProgramName(-2, name, 64), E_INVALIDARG);
    EXPECT_EQ(gain->SetProgram(3), E_INVALIDARG);
    EXPECT_EQ(gain->SetProgram(-1), E_INVALIDARG);
    EXPECT_EQ(gain->SetProgramName(L"Mine"), S_FALSE);

    // "Half" is a gain of 0.25 normalised, half the signal: the processor switches with the next
    // block.
    ASSERT_EQ(gain->SetProgram(1), S_OK);
    ASSERT_EQ(gain->GetProgram(&program), S_OK);
    EXPECT_EQ(program, 1u);
    ASSERT_EQ(gain->GetProgramName(-1, name, 64), S_OK);
    EXPECT_STREQ(name, L"Half");
    ASSERT_EQ(gain->SetSampleType(TQSAMPLE_PCM16), S_OK);
    std::vector<uint8_t> input = Bytes({1000, -2000, 300, -400}), output(input.size());
    ASSERT_EQ(gain->Process(input.data(), 2, output.data(), 2, 2, 2), S_OK);
    EXPECT_EQ(Pcm16(output), (std::vector<int16_t>{500, -1000, 150, -200}));

    // Without a list or preset files there are no programs.
    auto none = Create(L"single_object.vst3");
    ASSERT_TRUE(none);
    EXPECT_EQ(none->GetProgram(&program), S_FALSE);
    EXPECT_EQ(none->SetProgram(0), S_FALSE);
    wcscpy(name, L"stale");
    EXPECT_EQ(none->GetProgramName(0, name, 64), S_FALSE);
    EXPECT_STREQ(name, L"");
}

TEST_P(Vst3Effect, FaultsInPluginCodeGiveCodesAndServingGoesOn)
{
    HRESULT hr = S_OK;
    auto failed = Create(L"fault_in_initialize.vst3", 0, &hr);
    EXPECT_EQ(hr, TQVST_E_PLUGINFAULT);
    EXPECT_FALSE(failed);

    auto faulting = Create(L"fault_in_process3.vst3", 0, &hr);
    ASSERT_EQ(hr, S_OK);
    ASSERT_TRUE(faulting);
    std::vector<uint8_t> input(4 * 8), output(input.size());
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ(faulting->Process(input.data(), 2, output.data(), 2, 4, 4), TQVST_E_PLUGINFAULT);
    WCHAR name[64];
    ASSERT_EQ(faulting->GetEffectName(name, 64), S_OK);
    EXPECT_STREQ(name, L"Fault In Process");
    faulting.Reset();

    auto gain = Create(L"tqgain3.vst3", 0, &hr);
    ASSERT_EQ(hr, S_OK);
    ASSERT_EQ(gain->GetEffectName(name, 64), S_OK);
    EXPECT_STREQ(name, L"TqGain3");
}

INSTANTIATE_TEST_SUITE_P(Places, Vst3Effect, testing::ValuesIn(tqtest::kPlaces), tqtest::PlaceName);

std::string Calls()
{
    char calls[4096] = {};
    GetEnvironmentVariableA("TQ_VST3_CALLS", calls, sizeof calls);
    SetEnvironmentVariableA("TQ_VST3_CALLS", nullptr);
    return calls;
}

class Vst3EffectWiring : public tqtest::InProcessTest
{
protected:
    void SetUp() override
    {
        Calls();
        InProcessTest::SetUp();
    }
};

// The plug-in records in this process's environment, so it runs here. Component before
// controller; the auxiliary input and the output that is off by default are switched off, the
// first default-active main bus of each direction on, and the second main output left alone;
// the handler before the connection, the connection before the state; processing off before
// inactive and on after active; the points cut before the processor stops, and both terminated
// in the order they were made. Channel counts and tempo reach it as arrangements and context.
TEST_F(Vst3EffectWiring, SetUpAndTeardownComeInTheirOrder)
{
    tq::ComPtr<ITqVstEffect> effect = Create(L"call_recorder.vst3");
    ASSERT_TRUE(effect);
    // The plug-in calls back from initialize and is refused what the host does not have.
    EXPECT_EQ(Calls(), "C.init:made E.init:Cadmeer C.bus:0:0:0 C.bus:0:1:1 C.bus:1:0:0 "
                       "C.bus:1:1:1 E.handler:v1:restart1 C.connect E.connect C.getState "
                       "E.setComponentState");
    EXPECT_EQ(effect->SetSampleRate(48000.0), S_OK);
    EXPECT_EQ(Calls(), "") << "nothing runs yet";

    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_PCM16), S_OK);
    std::vector<uint8_t> input = Bytes({1000, -2000, 30, -40}), output(input.size());
    ASSERT_EQ(effect->Process(input.data(), 2, output.data(), 2, 2, 2), S_OK);
    EXPECT_EQ(Pcm16(output), (std::vector<int16_t>{500, -1000, 15, -20})) << "the second buses";
    // Without a master the tempo is 120; the position counts the frames done.
    EXPECT_EQ(Calls(), "C.setup:1000:48000 C.active:1:made C.processing:1 "
                       "C.process:120.000000:0:1024");
    tqtest::TestMaster master;
    master.tempo = 1400000;
    ASSERT_EQ(effect->SetMaster(&master), S_OK);
    ASSERT_EQ(effect->Process(input.data(), 2, output.data(), 2, 2, 2), S_OK);
    EXPECT_EQ(Calls(), "C.process:140.000000:2:1024");
    EXPECT_EQ(effect->SetBlockSize(64), S_OK);
    EXPECT_EQ(Calls(), "C.processing:0 C.active:0:made C.setup:64:48000 C.active:1:made "
                       "C.processing:1");

    // Only the main buses change arrangement; what the plug-in then reports counts.
    EXPECT_EQ(effect->SetChannelCount(6), S_OK);
    EXPECT_EQ(Calls(), "C.arrange:3,137:3,137,3 C.processing:0 C.active:0:made C.setup:64:48000 "
                       "C.active:1:made C.processing:1");
    TqVstEffectInfo info = {};
    ASSERT_EQ(effect->GetEffectInfo(&info), S_OK);
    EXPECT_EQ(info.numInputs, 6u);
    EXPECT_EQ(info.numOutputs, 6u);
    EXPECT_EQ(effect->SetChannelCount(6), S_OK);
    EXPECT_EQ(Calls(), "") << "nothing to change";
    // The channels the plug-in leaves alone pass dry.
    std::vector<uint8_t> six = Bytes({100, 200, 300, 400, 500, 600, -2, -4, -6, -8, -10, -12});
    std::vector<uint8_t> sixOut(six.size(), 0xCD);
    ASSERT_EQ(effect->Process(six.data(), 6, sixOut.data(), 6, 2, 2), S_OK);
    EXPECT_EQ(Pcm16(sixOut),
              (std::vector<int16_t>{50, 100, 300, 400, 500, 600, -1, -2, -6, -8, -10, -12}));
    EXPECT_EQ(Calls(), "C.process:140.000000:4:1024");
    EXPECT_EQ(effect->SetChannelCount(1), S_OK);
    EXPECT_EQ(Calls(), "C.arrange:3,80000:3,80000,3 C.processing:0 C.active:0:made "
                       "C.setup:64:48000 C.active:1:made C.processing:1");
    ASSERT_EQ(effect->GetEffectInfo(&info), S_OK);
    EXPECT_EQ(info.numOutputs, 1u);

    effect.Reset();
    EXPECT_EQ(Calls(), "C.disconnect E.disconnect C.processing:0 C.active:0:made C.term E.term");
}

// A flush is a block of silence like any other: it starts the processor if nothing ran yet, and
// the position moves on by a block.
TEST_F(Vst3EffectWiring, FlushToTheProcessorRunsOneSilentBlock)
{
    tq::ComPtr<ITqVstEffect> effect = Create(L"call_recorder.vst3");
    ASSERT_TRUE(effect);
    ASSERT_EQ(effect->SetBlockSize(256), S_OK);
    ASSERT_EQ(effect->SetSampleType(TQSAMPLE_PCM24), S_OK);
    Calls();
    // The factory of this process makes the effect object itself.
    auto* vst3 = static_cast<CTqVst3Effect*>(effect.Get());
    ASSERT_EQ(vst3->FlushParametersToProcessor(), S_OK);
    EXPECT_EQ(Calls(), "C.setup:256:44100 C.active:1:made C.processing:1 "
                       "C.process:120.000000:0:1024");
    std::vector<uint8_t> block(2 * 3 * 4);
    ASSERT_EQ(effect->Process(block.data(), 2, block.data(), 2, 4, 3), S_OK);
    EXPECT_EQ(Calls(), "C.process:120.000000:256:1024");
    effect.Reset();
    Calls();
}

// One object that is component and controller is initialised and terminated once; a component
// whose controller cannot be made is terminated all the same.
TEST_F(Vst3EffectWiring, SingleObjectIsInitialisedAndTerminatedOnce)
{
    for (const wchar_t* file : {L"sparse_param_ids.vst3", L"zero_controller_id.vst3"})
    {
        Calls();
        m_factory->Create(file);
        EXPECT_EQ(Calls(), "S.init S.term") << file;
    }
}

// The host context outlives every effect and goes with the class object once none is left.
TEST_F(Vst3EffectWiring, HostContextGoesWithTheFactoryWhenNoEffectIsLeft)
{
    tq::ComPtr<ITqVstEffect> effect = Create(L"tqgain3.vst3");
    ASSERT_TRUE(effect);
    EXPECT_NE(g_vst3Host, nullptr);
    effect.Reset();
    EXPECT_NE(g_vst3Host, nullptr) << "the factory still holds it";
    m_factory.reset();
    EXPECT_EQ(g_vst3Host, nullptr);
}

} // namespace
