#pragma once
// CXmlDocument: the one reader and writer of markup in the system. It keeps
// the whole document as one wide string with an index of element positions
// into it, parses leniently (a document with errors can still be navigated,
// and the first error is kept as a message), edits the string in place when
// elements are added, and reads and writes UTF-8 (with or without a
// byte-order mark) and UTF-16LE files.

#include "support/counted_handle.h"
#include "xml/xml_element_table.h"
#include "xml/xml_path.h"
#include "xml/xml_tokenizer.h"
#include "xml/xml_tree_builder.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace cvas
{

// Document flags.
constexpr std::uint32_t kXmlDocUtf16Le = 1;    // the file was UTF-16LE
constexpr std::uint32_t kXmlDocModified = 2;   // the text has been changed by an insertion
constexpr std::uint32_t kXmlDocUtf8Bom = 4;    // the file had a UTF-8 byte-order mark
constexpr std::uint32_t kXmlDocIgnoreCase = 8; // tag names compare without regard to case

// Flags of AddElem and AddChildElem.
constexpr int kXmlAddCdata = 1;          // the value goes in a CDATA section
constexpr int kXmlAddSpacedEmpty = 4;    // "<name />" rather than "<name/>"
constexpr int kXmlAddKeepEntities = 8;   // entity references in the value stay as they are
constexpr int kXmlAddNotEnded = 16;      // a start tag only; a value makes the call fail
constexpr int kXmlAddEscapeQuotes = 256; // quotes are escaped too
constexpr int kXmlAddChild = 16384;      // add as a child of the current element

class CXmlDocument
{
public:
    // An empty text without elements and without flags; users start from
    // NewDocument.
    CXmlDocument();
    virtual ~CXmlDocument();
    CXmlDocument(const CXmlDocument&) = delete;
    CXmlDocument& operator=(const CXmlDocument&) = delete;

    // Replaces the text (a null pointer makes it empty), clears the result
    // text and parses; returns whether the document is well formed.
    bool SetDoc(const wchar_t* text);
    bool SetDoc(std::wstring_view text);

    // Reads the file (UTF-8 with or without mark, or UTF-16LE with mark) and
    // parses it. The result text tells the encoding and sizes and then the
    // first parse error. A file that cannot be read leaves the document as
    // it was, with the C runtime's message in the result text.
    void Load(const std::wstring& fileName);
    // Writes the text in the encoding the flags record; the result text
    // tells what was written, or why it failed.
    bool Save(const std::wstring& fileName);
    const std::wstring& GetResult() const { return m_result; }
    // Whether the last Load could read its file (false before any).
    bool IsLoaded() const { return m_loaded; }
    // The first error of the last parse that took effect; empty if none.
    const std::wstring& GetParseError() const { return m_parseError; }

    // Navigation. Positions are the parent, the current element and the
    // current child; paths are described with FindElem in the .cpp file.
    bool FindElem(std::wstring_view path = {});
    bool FindChildElem(std::wstring_view path = {});
    bool IntoElem();
    bool OutOfElem();

    // The content of the current element: text unescaped, CDATA sections
    // as they are; empty for an element with children or without content.
    std::wstring GetData() const;
    // The same into data, whose earlier content it replaces: a reader that
    // keeps one string for every text allocates only when a text outgrows it.
    void GetData(std::wstring& data) const;
    // The name of the current element; empty when there is none.
    std::wstring GetTagName() const;
    // The unescaped value of an attribute of the current element; empty if
    // it has none of that name.
    std::wstring GetAttrib(std::wstring_view name) const;

    // Inserts an element after the current one (or last in the parent) and
    // makes it current.
    bool AddElem(std::wstring_view name, std::wstring_view value = {}, int flags = 0);
    // Inserts an element into the current one, after the current child (or
    // last), and makes it the current child.
    bool AddChildElem(std::wstring_view name, std::wstring_view value = {}, int flags = 0);

    const std::wstring& GetDoc() const { return m_text; }
    std::uint32_t GetDocFlags() const { return m_flags; }
    void SetDocFlags(std::uint32_t flags) { m_flags = flags; }

private:
    friend CountedHandle<CXmlDocument> NewDocument();

    bool FinishParse(std::wstring error);
    void ResetPositions();
    bool IgnoresCase() const { return (m_flags & kXmlDocIgnoreCase) != 0; }

    // Paths.
    // A relative path searches from firstCandidate through its next siblings;
    // "//" searches in document order after searchedFrom.
    std::uint32_t FindPath(std::wstring_view path, std::uint32_t firstCandidate,
                           std::uint32_t searchedFrom) const;
    std::uint32_t MatchSteps(std::wstring_view path, std::uint32_t firstCandidate) const;
    std::uint32_t NextNamed(std::wstring_view name, std::uint32_t firstCandidate) const;
    bool StepMatches(std::uint32_t element, const XmlPathStep& step) const;
    std::uint32_t NextInDocumentOrder(std::uint32_t element) const;
    void AppendMixedData(std::size_t begin, std::size_t end, std::wstring& data) const;
    std::wstring_view StartTag(std::uint32_t element) const;
    std::wstring_view TagName(std::uint32_t element) const;
    std::wstring_view TagAttributes(std::uint32_t element) const;
    bool HasChildNamed(std::uint32_t element, std::wstring_view name) const;

    // Editing.
    bool Insert(std::wstring_view name, std::wstring_view value, int flags);
    void ReplaceText(std::size_t at, std::size_t removed, std::wstring_view inserted);
    void ShiftFollowing(std::uint32_t parent, std::uint32_t after, std::int64_t delta);

    // Files.
    bool ReadAndParse(std::FILE* file, std::uint32_t& flags, std::wstring& description,
                      std::wstring& error);
    bool WriteFile(std::FILE* file, std::wstring& description) const;

    std::wstring m_text;
    std::wstring m_result;
    std::wstring m_parseError;
    bool m_loaded = false;
    std::uint32_t m_parent = 0;
    std::uint32_t m_current = 0;
    std::uint32_t m_child = 0;
    std::uint32_t m_flags = 0;
    CXmlElementTable m_table;

    CXmlTreeBuilder m_builder;
    // A file is read and parsed into these and swapped in when it could be
    // read, so that a failed load changes nothing; the memory of what they
    // then hold waits for the next load.
    std::wstring m_loadBuffer;
    CXmlElementTable m_loadTable;
    // The markup of an element being added; kept for its memory.
    std::wstring m_markup;
};

// A new document: the XML declaration line and no element, tag names
// compared without regard to case. Every user of the class starts here.
CountedHandle<CXmlDocument> NewDocument();

} // namespace cvas
