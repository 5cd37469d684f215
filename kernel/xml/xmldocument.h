// The XML document: a small non-validating reader of presets and metadata blocks into a tree of
// plain records, with lookups of elements, texts and attributes.
#pragma once

#include "tqkernelapi.h"
#include "tqlist.h"
#include "xmlmapping.h"

// Classes the kernel exports keep their C++ names.
#ifndef TQKERNEL_CLASS
#define TQKERNEL_CLASS __declspec(dllexport)
#endif

// Codes of the document. The file layers spell the shared ones the same way.
#define TQ_E_OPENFAILED ((HRESULT)0x8004E007L)  // the file could not be opened
#define TQ_E_CORRUPTFILE ((HRESULT)0x8004E00BL) // corrupt or of unknown format; an empty document
#define TQXML_E_NOFILE ((HRESULT)0x8004E032L)   // the document file does not exist

struct ITqXMLEncoding;

typedef enum tagXML_CONTENT_TYPE
{
    XML_CONTENT_ELEMENT = 0,
    XML_CONTENT_CHARDATA = 1,
    XML_CONTENT_CDATA = 3,
    XML_CONTENT_COMMENT = 5,
} tagXML_CONTENT_TYPE;

struct tagTQXML_CONTENT;

typedef struct tagTQXML_ELEMENT
{
    tagTQXML_CONTENT* content; // the record around it
    INT32 isEmptyTag;          // written as <a/>
    WCHAR* name;
    tTQLIST attributes; // heap list of tagTQXML_ATTRIBUTE
    tTQLIST children;   // heap list of tagTQXML_CONTENT, in document order
} tagTQXML_ELEMENT;

typedef struct tagTQXML_CONTENT
{
    tagXML_CONTENT_TYPE type;
    tagTQXML_ELEMENT* parent; // null on the top level
    union
    {
        tagTQXML_ELEMENT element; // type 0
        WCHAR* text;              // other types: the text, terminated
    } data;
} tagTQXML_CONTENT;

typedef struct tagTQXML_ATTRIBUTE
{
    tagTQXML_ELEMENT* element;
    WCHAR* name;
    WCHAR* value; // as written: entities are left for TqXML_RemoveEscapes
} tagTQXML_ATTRIBUTE;

// Find cursors; -1 is none.
typedef INT_PTR TQXML_FINDCURSOR;
#define TQXML_NOCURSOR ((TQXML_FINDCURSOR)-1)

// A document belongs to one thread. Records, strings and cursors stay valid until the next
// ParseFile or the close. Nothing here throws.
class TQKERNEL_CLASS CTqXML_Document
{
public:
    CTqXML_Document() noexcept;
    ~CTqXML_Document();
    CTqXML_Document(const CTqXML_Document&) = delete;
    CTqXML_Document& operator=(const CTqXML_Document&) = delete;

    // Maps the file read-only until CloseFile: TQXML_E_NOFILE, 0x8004E007 when it cannot be
    // opened or mapped, 0x8004E00B when it is empty. Data that starts with FF FE is UTF-16;
    // anything else is read byte by byte in the ANSI code page, whatever it declares.
    HRESULT OpenFile(const WCHAR* path) noexcept;
    // The same on a caller's block, which must outlive the document.
    HRESULT OpenMemory(const void* data, DWORD size) noexcept;
    // The same on UTF-8 text, as metadata blocks hold it whatever they declare; read byte by
    // byte it would lose every character past ASCII. The document reads a UTF-16 copy it keeps
    // until it is closed, so the block need not outlive the call. A leading byte-order mark is
    // dropped, the text ends at its first zero byte (chunks are padded with them), and data
    // that starts with FF FE is already UTF-16 and copied as it is. 0x8004E00B for no text.
    HRESULT OpenMemoryUtf8(const void* data, DWORD size) noexcept;
    // Release the data, the tree, the encoding and the cursors.
    HRESULT CloseFile() noexcept;
    HRESULT CloseMemory() noexcept;

    // Builds the tree anew from the start of the data. A broken construct does not stop the
    // parse; the result is the status of the last construct, so a damaged document still
    // yields the tree of its readable parts and only a fault at its end is reported.
    HRESULT ParseFile() noexcept;

    // Walks the children of element in document order (null: the top-level elements, the root
    // first). Gives a cursor and the first of them, or TQXML_NOCURSOR when there is none.
    TQXML_FINDCURSOR FindContentFirst(tagTQXML_ELEMENT* element,
                                      tagTQXML_CONTENT** content) noexcept;
    // S_OK, 0x8004E00A behind the last, E_HANDLE for a cursor that is not open.
    HRESULT FindContentNext(TQXML_FINDCURSOR cursor, tagTQXML_CONTENT** content) noexcept;
    HRESULT FindContentClose(TQXML_FINDCURSOR cursor) noexcept;

    // The first child element of that name (case-sensitive), searched among the children only
    // up to the first one that is not an element. 0x8004E00A when not found.
    HRESULT FindChild(tagTQXML_CONTENT* content, const WCHAR* name,
                      tagTQXML_CONTENT** child) noexcept;
    // The first character-data child; 0x8004E00A when there is none.
    HRESULT GetCharDataContent(tagTQXML_ELEMENT* element, tagTQXML_CONTENT** content) noexcept;
    // Characters the text of the first character-data child needs, terminator included.
    // 0x8004E00A for an element written as <a/> or without character data.
    HRESULT GetContentStringReqLen(tagTQXML_ELEMENT* element, DWORD* chars) noexcept;
    // That text, as written. A text longer than the buffer is cut, terminated, and gives
    // 0x8004E03C.
    HRESULT GetContentString(tagTQXML_ELEMENT* element, WCHAR* buffer, DWORD capacity) noexcept;
    // The attribute of that name (case-sensitive); 0x8004E00A when absent.
    HRESULT GetAttribute(tagTQXML_ELEMENT* element, const WCHAR* name,
                         tagTQXML_ATTRIBUTE** attribute) noexcept;
    // Its value, cut like a content string.
    HRESULT GetAttributeString(tagTQXML_ELEMENT* element, const WCHAR* name, WCHAR* buffer,
                               DWORD capacity) noexcept;
    // FindChild, then GetContentString of the child.
    HRESULT GetChildContentString(tagTQXML_CONTENT* content, const WCHAR* name, WCHAR* buffer,
                                  DWORD capacity) noexcept;

private:
    HRESULT Open(const BYTE* data, DWORD size) noexcept;
    void Close() noexcept;
    void ClearTree() noexcept;
    void ClearCursors() noexcept;

    // Parsing, one construct each; the encoding's cursor is the parser's.
    HRESULT ParseStartTag() noexcept;
    HRESULT ParseAttributes(tagTQXML_ELEMENT* element) noexcept;
    HRESULT ParseEndTag() noexcept;
    HRESULT ParseMarkupDeclaration() noexcept;
    HRESULT ParseComment() noexcept;
    HRESULT ParseCDATA() noexcept;
    HRESULT ParseXMLDeclaration() noexcept;
    HRESULT ParsePI() noexcept;
    HRESULT ParseCharData() noexcept;
    void SkipSpace() noexcept;
    // A new content record of that type, last under the current element (on the top level
    // when there is none); it takes over text. Null for no memory, and text is freed.
    tagTQXML_CONTENT* AllocContent(tagXML_CONTENT_TYPE type, WCHAR* text) noexcept;
    // Stores a text record under the current element; one outside every element is dropped.
    HRESULT StoreText(tagXML_CONTENT_TYPE type, WCHAR* text) noexcept;

    tTQLIST* Siblings(tagTQXML_ELEMENT* parent) noexcept;

    WCHAR m_path[MAX_PATH] = {};
    tq::xml::MappedFile m_mapped;
    BYTE* m_owned = nullptr; // the UTF-16 copy of a UTF-8 block, from GlobalAlloc
    const BYTE* m_data = nullptr;
    DWORD m_size = 0;
    ITqXMLEncoding* m_encoding = nullptr;
    tagTQXML_ELEMENT* m_current = nullptr; // while parsing
    tTQLIST m_topLevel = {};               // heap list of top-level element contents
    tTQLIST* m_cursors = nullptr;          // heap list of open find cursors
};
