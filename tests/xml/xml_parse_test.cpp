// The lenient parser: error texts, what stays navigable after an error, and
// when a document counts as well formed.
#include "xml/xml_document.h"
#include "xml/xml_tree_builder.h"

#include <gtest/gtest.h>

#include <cwctype>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace cvas;

namespace
{

struct Parsed
{
    bool wellFormed;
    std::wstring result;
};

Parsed Parse(const wchar_t* text, std::uint32_t flags = 0)
{
    CXmlDocument document;
    document.SetDocFlags(flags);
    const bool wellFormed = document.SetDoc(text);
    return {wellFormed, document.GetResult()};
}

} // namespace

TEST(XmlParse, WellFormedDocumentsHaveNoResult)
{
    for (const wchar_t* text :
         {L"<a/>", L"<?xml version=\"1.0\"?>\n<a x='>' y=\"'\">t<b/><!-- <c> --></a>\n",
          L"<!DOCTYPE a [ <!ELEMENT a ANY> <!ATTLIST a x CDATA #IMPLIED> <!ENTITY e \"v\"> "
          L"<!NOTATION n SYSTEM \"s\"> ]><a><![CDATA[</a>]]></a>",
          L"<a><?pi </a> ?></a>", L"<\x00E9t\x00E9>x</\x00E9t\x00E9>"})
    {
        const Parsed parsed = Parse(text);
        EXPECT_TRUE(parsed.wellFormed) << text;
        EXPECT_EQ(parsed.result, L"") << text;
    }
}

TEST(XmlParse, TokenizerErrors)
{
    EXPECT_EQ(Parse(L"<a>< b</a>").result, L"Incorrect tag name character at offset 3");
    EXPECT_EQ(Parse(L"<a><!x></a>").result, L"Incorrect ! tag at offset 3");
    EXPECT_EQ(Parse(L"<a><!-x></a>").result, L"Incorrect comment tag at offset 3");
    EXPECT_EQ(Parse(L"<a><![X></a>").result, L"Incorrect tag at offset 3");
    EXPECT_EQ(Parse(L"<!DOCTYPE a [ <!Q> ]><a/>").result, L"Incorrect ! tag at offset 14");
    EXPECT_EQ(Parse(L"<a><b x='>").result, L"Element tag at offset 3 unterminated");
    EXPECT_EQ(Parse(L"<a></a").result, L"Element end tag at offset 3 unterminated");
    EXPECT_EQ(Parse(L"<a><![CDATA[x").result, L"CDATA Section at offset 3 unterminated");
    EXPECT_EQ(Parse(L"<a><?pi").result, L"Processing instruction at offset 3 unterminated");
    EXPECT_EQ(Parse(L"<a><!-- x").result, L"Comment at offset 3 unterminated");
    EXPECT_EQ(Parse(L"<!DOCTYPE a [ <!ELEMENT a ANY>").result, L"Doctype at offset 0 unterminated");
    EXPECT_EQ(Parse(L"<a/><").result, L"tag at offset 4 unterminated");
    EXPECT_FALSE(Parse(L"<a>< b</a>").wellFormed);
}

TEST(XmlParse, MismatchedEndTagClosesInnerElementsAsNotEnded)
{
    CXmlDocument document;
    EXPECT_FALSE(document.SetDoc(L"<a><b><c>x</c>y</a><z></q>"));
    // Only the first error is kept.
    EXPECT_EQ(document.GetResult(), L"End tag 'a' at offset 15 does not match start tag 'b' at "
                                    L"offset 3");
    // b keeps only its start tag; its child c moved up to follow it.
    ASSERT_TRUE(document.FindElem(L"a"));
    ASSERT_TRUE(document.IntoElem());
    ASSERT_TRUE(document.FindElem());
    EXPECT_EQ(document.GetTagName(), L"b");
    EXPECT_EQ(document.GetData(), L"");
    ASSERT_TRUE(document.FindElem());
    EXPECT_EQ(document.GetTagName(), L"c");
    EXPECT_EQ(document.GetData(), L"x");
    EXPECT_FALSE(document.FindElem());
    ASSERT_TRUE(document.OutOfElem());
    EXPECT_TRUE(document.FindElem(L"z")); // the rest of the document is still there
}

TEST(XmlParse, MismatchAcrossSeveralLevelsKeepsDocumentOrder)
{
    CXmlDocument document;
    document.SetDoc(L"<r><a><b><c/><d>1</d></b><e/><f><g/></r>");
    // a and f were never ended: they and what they held follow one another
    // under r, in document order; b was ended and keeps its children.
    ASSERT_TRUE(document.FindElem(L"r"));
    ASSERT_TRUE(document.IntoElem());
    std::wstring names;
    while (document.FindElem())
    {
        names += document.GetTagName();
        EXPECT_EQ(document.FindChildElem(), document.GetTagName() == L"b");
    }
    EXPECT_EQ(names, L"abefg");
    EXPECT_TRUE(document.FindElem(L"/r/b/d"));
    EXPECT_EQ(document.GetData(), L"1");
}

TEST(XmlParse, EndTagWithoutStartTagIsIgnored)
{
    CXmlDocument document;
    EXPECT_FALSE(document.SetDoc(L"<a>x</b>y</a>"));
    EXPECT_EQ(document.GetResult(), L"No start tag for end tag 'b' at offset 4");
    ASSERT_TRUE(document.FindElem(L"a"));
    EXPECT_EQ(document.GetData(), L"xy");
}

TEST(XmlParse, UnendedElementsAtTheEnd)
{
    CXmlDocument document;
    EXPECT_FALSE(document.SetDoc(L"<a><b>t"));
    EXPECT_EQ(document.GetResult(), L"Element 'b' at offset 3 not ended");
    // Both are closed as not ended, so b follows a at the top.
    EXPECT_TRUE(document.FindElem(L"a"));
    EXPECT_TRUE(document.FindElem(L"b"));
}

TEST(XmlParse, DocumentLevelErrors)
{
    EXPECT_EQ(Parse(L"").result, L"Empty document");
    EXPECT_EQ(Parse(nullptr).result, L"Empty document");
    EXPECT_EQ(Parse(L" \r\n\t").result, L"No root element");
    EXPECT_EQ(Parse(L"<?xml version=\"1.0\"?><!-- c -->").result, L"No root element");
    const Parsed siblings = Parse(L"<a/><b/>");
    EXPECT_FALSE(siblings.wellFormed);
    EXPECT_EQ(siblings.result, L"Root element has sibling");

    CXmlDocument document;
    document.SetDoc(L"<a/><b/>");
    EXPECT_TRUE(document.FindElem());
    EXPECT_EQ(document.GetTagName(), L"a");
}

TEST(XmlParse, EndTagsMatchWithoutCaseOnlyWithFlag8)
{
    EXPECT_TRUE(Parse(L"<Track>x</TRACK>", kXmlDocIgnoreCase).wellFormed);
    EXPECT_EQ(Parse(L"<Track>x</TRACK>").result, L"No start tag for end tag 'TRACK' at offset 8");
}

TEST(XmlParse, StartAndEndTagsAreNamedByOneRule)
{
    // A name ends at white space or one of "<>=\/?!" in start and end tags
    // alike; ".", "-", ":" and characters beyond ASCII belong to it.
    const std::wstring nonAscii = L"\x00E9\x4E2D\U0001F3B5";
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"<a?>x</a?>", L"a"},
        {L"<a!b>x</a=c>", L"a"},
        {L"<a\\>x</a\\>", L"a"},
        {L"<n-1.2:c?>x</n-1.2:c!>", L"n-1.2:c"},
        {L"<" + nonAscii + L"?>x</" + nonAscii + L"<>", nonAscii}};
    for (const auto& [text, name] : cases)
    {
        CXmlDocument document;
        EXPECT_TRUE(document.SetDoc(text)) << text << ": " << document.GetResult();
        ASSERT_TRUE(document.FindElem(L"/" + name)) << text;
        EXPECT_EQ(document.GetData(), L"x") << text;
    }
    // Messages show an end tag's name up to white space, "/" or ">".
    EXPECT_EQ(Parse(L"<a.b>x</a?c>").result, L"No start tag for end tag 'a?c' at offset 6");
    EXPECT_EQ(Parse(L"<a-b><a>x</a-c></a-b>").result,
              L"No start tag for end tag 'a-c' at offset 9");
}

TEST(XmlParse, DeepAndLongDocumentsParseWithoutRecursion)
{
    std::wstring text;
    for (int i = 0; i < 100000; ++i)
        text += L"<d>";
    text += L"x";
    for (int i = 0; i < 100000; ++i)
        text += L"</d>";
    CXmlDocument document;
    EXPECT_TRUE(document.SetDoc(text));
    EXPECT_TRUE(document.FindElem(L"//d[100000]"));
    EXPECT_EQ(document.GetData(), L"x");

    // The same without end tags: every element ends up at the top level.
    text.resize(300000);
    EXPECT_FALSE(document.SetDoc(text));
    EXPECT_TRUE(document.FindElem(L"d[100000]"));
}

namespace
{

// What the lenient parser must build from a document of bare tags, kept the
// plain way: the open elements searched from the innermost outwards, and
// elements left open moved up with their children.
struct ModelNode
{
    wchar_t name;
    std::vector<int> children;
};

std::wstring ModelTree(const std::wstring& text, bool ignoreCase)
{
    const auto same = [ignoreCase](wchar_t a, wchar_t b) {
        return ignoreCase ? std::towlower(a) == std::towlower(b) : a == b;
    };
    std::vector<ModelNode> nodes{{L'#', {}}};
    std::vector<int> open{0};
    for (std::size_t at = 0; at < text.size();)
    {
        const bool end = text[at + 1] == L'/';
        const wchar_t name = text[at + (end ? 2 : 1)];
        const bool empty = !end && text[at + 2] == L'/';
        at = text.find(L'>', at) + 1;
        if (!end)
        {
            nodes.push_back({name, {}});
            nodes[open.back()].children.push_back(static_cast<int>(nodes.size() - 1));
            if (!empty)
                open.push_back(static_cast<int>(nodes.size() - 1));
            continue;
        }
        std::size_t match = open.size() - 1;
        while (match > 0 && !same(nodes[open[match]].name, name))
            --match;
        if (match == 0)
            continue;
        for (std::size_t j = match + 1; j < open.size(); ++j)
        {
            auto& moved = nodes[open[j]].children;
            auto& adopter = nodes[open[match]].children;
            adopter.insert(adopter.end(), moved.begin(), moved.end());
            moved.clear();
        }
        open.resize(match);
    }
    for (std::size_t j = 1; j < open.size(); ++j) // not ended at the end
    {
        auto& moved = nodes[open[j]].children;
        nodes[0].children.insert(nodes[0].children.end(), moved.begin(), moved.end());
        moved.clear();
    }
    std::wstring tree;
    const auto write = [&](auto& self, int node) -> void {
        for (const int child : nodes[node].children)
        {
            tree += nodes[child].name;
            tree += L'(';
            self(self, child);
            tree += L')';
        }
    };
    write(write, 0);
    return tree;
}

// The same written from the element table, checking every level on the way.
std::wstring BuiltTree(const std::wstring& text, const CXmlElementTable& table)
{
    std::wstring tree;
    const auto write = [&](auto& self, std::uint32_t parent, std::uint32_t level) -> void {
        for (std::uint32_t child = table[parent].firstChild; child != 0; child = table[child].next)
        {
            EXPECT_EQ(LevelOf(table[child]), level) << "element at offset " << table[child].start;
            EXPECT_EQ(table[child].parent, parent);
            tree += text[table[child].start + 1];
            tree += L'(';
            self(self, child, level + 1);
            tree += L')';
        }
    };
    write(write, 0, 0);
    return tree;
}

} // namespace

TEST(XmlParse, StrayAndMismatchedEndTagsBuildTheTreeOfTheLenientRules)
{
    // Random tag soups of few names, so that end tags often match an element
    // far out, none at all, or one of another case.
    std::mt19937 random(20261123);
    const std::wstring names = L"abcAB";
    CXmlTreeBuilder builder;
    CXmlElementTable table;
    for (int round = 0; round < 3000; ++round)
    {
        std::wstring text;
        const int tags = 1 + static_cast<int>(random() % 60);
        for (int i = 0; i < tags; ++i)
        {
            const wchar_t name = names[random() % names.size()];
            switch (random() % 5)
            {
            case 0:
            case 1:
                text += std::wstring(L"<") + name + L">";
                break;
            case 2:
                text += std::wstring(L"<") + name + L"/>";
                break;
            default:
                text += std::wstring(L"</") + name + L">";
                break;
            }
        }
        const bool ignoreCase = round % 2 == 1;
        std::wstring parsed = text;
        builder.Build(parsed, nullptr, parsed.size(), ignoreCase, table);
        ASSERT_EQ(BuiltTree(text, table), ModelTree(text, ignoreCase))
            << "document " << std::string(text.begin(), text.end())
            << (ignoreCase ? " without case" : "");
    }
}
