#pragma once
// Escaping of text values, the reverse, and CDATA sections.

#include <string>
#include <string_view>

namespace cvas
{

// "<", "&" and ">" become "&lt;", "&amp;" and "&gt;". With escapeQuotes (the
// rule for attribute values) "'" and '"' become "&apos;" and "&quot;" too.
// With keepEntities an "&" that starts a well-formed entity reference ("&",
// then a name start character, name characters and ";") is copied as it is.
void AppendXmlEscaped(std::wstring_view value, bool escapeQuotes, bool keepEntities,
                      std::wstring& out);
std::wstring EscapeXmlText(std::wstring_view value, bool escapeQuotes, bool keepEntities);

// The five named entities (compared with regard to case) and decimal or
// hexadecimal ("&#x", lower-case x) character references become their
// characters; every other "&" stays as it is.
void AppendXmlUnescaped(std::wstring_view text, std::wstring& out);
std::wstring UnescapeXmlText(std::wstring_view text);

// "<![CDATA[" + value + "]]>", each "]]>" in the value split across two
// sections so that the value reads back unchanged.
void AppendXmlCdata(std::wstring_view value, std::wstring& out);

} // namespace cvas
