// What reaches the host's ITqVstMaster when plug-ins call back, and what plug-ins get in return:
// idle without recursion, the time record with its mask and transport bits, knob gestures.
#include "plugins/time_reporter_report.h"
#include "support/effectplace.h"
#include "support/testmaster.h"

#include <string>
#include <vector>

namespace {

using Calls = std::vector<std::string>;

class HostForward : public tqtest::InProcessTest
{
protected:
    void TearDown() override
    {
        effect.Reset();
        InProcessTest::TearDown();
    }

    // Loads a test plug-in with the test master set.
    void Load(const wchar_t* file)
    {
        effect = Create(file);
        ASSERT_TRUE(effect);
        ASSERT_EQ(effect->SetMaster(&master), S_OK);
    }

    // A function the loaded test plug-in exports for its host.
    template <class F>
    static F Export(const wchar_t* module, const char* name)
    {
        return reinterpret_cast<F>(
            reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(module), name)));
    }

    tqtest::TestMaster master;
    tq::ComPtr<ITqVstEffect> effect;
};

TEST_F(HostForward, IdleAskedFromInsideIdleIsNotNestedNorForwarded)
{
    ASSERT_NO_FATAL_FAILURE(Load(L"idle_recursion.dll"));
    using ReadCounts = void(__cdecl*)(int32_t*, int32_t*);
    auto counts = Export<ReadCounts>(L"idle_recursion.dll", "TqIdleRecursionCounts");
    ASSERT_NE(counts, nullptr);
    int32_t entries = 0, deepest = 0;

    EXPECT_EQ(effect->Idle(), S_OK);
    counts(&entries, &deepest);
    EXPECT_EQ(entries, 1);
    EXPECT_EQ(deepest, 1);

    // The plug-in asked for idle time in effOpen, so the editor tick idles it too.
    EXPECT_EQ(effect->EditorIdle(), S_OK);
    counts(&entries, &deepest);
    EXPECT_EQ(entries, 2);
    EXPECT_EQ(deepest, 1);
    EXPECT_EQ(master.Calls(), Calls{}) << "the host's idle is skipped while effIdle runs";
}

TEST_F(HostForward, KnobGestureReachesTheMasterInOrder)
{
    ASSERT_NO_FATAL_FAILURE(Load(L"knob_turner.dll"));
    ASSERT_EQ(effect->OpenEditor(nullptr, nullptr), S_OK);
    EXPECT_EQ(effect->EditorIdle(), S_OK);
    // Outside effIdle the plug-in's idle request reaches the host.
    EXPECT_EQ(master.Calls(),
              (Calls{"BeginEdit 3", "Automate 3 0.25", "EndEdit 3", "UpdateDisplay", "Idle"}));
    EXPECT_EQ(effect->CloseEditor(), S_OK);
}

TEST_F(HostForward, NothingIsForwardedOnceTheMasterIsTakenAway)
{
    ASSERT_NO_FATAL_FAILURE(Load(L"knob_turner.dll"));
    EXPECT_GT(master.References(), 0);
    EXPECT_EQ(effect->SetMaster(nullptr), S_FALSE);
    EXPECT_EQ(master.References(), 0) << "the effect gave its reference back";
    ASSERT_EQ(effect->OpenEditor(nullptr, nullptr), S_OK);
    EXPECT_EQ(effect->EditorIdle(), S_OK);
    EXPECT_EQ(master.Calls(), Calls{});
    EXPECT_EQ(effect->CloseEditor(), S_OK);
}

// The time record as time_reporter sees it.
class TimeForward : public HostForward
{
protected:
    void SetUp() override
    {
        ASSERT_NO_FATAL_FAILURE(HostForward::SetUp());
        ASSERT_NO_FATAL_FAILURE(Load(L"time_reporter.dll"));
        m_setMask = Export<time_reporter::SetMask>(L"time_reporter.dll", "TqTimeReporterSetMask");
        m_read = Export<time_reporter::ReadReport>(L"time_reporter.dll", "TqTimeReporterReport");
        ASSERT_NE(m_setMask, nullptr);
        ASSERT_NE(m_read, nullptr);
        master.time.samplePos = 5.9;
        master.time.timeSigNumerator = 7;
        master.time.timeSigDenominator = 8;
        master.time.tempo = 133.5;
        master.time.ppqPos = 2.25;
        master.time.barStartPos = 2.0;
        master.time.cycleStartPos = 1.0;
        master.time.cycleEndPos = 9.0;
        master.time.smpteFrameRate = 5;
        master.time.smpteOffset = 77;
        master.tempo = 120000;
    }

    // One idle tick, in which the plug-in asks for the time with mask.
    time_reporter::Report Ask(int32_t mask)
    {
        m_setMask(mask);
        EXPECT_EQ(effect->Idle(), S_OK);
        time_reporter::Report report = {};
        m_read(&report);
        EXPECT_EQ(report.asks, ++m_asks) << "one question per tick";
        return report;
    }

private:
    time_reporter::SetMask m_setMask = nullptr;
    time_reporter::ReadReport m_read = nullptr;
    int32_t m_asks = 0;
};

TEST_F(TimeForward, MaskAndSourceValidityDecideWhatIsCopied)
{
    struct Case
    {
        int32_t mask;
        UINT64 valid; // the master's validity and transport bits
        int32_t flags;
    };
    const Case cases[] = {
        {0x0000, 0x1FF, 0x000F}, // nothing asked: transport bits only
        {0x7F00, 0x01F, 0x7F00}, // all asked, all valid, transport stopped
        {0x7F00, 0x000, 0x4100}, // nanoSeconds and SMPTE need no validity
        {0x0600, 0x006, 0x0600}, // ppqPos (bit 2) and tempo (bit 1)
        {0x0600, 0x019, 0x0000}, // valid, but not what was asked
        {0x2000, 0x001, 0x2000}, // time signature is bit 0
        {0x0800, 0x008, 0x0800}, // bar start is bit 3
        {0x1000, 0x010, 0x1000}, // cycle is bit 4
        {0x0000, 0x020, 0x0001}, // transport bits 5 to 8, one by one
        {0x0000, 0x040, 0x0002}, {0x0000, 0x080, 0x0004}, {0x0000, 0x100, 0x0008},
    };
    ASSERT_EQ(effect->SetSampleRate(48000.7), S_OK);
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message()
                     << "mask 0x" << std::hex << c.mask << " valid 0x" << c.valid);
        master.time.flags = c.valid;
        const time_reporter::Report report = Ask(c.mask);
        ASSERT_EQ(report.gotTime, 1);
        const vst2::VstTimeInfo& t = report.time;
        EXPECT_EQ(t.flags, c.flags);
        EXPECT_EQ(t.samplePos, 5.9) << "always present";
        EXPECT_EQ(t.sampleRate, double(48000.7f)) << "the stored single-precision rate";
        const auto has = [&](int32_t bit) { return (c.flags & bit) != 0; };
        // 5 samples (the position truncated) at 48000 Hz, in 100-ns units, rounded.
        EXPECT_EQ(t.nanoSeconds, has(0x0100) ? 1042.0 : 0.0);
        EXPECT_EQ(t.ppqPos, has(0x0200) ? 2.25 : 0.0);
        EXPECT_EQ(t.tempo, has(0x0400) ? 133.5 : 0.0);
        EXPECT_EQ(t.barStartPos, has(0x0800) ? 2.0 : 0.0);
        EXPECT_EQ(t.cycleStartPos, has(0x1000) ? 1.0 : 0.0);
        EXPECT_EQ(t.cycleEndPos, has(0x1000) ? 9.0 : 0.0);
        EXPECT_EQ(t.timeSigNumerator, has(0x2000) ? 7 : 0);
        EXPECT_EQ(t.timeSigDenominator, has(0x2000) ? 8 : 0);
        EXPECT_EQ(t.smpteFrameRate, has(0x4000) ? 5 : 0);
        EXPECT_EQ(t.smpteOffset, has(0x4000) ? 77 : 0);
        EXPECT_EQ(t.samplesToNextClock, 0);
    }
}

TEST_F(TimeForward, NanoSecondsAreHundredNanosecondStepsOfTruncatedPositionAndRate)
{
    struct Case
    {
        double position;
        double rate;
        double steps;
    };
    const Case cases[] = {
        {12345.0, 0.0, 0.0},             // no rate set yet
        {1.0, 48000.0, 208.0},           // 208.33 rounds down
        {5.9, 48000.7, 1042.0},          // 5 / 48000: 1041.67 rounds up
        {96000.0, 48000.0, 20000000.0},  // two seconds
        {1587600000.0, 44100.0, 3.6e11}, // ten hours
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.position << " at " << c.rate);
        if (c.rate != 0.0)
        {
            ASSERT_EQ(effect->SetSampleRate(c.rate), S_OK);
        }
        master.time.samplePos = c.position;
        const time_reporter::Report report = Ask(0x0100);
        EXPECT_EQ(report.time.nanoSeconds, c.steps);
        EXPECT_EQ(report.time.flags, 0x0100);
    }
}

TEST_F(TimeForward, MasterWithoutTimeGivesTheNullPointer)
{
    for (HRESULT answer : {S_FALSE, E_FAIL})
    {
        master.timeResult = answer;
        EXPECT_EQ(Ask(0x7F00).gotTime, 0) << std::hex << answer;
    }
}

TEST_F(TimeForward, TempoIsAskedAtThePluginsPosition)
{
    const time_reporter::Report report = Ask(0);
    EXPECT_EQ(report.tempo, 120000);
    EXPECT_EQ(master.Calls(), (Calls{"GetTime", "GetTempoAt 4800"}));
}

} // namespace
