// The element tree's records: making them under a parent and freeing whole branches.
#pragma once

#include "xmldocument.h"

namespace tq::xml {

// A heap list owned in place by the record that holds it.
HRESULT CreateOwnedList(tTQLIST* list) noexcept;

// A zero-filled record of that type, appended to siblings (the parent's children, or the top
// level for a null parent). An element gets its name and empty lists; any other type takes
// text. Both are taken over, and freed on failure. Null for no memory.
tagTQXML_CONTENT* NewContent(tTQLIST* siblings, tagTQXML_ELEMENT* parent, tagXML_CONTENT_TYPE type,
                             WCHAR* text) noexcept;

// Frees content with everything below it and removes it from siblings, which holds it. Works
// without recursion, so that no depth of nesting can exhaust the stack.
void FreeBranch(tTQLIST* siblings, tagTQXML_CONTENT* content) noexcept;

// Frees every record of a list of siblings and the list itself.
void FreeSiblings(tTQLIST* siblings) noexcept;

// The i-th record of a heap list.
template <class T>
T* ItemAt(const tTQLIST* list, INT32 index) noexcept
{
    return static_cast<T*>(static_cast<void**>(list->items)[index]);
}

} // namespace tq::xml
