// Tests of error composition: contexts with names and tokens, reasons, the length limit, unknown
// contexts and codes, and the text with details.
#include "support/kernelenvironment.h"
#include <gtest/gtest.h>

#include <string>

#include "tqerrorhandler.h"
#include "tqkernel.h"
#include "tqprintf.h"

namespace {

const std::wstring kContext0 = L"An error occurred during the current operation.";
const std::wstring kFileOpen = L"\n\nThe file could not be opened. Make sure the file exists and "
                               L"that you have access to the file/folder.";

class ErrorCompose : public testing::Test
{
protected:
    void SetUp() override { TqErrorHandler_DetailsInit(); }
    void TearDown() override { TqErrorHandler_DetailsInit(); }

    static std::wstring Message(UINT_PTR context, HRESULT code, const wchar_t* argument)
    {
        return TqErrorHandler_GetErrorMessage(context, code, argument);
    }
    static UINT_PTR Text(const wchar_t* text) { return reinterpret_cast<UINT_PTR>(text); }
};

TEST_F(ErrorCompose, ContextTakesTheArgumentAndTheReasonFollows)
{
    EXPECT_EQ(L"An error occurred while loading the project file song.prj." + kFileOpen,
              Message(5, TQ_E_OPENFAILED, L"song.prj"));
    // A null argument fills "%s" with nothing.
    EXPECT_EQ(L"An error occurred while loading the project file ." + kFileOpen,
              Message(5, TQ_E_OPENFAILED, nullptr));
}

TEST_F(ErrorCompose, TokensExpandInContextAndReason)
{
    EXPECT_EQ(L"An error occurred starting TestApp.\n\nA necessary resource is missing. You should "
              L"re-install TestApp as the application file appears to be corrupted.",
              Message(26, TQ_E_RESOURCEMISSING, nullptr));
}

TEST_F(ErrorCompose, ReasonTakesTheArgumentToo)
{
    EXPECT_EQ(
        L"An error occurred in a file format plug-in.\n\nMP9 file type is unsupported in this "
        L"version of TestApp.",
        Message(27, static_cast<HRESULT>(0x8004E164), L"MP9"));
}

TEST_F(ErrorCompose, UnknownContextIdsTakeContextZero)
{
    for (UINT_PTR id : {UINT_PTR{13}, UINT_PTR{40}, UINT_PTR{58}, UINT_PTR{0xFFFF}})
    {
        EXPECT_EQ(kContext0 + kFileOpen, Message(id, TQ_E_OPENFAILED, L"x")) << id;
        EXPECT_EQ(kContext0, TqErrorHandler_GetContextString(id)) << id;
    }
}

TEST_F(ErrorCompose, ContextAboveTheIdRangeIsTheFormatItself)
{
    EXPECT_EQ(L"Copying take.wav to $ failed." + kFileOpen,
              Message(Text(L"Copying %s to $$ failed."), TQ_E_OPENFAILED, L"take.wav"));
}

TEST_F(ErrorCompose, CodeThatNoTableKnowsSaysSo)
{
    EXPECT_EQ(kContext0 + L"\n\nError 0x8004e0ff (message missing)",
              Message(0, static_cast<HRESULT>(0x8004E0FF), nullptr));
    EXPECT_EQ(nullptr, TqErrorHandler_GetHresultString(static_cast<HRESULT>(0x8004E0FF)));
}

TEST_F(ErrorCompose, LongContextLeavesNoRoomForTheReason)
{
    const std::wstring atLimit(1948, L'a');
    EXPECT_EQ(atLimit, Message(Text(atLimit.c_str()), TQ_E_OPENFAILED, nullptr));
    // One character less, and the reason follows as far as the buffer goes.
    const std::wstring belowLimit(1947, L'a');
    const std::wstring message = Message(Text(belowLimit.c_str()), TQ_E_OPENFAILED, nullptr);
    EXPECT_EQ(2047u, message.size());
    EXPECT_EQ(belowLimit + kFileOpen.substr(0, 100), message);
}

TEST_F(ErrorCompose, ReasonAndContextAloneAreTheRawTableTexts)
{
    EXPECT_EQ(L"\n\nThis project file was created by an older version of $(AppName).",
              std::wstring(TqErrorHandler_GetHresultString(static_cast<HRESULT>(0x0004E00E))));
    EXPECT_EQ(L"The plug-in preset '%s' could not be loaded.",
              std::wstring(TqErrorHandler_GetContextString(15)));
    const wchar_t* own = L"own context";
    EXPECT_EQ(own, TqErrorHandler_GetContextString(Text(own)));
}

TEST_F(ErrorCompose, TextsKeepTheirQuirks)
{
    // Hosts compare these texts, so they stay as they always were.
    EXPECT_EQ(L"\n\nPreset not\u00C2\u00A0compatible with this VST3 effect.",
              std::wstring(TqErrorHandler_GetHresultString(static_cast<HRESULT>(0x8004E204))));
    EXPECT_EQ(L"Buffer to small.",
              std::wstring(TqErrorHandler_GetHresultString(TQ_E_BUFFERTOOSMALL)));
    EXPECT_EQ(L"An error occurred in the effect chain 'Vocals'.\n\n\nThe item was not found.",
              Message(3, TQ_E_NOTFOUND, L"Vocals"));
}

TEST_F(ErrorCompose, ComposedTextCarriesTheDetails)
{
    const std::wstring message = kContext0 + kFileOpen;
    BSTR alone = TqErrorHandler_ComposeErrorText(0, TQ_E_OPENFAILED, nullptr);
    ASSERT_NE(nullptr, alone);
    EXPECT_EQ(message, std::wstring(alone, SysStringLen(alone)));
    SysFreeString(alone);

    ASSERT_EQ(S_OK, TqErrorHandler_DetailsAddString(TQ_E_OPENFAILED, L"first"));
    ASSERT_EQ(S_OK, TqErrorHandler_DetailsAddString(TQ_E_OPENFAILED, L"second"));
    BSTR both = TqErrorHandler_ComposeErrorText(0, TQ_E_OPENFAILED, nullptr);
    ASSERT_NE(nullptr, both);
    EXPECT_EQ(message + L"\r\n<Details>\r\nfirst\r\nsecond\r\n\r\n</Details>",
              std::wstring(both, SysStringLen(both)));
    SysFreeString(both);
    // Composing does not consume the details; showing them does.
    EXPECT_NE(nullptr, TqErrorHandler_DetailsInfo(nullptr, nullptr, nullptr));
}

} // namespace
