// Guessing how multi-byte text is encoded: lead and trail bytes, and the system's detection.
#include "tqlang.h"

#include <mlang.h>

#include "comptr.h"

// Last: it defines macros (_M1, _M2) that clash with names in the C++ library headers.
#include <mbctype.h>

namespace {

// The import libraries lack this interface's id.
constexpr IID kIidMultiLanguage2 = {
    0xdccfc164, 0x2b38, 0x11d2, {0xb7, 0xec, 0x00, 0xc0, 0x4f, 0x8f, 0x5d, 0x9a}};
constexpr int kMaxDetected = 10;
constexpr INT kFullDocument = 100;
constexpr INT kCertain = 100;

} // namespace

TQKERNEL_API BOOL TqLang_DetectMultiByteCharacters(const char* bytes, int length)
{
    // A code page of 0 is the C runtime's word for a single-byte one.
    if (!bytes || length < 2 || _getmbcp() == 0) return FALSE;
    for (int i = 0; i + 1 < length; ++i)
    {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        if (!_ismbblead(lead)) continue;
        if (_ismbbtrail(static_cast<unsigned char>(bytes[i + 1]))) return TRUE;
        ++i; // a lead byte with a bad trail still takes its partner with it
    }
    return FALSE;
}

TQKERNEL_API HRESULT TqLang_DetectPossibleCodepage(const char* bytes, int length, UINT* codepage)
{
    if (!codepage) return E_POINTER;
    *codepage = 0;
    if (!bytes || length < 1) return TQ_E_NOCODEPAGE;
    tq::ComPtr<IMultiLanguage2> detector;
    const HRESULT created = CoCreateInstance(CLSID_CMultiLanguage, nullptr, CLSCTX_INPROC_SERVER,
                                             kIidMultiLanguage2, detector.PutVoid());
    if (FAILED(created)) return created;

    DetectEncodingInfo found[kMaxDetected] = {};
    INT size = length;
    INT count = kMaxDetected;
    const HRESULT hr = detector->DetectInputCodepage(MLDETECTCP_8BIT, 0, const_cast<char*>(bytes),
                                                     &size, found, &count);
    if (FAILED(hr)) return TQ_E_NOCODEPAGE;
    const DetectEncodingInfo* best = nullptr;
    for (INT i = 0; i < count && i < kMaxDetected; ++i)
    {
        if (found[i].nDocPercent != kFullDocument) continue;
        if (!best || found[i].nConfidence > best->nConfidence) best = &found[i];
    }
    if (!best || best->nConfidence < kCertain) return TQ_E_NOCODEPAGE;
    *codepage = best->nCodePage;
    return S_OK;
}
