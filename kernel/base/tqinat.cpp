// The internationals record: locale settings for the formatters, TqGetInat, and the separator
// and label tokens of formatted printing.
#include "tqinat.h"

#include <stddef.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#include <initializer_list>

#include "tqprintf.h"
#include "tqstrings.h"

namespace tq::inat {
namespace {

SRWLOCK g_lock = SRWLOCK_INIT;
TQINTERNATIONALS g_record;
INIT_ONCE g_firstFill = INIT_ONCE_STATIC_INIT;

// One TqGetInat id: where its value lies, and for a text the characters its field holds (0 for
// a number).
struct InatField
{
    int id;
    size_t offset;
    size_t capacity;
};

#define TQ_INAT_NUMBER(id, field)                                                                  \
    {                                                                                              \
        id, offsetof(TQINTERNATIONALS, field), 0                                                   \
    }
#define TQ_INAT_TEXT(id, field)                                                                    \
    {                                                                                              \
        id, offsetof(TQINTERNATIONALS, field),                                                     \
            sizeof(TQINTERNATIONALS::field.text) / sizeof(wchar_t)                                 \
    }
constexpr InatField kFields[] = {
    TQ_INAT_NUMBER(TQINAT_SYSTEMLCID, systemLcid),
    TQ_INAT_NUMBER(TQINAT_LANGUAGEID, languageId),
    TQ_INAT_TEXT(TQINAT_LANGUAGENAME, languageName),
    TQ_INAT_TEXT(TQINAT_ENGLANGUAGENAME, englishLanguageName),
    TQ_INAT_NUMBER(TQINAT_COUNTRYCODE, countryCode),
    TQ_INAT_TEXT(TQINAT_DECIMALSEPARATOR, decimalSeparator),
    TQ_INAT_TEXT(TQINAT_LISTSEPARATOR, listSeparator),
    TQ_INAT_TEXT(TQINAT_TIMESEPARATOR, timeSeparator),
    TQ_INAT_TEXT(TQINAT_SMPTEWHOLE, smpteWholeSeparator),
    TQ_INAT_TEXT(TQINAT_SMPTENONDROP, smpteNonDropSeparator),
    TQ_INAT_TEXT(TQINAT_SMPTEDROP, smpteDropSeparator),
    TQ_INAT_TEXT(TQINAT_MEASURESEPARATOR, measureSeparator),
    TQ_INAT_TEXT(TQINAT_BEATSEPARATOR, beatSeparator),
};
#undef TQ_INAT_NUMBER
#undef TQ_INAT_TEXT

const InatField* FieldOf(int id)
{
    for (const InatField& field : kFields)
        if (field.id == id) return &field;
    return nullptr;
}

template <size_t N>
void SetText(wchar_t (&text)[N], UINT32& length, const wchar_t* value)
{
    const size_t count = wcsnlen(value, N - 1);
    wmemcpy(text, value, count);
    text[count] = 0;
    length = static_cast<UINT32>(count);
}

template <class Field>
void ReadText(LCID locale, LCTYPE type, Field& field)
{
    const int written = GetLocaleInfoW(locale, type, field.text, ARRAYSIZE(field.text));
    field.length = written > 0 ? static_cast<UINT32>(written - 1) : 0;
    if (written <= 0) field.text[0] = 0;
}

UINT32 ReadNumber(LCID locale, LCTYPE type, int base)
{
    wchar_t text[16];
    if (GetLocaleInfoW(locale, type, text, ARRAYSIZE(text)) <= 0) return 0;
    return static_cast<UINT32>(wcstoul(text, nullptr, base));
}

class SharedHold
{
public:
    SharedHold() { AcquireSRWLockShared(&g_lock); }
    ~SharedHold() { ReleaseSRWLockShared(&g_lock); }
    SharedHold(const SharedHold&) = delete;
    SharedHold& operator=(const SharedHold&) = delete;
};

class ExclusiveHold
{
public:
    ExclusiveHold() { AcquireSRWLockExclusive(&g_lock); }
    ~ExclusiveHold() { ReleaseSRWLockExclusive(&g_lock); }
    ExclusiveHold(const ExclusiveHold&) = delete;
    ExclusiveHold& operator=(const ExclusiveHold&) = delete;
};

BOOL CALLBACK FillFirst(PINIT_ONCE, PVOID, PVOID*)
{
    ExclusiveHold hold;
    if (g_record.size == 0) Fill(g_record, LOCALE_USER_DEFAULT);
    return TRUE;
}

// Formatters may read before start-up has built the record: they get the user's locale.
void EnsureFilled()
{
    InitOnceExecuteOnce(&g_firstFill, FillFirst, nullptr, nullptr);
}

// A localised label with each "%s" taking the next separator; "%%" is a percent sign. Labels
// come from translators, so nothing else in them is a conversion.
void FillLabel(const wchar_t* format, std::initializer_list<const wchar_t*> inserts, wchar_t* out,
               size_t capacity)
{
    const wchar_t* const* next = inserts.begin();
    size_t used = 0;
    auto put = [&](wchar_t c) {
        if (used + 1 < capacity) out[used++] = c;
    };
    for (const wchar_t* p = format; *p; ++p)
    {
        if (p[0] == L'%' && p[1] == L's')
        {
            if (next != inserts.end())
                for (const wchar_t* s = *next++; *s; ++s)
                    put(*s);
            ++p;
        }
        else if (p[0] == L'%' && p[1] == L'%')
        {
            put(L'%');
            ++p;
        }
        else
        {
            put(*p);
        }
    }
    out[used] = 0;
}

void DefineTokens(const TQINTERNATIONALS& r)
{
    const wchar_t* whole = r.smpteWholeSeparator.text;
    const wchar_t* nonDrop = r.smpteNonDropSeparator.text;
    const wchar_t* drop = r.smpteDropSeparator.text;
    const wchar_t* measure = r.measureSeparator.text;
    const wchar_t* beat = r.beatSeparator.text;
    TqPrintF_AddToken(L"SMPTE.Whole", whole);
    TqPrintF_AddToken(L"SMPTE.NonDrop", nonDrop);
    TqPrintF_AddToken(L"SMPTE.Drop", drop);
    TqPrintF_AddToken(L"m.b", measure);
    TqPrintF_AddToken(L"b.t", beat);

    struct Label
    {
        const wchar_t* token;
        const wchar_t* format;
        std::initializer_list<const wchar_t*> inserts;
    };
    const Label labels[] = {
        {L"SMPTE.Label.NonDrop", TqGetString(TQS(LangSmpteLabel)), {whole, whole, nonDrop}},
        {L"SMPTE.Label.Drop", TqGetString(TQS(LangSmpteLabel)), {whole, whole, drop}},
        {L"SMPTE.Label.NonDrop.Full",
         TqGetString(TQS(LangSmpteLabelFull)),
         {whole, whole, nonDrop}},
        {L"SMPTE.Label.Drop.Full", TqGetString(TQS(LangSmpteLabelFull)), {whole, whole, drop}},
        {L"MusicTime.Label", TqGetString(TQS(LangMusicTimeLabel)), {measure, beat}},
        {L"MusicTime.Label.Full", TqGetString(TQS(LangMusicTimeLabelFull)), {measure, beat}},
    };
    for (const Label& label : labels)
    {
        wchar_t value[260];
        FillLabel(label.format, label.inserts, value, ARRAYSIZE(value));
        TqPrintF_AddToken(label.token, value);
    }
}

} // namespace

UINT32 GroupingFromLocaleText(const wchar_t* text)
{
    // "3;0" repeats the group of 3 and is 3; "3" has one group and is 30; "3;2;0" is 32.
    UINT32 value = 0;
    bool repeats = false;
    for (const wchar_t* p = text; *p; ++p)
    {
        if (*p < L'0' || *p > L'9') continue;
        if (*p == L'0' && p[1] == 0)
        {
            repeats = true;
            break;
        }
        value = value * 10 + (*p - L'0');
    }
    return repeats || value == 0 ? value : value * 10;
}

void SeparateDecimalFromThousands(TQINTERNATIONALS& r)
{
    // An empty thousands separator clashes with nothing.
    const UINT32 length = r.thousandSeparator.length;
    if (length == 0 || wcsncmp(r.thousandSeparator.text, r.decimalSeparator.text, length) != 0)
        return;
    SetText(r.decimalSeparator.text, r.decimalSeparator.length,
            r.thousandSeparator.text[0] == L'.' ? L"," : L".");
}

void Fill(TQINTERNATIONALS& r, LCID locale)
{
    const TQINATTEXT4 tag = r.langTag;
    r = {};
    r.langTag = tag;
    r.size = sizeof(TQINTERNATIONALS);
    r.systemLcid = GetSystemDefaultLCID();
    r.languageId = ReadNumber(locale, LOCALE_ILANGUAGE, 16);
    ReadText(locale, LOCALE_SLANGUAGE, r.languageName);
    ReadText(locale, LOCALE_SENGLANGUAGE, r.englishLanguageName);
    r.countryCode = ReadNumber(locale, LOCALE_ICOUNTRY, 10);
    ReadText(locale, LOCALE_SCOUNTRY, r.countryName);
    ReadText(locale, LOCALE_SENGCOUNTRY, r.englishCountryName);
    ReadText(locale, LOCALE_SNEGATIVESIGN, r.negativeSign);
    SetText(r.minusSign.text, r.minusSign.length, L"-");
    ReadText(locale, LOCALE_STHOUSAND, r.thousandSeparator);
    ReadText(locale, LOCALE_SDECIMAL, r.decimalSeparator);
    wchar_t grouping[16] = {};
    GetLocaleInfoW(locale, LOCALE_SGROUPING, grouping, ARRAYSIZE(grouping));
    r.grouping = GroupingFromLocaleText(grouping);
    r.digits = ReadNumber(locale, LOCALE_IDIGITS, 10);
    r.leadingZero = ReadNumber(locale, LOCALE_ILZERO, 10);
    ReadText(locale, LOCALE_STIME, r.timeSeparator);
    ReadText(locale, LOCALE_SLIST, r.listSeparator);
    r.measureSystem = ReadNumber(locale, LOCALE_IMEASURE, 10);
    SetText(r.smpteWholeSeparator.text, r.smpteWholeSeparator.length, L":");
    SetText(r.smpteNonDropSeparator.text, r.smpteNonDropSeparator.length, L".");
    SetText(r.smpteDropSeparator.text, r.smpteDropSeparator.length, L",");
    SetText(r.measureSeparator.text, r.measureSeparator.length, L".");
    SetText(r.beatSeparator.text, r.beatSeparator.length, L".");
    SeparateDecimalFromThousands(r);
}

} // namespace tq::inat

using namespace tq::inat;

TQKERNEL_API HRESULT TqLang_GetInternationals(TQINTERNATIONALS* out, UINT size)
{
    if (out)
    {
        EnsureFilled();
        SharedHold hold;
        memcpy(out, &g_record, size < sizeof(g_record) ? size : sizeof(g_record));
        return S_OK;
    }
    TQINTERNATIONALS fresh;
    {
        EnsureFilled();
        SharedHold hold;
        fresh = g_record;
    }
    Fill(fresh, LOCALE_USER_DEFAULT);
    {
        ExclusiveHold hold;
        const TQINATTEXT4 tag = g_record.langTag; // a TqSetLangID meanwhile wins
        g_record = fresh;
        g_record.langTag = tag;
    }
    DefineTokens(fresh);
    return S_OK;
}

TQKERNEL_API int TqGetInatN(int id, wchar_t* buffer, int capacity)
{
    if (buffer && capacity > 0) buffer[0] = 0;
    const InatField* field = FieldOf(id);
    if (!field) return 0;
    EnsureFilled();
    SharedHold hold;
    const BYTE* at = reinterpret_cast<const BYTE*>(&g_record) + field->offset;
    if (field->capacity == 0) return static_cast<int>(*reinterpret_cast<const UINT32*>(at));
    const auto* text = reinterpret_cast<const wchar_t*>(at);
    size_t length = wcsnlen(text, field->capacity);
    if (!buffer || capacity < 1) return static_cast<int>(length);
    if (length > static_cast<size_t>(capacity - 1)) length = capacity - 1;
    wmemcpy(buffer, text, length);
    buffer[length] = 0;
    return static_cast<int>(length);
}

TQKERNEL_API int TqGetInat(int id, wchar_t* buffer)
{
    // Every text field holds at most 63 characters and a terminator.
    return TqGetInatN(id, buffer, buffer ? 64 : 0);
}

TQKERNEL_API HRESULT TqSetLangID(const wchar_t* tag)
{
    EnsureFilled();
    ExclusiveHold hold;
    SetText(g_record.langTag.text, g_record.langTag.length, tag && *tag ? tag : L"ENU");
    return S_OK;
}
