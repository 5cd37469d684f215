// The element tree's records.
#include "xmltree.h"

namespace tq::xml {

namespace {

// Removes a record that is in siblings; the heap list frees its memory.
void RemoveFrom(tTQLIST* siblings, tagTQXML_CONTENT* content) noexcept
{
    INT32 index = siblings->count - 1;
    if (index < 0 || ItemAt<tagTQXML_CONTENT>(siblings, index) != content)
        index = TqList_FindSpecificItemRange(siblings, 0, -1, content);
    if (index >= 0) TqList_DeleteList(siblings, index, 1, FALSE);
}

// Frees what a record owns, which for an element must have no children left.
void FreeOwnData(tagTQXML_CONTENT* content) noexcept
{
    if (content->type != XML_CONTENT_ELEMENT)
    {
        if (content->data.text) GlobalFree(content->data.text);
        return;
    }
    tagTQXML_ELEMENT& e = content->data.element;
    for (INT32 i = 0; i < e.attributes.count; ++i)
    {
        auto* a = ItemAt<tagTQXML_ATTRIBUTE>(&e.attributes, i);
        if (a->name) GlobalFree(a->name);
        if (a->value) GlobalFree(a->value);
    }
    if (TqList_IsListFast(&e.attributes)) TqList_Destroy(&e.attributes);
    if (TqList_IsListFast(&e.children)) TqList_Destroy(&e.children);
    if (e.name) GlobalFree(e.name);
}

tTQLIST* OwnerOf(tagTQXML_CONTENT* content, tTQLIST* topLevel) noexcept
{
    return content->parent ? &content->parent->children : topLevel;
}

} // namespace

HRESULT CreateOwnedList(tTQLIST* list) noexcept
{
    return TqList_CreateExZ(&list, 0, 0, 0, TQLIST_OPT_HEAP | TQLIST_OPT_INPLACE, 0, 0, 0);
}

tagTQXML_CONTENT* NewContent(tTQLIST* siblings, tagTQXML_ELEMENT* parent, tagXML_CONTENT_TYPE type,
                             WCHAR* text) noexcept
{
    auto* content = static_cast<tagTQXML_CONTENT*>(GlobalAlloc(GPTR, sizeof(tagTQXML_CONTENT)));
    if (!content)
    {
        if (text) GlobalFree(text);
        return nullptr;
    }
    content->type = type;
    content->parent = parent;
    if (type == XML_CONTENT_ELEMENT)
    {
        tagTQXML_ELEMENT& e = content->data.element;
        e.content = content;
        e.name = text;
        if (FAILED(CreateOwnedList(&e.attributes)) || FAILED(CreateOwnedList(&e.children)))
        {
            FreeOwnData(content);
            GlobalFree(content);
            return nullptr;
        }
    }
    else
        content->data.text = text;
    // A heap list takes over a record passed as a negative count.
    if (FAILED(TqList_InsertList(siblings, -1, &content, -1)))
    {
        FreeOwnData(content);
        GlobalFree(content);
        return nullptr;
    }
    return content;
}

void FreeBranch(tTQLIST* siblings, tagTQXML_CONTENT* content) noexcept
{
    // Depth first from the last child up: each record is freed once its children are gone, and
    // the walk climbs back through the parent pointers instead of a stack.
    tagTQXML_CONTENT* at = content;
    for (;;)
    {
        while (at->type == XML_CONTENT_ELEMENT && at->data.element.children.count > 0)
        {
            tTQLIST* children = &at->data.element.children;
            at = ItemAt<tagTQXML_CONTENT>(children, children->count - 1);
        }
        const bool last = at == content;
        tagTQXML_ELEMENT* parent = at->parent;
        FreeOwnData(at);
        RemoveFrom(last ? siblings : OwnerOf(at, siblings), at);
        if (last) return;
        at = parent->content;
    }
}

void FreeSiblings(tTQLIST* siblings) noexcept
{
    if (!TqList_IsListFast(siblings)) return;
    while (siblings->count > 0)
        FreeBranch(siblings, ItemAt<tagTQXML_CONTENT>(siblings, siblings->count - 1));
    TqList_Destroy(siblings);
}

} // namespace tq::xml
