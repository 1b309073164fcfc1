#pragma once
// The layout of Replacements.xml: root "replacements", one "replacement" per
// entry in table order, each with "lhs" and then "rhs".

#include "scrobbler/queue/replacements.h"
#include "xml/xml_document.h"

namespace cvas
{

CountedHandle<CXmlDocument> BuildReplacementsDocument(const CReplacementTable& table);

// Appends every entry that has both texts; one lacking either is skipped.
// Returns false when the document holds no replacements element.
bool ReadReplacementsDocument(CXmlDocument& document, CReplacementTable& table);

} // namespace cvas
