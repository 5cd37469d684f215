// Tests of the display forms: paths and strings cut to a width measured on a real device context.
#include "tqpath.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class Ellipsis : public testing::Test
{
protected:
    void SetUp() override
    {
        m_dc = CreateCompatibleDC(nullptr);
        ASSERT_NE(m_dc, nullptr);
        m_previous = SelectObject(m_dc, GetStockObject(DEFAULT_GUI_FONT));
    }
    void TearDown() override
    {
        SelectObject(m_dc, m_previous);
        DeleteDC(m_dc);
    }
    int Width(const std::wstring& text) const
    {
        SIZE size = {};
        GetTextExtentPoint32W(m_dc, text.c_str(), static_cast<int>(text.size()), &size);
        return size.cx;
    }
    std::wstring Path(const std::wstring& path, int width) const
    {
        wchar_t result[MAX_PATH];
        const int length = TqCalcPathEllipsisEx(m_dc, path.c_str(), result, MAX_PATH, width);
        EXPECT_EQ(length, lstrlenW(result));
        return result;
    }

    HDC m_dc = nullptr;
    HGDIOBJ m_previous = nullptr;
};

const std::wstring kPath = L"C:\\Users\\someone\\Music\\Projects\\Album\\take-seven.wav";
const std::wstring kTail = L"\\take-seven.wav";

TEST_F(Ellipsis, PathThatFitsIsUnchanged)
{
    EXPECT_EQ(Path(kPath, Width(kPath)), kPath);
    EXPECT_EQ(Path(L"no-separator-at-all.wav", 1), L"no-separator-at-all.wav");
}

TEST_F(Ellipsis, TailWiderThanTheWidthComesBackUnchanged)
{
    EXPECT_EQ(Path(kPath, Width(L"..." + kTail) - 1), kPath);
}

TEST_F(Ellipsis, FrontIsCutAsLittleAsNeeded)
{
    for (int extra : {0, 10, 40, 80})
    {
        const int width = Width(L"..." + kTail) + extra;
        const std::wstring shown = Path(kPath, width);
        ASSERT_GE(shown.size(), kTail.size() + 3);
        const size_t front = shown.size() - kTail.size() - 3;
        EXPECT_EQ(shown.substr(front), L"..." + kTail);
        EXPECT_EQ(shown.substr(0, front), kPath.substr(0, front)) << shown;
        EXPECT_LE(Width(shown.substr(0, front)) + Width(L"...") + Width(kTail), width);
        // One more character of the front would not have fitted.
        if (front + 1 < kPath.size() - kTail.size())
        {
            EXPECT_GT(Width(kPath.substr(0, front + 1)) + Width(L"...") + Width(kTail), width);
        }
    }
    EXPECT_EQ(Path(kPath, Width(L"..." + kTail)), L"..." + kTail);
}

TEST_F(Ellipsis, ForwardSlashAndInPlaceForm)
{
    const std::wstring mixed = L"C:\\folder\\sub/name.txt";
    const std::wstring shown = Path(mixed, Width(L"C:...") + Width(L"/name.txt"));
    EXPECT_EQ(shown.substr(shown.size() - 12), L".../name.txt");
    wchar_t inPlace[MAX_PATH];
    lstrcpyW(inPlace, kPath.c_str());
    EXPECT_GT(TqCalcPathEllipsis(m_dc, inPlace, MAX_PATH, Width(L"..." + kTail) + 20), 0);
    EXPECT_EQ(std::wstring(inPlace), Path(kPath, Width(L"..." + kTail) + 20));
}

TEST_F(Ellipsis, StringsCutAtEitherEnd)
{
    const std::wstring text = L"A rather long title for a plug-in";
    wchar_t result[64];
    TqCalcStringEllipsis(m_dc, text.c_str(), result, 64, Width(text));
    EXPECT_EQ(std::wstring(result), text);
    const int width = Width(L"A rather...");
    TqCalcStringEllipsis(m_dc, text.c_str(), result, 64, width);
    std::wstring shown = result;
    EXPECT_EQ(shown.substr(shown.size() - 3), L"...");
    EXPECT_EQ(text.rfind(shown.substr(0, shown.size() - 3), 0), 0u);
    EXPECT_LE(Width(shown), width);
    TqCalcStringEllipsisFromEnd(m_dc, text.c_str(), result, 64, width);
    shown = result;
    EXPECT_EQ(shown.substr(0, 3), L"...");
    EXPECT_EQ(text.substr(text.size() - (shown.size() - 3)), shown.substr(3));
    EXPECT_LE(Width(shown), width);
}

TEST(FilenameFormat, CharacterCountFormKeepsTheName)
{
    wchar_t result[MAX_PATH];
    EXPECT_EQ(TqFilenameFormat(L"C:\\one\\two\\three\\name.wav", result, MAX_PATH, 20), 20);
    EXPECT_STREQ(result, L"C:\\one\\t...\\name.wav");
    EXPECT_EQ(TqFilenameFormat(L"C:\\a\\name.wav", result, 8, 5), 7); // cut by the capacity
    EXPECT_STREQ(result, L"C:\\a\\na");
}

TEST(ByteSizeText, ShortAndLongForms)
{
    wchar_t text[32];
    EXPECT_GT(TqGetByteSizeText(512, text, 32), 0);
    const std::wstring shortForm = text;
    EXPECT_GT(TqGetByteSizeText2(512, text, 32), 0);
    EXPECT_NE(shortForm, text);
    EXPECT_EQ(TqGetByteSizeText(512, text, 2), 0);
}

} // namespace
