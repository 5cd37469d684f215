// The Win32 resource loaders (cursors, icons, bitmaps, menus, accelerators, dialogs) with the
// language search order.
#include "tqresource.h"

#include <commctrl.h>
#include <wchar.h>

#include <vector>

using namespace tq::lang;

namespace {

// The module to hand to a Win32 loader: where the search order finds the resource, or the
// handle's module so that the loader reports its own failure.
HMODULE LoaderModule(tagTQLANG* lang, const wchar_t* name, const wchar_t* type)
{
    const FoundResource found = FindBySearchOrder(lang, name, type);
    if (found.resource) return found.module;
    return lang ? lang->module : GetModuleHandleW(nullptr);
}

const void* LockFound(const FoundResource& found)
{
    if (!found.resource) return nullptr;
    HGLOBAL loaded = LoadResource(found.module, found.resource);
    return loaded ? LockResource(loaded) : nullptr;
}

const wchar_t* ResourceTypeOfImage(UINT imageType)
{
    switch (imageType)
    {
    case IMAGE_BITMAP:
        return RT_BITMAP;
    case IMAGE_ICON:
        return RT_GROUP_ICON;
    case IMAGE_CURSOR:
        return RT_GROUP_CURSOR;
    default:
        return nullptr;
    }
}

// Menu items that translators marked "^*" lose the marker, in sub-menus too.
void StripHiddenMarkers(HMENU menu)
{
    const int count = GetMenuItemCount(menu);
    for (int i = 0; i < count; ++i)
    {
        wchar_t text[512];
        MENUITEMINFOW info = {};
        info.cbSize = sizeof(info);
        info.fMask = MIIM_STRING | MIIM_SUBMENU;
        info.dwTypeData = text;
        info.cch = ARRAYSIZE(text);
        if (!GetMenuItemInfoW(menu, i, TRUE, &info)) continue;
        if (info.hSubMenu) StripHiddenMarkers(info.hSubMenu);
        if (!info.dwTypeData || wcsncmp(text, L"^*", 2) != 0) continue;
        MENUITEMINFOW change = {};
        change.cbSize = sizeof(change);
        change.fMask = MIIM_STRING;
        change.dwTypeData = text + 2;
        SetMenuItemInfoW(menu, i, TRUE, &change);
    }
}

// An accelerator table as compiled: flags, key, command and padding, the last entry flagged.
struct AccelEntry
{
    WORD flags;
    WORD key;
    WORD command;
    WORD padding;
};
constexpr WORD kLastAccelEntry = 0x80;

} // namespace

TQKERNEL_API HCURSOR TqLoadCursor(HTQLANG lang, UINT_PTR id)
{
    const wchar_t* name = reinterpret_cast<const wchar_t*>(id);
    if (!lang) return LoadCursorW(nullptr, name);
    return LoadCursorW(LoaderModule(lang, name, RT_GROUP_CURSOR), name);
}

TQKERNEL_API HICON TqLoadIcon(HTQLANG lang, const wchar_t* name)
{
    if (!lang) return LoadIconW(nullptr, name);
    return LoadIconW(LoaderModule(lang, name, RT_GROUP_ICON), name);
}

TQKERNEL_API HBITMAP TqLoadBitmap(HTQLANG lang, const wchar_t* name)
{
    if (!lang) return LoadBitmapW(nullptr, name);
    return LoadBitmapW(LoaderModule(lang, name, RT_BITMAP), name);
}

TQKERNEL_API HANDLE TqLoadImage(HTQLANG lang, const wchar_t* name, UINT type, int cx, int cy,
                                UINT flags)
{
    const wchar_t* resourceType = ResourceTypeOfImage(type);
    if (!lang || (flags & LR_LOADFROMFILE) || !resourceType)
        return LoadImageW(lang ? lang->module : nullptr, name, type, cx, cy, flags);
    return LoadImageW(LoaderModule(lang, name, resourceType), name, type, cx, cy, flags);
}

TQKERNEL_API HIMAGELIST TqImageList_LoadImage(HTQLANG lang, const wchar_t* name, int cx, int grow,
                                              COLORREF mask, UINT type, UINT flags)
{
    const wchar_t* resourceType = ResourceTypeOfImage(type);
    HMODULE module = resourceType && !(flags & LR_LOADFROMFILE)
                         ? LoaderModule(Resolve(lang), name, resourceType)
                         : TqLang_InstFromLang(lang);
    return ImageList_LoadImageW(module, name, cx, grow, mask, type, flags);
}

TQKERNEL_API HMENU TqLoadMenu(HTQLANG lang, const wchar_t* name)
{
    const auto* menuTemplate = LockFound(FindBySearchOrder(Resolve(lang), name, RT_MENU));
    if (!menuTemplate)
    {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return nullptr;
    }
    HMENU menu = LoadMenuIndirectW(menuTemplate);
    if (menu) StripHiddenMarkers(menu);
    return menu;
}

TQKERNEL_API HACCEL TqLoadAccelerators(HTQLANG lang, const wchar_t* name)
{
    const FoundResource found = FindBySearchOrder(Resolve(lang), name, RT_ACCELERATOR);
    const auto* entries = static_cast<const AccelEntry*>(LockFound(found));
    if (!entries)
    {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return nullptr;
    }
    const size_t available = SizeofResource(found.module, found.resource) / sizeof(AccelEntry);
    std::vector<ACCEL> table;
    for (size_t i = 0; i < available; ++i)
    {
        table.push_back(
            {static_cast<BYTE>(entries[i].flags & 0x7F), entries[i].key, entries[i].command});
        if (entries[i].flags & kLastAccelEntry) break;
    }
    if (table.empty()) return nullptr;
    return CreateAcceleratorTableW(table.data(), static_cast<int>(table.size()));
}

TQKERNEL_API HWND TqCreateDialogParam(HTQLANG lang, const wchar_t* name, HWND parent, DLGPROC proc,
                                      LPARAM param)
{
    const FoundResource found = FindBySearchOrder(Resolve(lang), name, RT_DIALOG);
    const auto* dialogTemplate = static_cast<LPCDLGTEMPLATEW>(LockFound(found));
    if (!dialogTemplate)
    {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return nullptr;
    }
    return CreateDialogIndirectParamW(found.module, dialogTemplate, parent, proc, param);
}

TQKERNEL_API HWND TqCreateDialogIndirectParam(HTQLANG lang, LPCDLGTEMPLATEW dialogTemplate,
                                              HWND parent, DLGPROC proc, LPARAM param)
{
    return CreateDialogIndirectParamW(TqLang_InstFromLang(lang), dialogTemplate, parent, proc,
                                      param);
}

TQKERNEL_API INT_PTR TqDialogBoxParam(HTQLANG lang, const wchar_t* name, HWND parent, DLGPROC proc,
                                      LPARAM param)
{
    const FoundResource found = FindBySearchOrder(Resolve(lang), name, RT_DIALOG);
    const auto* dialogTemplate = static_cast<LPCDLGTEMPLATEW>(LockFound(found));
    if (!dialogTemplate)
    {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return -1;
    }
    return DialogBoxIndirectParamW(found.module, dialogTemplate, parent, proc, param);
}

TQKERNEL_API INT_PTR TqDialogBoxIndirectParam(HTQLANG lang, LPCDLGTEMPLATEW dialogTemplate,
                                              HWND parent, DLGPROC proc, LPARAM param)
{
    return DialogBoxIndirectParamW(TqLang_InstFromLang(lang), dialogTemplate, parent, proc, param);
}
