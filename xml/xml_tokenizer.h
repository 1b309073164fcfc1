#pragma once
// Splits markup text into tokens: tags, text, white space, CDATA sections,
// processing instructions, comments and document type declarations.

#include <cstddef>
#include <string>

namespace cvas
{

// Kinds of token, which are also the kinds of node of a document.
enum class XmlNodeType : int
{
    EndOfDocument = -2,
    Error = -1,
    EndTag = 0,
    Element = 1,
    Text = 2,
    Whitespace = 4,
    Cdata = 8,
    ProcessingInstruction = 16,
    Comment = 32,
    Doctype = 64,
};

enum class XmlTokenError
{
    None,
    TagNameCharacter, // "<" followed by a character that starts no tag
    BangTag,          // "<!" followed by something other than "-", "[" or "D"
    CommentTag,       // "<!-" not followed by a second hyphen
    Tag,              // "<![" not followed by C
    Unterminated,     // the text ends inside the token
};

struct XmlToken
{
    XmlNodeType type = XmlNodeType::EndOfDocument;
    std::size_t start = 0;
    std::size_t length = 0;
    // Element and end tags: the name as messages show it, from after "<" or
    // "</" to the first of " \t\n\r/>". Elements are matched by the shorter
    // name of XmlTagNameLength.
    std::size_t nameLength = 0;
    bool empty = false; // an element tag closed by "/>"
    // Tokens of type Error: what is wrong, where, and for an unterminated
    // token the kind it would have been (Error when it is no known kind).
    XmlTokenError error = XmlTokenError::None;
    std::size_t errorOffset = 0;
    XmlNodeType unterminatedKind = XmlNodeType::Error;

    std::size_t End() const { return start + length; }
};

// The token that starts at offset in text[0, end).
XmlToken NextXmlToken(const wchar_t* text, std::size_t end, std::size_t offset);

// The message for a token in error, e.g. "Incorrect ! tag at offset 12".
std::wstring XmlTokenErrorText(const XmlToken& token);

inline bool IsXmlSpace(wchar_t c)
{
    return c == L' ' || c == L'\t' || c == L'\n' || c == L'\r';
}

// A tag that opens an element starts with a letter A-Z, "_", ":" or any
// character from "a" upwards, which takes in every character beyond ASCII.
inline bool StartsXmlElementTag(wchar_t c)
{
    const auto u = static_cast<unsigned long>(c);
    return (u >= 'A' && u <= 'Z') || u >= 'a' || u == '_' || u == ':';
}

// The name of a token (as messages show it) ends at one of " \t\n\r/>".
inline bool EndsXmlTokenName(wchar_t c)
{
    return IsXmlSpace(c) || c == L'/' || c == L'>';
}

} // namespace cvas
