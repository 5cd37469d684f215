// The encoding layer under the XML parser: a cursor over the document's bytes that classifies
// characters, matches literals and reads text runs into wide strings.
#pragma once

#include <windows.h>

#include <unknwn.h>

// Text runs come back as zero-filled GlobalAlloc blocks, terminated; the caller frees them.
struct ITqXMLEncoding : public IUnknown
{
    // One character on; nothing at the end of the data.
    virtual void STDMETHODCALLTYPE Advance() = 0;
    // The class of the character at the cursor (tq::xml::CharClass), kClassEnd at the end.
    virtual int STDMETHODCALLTYPE CharClass() = 0;
    // When the characters at the cursor spell literal (ASCII), steps over them and answers TRUE;
    // else the cursor stays.
    virtual BOOL STDMETHODCALLTYPE MatchLiteral(const char* literal, BOOL ignoreCase) = 0;
    // Reads up to the first character that is one of stops (ASCII), or to the end of the data,
    // and leaves the cursor there. text (optional) receives the run, and then length (optional)
    // its characters. E_OUTOFMEMORY when the run cannot be held; the cursor has moved all the same.
    virtual HRESULT STDMETHODCALLTYPE ReadUntil(const char* stops, WCHAR** text, DWORD* length) = 0;
    virtual BOOL STDMETHODCALLTYPE AtEnd() = 0;
};

// The shared part: data, size, cursor and the reference count. The data belongs to the caller
// and must outlive the object.
class TqXMLEncodingUtf : public ITqXMLEncoding
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    BOOL STDMETHODCALLTYPE AtEnd() override;

protected:
    TqXMLEncodingUtf(const BYTE* data, DWORD size) noexcept : m_data(data), m_size(size) {}
    virtual ~TqXMLEncodingUtf() = default;

    const BYTE* m_data;
    DWORD m_size;
    DWORD m_cursor = 0; // in bytes

private:
    LONG m_refs = 1;
};

// Single bytes in the ANSI code page. The name is the document's habit of declaring UTF-8; the
// bytes are still read in the code page the documents of this system were written in.
class TqXMLEncodingUtf8 final : public TqXMLEncodingUtf
{
public:
    // A new object with one reference, or null when there is no memory.
    static TqXMLEncodingUtf8* Create(const BYTE* data, DWORD size) noexcept;

    void STDMETHODCALLTYPE Advance() override;
    int STDMETHODCALLTYPE CharClass() override;
    BOOL STDMETHODCALLTYPE MatchLiteral(const char* literal, BOOL ignoreCase) override;
    HRESULT STDMETHODCALLTYPE ReadUntil(const char* stops, WCHAR** text, DWORD* length) override;

private:
    using TqXMLEncodingUtf::TqXMLEncodingUtf;
};

// Little-endian UTF-16 behind the byte-order mark FF FE, which it steps over. An odd last byte
// is not a character.
class TqXMLEncodingUtf16 final : public TqXMLEncodingUtf
{
public:
    static TqXMLEncodingUtf16* Create(const BYTE* data, DWORD size) noexcept;

    void STDMETHODCALLTYPE Advance() override;
    int STDMETHODCALLTYPE CharClass() override;
    BOOL STDMETHODCALLTYPE MatchLiteral(const char* literal, BOOL ignoreCase) override;
    HRESULT STDMETHODCALLTYPE ReadUntil(const char* stops, WCHAR** text, DWORD* length) override;

private:
    TqXMLEncodingUtf16(const BYTE* data, DWORD size) noexcept;
    WCHAR UnitAt(DWORD offset) const noexcept;
};

namespace tq::xml {

// The encoding a document's first bytes call for; null when there is no memory.
ITqXMLEncoding* CreateEncoding(const BYTE* data, DWORD size) noexcept;

// A zero-filled GlobalAlloc block for chars characters and a terminator; null for no memory.
WCHAR* AllocText(SIZE_T chars) noexcept;

} // namespace tq::xml
