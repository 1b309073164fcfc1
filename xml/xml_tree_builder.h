#pragma once
// The lenient parser: walks the tokens of a text and builds its element table
// under index 0. Errors never stop it; the first one is kept as a message.

#include "xml/xml_element_table.h"
#include "xml/xml_open_names.h"
#include "xml/xml_tokenizer.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cvas
{

// Hands a text to the parser piece by piece, so that each piece is parsed
// while it is still in the cache: Next appends the next piece to the text
// and returns false when there is none.
class IXmlTextSupply
{
public:
    virtual bool Next(std::wstring& text) = 0;

protected:
    ~IXmlTextSupply() = default;
};

// Supplies a text that is already in memory, a given number of characters
// at a time.
class CXmlTextPieces final : public IXmlTextSupply
{
public:
    CXmlTextPieces(std::wstring_view source, std::size_t pieceLength)
        : m_source(source), m_pieceLength(pieceLength)
    {
    }
    bool Next(std::wstring& text) override;

private:
    std::wstring_view m_source;
    std::size_t m_pieceLength;
    std::size_t m_given = 0;
};

class CXmlTreeBuilder
{
public:
    // Rebuilds table from text, first taking the rest of the text from
    // supply when there is one; returns the first error, empty if none. Tag
    // names are matched without regard to case when ignoreCase. The table
    // is sized for expectedLength characters.
    std::wstring Build(std::wstring& text, IXmlTextSupply* supply, std::size_t expectedLength,
                       bool ignoreCase, CXmlElementTable& table);

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

    bool MoreText();
    std::size_t ReadCommon(std::size_t offset);
    void OpenTag(const XmlToken& token);
    void AddElement(std::size_t start, std::size_t length, std::size_t nameLength, bool empty);
    void CloseTag(const XmlToken& token);
    void CloseOpen(std::size_t position, std::size_t endTag, std::size_t endTagLength);
    void NoteError(const XmlToken& token);
    void NoteError(std::wstring message);
    void MarkIllFormed();
    void CloseNotEnded(std::size_t keep);
    void PopOpenTo(std::size_t count);
    void RecomputeLevels();
    void LinkLastChild(const OpenElement& element);
    std::wstring_view TagName(std::uint32_t start) const;

    std::wstring* m_growing = nullptr;
    IXmlTextSupply* m_supply = nullptr;
    std::wstring_view m_text; // what has been supplied so far
    bool m_ignoreCase = false;
    CXmlElementTable* m_table = nullptr;
    std::vector<OpenElement> m_open; // index 0 is the document itself
    CXmlOpenNames m_openNames;       // kept after the first mismatched end tag
    // Elements closed as not ended moved up; the levels are put right once,
    // at the end, instead of at every move.
    bool m_levelsMoved = false;
    std::wstring m_firstError;
    bool m_haveError = false;
    bool m_tokenizerOnly = false;
};

} // namespace cvas
