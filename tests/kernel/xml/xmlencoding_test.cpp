// Tests of the encoding layer: which encoding a document gets, and the cursor at the ends of
// the data.
#include "xmlencoding.h"

#include "xmlcharclass.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace tq::xml;

namespace {

// Releases the encoding and frees texts it handed out.
struct Encoding
{
    explicit Encoding(const std::string& bytes) : data(bytes.begin(), bytes.end())
    {
        e = CreateEncoding(data.data(), static_cast<DWORD>(data.size()));
    }
    ~Encoding()
    {
        if (e) e->Release();
    }
    std::wstring Read(const char* stops)
    {
        WCHAR* text = nullptr;
        DWORD length = 0;
        EXPECT_EQ(e->ReadUntil(stops, &text, &length), S_OK);
        std::wstring out(text, length);
        EXPECT_EQ(text[length], L'\0');
        GlobalFree(text);
        return out;
    }
    std::vector<BYTE> data;
    ITqXMLEncoding* e = nullptr;
};

} // namespace

TEST(XmlEncoding, ByteOrderMarkChoosesUtf16AndIsSteppedOver)
{
    // Odd offset in the block and an odd last byte: units are read unaligned, and the odd
    // byte is no character.
    std::string bytes = std::string("\xFF\xFE", 2) + std::string("a\0<\0", 4) + "\x41";
    Encoding enc(bytes);
    ASSERT_NE(enc.e, nullptr);
    EXPECT_EQ(enc.e->CharClass(), kClassNameStart);
    EXPECT_EQ(enc.Read("<"), L"a");
    EXPECT_EQ(enc.e->CharClass(), kClassOpen);
    enc.e->Advance();
    EXPECT_TRUE(enc.e->AtEnd());
    EXPECT_EQ(enc.e->CharClass(), kClassEnd);
    enc.e->Advance(); // nothing at the end
    EXPECT_EQ(enc.Read("<"), L"");

    // Units above the byte table are name starts; characters pass through unchanged.
    Encoding wide(std::string("\xFF\xFE\xAC\x20\x3C\x00", 6));
    EXPECT_EQ(wide.e->CharClass(), kClassNameStart);
    EXPECT_EQ(wide.Read("<"), L"\u20ac");
}

TEST(XmlEncoding, LiteralsMatchWholeOrNotAtAll)
{
    for (const std::string& bytes :
         {std::string("XmL v"), std::string("\xFF\xFEX\0m\0L\0 \0v\0", 12)})
    {
        Encoding enc(bytes);
        EXPECT_FALSE(enc.e->MatchLiteral("xml", FALSE));
        EXPECT_FALSE(enc.e->MatchLiteral("xml v2", TRUE)) << "runs past the end";
        EXPECT_TRUE(enc.e->MatchLiteral("xml", TRUE));
        EXPECT_EQ(enc.e->CharClass(), kClassSpace);
        EXPECT_EQ(enc.Read("<"), L" v") << "a read without its stop runs to the end";
        EXPECT_TRUE(enc.e->AtEnd());
    }
}
