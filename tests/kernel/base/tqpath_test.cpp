// Tests of names inside a path: extension rules, editing helpers, validation, wild cards, tails.
#include "tqpath.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct NameCase
{
    const wchar_t* path;
    const wchar_t* name;      // what TqGetFileNamePtrW points at
    const wchar_t* extension; // what TqGetFileNameExtensionPtrW points at
};

const NameCase kNames[] = {
    {L"C:\\audio\\take.wav", L"take.wav", L".wav"},
    {L"C:take.wav", L"take.wav", L".wav"},
    {L"take", L"take", L""},
    {L"C:\\audio\\", L"", L""},
    // White space anywhere behind the last '.' means it is no extension.
    {L"My file.v2 final", L"My file.v2 final", L""},
    {L"My file.v2\tfinal", L"My file.v2\tfinal", L""},
    {L"My file.final.wav", L"My file.final.wav", L".wav"},
    {L"name.", L"name.", L"."},
    // A dotted folder is not the file's extension.
    {L"C:\\my.folder\\readme", L"readme", L""},
    {L"a.tar.gz", L"a.tar.gz", L".gz"},
};

TEST(PathNames, FileNameAndExtensionPointers)
{
    for (const NameCase& c : kNames)
    {
        EXPECT_STREQ(TqGetFileNamePtrW(c.path), c.name) << c.path;
        EXPECT_STREQ(TqGetFileNameExtensionPtrW(c.path), c.extension) << c.path;
        // The narrow forms agree on plain ASCII.
        char narrow[MAX_PATH];
        WideCharToMultiByte(CP_ACP, 0, c.path, -1, narrow, MAX_PATH, nullptr, nullptr);
        EXPECT_EQ(TqGetFileNamePtrA(narrow) - narrow, TqGetFileNamePtrW(c.path) - c.path);
        EXPECT_EQ(TqGetFileNameExtensionPtrA(narrow) - narrow,
                  TqGetFileNameExtensionPtrW(c.path) - c.path);
    }
}

struct EditCase
{
    const wchar_t* path;
    const wchar_t* extension;
    const wchar_t* added;    // TqAddExtensionToPathName
    const wchar_t* replaced; // TqReplaceExtensionOnPathName
};

const EditCase kExtensions[] = {
    {L"x.WAV", L"wav", L"x.WAV", L"x.wav"},
    {L"x.WAV", L".wav", L"x.WAV", L"x.wav"},
    {L"x.aif", L"wav", L"x.wav", L"x.wav"},
    {L"x", L"wav", L"x.wav", L"x.wav"},
    {L"x.", L"wav", L"x.wav", L"x.wav"},
    {L"My file.v2 final", L"wav", L"My file.v2 final.wav", L"My file.v2 final.wav"},
    {L"C:\\my.folder\\x", L"wav", L"C:\\my.folder\\x.wav", L"C:\\my.folder\\x.wav"},
    {L"x.aif", L"", L"x.aif", L"x."},
    {L"x", L"", L"x", L"x."},
};

TEST(PathEditing, ExtensionsAddedAndReplaced)
{
    for (const EditCase& c : kExtensions)
    {
        wchar_t path[MAX_PATH];
        lstrcpyW(path, c.path);
        EXPECT_EQ(TqAddExtensionToPathName(path, MAX_PATH, c.extension), lstrlenW(c.added));
        EXPECT_STREQ(path, c.added) << c.path << L" + " << c.extension;
        lstrcpyW(path, c.path);
        EXPECT_EQ(TqReplaceExtensionOnPathName(path, MAX_PATH, c.extension), lstrlenW(c.replaced));
        EXPECT_STREQ(path, c.replaced) << c.path << L" + " << c.extension;
    }
}

TEST(PathEditing, ResultsThatDoNotFitLeaveThePathAlone)
{
    wchar_t path[8] = L"abc.d";
    EXPECT_EQ(TqReplaceExtensionOnPathName(path, 8, L"wave"), 0);
    EXPECT_STREQ(path, L"abc.d");
    EXPECT_EQ(TqReplaceExtensionOnPathName(path, 8, L"wav"), 7);
    EXPECT_STREQ(path, L"abc.wav");
    EXPECT_EQ(TqAddSlashToPathName(path, 8), 0);
    EXPECT_STREQ(path, L"abc.wav");
    EXPECT_EQ(TqAppendToPathName(path, 8, L"x"), 0);
    EXPECT_STREQ(path, L"abc.wav");
}

TEST(PathEditing, SlashesAndAppending)
{
    wchar_t path[MAX_PATH] = L"";
    EXPECT_EQ(TqAddSlashToPathName(path, MAX_PATH), 0); // an empty path stays empty
    EXPECT_STREQ(path, L"");
    lstrcpyW(path, L"C:\\a");
    EXPECT_EQ(TqAddSlashToPathName(path, MAX_PATH), 5);
    EXPECT_EQ(TqAddSlashToPathName(path, MAX_PATH), 5);
    EXPECT_STREQ(path, L"C:\\a\\");
    EXPECT_EQ(TqAppendToPathName(path, MAX_PATH, L"\\b\\c.wav"), 12);
    EXPECT_STREQ(path, L"C:\\a\\b\\c.wav");
    lstrcpyW(path, L"C:\\a\\\\");
    EXPECT_EQ(TqRemoveSlashFromPathNameEnd(path), 5); // only one
    EXPECT_EQ(TqRemoveSlashFromPathNameEnd(path), 4);
    EXPECT_EQ(TqRemoveSlashFromPathNameEnd(path), 4);
}

TEST(PathEditing, PartsOfAPath)
{
    struct PartCase
    {
        const wchar_t* path;
        const wchar_t* bare;
        const wchar_t* folder;
        const wchar_t* root;
    };
    const PartCase cases[] = {
        {L"C:\\a\\b\\take.one.wav", L"take.one", L"C:\\a\\b\\", L"C:\\"},
        {L"\\\\server\\share\\x\\y.txt", L"y", L"\\\\server\\share\\x\\", L"\\\\server\\share\\"},
        {L"\\\\server\\share", L"share", L"\\\\server\\", L"\\\\server\\share\\"},
        {L"D:name", L"name", L"D:", L"D:\\"},
        {L"\\top\\name", L"name", L"\\top\\", L"\\"},
        {L"relative\\name", L"name", L"relative\\", L""},
    };
    for (const PartCase& c : cases)
    {
        wchar_t buffer[MAX_PATH];
        EXPECT_EQ(TqGetFileNameWithoutPathOrExtension(c.path, buffer, MAX_PATH), lstrlenW(c.bare));
        EXPECT_STREQ(buffer, c.bare) << c.path;
        EXPECT_EQ(TqGetPathNameFromFilePath(c.path, buffer, MAX_PATH), lstrlenW(c.folder));
        EXPECT_STREQ(buffer, c.folder) << c.path;
        EXPECT_EQ(TqGetRootPathFromFilePath(c.path, buffer, MAX_PATH), lstrlenW(c.root));
        EXPECT_STREQ(buffer, c.root) << c.path;
    }
}

TEST(PathValidation, BadCharactersWithAndWithoutRepair)
{
    struct ValidCase
    {
        const wchar_t* name;
        int good;
        const wchar_t* repaired;
    };
    const ValidCase cases[] = {
        {L"", 1, L""},
        {L"take 1.wav", 1, L"take 1.wav"},
        {L"name.", 0, L"name_"},
        {L"name ", 0, L"name_"},
        {L".hidden", 1, L".hidden"},
        {L"a:b/c\\d", 0, L"a_b_c_d"},
        {L"\"q\"<>|?*", 0, L"_q______"},
        {L"line\r\nbreak", 0, L"line__break"},
    };
    for (const ValidCase& c : cases)
    {
        wchar_t name[64];
        lstrcpyW(name, c.name);
        EXPECT_EQ(TqValidateFileName(name, FALSE), c.good) << c.name;
        EXPECT_STREQ(name, c.name); // checking alone never changes the name
        EXPECT_EQ(TqValidateFileName(name, TRUE), c.good) << c.name;
        EXPECT_STREQ(name, c.repaired);
        EXPECT_EQ(TqValidateFileName(name, FALSE), 1) << "repaired " << c.name;
    }
}

TEST(PathWildCards, MatchWithoutBackTracking)
{
    struct WildCase
    {
        const wchar_t* pattern;
        const wchar_t* name;
        BOOL match;
    };
    const WildCase cases[] = {
        {L"*", L"anything.at.all", TRUE}, {L"*", L"", TRUE},        {L"*.wav", L"a.wav", TRUE},
        {L"*.wav", L"a.b.wav", FALSE}, // '*' stops at the first '.'
        {L"*.wav", L"a.WAV", FALSE},   // case matters
        {L"a?c", L"abc", TRUE},           {L"a?c", L"AbC", FALSE},  {L"a?c", L"ab", FALSE},
        {L"*.*", L"a.b", TRUE},           {L"*.*", L"ab", FALSE},   {L"take*", L"take12", TRUE},
        {L"take*", L"take12.wav", FALSE}, // '*' stops at the '.', and the pattern has ended
        {L"*x.wav", L"abx.wav", TRUE},    // stops at the character after '*'
        {L"*x.wav", L"axbx.wav", FALSE},  // ... the first one
        {L"abc", L"abc.", TRUE},          // a '.' at the very end of the name
        {L"abc.", L"abc", TRUE},          // a '.' at the very end of the pattern
        {L"abc", L"abcd", FALSE},         {L"abcd", L"abc", FALSE}, {L"*.w?v", L"x.wav", TRUE},
    };
    for (const WildCase& c : cases)
        EXPECT_EQ(TqIsMatchWildCard(c.pattern, c.name), c.match) << c.pattern << L" " << c.name;
}

TEST(PathWildCards, LogicalCompareTakesDigitsAsNumbers)
{
    EXPECT_LT(TqFilenameLogicalCompare(L"take2.wav", L"take10.wav"), 0);
    EXPECT_GT(TqFilenameLogicalCompare(L"take10.wav", L"take9.wav"), 0);
}

struct RelativeCase
{
    const wchar_t* base;
    const wchar_t* path;
    const wchar_t* tail;
    const wchar_t* front;
};

const RelativeCase kRelative[] = {
    {L"D:\\old\\proj\\media\\a.wav", L"E:\\new\\PROJ\\Media\\A.WAV", L"PROJ\\Media\\A.WAV",
     L"E:\\new\\"},
    // The equal run "roj\media\a.wav" starts inside a name: only whole names count.
    {L"D:\\old\\xroj\\media\\a.wav", L"E:\\proj\\media\\a.wav", L"media\\a.wav", L"E:\\proj\\"},
    {L"D:\\x\\a.wav", L"E:\\y\\b.wav", L"", L"E:\\y\\b.wav\\"},
    {L"D:\\x\\ab.wav", L"E:\\y\\b.wav", L"", L"E:\\y\\b.wav\\"},
    {L"D:\\x\\\\a.wav", L"E:\\y\\\\\\a.wav", L"a.wav", L"E:\\y\\\\\\"},
};

TEST(PathRelative, TailsStartAtWholeNames)
{
    for (const RelativeCase& c : kRelative)
    {
        EXPECT_STREQ(TqGetFileNamePtrRelative(c.base, c.path), c.tail) << c.path;
        wchar_t front[MAX_PATH];
        EXPECT_EQ(TqGetBasePathRelative(c.base, c.path, front, MAX_PATH), S_OK);
        EXPECT_STREQ(front, c.front) << c.path;
    }
}

TEST(PathRelative, BasePathThatDoesNotFitFails)
{
    wchar_t front[9];
    EXPECT_EQ(TqGetBasePathRelative(L"D:\\a\\b.wav", L"E:\\longer\\b.wav", front, 8), E_FAIL);
    EXPECT_EQ(TqGetBasePathRelative(L"D:\\a\\b.wav", L"E:\\long\\b.wav", front, 9), S_OK);
    EXPECT_STREQ(front, L"E:\\long\\");
}

TEST(PathRelative, ReplacedBaseMovesTheTail)
{
    wchar_t moved[MAX_PATH];
    EXPECT_EQ(TqReplaceBasePathRelative(L"D:\\old\\proj\\media\\a.wav",
                                        L"E:\\new\\proj\\media\\a.wav", L"F:\\backup", moved,
                                        MAX_PATH),
              S_OK);
    EXPECT_STREQ(moved, L"F:\\backup\\proj\\media\\a.wav");
    EXPECT_EQ(TqReplaceBasePathRelative(L"D:\\p\\a.wav", L"E:\\p\\a.wav", L"F:\\backup", moved, 12),
              E_FAIL);
    EXPECT_STREQ(moved, L"");
}

} // namespace
