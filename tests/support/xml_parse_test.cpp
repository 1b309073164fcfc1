// The lenient parser: error texts, what stays navigable after an error, and
// when a document counts as well formed.
#include "support/xml_document.h"

#include <gtest/gtest.h>

#include <string>

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
