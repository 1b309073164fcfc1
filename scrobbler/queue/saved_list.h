#pragma once
// The files the plug-in keeps its lists in (the queue, the replacements) are
// one root element holding one item element per entry, and each item holds
// its fields as child elements with text.

#include "xml/xml_document.h"

#include <span>
#include <string>
#include <string_view>

namespace cvas
{

// Reads the fields of the current item: values[i] gets the text of the first
// child named names[i], in any order. Returns false, leaving values
// unspecified, when any of them is missing.
bool ReadItemFields(CXmlDocument& document, std::span<const std::wstring_view> names,
                    std::span<std::wstring> values);

// Calls visit() for every item element of the root, with the item as the
// current element. In a file cut short the root is not ended, and the items
// it held follow it at the top level: those are visited too, so every
// complete item that is left is read. Returns false when there is no root.
template <class Visit>
bool ForEachSavedItem(CXmlDocument& document, std::wstring_view root, std::wstring_view item,
                      Visit visit)
{
    if (!document.FindElem(root))
        return false;
    document.IntoElem();
    while (document.FindElem(item))
        visit();
    document.OutOfElem();
    while (document.FindElem(item))
        visit();
    return true;
}

// A new document with the root and, for each entry, an item holding the
// given fields in order.
template <class Entries, class FieldsOf>
CountedHandle<CXmlDocument> BuildSavedList(std::wstring_view root, std::wstring_view item,
                                           const Entries& entries, FieldsOf fieldsOf)
{
    CountedHandle<CXmlDocument> document = NewDocument();
    document->AddElem(root);
    for (const auto& entry : entries)
    {
        document->AddChildElem(item);
        document->IntoElem();
        for (const auto& [name, value] : fieldsOf(entry))
            document->AddChildElem(name, value);
        document->OutOfElem();
    }
    return document;
}

} // namespace cvas
