// A project link: what a rendered media file remembers of the project that made it, and its
// chunks in a RIFF file or in a side-car RIFF file of the form "TQPL".
#pragma once

#include "riff.h"

#ifndef TQKERNEL_CLASS
#define TQKERNEL_CLASS __declspec(dllexport)
#endif

#define RIFF_ID_TQPL RIFF_ID('T', 'Q', 'P', 'L')

// Bits of the valid word: which fields hold a value.
#define TQLINK_PROJECTPATH 0x001
#define TQLINK_COMMANDLINE 0x002
#define TQLINK_RENDERER 0x004
#define TQLINK_TEMPLATENAME 0x008
#define TQLINK_TEMPLATEDATA 0x010
#define TQLINK_APPTEMPLATEDATA 0x020
#define TQLINK_CREATORAPPINFO 0x040
#define TQLINK_PROJECTDATA 0x080
#define TQLINK_CREATORWNDCLASS 0x100

// The version this code writes and the newest major version it reads.
#define TQLINK_VERSION 0x01000000u

// Texts are wide and terminated, blocks raw; each is a locked global-heap block owned by the
// record, with its size in bytes (a text's size counts its terminator). Nothing here throws.
class TQKERNEL_CLASS CTqLinkProjectInfo
{
public:
    // One field: a block and its size.
    struct Field
    {
        void* data;
        DWORD size;
    };

    CTqLinkProjectInfo() noexcept;
    ~CTqLinkProjectInfo();
    CTqLinkProjectInfo(const CTqLinkProjectInfo&) = delete;
    CTqLinkProjectInfo& operator=(const CTqLinkProjectInfo&) = delete;

    // Frees every field and zeroes the record.
    void Init() noexcept;
    void FreeMemory() noexcept;

    DWORD GetValid() const noexcept { return m_valid; }
    void SetVersion(DWORD version) noexcept { m_version = version; }
    DWORD GetVersion() const noexcept { return m_version; }
    void SetRendererGuid(const GUID& guid) noexcept;
    const GUID& GetRendererGuid() const noexcept { return m_renderer; }

    // Texts: Alloc gives a zero-filled field of that many characters (terminator included, and
    // one more zero kept behind them) and sets the bit;
    // Get the text (null when unset) or a copy into a buffer (cut and terminated, 0x8004E03C
    // when cut); Set a copy of a terminated text; SetToBuffer a copy of bytes as stored, which
    // is terminated behind them. Set and SetToBuffer set the field's bit.
#define TQLINK_TEXT(Name)                                                                          \
    WCHAR* Alloc##Name(DWORD chars) noexcept;                                                      \
    const WCHAR* Get##Name() const noexcept;                                                       \
    HRESULT Get##Name(WCHAR* buffer, DWORD chars) const noexcept;                                  \
    WCHAR** Get##Name##Ptr() noexcept;                                                             \
    DWORD Get##Name##Size() const noexcept;                                                        \
    DWORD* Get##Name##SizePtr() noexcept;                                                          \
    HRESULT Set##Name(const WCHAR* text) noexcept;                                                 \
    HRESULT Set##Name##ToBuffer(const void* bytes, DWORD size) noexcept;
    // Blocks: the same without the copying Get, with sizes in bytes and Set taking bytes.
#define TQLINK_BLOCK(Name)                                                                         \
    void* Alloc##Name(DWORD size) noexcept;                                                        \
    const void* Get##Name() const noexcept;                                                        \
    void** Get##Name##Ptr() noexcept;                                                              \
    DWORD Get##Name##Size() const noexcept;                                                        \
    DWORD* Get##Name##SizePtr() noexcept;                                                          \
    HRESULT Set##Name(const void* data, DWORD size) noexcept;                                      \
    HRESULT Set##Name##ToBuffer(const void* data, DWORD size) noexcept;

    TQLINK_TEXT(ProjectPath)
    TQLINK_TEXT(CommandLine)
    TQLINK_TEXT(TemplateName)
    TQLINK_BLOCK(TemplateData)
    TQLINK_BLOCK(AppTemplateData)
    TQLINK_TEXT(CreatorAppInfo)
    TQLINK_TEXT(CreatorWndClassName)
    TQLINK_BLOCK(ProjectData)
#undef TQLINK_TEXT
#undef TQLINK_BLOCK

private:
    DWORD m_valid = 0;
    DWORD m_version = 0;
    GUID m_renderer = {};
    Field m_projectPath = {};
    Field m_commandLine = {};
    Field m_templateName = {};
    Field m_templateData = {};
    Field m_appTemplateData = {};
    Field m_creatorAppInfo = {};
    Field m_creatorWndClassName = {};
    Field m_projectData = {};
};

// Reads the link chunks of a RIFF file (a media file or a side-car) into info, cleared first.
// A file without a 4-byte "splv" is no link file (0x8004E00B); a newer major version gives
// 0x8004E01C. Chunks that are missing or too small are passed over; *found is set when any
// field was read. A failed read or allocation frees the record.
TQKERNEL_API HRESULT ProjectLinkRiff_LoadInfo(HANDLE file, CTqLinkProjectInfo* info, BOOL* found);
// Writes "splv" and a chunk for every field that holds a value into the RIFF file; chunks of
// fields without one become filler. Audio data never moves. written (optional) gets the bytes
// the file grew by.
TQKERNEL_API HRESULT ProjectLinkRiff_WriteInfo(HANDLE file, const CTqLinkProjectInfo* info,
                                               DWORD* written);
// Removes every link chunk, moving the rest of the file down; bytes (optional) adds up.
TQKERNEL_API HRESULT ProjectLinkRiff_DeleteInfo(HANDLE file, DWORD* bytes);
// Writes the link into the side-car file at path, made as an empty "TQPL" form when it does not
// exist yet.
TQKERNEL_API HRESULT ProjectLinkRiff_WriteSideCar(const WCHAR* path,
                                                  const CTqLinkProjectInfo* info);

// The same on Wave64 files, and on RF64 files (which also take plain RIFF files).
TQKERNEL_API HRESULT ProjectLinkRiff64_LoadInfo(HANDLE file, CTqLinkProjectInfo* info, BOOL* found);
TQKERNEL_API HRESULT ProjectLinkRiffRF64_LoadInfo(HANDLE file, CTqLinkProjectInfo* info,
                                                  BOOL* found);
TQKERNEL_API HRESULT ProjectLinkRiff64_WriteInfo(HANDLE file, const CTqLinkProjectInfo* info,
                                                 ULONGLONG* written);
TQKERNEL_API HRESULT ProjectLinkRF64_WriteInfo(HANDLE file, const CTqLinkProjectInfo* info,
                                               ULONGLONG* written);
