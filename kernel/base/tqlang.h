// Language handles, language-table strings, string resources, internationals and stored language.
#pragma once

#include <stddef.h>

#include "tqkernelapi.h"

// As the common controls declare it, without pulling in their whole header.
typedef struct _IMAGELIST* HIMAGELIST;

// ---------------------------------------------------------------------------------------------
// Handles and language-table records

// The language of one module: its LCID, language module, string cache and temporary ring.
typedef struct tagTQLANG* HTQLANG;

// Languages of a language-table record, in slot order: en, ja, de, es, fr, zh-CN, zh-TW, da, fi,
// it, ko, nl, nb, pt-BR, pt-PT, ru, sv, pl.
#define TQLANG_SLOTCOUNT 18
#define TQLANG_MARKER 0xFFFE

// A language-table record. Its address, as a wide-string pointer, is a string id: the marker
// reads as a character no real text starts with, so text-taking functions tell the two apart.
// Each slot is the text in that language, or, at 65535 and below, a string resource id that
// resolves on first use.
typedef struct TQLANGRECORD
{
    wchar_t marker[4]; // TQLANG_MARKER, the slot count, then two zero words
    const wchar_t* slots[TQLANG_SLOTCOUNT];
    const void* reserved; // zero
} TQLANGRECORD;

// Success codes of TqLang_Open and failure code of TqLang_DetectPossibleCodepage.
#define TQ_S_LANGALREADYOPEN ((HRESULT)0x0004E001L) // the handle variable was set already
#define TQ_E_NOCODEPAGE ((HRESULT)0x8004E1FDL)      // no code page detected with confidence

// Opens a handle for module (null: the process's executable). lcid 0 follows the user's UI
// language. tempChars: 0 means 8192, below 2048 means 2048. S_OK, TQ_S_LANGALREADYOPEN when *out
// is not null (nothing else happens), E_POINTER, E_OUTOFMEMORY.
TQKERNEL_API HRESULT TqLang_Open(HTQLANG* out, HMODULE module, LCID lcid, UINT tempChars);
// Frees the handle; a language module it loaded is unloaded. Null is S_OK.
TQKERNEL_API HRESULT TqLang_Close(HTQLANG lang);

// The kernel language: the handle of the application module, opened at kernel start-up. Text
// functions below take a null handle to mean the kernel language.
TQKERNEL_API HTQLANG TqLang_GetKernelLang(void);
// TqLang_Open of the kernel language on module with defaults: S_OK, TQ_S_LANGALREADYOPEN.
TQKERNEL_API HRESULT TqLang_OpenKernelLang(HMODULE module);
TQKERNEL_API void TqLang_CloseKernelLang(void);

// ---------------------------------------------------------------------------------------------
// Strings. An id is a numeric string resource id (MAKEINTRESOURCEW) or a language-table record
// (TQS(Name) of the generated tqstrings.h). Returned texts are never null.

// Numeric ids: the cached text, valid until the language changes. Records: the text of the
// handle's language. Unknown ids give an empty string.
TQKERNEL_API const wchar_t* TqGetString(HTQLANG lang, const wchar_t* id);
// As TqGetString, and any other pointer is plain text, returned as it is. Null gives null.
TQKERNEL_API const wchar_t* TqGetStringSmart(HTQLANG lang, const wchar_t* value);
// True when value is a language-table record: 4-aligned and starting with TQLANG_MARKER.
TQKERNEL_API BOOL IsTQLANGSTRINGID(HTQLANG lang, const wchar_t* value);
// Copies the text of id into buffer (terminated, at most capacity-1 characters) and returns its
// length. Texts starting with the translators' marker "^*" lose it.
TQKERNEL_API int TqLoadString(HTQLANG lang, const wchar_t* id, wchar_t* buffer, int capacity);

// A block of chars characters from the handle's temporary ring; it is overwritten when the ring
// comes round, so use it at once. Null when there is no handle.
TQKERNEL_API wchar_t* TqGetTempStringBuffer(HTQLANG lang, UINT chars);
// Print strings are wide strings: these give the text itself, or "" when there is no handle.
TQKERNEL_API const wchar_t* TqGetPrintFromWideString(HTQLANG lang, const wchar_t* text);
TQKERNEL_API const wchar_t* TqGetWideFromPrintString(HTQLANG lang, const wchar_t* text);
// Conversions with the ANSI code page into the temporary ring; "" on failure.
TQKERNEL_API const char* TqGetMultiByteFromPrintString(HTQLANG lang, const wchar_t* text);
TQKERNEL_API const wchar_t* TqGetPrintFromMultiByteString(HTQLANG lang, const char* text);

// ---------------------------------------------------------------------------------------------
// Resources, searched in the language module in the handle's language first, then in the
// module (in US English when the two are the same module).

TQKERNEL_API HRSRC TqFindResource(HTQLANG lang, const wchar_t* name, const wchar_t* type);
// Tries every name on the language module, then every name on the module; *hit (optional)
// receives the index of the name found, -1 when none.
TQKERNEL_API HRSRC TqFindResourceMulti(HTQLANG lang, const wchar_t* const* names, int count,
                                       const wchar_t* type, int* hit);
// The module that holds the resource by the search order, or null.
TQKERNEL_API HINSTANCE TqFindResInstance(HTQLANG lang, const wchar_t* name, const wchar_t* type);
// For a resource found by TqFindResource or TqFindResourceMulti on the same handle.
TQKERNEL_API HGLOBAL TqLoadResource(HTQLANG lang, HRSRC resource);
TQKERNEL_API DWORD TqSizeofResource(HTQLANG lang, HRSRC resource);
// Finds and locks a resource; *size (optional) receives its size. Null when not found.
TQKERNEL_API const void* TqLoadResourceCustom(HTQLANG lang, const wchar_t* name,
                                              const wchar_t* type, DWORD* size);

// The Win32 calls with the search order. A null handle loads the system's own resources where
// the Win32 call has them (cursors, icons, bitmaps, images): TqLoadCursor(NULL, 32512) is the
// arrow.
TQKERNEL_API HCURSOR TqLoadCursor(HTQLANG lang, UINT_PTR id);
TQKERNEL_API HICON TqLoadIcon(HTQLANG lang, const wchar_t* name);
TQKERNEL_API HBITMAP TqLoadBitmap(HTQLANG lang, const wchar_t* name);
TQKERNEL_API HANDLE TqLoadImage(HTQLANG lang, const wchar_t* name, UINT type, int cx, int cy,
                                UINT flags);
TQKERNEL_API HIMAGELIST TqImageList_LoadImage(HTQLANG lang, const wchar_t* name, int cx, int grow,
                                              COLORREF mask, UINT type, UINT flags);
// Menu items whose text starts with "^*" lose the marker.
TQKERNEL_API HMENU TqLoadMenu(HTQLANG lang, const wchar_t* name);
TQKERNEL_API HACCEL TqLoadAccelerators(HTQLANG lang, const wchar_t* name);
TQKERNEL_API HWND TqCreateDialogParam(HTQLANG lang, const wchar_t* name, HWND parent, DLGPROC proc,
                                      LPARAM param);
TQKERNEL_API HWND TqCreateDialogIndirectParam(HTQLANG lang, LPCDLGTEMPLATEW dialogTemplate,
                                              HWND parent, DLGPROC proc, LPARAM param);
TQKERNEL_API INT_PTR TqDialogBoxParam(HTQLANG lang, const wchar_t* name, HWND parent, DLGPROC proc,
                                      LPARAM param);
TQKERNEL_API INT_PTR TqDialogBoxIndirectParam(HTQLANG lang, LPCDLGTEMPLATEW dialogTemplate,
                                              HWND parent, DLGPROC proc, LPARAM param);

// Abbreviated names ("DEU,ENU") of the languages in which the language module holds the version
// resource id, joined by commas. S_OK, TQ_E_NOTFOUND, TQ_E_BUFFERTOOSMALL (cut), E_INVALIDARG.
TQKERNEL_API HRESULT TqEnumResourceLanguages(HTQLANG lang, UINT id, wchar_t* buffer, int capacity);

// ---------------------------------------------------------------------------------------------
// Language of a handle

// The LCID the handle was given (0: the user's UI language).
TQKERNEL_API LCID TqLang_GetLCID(HTQLANG lang);
// The language module when in use, else the module.
TQKERNEL_API HINSTANCE TqLang_InstFromLang(HTQLANG lang);
// Makes instance the language module of this handle and of the kernel language; the caller
// keeps ownership of it. Their cached strings are dropped.
TQKERNEL_API HRESULT TqLang_ChangeLangInst(HTQLANG lang, HINSTANCE instance);
// Switches lang and the kernel language to lcid (0: US English): cached strings and resolved
// languages are dropped and the process layout follows the language's reading order. 1, or 0
// when lang or the kernel language is missing.
TQKERNEL_API int TqLang_UpdateKernelLCID(HTQLANG lang, LCID lcid);
// Sets the thread locale and the common controls' UI language to the handle's language.
TQKERNEL_API BOOL TqLang_UpdateThreadLocale(HTQLANG lang);

// The LCID that language tables and resources compare: the primary language with its main
// sublanguage; Chinese keeps simplified or traditional, Portuguese stays as it is.
TQKERNEL_API LCID TqLang_GetConditionedLCID(LCID lcid);
TQKERNEL_API BOOL TqLang_IsLCIDEnglish(LCID lcid);
// Arabic, Hebrew, Urdu and Farsi read right to left.
TQKERNEL_API BOOL TqLang_UseRTL(HTQLANG lang);
TQKERNEL_API BOOL TqLang_EnableProcessMirroring(void);
TQKERNEL_API BOOL TqLang_DisableProcessMirroring(void);

// The locale's abbreviated language name ("DEU"); returns its length, 0 and "" on failure.
TQKERNEL_API int TqLang_GetLangAbbrev(HTQLANG lang, wchar_t* buffer, int capacity);
// The language tag ("de-DE") with result 0; languages without a tag give "" and 1.
TQKERNEL_API int TqLang_GetLangllCC(HTQLANG lang, wchar_t* buffer, int capacity);
// The language tag, "en-US" for languages without one.
TQKERNEL_API const wchar_t* getLanguageString(HTQLANG lang);
// "first last", or "last first" where the language puts the family name first.
TQKERNEL_API HRESULT TqLang_LocalizeUserName(HTQLANG lang, const wchar_t* first,
                                             const wchar_t* last, wchar_t* buffer, int capacity);
TQKERNEL_API BOOL TqLang_IsNameOrderReversed(HTQLANG lang);

// ---------------------------------------------------------------------------------------------
// Code pages

// True when a lead and trail byte pair of the current multi-byte code page occurs in bytes.
TQKERNEL_API BOOL TqLang_DetectMultiByteCharacters(const char* bytes, int length);
// The code page the bytes are written in, asked of the system's language detection. S_OK, or
// TQ_E_NOCODEPAGE with *codepage 0 when no answer is certain; a COM failure passes through.
TQKERNEL_API HRESULT TqLang_DetectPossibleCodepage(const char* bytes, int length, UINT* codepage);

// ---------------------------------------------------------------------------------------------
// Internationals: the process-wide record of locale settings that the formatters read.

typedef struct TQINATTEXT4
{
    wchar_t text[4];
    UINT32 length;
} TQINATTEXT4;
typedef struct TQINATTEXT8
{
    wchar_t text[8];
    UINT32 length;
} TQINATTEXT8;
typedef struct TQINATTEXT64
{
    wchar_t text[64];
    UINT32 length;
} TQINATTEXT64;

typedef struct TQINTERNATIONALS
{
    UINT32 size; // sizeof(TQINTERNATIONALS)
    UINT32 systemLcid;
    UINT32 languageId;
    TQINATTEXT64 languageName;
    TQINATTEXT64 englishLanguageName;
    UINT32 countryCode;
    TQINATTEXT64 countryName;
    TQINATTEXT64 englishCountryName;
    TQINATTEXT8 negativeSign; // the locale's
    TQINATTEXT8 minusSign;    // always "-", the sign the system prints
    TQINATTEXT8 thousandSeparator;
    TQINATTEXT8 decimalSeparator; // never equal to the thousands separator
    UINT32 grouping;              // in NUMBERFMT form: "3;0" gives 3, "3;2;0" 32, "3" 30
    UINT32 digits;
    UINT32 leadingZero;
    TQINATTEXT8 timeSeparator;
    TQINATTEXT8 listSeparator;
    UINT32 measureSystem; // 0 metric, 1 US
    TQINATTEXT8 smpteWholeSeparator;
    TQINATTEXT8 smpteNonDropSeparator;
    TQINATTEXT8 smpteDropSeparator;
    TQINATTEXT4 langTag; // set by TqSetLangID
    TQINATTEXT8 measureSeparator;
    TQINATTEXT8 beatSeparator;
} TQINTERNATIONALS;

// Ids of TqGetInat. Number ids return the value; text ids copy the text and return its length.
#define TQINAT_SYSTEMLCID 0         // number
#define TQINAT_LANGUAGEID 1         // number
#define TQINAT_LANGUAGENAME 2       // text
#define TQINAT_ENGLANGUAGENAME 3    // text
#define TQINAT_COUNTRYCODE 4        // number
#define TQINAT_DECIMALSEPARATOR 24  // text
#define TQINAT_LISTSEPARATOR 40     // text
#define TQINAT_TIMESEPARATOR 60     // text
#define TQINAT_SMPTEWHOLE 100       // text
#define TQINAT_SMPTENONDROP 101     // text
#define TQINAT_SMPTEDROP 102        // text
#define TQINAT_MEASURESEPARATOR 120 // text, between measures and beats ("m.b")
#define TQINAT_BEATSEPARATOR 121    // text, between beats and ticks ("b.t")

// Null out: rebuilds the record from the user's locale and defines the separator and label
// tokens of formatted printing. Else copies up to size bytes of the record. S_OK.
TQKERNEL_API HRESULT TqLang_GetInternationals(TQINTERNATIONALS* out, UINT size);
// Unknown ids return 0 and an empty text. TqGetInat writes without a capacity (texts are at most
// 63 characters); TqGetInatN cuts to capacity-1 characters. buffer may be null.
TQKERNEL_API int TqGetInat(int id, wchar_t* buffer);
TQKERNEL_API int TqGetInatN(int id, wchar_t* buffer, int capacity);
// Stores the 3-letter language tag of the record; null or empty gives "ENU".
TQKERNEL_API HRESULT TqSetLangID(const wchar_t* tag);

// ---------------------------------------------------------------------------------------------
// The user's language, stored as "ULangID" under Software\<company>\<product>\<major>.<minor>\Lang
// (Software\<company>\<product>\Lang when the version's top byte is 0). version is
// major << 24 | minor << 16 | build.

// Company "Ostrel"; noVersion ignores version. Reads the current user's value, then the
// machine's: 1 when one was read into *lcid, else 0.
TQKERNEL_API BOOL TqLang_LoadUserLCIDMetric(const wchar_t* product, DWORD version, LCID* lcid,
                                            BOOL noVersion);
TQKERNEL_API BOOL TqLang_LoadUserLCIDMetricAppReg(const wchar_t* company, const wchar_t* product,
                                                  DWORD version, LCID* lcid);
// Writes the current user's value, creating the key. S_OK or the registry's failure.
TQKERNEL_API HRESULT TqLang_SaveUserLCIDMetric(const wchar_t* product, DWORD version, LCID lcid,
                                               BOOL noVersion);
TQKERNEL_API HRESULT TqLang_SaveUserLCIDMetricAppReg(const wchar_t* company, const wchar_t* product,
                                                     DWORD version, LCID lcid);

#ifdef __cplusplus
// The kernel language's text: TqGetString(TQS(Name)).
inline const wchar_t* TqGetString(const wchar_t* id)
{
    return TqGetString(nullptr, id);
}
#endif
