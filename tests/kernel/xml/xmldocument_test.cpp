// Tests of the XML document: opening files and blocks, find cursors, and the lookups.
#include "xmldocument.h"

#include "kernel/xml/xmltesttree.h"
#include "support/testpaths.h"

#include <gtest/gtest.h>

using namespace tq::test;

namespace {

void WriteFile(const std::wstring& path, const std::string& bytes)
{
    HANDLE f = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(f, INVALID_HANDLE_VALUE);
    DWORD written = 0;
    if (!bytes.empty())
        ::WriteFile(f, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(f);
    ASSERT_EQ(written, bytes.size());
}

const char kPreset[] = R"(<?xml version="1.0"?>
<preset name="Warm" Name="other">
  <param id="1">0.5</param>
  <param id="2"/>
  <empty></empty>
  <!-- after the comment the children are no longer searched -->
  <late>x</late>
</preset>
)";

} // namespace

TEST(XmlDocument, OpeningGivesItsCodes)
{
    tqtest::TempFolder folder;
    CTqXML_Document doc;
    EXPECT_EQ(doc.OpenFile(folder.File(L"missing.xml").c_str()), TQXML_E_NOFILE);
    EXPECT_EQ(doc.OpenFile(folder.Path().c_str()), TQ_E_OPENFAILED); // a folder
    WriteFile(folder.File(L"empty.xml"), "");
    EXPECT_EQ(doc.OpenFile(folder.File(L"empty.xml").c_str()), TQ_E_CORRUPTFILE);
    EXPECT_EQ(doc.OpenMemory("", 0), TQ_E_CORRUPTFILE);
    EXPECT_EQ(doc.ParseFile(), E_UNEXPECTED) << "nothing open";

    WriteFile(folder.File(L"preset.xml"), kPreset);
    ASSERT_EQ(doc.OpenFile(folder.File(L"preset.xml").c_str()), S_OK);
    ASSERT_EQ(doc.ParseFile(), S_OK);
    EXPECT_EQ(TreeText(doc).Of(nullptr),
              L"preset{name=Warm,Name=other}(param{id=1}(\"0.5\")param{id=2}/empty"
              L"# after the comment the children are no longer searched #late(\"x\"))");
    EXPECT_EQ(doc.CloseFile(), S_OK);
    tagTQXML_CONTENT* c = nullptr;
    EXPECT_EQ(doc.FindContentFirst(nullptr, &c), TQXML_NOCURSOR);
    EXPECT_EQ(c, nullptr);
}

TEST(XmlDocument, FindCursors)
{
    ParsedDoc d("<r><a/><b/></r>");
    ASSERT_EQ(d.parsed, S_OK);
    tagTQXML_CONTENT* root = nullptr;
    const TQXML_FINDCURSOR top = d.doc.FindContentFirst(nullptr, &root);
    ASSERT_NE(top, TQXML_NOCURSOR);
    EXPECT_STREQ(root->data.element.name, L"r");
    tagTQXML_CONTENT* c = nullptr;
    EXPECT_EQ(d.doc.FindContentNext(top, &c), TQ_E_NOTFOUND) << "one root";

    // Two cursors over the same children move independently.
    tagTQXML_CONTENT *first = nullptr, *second = nullptr;
    const TQXML_FINDCURSOR one = d.doc.FindContentFirst(&root->data.element, &first);
    const TQXML_FINDCURSOR two = d.doc.FindContentFirst(&root->data.element, &second);
    ASSERT_NE(one, TQXML_NOCURSOR);
    ASSERT_NE(two, one);
    EXPECT_EQ(first, second);
    ASSERT_EQ(d.doc.FindContentNext(one, &c), S_OK);
    EXPECT_STREQ(c->data.element.name, L"b");
    EXPECT_EQ(d.doc.FindContentNext(one, &c), TQ_E_NOTFOUND);
    EXPECT_EQ(c, nullptr);
    ASSERT_EQ(d.doc.FindContentNext(two, &c), S_OK);
    EXPECT_STREQ(c->data.element.name, L"b");

    // An element without children has no cursor.
    EXPECT_EQ(d.doc.FindContentFirst(&first->data.element, &c), TQXML_NOCURSOR);

    // Closed, unknown and reset cursors are refused.
    EXPECT_EQ(d.doc.FindContentClose(one), S_OK);
    EXPECT_EQ(d.doc.FindContentNext(one, &c), E_HANDLE);
    EXPECT_EQ(d.doc.FindContentClose(one), E_HANDLE);
    EXPECT_EQ(d.doc.FindContentNext(TQXML_NOCURSOR, &c), E_HANDLE);
    EXPECT_EQ(d.doc.FindContentNext(reinterpret_cast<TQXML_FINDCURSOR>(&c), &c), E_HANDLE);
    ASSERT_EQ(d.doc.ParseFile(), S_OK);
    EXPECT_EQ(d.doc.FindContentNext(two, &c), E_HANDLE) << "a new parse drops the cursors";
    EXPECT_EQ(d.doc.FindContentNext(top, &c), E_HANDLE);
}

TEST(XmlDocument, ChildrenAndTexts)
{
    ParsedDoc d(kPreset);
    ASSERT_EQ(d.parsed, S_OK);
    tagTQXML_CONTENT* root = d.Root();
    ASSERT_NE(root, nullptr);
    tagTQXML_CONTENT* child = nullptr;
    ASSERT_EQ(d.doc.FindChild(root, L"param", &child), S_OK);
    EXPECT_EQ(d.doc.FindChild(root, L"PARAM", &child), TQ_E_NOTFOUND) << "case-sensitive";
    EXPECT_EQ(child, nullptr);
    EXPECT_EQ(d.doc.FindChild(root, L"late", &child), TQ_E_NOTFOUND) << "behind the comment";
    EXPECT_EQ(d.doc.FindChild(nullptr, L"param", &child), E_INVALIDARG);

    ASSERT_EQ(d.doc.FindChild(root, L"param", &child), S_OK);
    tagTQXML_ELEMENT* param = &child->data.element;
    DWORD chars = 0;
    EXPECT_EQ(d.doc.GetContentStringReqLen(param, &chars), S_OK);
    EXPECT_EQ(chars, 4u);
    WCHAR text[8];
    EXPECT_EQ(d.doc.GetContentString(param, text, 8), S_OK);
    EXPECT_STREQ(text, L"0.5");
    EXPECT_EQ(d.doc.GetContentString(param, text, 3), TQ_E_BUFFERTOOSMALL);
    EXPECT_STREQ(text, L"0.");
    EXPECT_EQ(d.doc.GetChildContentString(root, L"param", text, 8), S_OK);
    EXPECT_STREQ(text, L"0.5");
    EXPECT_EQ(d.doc.GetChildContentString(root, L"none", text, 8), TQ_E_NOTFOUND);
    EXPECT_STREQ(text, L"");

    // <param id="2"/> is marked empty and <empty></empty> has no text: both are not found.
    tagTQXML_CONTENT* c = nullptr;
    const TQXML_FINDCURSOR cursor = d.doc.FindContentFirst(&root->data.element, &c);
    ASSERT_EQ(d.doc.FindContentNext(cursor, &c), S_OK);
    EXPECT_EQ(d.doc.GetContentStringReqLen(&c->data.element, &chars), TQ_E_NOTFOUND);
    EXPECT_EQ(d.doc.GetContentString(&c->data.element, text, 8), TQ_E_NOTFOUND);
    ASSERT_EQ(d.doc.FindContentNext(cursor, &c), S_OK);
    EXPECT_EQ(d.doc.GetContentStringReqLen(&c->data.element, &chars), TQ_E_NOTFOUND);
    tagTQXML_CONTENT* data = nullptr;
    EXPECT_EQ(d.doc.GetCharDataContent(&c->data.element, &data), TQ_E_NOTFOUND);
    EXPECT_EQ(d.doc.GetContentStringReqLen(nullptr, &chars), E_INVALIDARG);
}

TEST(XmlDocument, Attributes)
{
    ParsedDoc d(kPreset);
    tagTQXML_ELEMENT* preset = &d.Root()->data.element;
    tagTQXML_ATTRIBUTE* a = nullptr;
    ASSERT_EQ(d.doc.GetAttribute(preset, L"Name", &a), S_OK);
    EXPECT_STREQ(a->value, L"other") << "case-sensitive";
    EXPECT_EQ(a->element, preset);
    EXPECT_EQ(d.doc.GetAttribute(preset, L"id", &a), TQ_E_NOTFOUND);
    EXPECT_EQ(a, nullptr);
    WCHAR value[4];
    EXPECT_EQ(d.doc.GetAttributeString(preset, L"name", value, 4), TQ_E_BUFFERTOOSMALL);
    EXPECT_STREQ(value, L"War");
    EXPECT_EQ(d.doc.GetAttributeString(preset, L"none", value, 4), TQ_E_NOTFOUND);
    EXPECT_STREQ(value, L"");
}

TEST(XmlDocument, UnclosedDocumentKeepsWhatWasRead)
{
    // A file whose writer died: the tree holds every element begun.
    ParsedDoc d("<BWFXML><PROJECT>p</PROJECT><TRACK_LIST><TRACK><NAME>Bo");
    EXPECT_EQ(d.parsed, S_OK);
    EXPECT_EQ(d.Tree(), L"BWFXML(PROJECT(\"p\")TRACK_LIST(TRACK(NAME(\"Bo\"))))");
}
