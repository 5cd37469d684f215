// Tests of the details block: formatting of lines, the one-writer rule, the size limit, the link,
// and taking everything for a box in the step that clears the state.
#include "support/kernelenvironment.h"
#include <gtest/gtest.h>

#include <string>

#include "tqerrorhandler.h"
#include "tqerrorstate.h"
#include "tqkernel.h"
#include "tqprintf.h"

namespace {

using tq::errorhandler::PendingBox;
using tq::errorhandler::TakePendingBox;

constexpr HRESULT kCode = static_cast<HRESULT>(0x8004E008);
constexpr HRESULT kOtherCode = static_cast<HRESULT>(0x8004E009);
constexpr size_t kDetailsChars = 8192; // 16384 bytes

std::wstring Details()
{
    const wchar_t* text = TqErrorHandler_DetailsInfo(nullptr, nullptr, nullptr);
    return text ? text : L"(none)";
}

// Runs body on a thread of its own and returns what it returned.
struct ThreadCall
{
    HRESULT (*body)();
    HRESULT result;
};

DWORD WINAPI RunCall(void* parameter)
{
    auto* call = static_cast<ThreadCall*>(parameter);
    call->result = call->body();
    return 0;
}

HRESULT OnOtherThread(HRESULT (*body)())
{
    ThreadCall call{body, E_UNEXPECTED};
    HANDLE thread = CreateThread(nullptr, 0, RunCall, &call, 0, nullptr);
    if (!thread) return E_UNEXPECTED;
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    return call.result;
}

class ErrorDetails : public testing::Test
{
protected:
    void SetUp() override { TqErrorHandler_DetailsInit(); }
    void TearDown() override { TqErrorHandler_DetailsInit(); }
};

TEST_F(ErrorDetails, LinesAccumulateWithCountCodeAndWriter)
{
    HRESULT code = E_UNEXPECTED;
    int lines = -1;
    DWORD thread = 1;
    EXPECT_EQ(nullptr, TqErrorHandler_DetailsInfo(&code, &lines, &thread));
    EXPECT_EQ(S_OK, code);
    EXPECT_EQ(0, lines);
    EXPECT_EQ(0u, thread);

    EXPECT_EQ(S_OK, TqErrorHandler_DetailsAddString(kCode, L"reading take.wav"));
    EXPECT_EQ(S_OK, TqErrorHandler_DetailsAddString(kOtherCode, L"block %d of $(AppName)", 7));
    EXPECT_EQ(L"reading take.wav\r\nblock 7 of TestApp\r\n",
              std::wstring(TqErrorHandler_DetailsInfo(&code, &lines, &thread)));
    EXPECT_EQ(kOtherCode, code);
    EXPECT_EQ(2, lines);
    EXPECT_EQ(GetCurrentThreadId(), thread);
    EXPECT_EQ(kOtherCode, TqErrorHandler_GetLastError());
}

TEST_F(ErrorDetails, PlainTextIsNeverFormatted)
{
    // Without "$" or "%" nothing would be consumed, so backslashes and braces stay as they are.
    EXPECT_EQ(S_OK, TqErrorHandler_DetailsAddString(kCode, L"C:\\take {1}.wav"));
    EXPECT_EQ(S_OK, TqErrorHandler_DetailsAddString(kCode, L"%s", L"100% of $(AppName)"));
    EXPECT_EQ(L"C:\\take {1}.wav\r\n100% of $(AppName)\r\n", Details());
}

TEST_F(ErrorDetails, NullFormatIsRefused)
{
    EXPECT_EQ(E_POINTER, TqErrorHandler_DetailsAddString(kCode, nullptr));
    EXPECT_EQ(L"(none)", Details());
}

TEST_F(ErrorDetails, AnotherThreadMayOnlyContinueWithTheLastCode)
{
    ASSERT_EQ(S_OK, TqErrorHandler_DetailsAddString(kCode, L"first"));
    EXPECT_EQ(E_FAIL, OnOtherThread(
                          [] { return TqErrorHandler_DetailsAddString(kOtherCode, L"intruder"); }));
    EXPECT_EQ(S_OK,
              OnOtherThread([] { return TqErrorHandler_DetailsAddString(kCode, L"same error"); }));
    // The first writer is not bound by the rule.
    EXPECT_EQ(S_OK, TqErrorHandler_DetailsAddString(kOtherCode, L"owner"));
    DWORD thread = 0;
    EXPECT_EQ(L"first\r\nsame error\r\nowner\r\n",
              std::wstring(TqErrorHandler_DetailsInfo(nullptr, nullptr, &thread)));
    EXPECT_EQ(GetCurrentThreadId(), thread);
}

TEST_F(ErrorDetails, AfterAClearAnyThreadMayStart)
{
    ASSERT_EQ(S_OK, TqErrorHandler_DetailsAddString(kCode, L"first"));
    TqErrorHandler_DetailsInit();
    EXPECT_EQ(S_OK, OnOtherThread([] {
                  return TqErrorHandler_DetailsAddString(kOtherCode, L"fresh start");
              }));
    EXPECT_EQ(L"fresh start\r\n", Details());
}

TEST_F(ErrorDetails, LineThatWouldFillTheBlockIsRefusedAndEarlierLinesStay)
{
    ASSERT_EQ(S_OK, TqErrorHandler_DetailsAddString(kCode, L"first"));
    // "first\r\n" is 7 characters; the block holds 8191 and the terminator.
    const std::wstring tooLong(kDetailsChars - 7 - 2, L'x');
    EXPECT_EQ(E_FAIL, TqErrorHandler_DetailsAddString(kOtherCode, tooLong.c_str()));
    int lines = 0;
    HRESULT code = S_OK;
    EXPECT_EQ(L"first\r\n", std::wstring(TqErrorHandler_DetailsInfo(&code, &lines, nullptr)));
    EXPECT_EQ(1, lines);
    EXPECT_EQ(kCode, code);

    const std::wstring fits(kDetailsChars - 7 - 3, L'x');
    EXPECT_EQ(S_OK, TqErrorHandler_DetailsAddString(kCode, fits.c_str()));
    EXPECT_EQ(kDetailsChars - 1, Details().size());
    EXPECT_EQ(E_FAIL, TqErrorHandler_DetailsAddString(kCode, L""));
}

TEST_F(ErrorDetails, HyperlinkNeedsBothPartsAndMustFit)
{
    EXPECT_EQ(E_POINTER, TqErrorHandler_DetailsSetHyperlink(nullptr, L"text"));
    EXPECT_EQ(E_POINTER, TqErrorHandler_DetailsSetHyperlink(L"https://example.org", nullptr));
    const std::wstring longAddress(2083, L'a');
    EXPECT_EQ(TQ_E_BUFFERTOOSMALL, TqErrorHandler_DetailsSetHyperlink(longAddress.c_str(), L"t"));
    const std::wstring longText(2048, L't');
    EXPECT_EQ(TQ_E_BUFFERTOOSMALL, TqErrorHandler_DetailsSetHyperlink(L"a", longText.c_str()));
    EXPECT_EQ(nullptr, TakePendingBox(0).linkAddress);

    const std::wstring longest(2082, L'a');
    EXPECT_EQ(S_OK, TqErrorHandler_DetailsSetHyperlink(longest.c_str(), L"More"));
    EXPECT_EQ(longest, TakePendingBox(0).linkAddress.get());
}

TEST_F(ErrorDetails, BoxTakesDetailsAndLinkAndLeavesTheStateClear)
{
    ASSERT_EQ(S_OK, TqErrorHandler_DetailsAddString(kCode, L"line"));
    ASSERT_EQ(S_OK, TqErrorHandler_DetailsSetHyperlink(L"https://example.org/help", L"Help"));
    const PendingBox box = TakePendingBox(MB_ICONSTOP | MB_YESNO);
    EXPECT_EQ(static_cast<UINT>(MB_ICONSTOP | MB_YESNO | 0xC000), box.flags);
    ASSERT_NE(nullptr, box.details);
    EXPECT_EQ(L"line\r\n", std::wstring(box.details.get()));
    ASSERT_NE(nullptr, box.linkAddress);
    EXPECT_EQ(L"https://example.org/help", std::wstring(box.linkAddress.get()));
    EXPECT_EQ(L"Help", std::wstring(box.linkText.get()));

    EXPECT_EQ(L"(none)", Details());
    EXPECT_EQ(S_OK, TqErrorHandler_GetLastError());
    EXPECT_EQ(nullptr, TakePendingBox(0).linkAddress);
}

TEST_F(ErrorDetails, BoxWithoutDetailsNeverOffersThem)
{
    // The caller's own 0xC000 bits would offer details that do not exist.
    const PendingBox box = TakePendingBox(MB_ICONEXCLAMATION | 0xC000);
    EXPECT_EQ(static_cast<UINT>(MB_ICONEXCLAMATION), box.flags);
    EXPECT_EQ(nullptr, box.details);
    EXPECT_EQ(nullptr, box.linkAddress);
}

TEST_F(ErrorDetails, ClearEmptiesTheMessageBufferToo)
{
    TqErrorHandler_GetErrorMessage(0, kCode, nullptr);
    TqErrorHandler_DetailsInit();
    EXPECT_EQ(L'\0', tq::errorhandler::MessageBuffer()[0]);
}

} // namespace
