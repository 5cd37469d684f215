// Inside of a language handle, shared by the language, string and resource sources.
#pragma once

#include "tqlang.h"
#include "tqlist.h"

struct tagTQLANG
{
    HMODULE module;          // the module whose resources are the default
    BOOL lockInitialized;    // non-zero once lock exists
    CRITICAL_SECTION lock;   // guards the temporary ring and the string cache
    UINT tempChars;          // capacity of the ring in characters
    UINT tempReserve;        // the ring wraps when the position passes capacity minus this
    UINT tempPos;            // next free character
    wchar_t* tempBuffer;     // the temporary ring
    BOOL useLangModule;      // not English: search langModule first
    HMODULE langModule;      // the language module, or module when there is none
    BOOL ownsLangModule;     // langModule was loaded by this handle and is freed with it
    LCID lcid;               // chosen LCID, 0 for the user's UI language
    volatile LONG langIndex; // 1-based slot of the language in records; 0 until resolved
    tTQLIST* stringCache;    // heap list of CachedString sorted by id
};

namespace tq::lang {

// A numeric string id's text as the cache keeps it.
struct CachedString
{
    UINT id;
    wchar_t text[1]; // as long as the text needs
};

// RAII hold of a handle's lock.
class LangLock
{
public:
    explicit LangLock(tagTQLANG* lang) : m_lang(lang) { EnterCriticalSection(&m_lang->lock); }
    ~LangLock() { LeaveCriticalSection(&m_lang->lock); }
    LangLock(const LangLock&) = delete;
    LangLock& operator=(const LangLock&) = delete;

private:
    tagTQLANG* m_lang;
};

// The handle to work on: the one given, else the kernel language; null when neither exists.
tagTQLANG* Resolve(HTQLANG lang);
// The LCID a handle stands for: its own, or the user's UI language (also without a handle).
LCID EffectiveLcid(const tagTQLANG* lang);
// The 1-based record slot of the handle's language, resolved on first use.
int LangIndex(tagTQLANG* lang);
// Drops every cached numeric string; pointers handed out before are gone.
void EmptyStringCache(tagTQLANG* lang);

// The shared empty text that failed look-ups return.
extern const wchar_t g_emptyString[1];

} // namespace tq::lang
