// Tests of the settings store, against a company and product key of the test's own below
// HKEY_CURRENT_USER, deleted again by every test (and checked to be gone).
#include "tqmetric.h"

#include "uniquehandle.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr DWORD kVersion = 0x02030000; // 2.3

std::wstring OwnName(const wchar_t* stem)
{
    return stem + std::to_wstring(GetCurrentProcessId());
}

bool KeyExists(const std::wstring& path)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

class Metrics : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(TqMetric_OpenRegHiveAndVersion(&m_handle, m_product.c_str(), kVersion,
                                                 m_company.c_str(), nullptr),
                  S_OK);
    }
    void TearDown() override
    {
        TqMetric_Close(m_handle);
        TqMetric_DeleteAllHiveAndVersion(m_product.c_str(), kVersion, m_company.c_str());
        RegDeleteTreeW(HKEY_CURRENT_USER, (L"Software\\" + m_company).c_str());
        EXPECT_FALSE(KeyExists(L"Software\\" + m_company));
    }

    // Stores a raw value beside the store's own, to see how readers take foreign types.
    void Raw(const wchar_t* name, DWORD type, const void* data, DWORD bytes)
    {
        ASSERT_EQ(
            RegSetValueExW(m_handle->key, name, 0, type, static_cast<const BYTE*>(data), bytes),
            ERROR_SUCCESS);
    }

    std::wstring m_company = OwnName(L"TqMetricTestCompany");
    std::wstring m_product = OwnName(L"TqMetricTest");
    HTQMETRIC m_handle = nullptr;
};

TEST(MetricNames, LettersByTypeFromTheAbsoluteNumber)
{
    struct NameCase
    {
        int number;
        int type;
        const wchar_t* name;
    };
    const NameCase cases[] = {
        {12, TQMETRIC_STRING, L"S12"},    {-12, TQMETRIC_STRING, L"S12"},
        {7, TQMETRIC_BINARY, L"B7"},      {7, TQMETRIC_DWORD, L"D7"},
        {7, TQMETRIC_MULTISTRING, L"Z7"}, {7, 2, L"Z7"},
        {INT_MIN, 1, L"S2147483648"},
    };
    for (const NameCase& c : cases)
    {
        wchar_t name[16];
        EXPECT_STREQ(TqMetricGetName(c.number, c.type, name), c.name);
    }
}

TEST_F(Metrics, KeyPathsByCompanyProductAndVersion)
{
    EXPECT_EQ(std::wstring(m_handle->keyPath),
              L"Software\\" + m_company + L"\\" + m_product + L"\\2.3\\Metrics");
    struct PathCase
    {
        DWORD version;
        const wchar_t* subKey;
        std::wstring tail;
    };
    const PathCase cases[] = {
        {0x00FF0000, nullptr, L"\\Metrics"}, // no version level
        {0x01000000, nullptr, L"\\1.0\\Metrics"},
        {0x0A0B1234, L"", L"\\10.11\\Metrics"},
        {0x01000000, L"Effects", L"\\1.0\\Metrics\\Effects"},
    };
    for (const PathCase& c : cases)
    {
        HTQMETRIC handle = nullptr;
        EXPECT_EQ(TqMetric_OpenRegHiveAndVersion(&handle, m_product.c_str(), c.version,
                                                 m_company.c_str(), c.subKey),
                  S_OK);
        ASSERT_NE(handle, nullptr);
        const std::wstring path = L"Software\\" + m_company + L"\\" + m_product + c.tail;
        EXPECT_EQ(std::wstring(handle->keyPath), path);
        EXPECT_TRUE(KeyExists(path));
        TqMetric_Close(handle);
        TqMetric_DeleteAllHiveAndVersion(m_product.c_str(), c.version, m_company.c_str());
    }
}

TEST_F(Metrics, SubKeysAreSiblingsBelowMetrics)
{
    HTQMETRIC effects = nullptr, presets = nullptr;
    ASSERT_EQ(TqMetric_OpenSubKey(&effects, m_handle, L"Effects"), S_OK);
    ASSERT_EQ(TqMetric_OpenSubKey(&presets, effects, L"Presets"), S_OK);
    const std::wstring metrics = m_handle->keyPath;
    EXPECT_EQ(std::wstring(presets->keyPath), metrics + L"\\Presets");
    EXPECT_EQ(TqSetMetric(presets, 1, 5), S_OK);
    EXPECT_EQ(TqGetMetric(m_handle, 1), 0u); // a value of its own key
    TqMetric_Close(presets);
    EXPECT_EQ(TqMetric_OpenSubKey(&presets, nullptr, L"x"), E_FAIL);
    EXPECT_EQ(presets, nullptr);
    TqMetric_Close(effects);
    EXPECT_EQ(TqMetric_DeleteKeyHiveAndVersion(m_product.c_str(), kVersion, m_company.c_str(),
                                               L"Effects"),
              S_OK);
    EXPECT_FALSE(KeyExists(metrics + L"\\Effects"));
    EXPECT_TRUE(KeyExists(metrics + L"\\Presets"));
    EXPECT_EQ(TqMetric_DeleteKeyHiveAndVersion(m_product.c_str(), kVersion, m_company.c_str(), L""),
              E_INVALIDARG);
    HTQMETRIC again = nullptr;
    ASSERT_EQ(TqMetric_OpenSubKey(&again, m_handle, L"Presets"), S_OK);
    EXPECT_EQ(TqMetric_CloseAndDeleteKey(again), S_OK);
    EXPECT_FALSE(KeyExists(metrics + L"\\Presets"));
    EXPECT_TRUE(KeyExists(metrics));
}

TEST_F(Metrics, DwordsWithDefaultsAndBounds)
{
    EXPECT_EQ(TqSetMetric(m_handle, -12, 42), S_OK);
    EXPECT_EQ(TqGetMetric(m_handle, 12), 42u); // -12 and 12 are one value
    DWORD stored = 0, bytes = sizeof(stored);
    EXPECT_EQ(RegQueryValueExW(m_handle->key, L"12", nullptr, nullptr,
                               reinterpret_cast<BYTE*>(&stored), &bytes),
              ERROR_SUCCESS); // named by the bare number
    EXPECT_EQ(stored, 42u);

    struct ExCase
    {
        int number; // 12 holds 42, 13 holds -5, 14 is missing
        int min, max, defaultValue;
        int expected;
    };
    EXPECT_EQ(TqSetMetric(m_handle, 13, static_cast<DWORD>(-5)), S_OK);
    const ExCase cases[] = {
        {12, 0, 100, 7, 42},  {12, 0, 40, 7, 40},   {13, -10, 10, 7, -5}, {13, 0, 10, 7, 0},
        {12, 10, 10, 99, 42}, {14, 10, 10, 99, 99}, {14, 0, 50, 99, 50},  {14, 60, 70, 0, 60},
    };
    for (const ExCase& c : cases)
        EXPECT_EQ(TqGetMetricEx(m_handle, c.number, c.min, c.max, c.defaultValue), c.expected)
            << c.number << " " << c.min << ".." << c.max;

    EXPECT_EQ(TqGetMetricBool(m_handle, 12, FALSE), TRUE);
    EXPECT_EQ(TqGetMetricBool(m_handle, 14, TRUE), TRUE);
    EXPECT_EQ(TqSetMetric(m_handle, 14, 0), S_OK);
    EXPECT_EQ(TqGetMetricBool(m_handle, 14, TRUE), FALSE);

    EXPECT_EQ(TqSetMetricUsingName(m_handle, L"Named", 9), S_OK);
    EXPECT_EQ(TqGetMetricUsingName(m_handle, L"Named", 1), 9u);
    EXPECT_EQ(TqGetMetricUsingName(m_handle, L"Other", 1), 1u);
}

TEST_F(Metrics, WrongTypeReadsAsMissing)
{
    Raw(L"12", REG_SZ, L"42", 6);
    EXPECT_EQ(TqGetMetric(m_handle, 12), 0u);
    EXPECT_EQ(TqGetMetricEx(m_handle, 12, 0, 100, 77), 77);
    EXPECT_EQ(TqGetMetricBool(m_handle, 12, TRUE), TRUE);
    EXPECT_EQ(TqDoesMetricExist(m_handle, 12, TQMETRIC_DWORD), 1);
    const DWORD number = 3;
    Raw(L"S5", REG_DWORD, &number, sizeof(number));
    wchar_t text[16];
    EXPECT_EQ(TqGetMetricStringEx(m_handle, 5, text, 16, L"fallback", FALSE), 8);
    EXPECT_STREQ(text, L"fallback");
    Raw(L"B6", REG_SZ, L"xy", 6);
    BYTE bytes[4] = {1, 2, 3, 4};
    EXPECT_EQ(TqGetMetricBinary(m_handle, 6, bytes, 4), 0u);
    EXPECT_EQ(std::vector<BYTE>(bytes, bytes + 4), std::vector<BYTE>(4, 0));
    DWORD size = 0;
    EXPECT_EQ(TqGetMetricBinaryEx(m_handle, 6, bytes, 4, &size), S_FALSE);
}

TEST_F(Metrics, NoStoreReadsDefaultsAndWritesFail)
{
    for (HTQMETRIC none : {static_cast<HTQMETRIC>(nullptr), TQMETRIC_DEFAULT})
    {
        EXPECT_EQ(TqGetMetric(none, 1), 0u);
        EXPECT_EQ(TqGetMetricEx(none, 1, 0, 10, 99), 99); // unclamped
        EXPECT_EQ(TqGetMetricBool(none, 1, TRUE), TRUE);
        wchar_t text[8];
        EXPECT_EQ(TqGetMetricStringEx(none, 1, text, 8, L"def", TRUE), 3);
        DWORD size = 0;
        BYTE bytes[2];
        EXPECT_EQ(TqGetMetricBinaryEx(none, 1, bytes, 2, &size), TQ_E_NOTFOUND);
        EXPECT_EQ(TqDoesMetricExist(none, 1, TQMETRIC_DWORD), 1);
        EXPECT_EQ(TqDeleteMetric(none, 1, TQMETRIC_DWORD), S_FALSE);
        EXPECT_EQ(TqSetMetric(none, 1, 1), E_FAIL);
        EXPECT_EQ(TqSetMetricString(none, 1, L"x"), E_FAIL);
        EXPECT_EQ(TqSetMetricBinary(none, 1, bytes, 2), E_FAIL);
        TqMetric_Close(none);
    }
}

TEST_F(Metrics, TextsWithDefaultsAndTheStoredEmptyText)
{
    wchar_t text[8];
    EXPECT_EQ(TqGetMetricStringEx(m_handle, 3, text, 8, nullptr, FALSE), 0);
    EXPECT_STREQ(text, L"");
    EXPECT_EQ(TqGetMetricStringEx(m_handle, 3, text, 8, L"default", TRUE), 7);
    EXPECT_STREQ(text, L"default");
    EXPECT_EQ(TqGetMetricStringEx(m_handle, 3, text, 4, L"default", FALSE), 3); // cut
    EXPECT_STREQ(text, L"def");

    EXPECT_EQ(TqSetMetricString(m_handle, 3, L"abc"), S_OK);
    EXPECT_EQ(TqGetMetricStringEx(m_handle, -3, text, 8, L"default", FALSE), 3);
    EXPECT_STREQ(text, L"abc");
    EXPECT_EQ(TqDoesMetricExist(m_handle, 3, TQMETRIC_STRING), 0);
    // Too long for the buffer reads as missing, never as a cut or unterminated text.
    EXPECT_EQ(TqSetMetricString(m_handle, 4, L"abcdefghij"), S_OK);
    EXPECT_EQ(TqGetMetricStringEx(m_handle, 4, text, 8, L"default", FALSE), 7);
    EXPECT_STREQ(text, L"default");

    // A deliberately stored empty text beats the default only when asked to.
    EXPECT_EQ(TqSetMetricString(m_handle, 3, nullptr), S_OK);
    EXPECT_EQ(TqGetMetricStringEx(m_handle, 3, text, 8, L"default", TRUE), 0);
    EXPECT_STREQ(text, L"");
    EXPECT_EQ(TqGetMetricStringEx(m_handle, 3, text, 8, L"default", FALSE), 7);
    EXPECT_STREQ(text, L"default");
    EXPECT_EQ(TqDeleteMetric(m_handle, 3, TQMETRIC_STRING), S_OK);
    EXPECT_EQ(TqDeleteMetric(m_handle, 3, TQMETRIC_STRING), E_FAIL);
    EXPECT_EQ(TqDoesMetricExist(m_handle, 3, TQMETRIC_STRING), 1);
}

TEST_F(Metrics, MultiTexts)
{
    const wchar_t list[] = L"one\0two\0";
    EXPECT_EQ(TqSetMetricMultiString(m_handle, 9, list, 9), S_OK);
    EXPECT_EQ(TqDoesMetricExist(m_handle, 9, TQMETRIC_MULTISTRING), 0);
    wchar_t buffer[16];
    EXPECT_EQ(TqGetMetricMultiStringEx(m_handle, 9, buffer, 16, nullptr, FALSE), 8);
    EXPECT_EQ(std::wstring(buffer, 9), std::wstring(list, 9));
    EXPECT_EQ(TqGetMetricMultiStringEx(m_handle, 10, buffer, 16, L"a\0bc\0", FALSE), 5);
    EXPECT_EQ(std::wstring(buffer, 6), std::wstring(L"a\0bc\0\0", 6));
}

TEST_F(Metrics, BinaryValuesAndSizes)
{
    const BYTE data[6] = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(TqSetMetricBinary(m_handle, 2, data, 6), S_OK);
    BYTE buffer[8];
    memset(buffer, 0xCC, sizeof(buffer));
    EXPECT_EQ(TqGetMetricBinary(m_handle, 2, buffer, 8), 6u);
    EXPECT_EQ(std::vector<BYTE>(buffer, buffer + 8), std::vector<BYTE>({1, 2, 3, 4, 5, 6, 0, 0}));
    EXPECT_EQ(TqGetMetricBinary(m_handle, 2, buffer, 4), 0u); // too small is a failure
    EXPECT_EQ(std::vector<BYTE>(buffer, buffer + 4), std::vector<BYTE>(4, 0));

    DWORD size = 0;
    EXPECT_EQ(TqGetMetricBinaryEx(m_handle, 2, buffer, 8, &size), S_OK);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(TqGetMetricBinaryEx(m_handle, 2, buffer, 4, &size), TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(TqGetMetricBinaryEx(m_handle, 2, nullptr, 0, &size), TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(TqGetMetricBinaryEx(m_handle, 99, buffer, 8, &size), S_FALSE);
    EXPECT_EQ(TqGetMetricBinaryEx(m_handle, 2, buffer, 8, nullptr), E_INVALIDARG);
}

TEST_F(Metrics, StreamsUpTo2048Bytes)
{
    IStream* raw = nullptr;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &raw), S_OK);
    std::vector<BYTE> data(2049);
    for (size_t i = 0; i < data.size(); ++i)
        data[i] = static_cast<BYTE>(i * 7);
    ULONG written = 0;
    raw->Write(data.data(), 2048, &written);
    EXPECT_EQ(TqSetMetricStream(m_handle, 4, raw), S_OK);
    raw->Write(data.data(), 1, &written);
    EXPECT_EQ(TqSetMetricStream(m_handle, 4, raw), E_INVALIDARG);
    raw->Release();

    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &raw), S_OK);
    EXPECT_EQ(TqSetMetricStream(m_handle, 5, raw), E_UNEXPECTED); // empty
    EXPECT_EQ(TqGetMetricStream(m_handle, 5, raw), S_FALSE);      // nothing stored
    ASSERT_EQ(TqGetMetricStream(m_handle, 4, raw), S_OK);
    HGLOBAL memory = nullptr;
    ASSERT_EQ(GetHGlobalFromStream(raw, &memory), S_OK);
    ASSERT_GE(GlobalSize(memory), 2048u);
    const BYTE* read = static_cast<const BYTE*>(GlobalLock(memory));
    EXPECT_EQ(std::vector<BYTE>(read, read + 2048),
              std::vector<BYTE>(data.begin(), data.end() - 1));
    GlobalUnlock(memory);
    raw->Release();
}

TEST_F(Metrics, AnyReadKeepsItsOrderOfAnswers)
{
    const DWORD number = 77;
    EXPECT_EQ(TqSetMetric(m_handle, 20, number), S_OK);
    BYTE buffer[16];
    DWORD size = 0;
    EXPECT_EQ(TqGetMetricAny(m_handle, 20, REG_DWORD, buffer, 16, &size), TQ_E_NOTFOUND);
    EXPECT_EQ(TqGetMetricAny(m_handle, 20, REG_BINARY, buffer, 16, &size), S_OK);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(TqGetMetricAny(m_handle, 20, REG_BINARY, buffer, 2, &size), TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(size, 4u);

    // Text of another type comes back terminated, in a buffer of exactly its size too.
    Raw(L"21", REG_SZ, L"abc", 8);
    wchar_t text[8];
    memset(text, 0x55, sizeof(text));
    EXPECT_EQ(TqGetMetricAny(m_handle, 21, REG_DWORD, text, sizeof(text), &size), S_OK);
    EXPECT_EQ(size, 8u);
    EXPECT_STREQ(text, L"abc");
    memset(text, 0x55, sizeof(text));
    EXPECT_EQ(TqGetMetricAny(m_handle, 21, REG_DWORD, text, 8, &size), S_OK);
    EXPECT_STREQ(text, L"abc");
    EXPECT_EQ(TqGetMetricAny(m_handle, 21, REG_DWORD, text, 6, &size), TQ_E_BUFFERTOOSMALL);
    EXPECT_EQ(size, 8u);
    EXPECT_EQ(TqGetMetricAny(m_handle, 21, REG_SZ, text, 8, &size), TQ_E_NOTFOUND);
}

TEST(MetricsOpen, PlainFormsUseTheCompanyKey)
{
    const std::wstring product = OwnName(L"TqMetricPlain");
    HTQMETRIC handle = nullptr;
    ASSERT_EQ(TqMetric_Open(&handle, product.c_str(), 0x01020000, nullptr), S_OK);
    EXPECT_EQ(std::wstring(handle->keyPath), L"Software\\Ostrel\\" + product + L"\\1.2\\Metrics");
    EXPECT_EQ(TqSetMetric(handle, 1, 1), S_OK);
    TqMetric_Close(handle);
    EXPECT_EQ(TqMetric_DeleteUserMetrics(product.c_str(), 0x01020000), S_OK);
    EXPECT_FALSE(KeyExists(L"Software\\Ostrel\\" + product + L"\\1.2"));
    EXPECT_EQ(TqMetric_DeleteAll(product.c_str(), 0x01020000), HRESULT_FROM_WIN32(2));
    RegDeleteKeyW(HKEY_CURRENT_USER, (L"Software\\Ostrel\\" + product).c_str());
    RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\Ostrel"); // only if empty
    EXPECT_FALSE(KeyExists(L"Software\\Ostrel\\" + product));
}

} // namespace
