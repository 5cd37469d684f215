// Null arguments across the interface: each call answers the same in process and through servers
// of both bitnesses, where a null has a meaning; where an argument is required, every place
// refuses it and the server goes on serving.
#include "support/effectplace.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

using tqtest::kPlaces;
using tqtest::PlacedFactory;

constexpr int64_t kNoValue = -1;

// What a call gave back: its result and, where the case reads one, a value it wrote.
struct Answer
{
    HRESULT hr;
    int64_t value = kNoValue;
    bool operator==(const Answer&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Answer& answer)
{
    return out << "0x" << std::hex << static_cast<unsigned long>(answer.hr) << std::dec << " value "
               << answer.value;
}

// One effect per plug-in file, made on first use, so a case sees the state the cases before it
// on the same plug-in left, in each place alike.
class Effects
{
public:
    explicit Effects(const PlacedFactory& factory) : m_factory(factory) {}
    ITqVstEffect* operator[](const std::wstring& file)
    {
        auto& effect = m_effects[file];
        if (!effect) effect = m_factory.Create(file);
        return effect.Get();
    }
    const PlacedFactory& Factory() const { return m_factory; }

private:
    const PlacedFactory& m_factory;
    std::map<std::wstring, tq::ComPtr<ITqVstEffect>> m_effects;
};

struct Case
{
    const char* call;
    std::function<Answer(Effects&)> run;
    Answer expected;
};

Answer Result(HRESULT hr)
{
    return {hr};
}

std::vector<Case> OptionalNullCases()
{
    constexpr UINT32 kFrames = 64;
    return {
        {"GetEffectName(null, 64)",
         [](Effects& e) { return Result(e[L"tqgain.dll"]->GetEffectName(nullptr, 64)); },
         {E_INVALIDARG}},
        {"GetVendorName(null, 64)",
         [](Effects& e) { return Result(e[L"tqgain.dll"]->GetVendorName(nullptr, 64)); },
         {E_INVALIDARG}},
        {"GetProductName(null, 64)",
         [](Effects& e) { return Result(e[L"tqgain.dll"]->GetProductName(nullptr, 64)); },
         {E_INVALIDARG}},
        {"GetEffectInfo(null)",
         [](Effects& e) { return Result(e[L"tqgain.dll"]->GetEffectInfo(nullptr)); },
         {E_INVALIDARG}},
        {"GetNextShellPlugin(null, null, 0) of a plain plug-in",
         [](Effects& e) {
             return Result(e[L"tqgain.dll"]->GetNextShellPlugin(nullptr, nullptr, 0));
         },
         {S_FALSE}},
        {"GetNextShellPlugin(null, null, 0) of a shell",
         [](Effects& e) {
             return Result(e[L"tqshell.dll"]->GetNextShellPlugin(nullptr, nullptr, 0));
         },
         {S_OK}},
        {"GetNextShellPlugin(id, null, 64): the second sub-plug-in",
         [](Effects& e) {
             UINT32 id = 0;
             const HRESULT hr = e[L"tqshell.dll"]->GetNextShellPlugin(&id, nullptr, 64);
             return Answer{hr, id};
         },
         {S_OK, 0x54715342}}, // "TqSB"
        {"GetNextShellPlugin(null, name, 64): the third, by name",
         [](Effects& e) {
             WCHAR name[64] = L"x";
             const HRESULT hr = e[L"tqshell.dll"]->GetNextShellPlugin(nullptr, name, 64);
             return Answer{hr, lstrcmpW(name, L"Shell C") == 0};
         },
         {S_OK, 1}},
        {"GetParameterProperties(0, null)",
         [](Effects& e) {
             return Result(e[L"parameter_properties.dll"]->GetParameterProperties(0, nullptr));
         },
         {S_OK}},
        {"GetParameterProperties(5, null) past the plug-in's parameters",
         [](Effects& e) {
             return Result(e[L"parameter_properties.dll"]->GetParameterProperties(5, nullptr));
         },
         {E_NOTIMPL}},
        {"CanParameterBeAutomated(0, null)",
         [](Effects& e) {
             return Result(e[L"parameter_properties.dll"]->CanParameterBeAutomated(0, nullptr));
         },
         {S_OK}},
        {"GetParameterName(0, null, 64)",
         [](Effects& e) {
             return Result(e[L"parameter_properties.dll"]->GetParameterName(0, nullptr, 64));
         },
         {S_OK}},
        {"GetParameterDisplay(0, null, 0)",
         [](Effects& e) {
             return Result(e[L"parameter_properties.dll"]->GetParameterDisplay(0, nullptr, 0));
         },
         {S_OK}},
        {"GetParameterLabel(0, null, 64)",
         [](Effects& e) {
             return Result(e[L"parameter_properties.dll"]->GetParameterLabel(0, nullptr, 64));
         },
         {S_OK}},
        {"Process(null, 2, ...) as a synth host: the plug-in hears silence",
         [](Effects& e) {
             ITqVstEffect* effect = e[L"tqgain.dll"];
             std::vector<float> output(2 * kFrames, 0.5f);
             const HRESULT hr = effect->Process(nullptr, 2, reinterpret_cast<BYTE*>(output.data()),
                                                2, kFrames, sizeof(float));
             return Answer{hr, output[2 * kFrames - 1] == 0.0f};
         },
         {S_OK, 1}},
        {"SavePreset(null, null)",
         [](Effects& e) { return Result(e[L"programs_plain.dll"]->SavePreset(nullptr, nullptr)); },
         {S_OK}},
        {"SavePreset(null, bytes): the size alone",
         [](Effects& e) {
             UINT32 bytes = 0;
             const HRESULT hr = e[L"programs_plain.dll"]->SavePreset(nullptr, &bytes);
             return Answer{hr, bytes};
         },
         {S_OK, 56 + 4 * 4}},
        {"SaveBank(null, null) of a chunk plug-in",
         [](Effects& e) { return Result(e[L"chunk_state.dll"]->SaveBank(nullptr, nullptr)); },
         {S_OK}},
        {"SaveBank(null, bytes) of a chunk plug-in: the size alone",
         [](Effects& e) {
             UINT32 bytes = 0;
             const HRESULT hr = e[L"chunk_state.dll"]->SaveBank(nullptr, &bytes);
             return Answer{hr, bytes};
         },
         {S_OK, 160 + 40}},
        {"OpenEditor(null, null)",
         [](Effects& e) { return Result(e[L"tqgain.dll"]->OpenEditor(nullptr, nullptr)); },
         {S_OK}},
        {"OpenEditor(null, null) again",
         [](Effects& e) { return Result(e[L"tqgain.dll"]->OpenEditor(nullptr, nullptr)); },
         {S_FALSE}},
        {"CloseEditor()",
         [](Effects& e) { return Result(e[L"tqgain.dll"]->CloseEditor()); },
         {S_OK}},
        {"SetMaster(null)",
         [](Effects& e) { return Result(e[L"tqgain.dll"]->SetMaster(nullptr)); },
         {S_FALSE}},
        {"GetEffectInfoForFile with every buffer null: the load result alone",
         [](Effects& e) {
             const auto& factory = e.Factory();
             return Result(factory.Get()->GetEffectInfoForFile(
                 factory.Plugin(L"tqgain.dll").c_str(), 0, nullptr, nullptr, nullptr, nullptr, 0));
         },
         {S_OK}},
        {"GetEffectInfoForFile with every buffer null, on the load worker",
         [](Effects& e) {
             const auto& factory = e.Factory();
             return Result(
                 factory.Get()->GetEffectInfoForFile(factory.Plugin(L"fault_in_entry.dll").c_str(),
                                                     0, nullptr, nullptr, nullptr, nullptr, 10000));
         },
         {TQVST_E_PLUGINFAULT}},
    };
}

// Arguments the callee cannot do without: the effect refuses them, or for reference pointers the
// proxy does before anything crosses.
struct Required
{
    const char* call;
    std::function<HRESULT(Effects&)> run;
};

std::vector<Required> RequiredCases()
{
    return {
        {"GetParameter(0, null)",
         [](Effects& e) { return (e[L"tqgain.dll"]->GetParameter(0, nullptr)); }},
        {"GetInitialDelay(null)",
         [](Effects& e) { return (e[L"tqgain.dll"]->GetInitialDelay(nullptr)); }},
        {"GetTailSize(null)", [](Effects& e) { return (e[L"tqgain.dll"]->GetTailSize(nullptr)); }},
        {"GetProgram(null)",
         [](Effects& e) { return (e[L"programs_plain.dll"]->GetProgram(nullptr)); }},
        {"GetProgramName(0, null, 64)",
         [](Effects& e) { return (e[L"programs_plain.dll"]->GetProgramName(0, nullptr, 64)); }},
        {"SetProgramName(null)",
         [](Effects& e) { return (e[L"programs_plain.dll"]->SetProgramName(nullptr)); }},
        {"LoadPreset(null)",
         [](Effects& e) { return (e[L"programs_plain.dll"]->LoadPreset(nullptr)); }},
        {"LoadBank(null, 0)",
         [](Effects& e) { return (e[L"programs_plain.dll"]->LoadBank(nullptr, 0)); }},
    };
}

class NullArguments : public testing::Test
{
protected:
    void SetUp() override { ASSERT_HRESULT_SUCCEEDED(CoInitialize(nullptr)); }
    void TearDown() override { CoUninitialize(); }
};

TEST_F(NullArguments, AnswerAlikeInProcessAndInBothServers)
{
    const std::vector<Case> cases = OptionalNullCases();
    // answers[place][case]
    std::vector<std::vector<Answer>> answers;
    for (const tqtest::Place& place : kPlaces)
    {
        SCOPED_TRACE(place.name);
        PlacedFactory factory(place);
        if (!factory.Available()) continue;
        ASSERT_EQ(factory.Result(), S_OK);
        Effects effects(factory);
        answers.emplace_back();
        for (const Case& c : cases)
        {
            SCOPED_TRACE(c.call);
            answers.back().push_back(c.run(effects));
            EXPECT_EQ(answers.back().back(), c.expected);
        }
    }
    // The places agree with each other too, whatever the table says.
    for (size_t place = 1; place < answers.size(); ++place)
        EXPECT_EQ(answers[place], answers[0]) << kPlaces[place].name;
    if (answers.size() < std::size(kPlaces)) GTEST_SKIP() << "no 32-bit server here";
}

TEST_F(NullArguments, RequiredArgumentsAreRefusedEverywhereAndTheServerServesOn)
{
    for (const tqtest::Place& place : kPlaces)
    {
        SCOPED_TRACE(place.name);
        PlacedFactory factory(place);
        if (!factory.Available()) continue;
        ASSERT_EQ(factory.Result(), S_OK);
        Effects effects(factory);
        for (const Required& c : RequiredCases())
        {
            const HRESULT hr = c.run(effects);
            EXPECT_TRUE(FAILED(hr)) << c.call << ": 0x" << std::hex << hr;
        }
        WCHAR name[64] = {};
        EXPECT_EQ(effects[L"tqgain.dll"]->GetEffectName(name, 64), S_OK);
        EXPECT_STREQ(name, L"TqGain");
    }
}

} // namespace
