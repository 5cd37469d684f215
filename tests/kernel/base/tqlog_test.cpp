// Tests of CLog: line shapes, the message cut, flushing, rotation and many writers at once.
#include "clog.h"

#include "support/testpaths.h"
#include "uniquehandle.h"

#include <gtest/gtest.h>
#include <share.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

// The file's lines as the bytes they hold, without line ends; readable while the log is open.
std::vector<std::string> Lines(const std::wstring& path)
{
    std::vector<std::string> lines;
    tq::UniqueFile file(CreateFileW(path.c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, 0, nullptr));
    if (!file) return lines;
    std::string bytes(GetFileSize(file.Get(), nullptr), '\0');
    DWORD read = 0;
    ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    std::istringstream stream(bytes);
    for (std::string line; std::getline(stream, line);)
    {
        EXPECT_FALSE(line.empty() || line.back() != '\r') << "line without CR LF: " << line;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

// '#' stands for a digit.
bool HasShape(const std::string& text, const std::string& shape)
{
    if (text.size() != shape.size()) return false;
    for (size_t i = 0; i < text.size(); ++i)
        if (shape[i] == '#' ? !isdigit(static_cast<unsigned char>(text[i])) : text[i] != shape[i])
            return false;
    return true;
}

class Log : public testing::Test
{
protected:
    tqtest::TempFolder m_folder;
    std::wstring m_path = m_folder.File(L"test.log");
    std::wstring m_previous = m_path + L".previous";
};

TEST_F(Log, UnusableUntilInitialised)
{
    CLog log;
    EXPECT_EQ(log.Write(TQLOG_ERROR, __FILE__, __LINE__, L"early"), TQLOG_E_NOTINIT);
    EXPECT_EQ(log.Init(m_path.c_str(), 0, -1, 0), E_INVALIDARG);
    EXPECT_EQ(log.Init(nullptr, TQLOG_ERROR, -1, 0), E_INVALIDARG);
    EXPECT_EQ(log.Write(TQLOG_ERROR, __FILE__, __LINE__, L"still early"), TQLOG_E_NOTINIT);
    EXPECT_EQ(log.Init(m_folder.File(L"missing\\x.log").c_str(), TQLOG_ERROR, -1, 0), TQLOG_E_OPEN);
    EXPECT_EQ(log.Write(TQLOG_ERROR, __FILE__, __LINE__, L"no file"), TQLOG_E_NOTINIT);
    EXPECT_EQ(GetFileAttributesW(m_path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(Log, LevelTagsAndTheLevelMask)
{
    struct TagCase
    {
        LOGFLAGS flags;
        LOGFLAGS level;
        const char* line; // null: nothing written
    };
    const TagCase cases[] = {
        {TQLOG_ERROR, TQLOG_ERROR, "ERR text"},
        {TQLOG_WARNING, TQLOG_WARNING, "WARNtext"},
        {TQLOG_INFO | TQLOG_ERROR, TQLOG_INFO, "INFOtext"},
        {TQLOG_DEBUG, TQLOG_DEBUG, "DBG text"},
        {TQLOG_MESSAGE, TQLOG_MESSAGE, "text"},
        {TQLOG_ERROR, TQLOG_INFO, nullptr},
        {TQLOG_ERROR, TQLOG_ERROR | TQLOG_WARNING, "????text"},
        {TQLOG_ERROR | TQLOG_TIMESTAMP, TQLOG_TIMESTAMP, nullptr}, // an option is no level
    };
    for (const TagCase& c : cases)
    {
        DeleteFileW(m_path.c_str());
        CLog log;
        ASSERT_EQ(log.Init(m_path.c_str(), c.flags, -1, 0), S_OK);
        EXPECT_EQ(log.Write(c.level, __FILE__, __LINE__, L"%s", L"text"), S_OK);
        const std::vector<std::string> lines = Lines(m_path);
        if (c.line)
            EXPECT_EQ(lines, std::vector<std::string>{c.line}) << c.flags << " " << c.level;
        else
            EXPECT_TRUE(lines.empty()) << c.flags << " " << c.level;
    }
}

TEST_F(Log, TimeStampAndSource)
{
    CLog log;
    ASSERT_EQ(log.Init(m_path.c_str(), TQLOG_INFO | TQLOG_TIMESTAMP | TQLOG_SOURCE, -1, 0), S_OK);
    EXPECT_EQ(log.Write(TQLOG_INFO, "..\\src\\effect.cpp", 155, L"value %d", 7), S_OK);
    EXPECT_EQ(log.Write(TQLOG_INFO, "a/b/a_rather_long_source_name.cpp", 12345, L"x"), S_OK);
    EXPECT_EQ(log.Write(TQLOG_INFO, nullptr, 1, L"y"), S_OK);
    const std::vector<std::string> lines = Lines(m_path);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(HasShape(lines[0], "INFO ####-##-## ##:##:##      effect.cpp( 155): value 7"))
        << lines[0];
    EXPECT_EQ(lines[1].substr(25), "a_rather_long_source_name.cpp(12345): x");
    EXPECT_EQ(lines[2].substr(25), "               (   1): y");
    SYSTEMTIME now;
    GetLocalTime(&now);
    EXPECT_EQ(lines[0].substr(5, 4), std::to_string(now.wYear));
}

TEST_F(Log, LongMessagesAreCutAt1023Characters)
{
    CLog log;
    ASSERT_EQ(log.Init(m_path.c_str(), TQLOG_MESSAGE, -1, 0), S_OK);
    const std::wstring longText(5000, L'a');
    EXPECT_EQ(log.Write(TQLOG_MESSAGE, __FILE__, __LINE__, L"%s", longText.c_str()), S_OK);
    EXPECT_EQ(log.Write(TQLOG_MESSAGE, __FILE__, __LINE__, L"next"), S_OK);
    const std::vector<std::string> lines = Lines(m_path);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], std::string(1023, 'a'));
    EXPECT_EQ(lines[1], "next");
}

TEST_F(Log, EachLineIsInTheFileAtOnceAsUtf8)
{
    CLog log;
    ASSERT_EQ(log.Init(m_path.c_str(), TQLOG_MESSAGE, -1, 0), S_OK);
    EXPECT_EQ(log.Write(TQLOG_MESSAGE, __FILE__, __LINE__, L"Gr\u00fc\u00dfe"), S_OK);
    EXPECT_EQ(Lines(m_path), std::vector<std::string>{"Gr\xc3\xbc\xc3\x9f"
                                                      "e"});
    log.Shutdown();
    EXPECT_EQ(log.Write(TQLOG_MESSAGE, __FILE__, __LINE__, L"late"), TQLOG_E_NOTINIT);
    // A new Init appends.
    ASSERT_EQ(log.Init(m_path.c_str(), TQLOG_MESSAGE, -1, 0), S_OK);
    EXPECT_EQ(log.Write(TQLOG_MESSAGE, __FILE__, __LINE__, L"again"), S_OK);
    EXPECT_EQ(Lines(m_path).size(), 2u);
    EXPECT_STREQ(log.GetLogFileName(), m_path.c_str());
}

TEST_F(Log, RotationKeepsOnePreviousGeneration)
{
    {
        tq::UniqueFile stale(
            CreateFileW(m_previous.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        DWORD written = 0;
        ASSERT_TRUE(WriteFile(stale.Get(), "stale\r\n", 7, &written, nullptr));
    }
    CLog log;
    ASSERT_EQ(log.Init(m_path.c_str(), TQLOG_MESSAGE, 200, 0), S_OK);
    constexpr int kLines = 40;
    for (int i = 0; i < kLines; ++i)
        ASSERT_EQ(log.Write(TQLOG_MESSAGE, __FILE__, __LINE__, L"line %03d of the test", i), S_OK);
    log.Shutdown();
    const std::vector<std::string> previous = Lines(m_previous);
    const std::vector<std::string> current = Lines(m_path);
    ASSERT_FALSE(previous.empty());
    ASSERT_FALSE(current.empty());
    // 22 bytes a line with CR LF: the tenth line takes a generation past 200 bytes.
    EXPECT_EQ(previous.size(), 10u);
    EXPECT_EQ(current.back(), "line 039 of the test");
    // The two generations join without a gap, and the stale one is gone.
    const int firstCurrent = std::stoi(current.front().substr(5, 3));
    EXPECT_EQ(std::stoi(previous.back().substr(5, 3)) + 1, firstCurrent);
    EXPECT_EQ(firstCurrent + static_cast<int>(current.size()), kLines);
}

TEST_F(Log, NoRotationWithoutAPositiveLimit)
{
    for (int limit : {0, -1})
    {
        DeleteFileW(m_path.c_str());
        CLog log;
        ASSERT_EQ(log.Init(m_path.c_str(), TQLOG_MESSAGE, limit, 0), S_OK);
        for (int i = 0; i < 50; ++i)
            log.Write(TQLOG_MESSAGE, __FILE__, __LINE__, L"line %d", i);
        log.Shutdown();
        EXPECT_EQ(Lines(m_path).size(), 50u);
        EXPECT_EQ(GetFileAttributesW(m_previous.c_str()), INVALID_FILE_ATTRIBUTES);
    }
}

struct Writer
{
    CLog* log;
    int thread;
};

DWORD WINAPI WriteLines(void* parameter)
{
    const Writer* writer = static_cast<Writer*>(parameter);
    for (int i = 0; i < 1000; ++i)
        writer->log->Write(TQLOG_INFO, __FILE__, __LINE__,
                           L"thread %d line %04d with some text to widen the window",
                           writer->thread, i);
    return 0;
}

TEST_F(Log, FourThreadsLoseAndInterleaveNoLine)
{
    CLog log;
    ASSERT_EQ(log.Init(m_path.c_str(), TQLOG_INFO | TQLOG_TIMESTAMP, -1, _SH_DENYNO), S_OK);
    Writer writers[4];
    tq::UniqueHandle threads[4];
    for (int t = 0; t < 4; ++t)
    {
        writers[t] = {&log, t};
        threads[t].Reset(CreateThread(nullptr, 0, WriteLines, &writers[t], 0, nullptr));
        ASSERT_TRUE(threads[t]);
    }
    for (auto& thread : threads)
        ASSERT_EQ(WaitForSingleObject(thread.Get(), 60000), WAIT_OBJECT_0); // hang guard only
    log.Shutdown();

    const std::vector<std::string> lines = Lines(m_path);
    EXPECT_EQ(lines.size(), 4000u);
    std::set<std::string> seen;
    for (const std::string& line : lines)
    {
        ASSERT_TRUE(HasShape(line, "INFO ####-##-## ##:##:## thread # line #### with some text "
                                   "to widen the window"))
            << line;
        seen.insert(line.substr(25, 18));
    }
    EXPECT_EQ(seen.size(), 4000u);
}

} // namespace
