#pragma once
// The lenient parser: walks the tokens of a text and builds its element table
// under index 0. Errors never stop it; the first one is kept as a message.

#include "support/xml_element_table.h"
#include "support/xml_tokenizer.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cvas
{

class CXmlTreeBuilder
{
public:
    // Rebuilds table from text; returns the first error, empty if none.
    // Tag names are matched without regard to case when ignoreCase. With
    // copy, the text is also appended to *copy along the way (which must
    // not hold the text itself).
    std::wstring Build(std::wstring_view text, bool ignoreCase, CXmlElementTable& table,
                       std::wstring* copy = nullptr);

    // Reads every tag through the tokenizer: the reference the fast reading
    // of common tags is checked against.
    void SetTokenizerOnly(bool tokenizerOnly) { m_tokenizerOnly = tokenizerOnly; }

    // Whether the table holds exactly one root element and no mark of an
    // error.
    static bool IsWellFormed(const CXmlElementTable& table);

private:
    struct OpenElement
    {
        std::uint32_t index;
        std::uint32_t nameStart; // the name as end tags match it
        std::uint32_t nameLength;
        // The last child so far. The first child's link to the last one is
        // written when the element is closed, not at every new child: for
        // an element with many children the first one is long out of cache.
        std::uint32_t lastChild;
    };

    std::size_t FastTag(std::size_t offset);
    void OpenTag(const XmlToken& token);
    void AddElement(std::size_t start, std::size_t length, std::size_t nameLength, bool empty);
    void CloseTag(const XmlToken& token);
    void NoteError(const XmlToken& token);
    void NoteError(std::wstring message);
    void MarkIllFormed();
    void CloseNotEnded(std::size_t keep);
    void AppendChild(OpenElement& parent, std::uint32_t child);
    void LinkLastChild(const OpenElement& element);
    std::wstring_view TagName(std::uint32_t start) const;

    std::wstring_view m_text;
    bool m_ignoreCase = false;
    CXmlElementTable* m_table = nullptr;
    std::vector<OpenElement> m_open; // index 0 is the document itself
    std::wstring m_firstError;
    bool m_haveError = false;
    bool m_tokenizerOnly = false;
};

} // namespace cvas
