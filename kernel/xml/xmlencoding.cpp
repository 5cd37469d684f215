// The encoding layer: the ANSI byte form and little-endian UTF-16.
#include "xmlencoding.h"

#include "xmlcharclass.h"

#include <cstring>
#include <new>

using namespace tq::xml;

namespace {

bool IsStop(unsigned unit, const char* stops) noexcept
{
    for (const char* s = stops; *s; ++s)
        if (unit == static_cast<unsigned char>(*s)) return true;
    return false;
}

unsigned FoldAscii(unsigned c) noexcept
{
    return (c >= 'A' && c <= 'Z') ? c + ('a' - 'A') : c;
}

bool SameUnit(unsigned a, unsigned b, BOOL ignoreCase) noexcept
{
    return ignoreCase ? FoldAscii(a) == FoldAscii(b) : a == b;
}

} // namespace

namespace tq::xml {

WCHAR* AllocText(SIZE_T chars) noexcept
{
    if (chars >= (static_cast<SIZE_T>(-1) / sizeof(WCHAR)) - 1) return nullptr;
    return static_cast<WCHAR*>(GlobalAlloc(GPTR, (chars + 1) * sizeof(WCHAR)));
}

ITqXMLEncoding* CreateEncoding(const BYTE* data, DWORD size) noexcept
{
    if (size >= 2 && data[0] == 0xFF && data[1] == 0xFE)
        return TqXMLEncodingUtf16::Create(data, size);
    return TqXMLEncodingUtf8::Create(data, size);
}

} // namespace tq::xml

// --- Shared part ---

HRESULT STDMETHODCALLTYPE TqXMLEncodingUtf::QueryInterface(REFIID iid, void** object)
{
    if (!object) return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown)) return E_NOINTERFACE;
    *object = static_cast<IUnknown*>(this);
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE TqXMLEncodingUtf::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_refs));
}

ULONG STDMETHODCALLTYPE TqXMLEncodingUtf::Release()
{
    const LONG refs = InterlockedDecrement(&m_refs);
    if (refs == 0) delete this;
    return static_cast<ULONG>(refs);
}

BOOL STDMETHODCALLTYPE TqXMLEncodingUtf::AtEnd()
{
    return m_cursor >= m_size;
}

// --- ANSI bytes ---

TqXMLEncodingUtf8* TqXMLEncodingUtf8::Create(const BYTE* data, DWORD size) noexcept
{
    return new (std::nothrow) TqXMLEncodingUtf8(data, size);
}

void STDMETHODCALLTYPE TqXMLEncodingUtf8::Advance()
{
    if (m_cursor < m_size) ++m_cursor;
}

int STDMETHODCALLTYPE TqXMLEncodingUtf8::CharClass()
{
    return m_cursor < m_size ? ClassOfByte(m_data[m_cursor]) : kClassEnd;
}

BOOL STDMETHODCALLTYPE TqXMLEncodingUtf8::MatchLiteral(const char* literal, BOOL ignoreCase)
{
    const size_t count = std::strlen(literal);
    if (count > m_size - m_cursor) return FALSE;
    for (size_t i = 0; i < count; ++i)
        if (!SameUnit(m_data[m_cursor + i], static_cast<unsigned char>(literal[i]), ignoreCase))
            return FALSE;
    m_cursor += static_cast<DWORD>(count);
    return TRUE;
}

HRESULT STDMETHODCALLTYPE TqXMLEncodingUtf8::ReadUntil(const char* stops, WCHAR** text,
                                                       DWORD* length)
{
    const DWORD start = m_cursor;
    while (m_cursor < m_size && !IsStop(m_data[m_cursor], stops))
        ++m_cursor;
    const DWORD bytes = m_cursor - start;
    if (length) *length = 0;
    if (!text) return S_OK;
    *text = nullptr;
    // Documents are held below 2 GiB, so a run always fits the converter's int.
    const auto* run = reinterpret_cast<const char*>(m_data + start);
    const int chars =
        bytes ? MultiByteToWideChar(CP_ACP, 0, run, static_cast<int>(bytes), nullptr, 0) : 0;
    WCHAR* out = AllocText(static_cast<SIZE_T>(chars));
    if (!out) return E_OUTOFMEMORY;
    if (chars) MultiByteToWideChar(CP_ACP, 0, run, static_cast<int>(bytes), out, chars);
    *text = out;
    if (length) *length = static_cast<DWORD>(chars);
    return S_OK;
}

// --- UTF-16 ---

TqXMLEncodingUtf16::TqXMLEncodingUtf16(const BYTE* data, DWORD size) noexcept
    : TqXMLEncodingUtf(data, size & ~1u)
{
    m_cursor = 2; // the byte-order mark
}

TqXMLEncodingUtf16* TqXMLEncodingUtf16::Create(const BYTE* data, DWORD size) noexcept
{
    return new (std::nothrow) TqXMLEncodingUtf16(data, size);
}

WCHAR TqXMLEncodingUtf16::UnitAt(DWORD offset) const noexcept
{
    // The caller's block need not be aligned.
    WCHAR unit;
    std::memcpy(&unit, m_data + offset, sizeof unit);
    return unit;
}

void STDMETHODCALLTYPE TqXMLEncodingUtf16::Advance()
{
    if (m_cursor < m_size) m_cursor += 2;
}

int STDMETHODCALLTYPE TqXMLEncodingUtf16::CharClass()
{
    return m_cursor < m_size ? ClassOfUnit(UnitAt(m_cursor)) : kClassEnd;
}

BOOL STDMETHODCALLTYPE TqXMLEncodingUtf16::MatchLiteral(const char* literal, BOOL ignoreCase)
{
    const size_t count = std::strlen(literal);
    if (count > (m_size - m_cursor) / 2) return FALSE;
    for (size_t i = 0; i < count; ++i)
        if (!SameUnit(UnitAt(m_cursor + static_cast<DWORD>(2 * i)),
                      static_cast<unsigned char>(literal[i]), ignoreCase))
            return FALSE;
    m_cursor += static_cast<DWORD>(2 * count);
    return TRUE;
}

HRESULT STDMETHODCALLTYPE TqXMLEncodingUtf16::ReadUntil(const char* stops, WCHAR** text,
                                                        DWORD* length)
{
    const DWORD start = m_cursor;
    while (m_cursor < m_size && !IsStop(UnitAt(m_cursor), stops))
        m_cursor += 2;
    const DWORD chars = (m_cursor - start) / 2;
    if (length) *length = 0;
    if (!text) return S_OK;
    *text = nullptr;
    WCHAR* out = AllocText(chars);
    if (!out) return E_OUTOFMEMORY;
    std::memcpy(out, m_data + start, static_cast<SIZE_T>(chars) * sizeof(WCHAR));
    *text = out;
    if (length) *length = chars;
    return S_OK;
}
