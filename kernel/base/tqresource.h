// The language search order for resources, shared by the string and resource loaders.
#pragma once

#include "tqlanghandle.h"

namespace tq::lang {

// A resource found by the search order: where it lies and in which module.
struct FoundResource
{
    HRSRC resource = nullptr;
    HMODULE module = nullptr;
};

// The language module in the handle's language (when it is in use), then the module: in US
// English when the two are one module, else in whatever language the module has.
FoundResource FindBySearchOrder(tagTQLANG* lang, const wchar_t* name, const wchar_t* type);

// String id's text inside a module's string table in one language: a pointer into the resource
// and its length in characters, which is not followed by a terminator unless the table has one.
// Null when the module has no such text or the text is empty.
const wchar_t* FindStringResource(HMODULE module, UINT id, LANGID language, int* length);

} // namespace tq::lang
