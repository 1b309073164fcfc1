// The parser reads text and the common tags by itself and leaves the rest to
// the tokenizer. On texts handed over in pieces of every small length, so
// that each tag is also cut at every point, it must build exactly what the
// tokenizer alone builds from the whole text, with the same first error.
#include "xml/xml_tree_builder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using namespace cvas;

namespace
{

struct Built
{
    std::wstring error;
    std::wstring text;
    std::vector<XmlElementRecord> records;
};

Built BuildIn(const std::wstring& text, std::size_t pieceLength, bool tokenizerOnly,
              bool ignoreCase)
{
    CXmlTreeBuilder builder;
    builder.SetTokenizerOnly(tokenizerOnly);
    CXmlElementTable table;
    Built built;
    CXmlTextPieces pieces(text, pieceLength);
    built.error = builder.Build(built.text, &pieces, text.size(), ignoreCase, table);
    for (std::uint32_t i = 0; i < table.End(); ++i)
        built.records.push_back(table[i]);
    return built;
}

void ExpectSameAsTokenizer(const std::wstring& text, bool ignoreCase)
{
    const Built reference = BuildIn(text, text.size() + 1, true, ignoreCase);
    for (std::size_t piece = 1; piece <= 17; ++piece)
    {
        const Built fast = BuildIn(text, piece, false, ignoreCase);
        ASSERT_EQ(fast.text, text);
        EXPECT_EQ(fast.error, reference.error) << "pieces of " << piece << " in " << text;
        ASSERT_EQ(fast.records.size(), reference.records.size()) << text;
        for (std::size_t i = 0; i < fast.records.size(); ++i)
            EXPECT_EQ(
                std::memcmp(&fast.records[i], &reference.records[i], sizeof(XmlElementRecord)), 0)
                << "record " << i << ", pieces of " << piece << " in " << text;
    }
}

} // namespace

TEST(XmlFastReading, QueueShapedDocumentsBuildWhatTheTokenizerBuilds)
{
    const std::wstring queue = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<queue>\r\n"
                               L"<track>\r\n<artist>Artist 12</artist>\r\n"
                               L"<name>Track 3 caf\x00E9</name>\r\n"
                               L"<album>Album 7 &amp; Co</album>\r\n<duration>240</duration>\r\n"
                               L"<time>2024-01-01 00:00:00</time>\r\n</track>\r\n"
                               L"<track><artist/><name /></track>\r\n</queue>\r\n";
    ExpectSameAsTokenizer(queue, true);
    ExpectSameAsTokenizer(queue, false);
}

TEST(XmlFastReading, TagsOfEveryShapeBuildWhatTheTokenizerBuilds)
{
    const std::wstring wide = sizeof(wchar_t) == 4 ? std::wstring(1, static_cast<wchar_t>(0x1003C))
                                                   : std::wstring(L"\xFF3C");
    const std::wstring cases[] = {
        // Attributes, with quotes that hold ">" and quotes of the other kind.
        L"<r a=\"1>2\" b='x\"y'><c d='>'/>t</r>",
        // Names that go on past digits, "-", ".", ":" and characters beyond ASCII,
        // and names ended by "\", "?", "!", "=", "/" or white space.
        L"<n-1.2:c>x</n-1.2:c><\x00E9t\x00E9>y</\x00E9t\x00E9><a\\b>z</a\\b>",
        L"<a?>x</a?><b!c>y</b=d><e\tf='1'>z</e><g\r\n/>",
        // A character whose low bits are those of "<", inside a name and texts.
        L"<a" + wide + L"b>" + wide + L"</a" + wide + L"b>",
        L"<r>some text " + wide + L" more text " + wide + wide + L" and more</r>",
        // A quote inside a name, which the tokenizer reads in quoted mode.
        L"<a\"b>c</a\"b><d'>'e</d'>",
        // End tags of another case, of an outer element, of none, and cut short.
        L"<Track><b>x</B></TRACK><c><d></c></e><f></f",
        // Comments, CDATA sections, processing instructions and a declaration.
        L"<!DOCTYPE r [<!ELEMENT r ANY>]><r><!-- <x> --><![CDATA[<y>]]><?p <z>?></r>",
        // Errors the tokenizer reports.
        L"<r><1/><!x><!-y><![z]></r>",
        L"<r>text < more</r>",
        L"<r><a b='unclosed></r>",
        L"<r><!-- never closed",
        L"</r>",
        L"<",
    };
    for (const std::wstring& text : cases)
    {
        ExpectSameAsTokenizer(text, false);
        ExpectSameAsTokenizer(text, true);
    }
}
