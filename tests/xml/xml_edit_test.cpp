// Building documents: the markup AddElem and AddChildElem write, escaping,
// CDATA sections, and the positions of everything after an insertion.
#include "xml/xml_document.h"
#include "xml/xml_escaping.h"

#include <gtest/gtest.h>

#include <string>

using namespace cvas;

namespace
{
constexpr const wchar_t* kDeclaration = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
} // namespace

TEST(XmlEdit, NewDocumentHasTheDeclarationAndFlag8)
{
    const CountedHandle<CXmlDocument> document = NewDocument();
    EXPECT_EQ(document->GetDoc(), kDeclaration);
    EXPECT_EQ(document->GetDocFlags(), kXmlDocIgnoreCase);
    EXPECT_EQ(document->GetResult(), L"");
    EXPECT_FALSE(document->FindElem());
}

TEST(XmlEdit, BuildsOneElementALine)
{
    const CountedHandle<CXmlDocument> document = NewDocument();
    ASSERT_TRUE(document->AddElem(L"queue"));
    ASSERT_TRUE(document->IntoElem());
    for (int i = 0; i < 2; ++i)
    {
        ASSERT_TRUE(document->AddElem(L"track"));
        ASSERT_TRUE(document->AddChildElem(L"artist", L"A & B"));
        ASSERT_TRUE(document->AddChildElem(L"name", i == 0 ? L"x" : L""));
    }
    ASSERT_TRUE(document->AddElem(L"empty", L"", kXmlAddSpacedEmpty));
    EXPECT_EQ(document->GetDoc(), std::wstring(kDeclaration) +
                                      L"<queue>\r\n"
                                      L"<track>\r\n<artist>A &amp; B</artist>\r\n<name>x</name>\r\n"
                                      L"</track>\r\n"
                                      L"<track>\r\n<artist>A &amp; B</artist>\r\n<name/>\r\n"
                                      L"</track>\r\n"
                                      L"<empty />\r\n"
                                      L"</queue>\r\n");
    EXPECT_TRUE(document->GetDocFlags() & kXmlDocModified);

    // What was built navigates like what was parsed.
    CXmlDocument parsed;
    ASSERT_TRUE(parsed.SetDoc(document->GetDoc()));
    EXPECT_TRUE(document->FindElem(L"/queue/track[2]/artist"));
    EXPECT_EQ(document->GetData(), L"A & B");
}

TEST(XmlEdit, InsertsBetweenAndShiftsWhatFollows)
{
    CXmlDocument document;
    ASSERT_TRUE(document.SetDoc(L"<r>\r\n<a>1</a>\r\n<c>3</c>\r\n</r>\r\n<!-- end -->"));
    ASSERT_TRUE(document.FindElem(L"r/a"));
    ASSERT_TRUE(document.AddElem(L"b", L"2"));
    EXPECT_EQ(document.GetDoc(),
              L"<r>\r\n<a>1</a>\r\n<b>2</b>\r\n<c>3</c>\r\n</r>\r\n<!-- end -->");
    // Records behind the insertion moved with the text.
    ASSERT_TRUE(document.FindElem());
    EXPECT_EQ(document.GetTagName(), L"c");
    EXPECT_EQ(document.GetData(), L"3");
    ASSERT_TRUE(document.OutOfElem());
    EXPECT_EQ(document.GetTagName(), L"r");
    ASSERT_TRUE(document.FindElem(L"/r"));
    ASSERT_TRUE(document.FindChildElem(L"b"));
    ASSERT_TRUE(document.AddChildElem(L"b2"));
    ASSERT_TRUE(document.FindChildElem(L"c"));
    ASSERT_TRUE(document.IntoElem());
    EXPECT_EQ(document.GetData(), L"3");
}

TEST(XmlEdit, ChildOfAnEmptyOrTextParent)
{
    CXmlDocument document;
    ASSERT_TRUE(document.SetDoc(L"<r><p a='1' /><t>text</t><n></n></r>"));
    ASSERT_TRUE(document.FindElem(L"/r/p"));
    ASSERT_TRUE(document.AddChildElem(L"c", L"v"));
    ASSERT_TRUE(document.FindElem(L"t"));
    ASSERT_TRUE(document.AddChildElem(L"c"));
    ASSERT_TRUE(document.FindElem(L"n"));
    ASSERT_TRUE(document.AddChildElem(L"c"));
    EXPECT_EQ(document.GetDoc(), L"<r><p a='1'>\r\n<c>v</c>\r\n</p><t>\r\n<c/>\r\ntext</t>"
                                 L"<n><c/>\r\n</n></r>");
    // The rewritten parent reads as a whole element again.
    ASSERT_TRUE(document.FindElem(L"/r/p/c"));
    EXPECT_EQ(document.GetData(), L"v");
    ASSERT_TRUE(document.OutOfElem());
    EXPECT_EQ(document.GetAttrib(L"a"), L"1");
    EXPECT_TRUE(document.SetDoc(std::wstring(document.GetDoc())));

    // A "/" that ends what is left of the tag keeps a space after it, or the
    // rewritten tag would read as empty again.
    ASSERT_TRUE(document.SetDoc(L"<r><q x=a/ /></r>"));
    ASSERT_TRUE(document.FindElem(L"/r/q"));
    ASSERT_TRUE(document.AddChildElem(L"c"));
    EXPECT_EQ(document.GetDoc(), L"<r><q x=a/ >\r\n<c/>\r\n</q></r>");
    EXPECT_TRUE(document.SetDoc(std::wstring(document.GetDoc())));
    EXPECT_TRUE(document.FindElem(L"/r/q/c"));
}

TEST(XmlEdit, FlagsOfAdd)
{
    CXmlDocument document;
    ASSERT_TRUE(document.SetDoc(L"<r/>"));
    ASSERT_TRUE(document.FindElem());
    EXPECT_FALSE(document.AddChildElem(L"", L"x"));                      // no name
    EXPECT_FALSE(document.AddChildElem(L"open", L"x", kXmlAddNotEnded)); // value and no end tag
    ASSERT_TRUE(document.AddChildElem(L"open", L"", kXmlAddNotEnded));
    ASSERT_TRUE(document.AddChildElem(L"q", L"'\"<&>", kXmlAddEscapeQuotes));
    ASSERT_TRUE(document.AddChildElem(L"k", L"&amp; &#65; &a-b.c; & &x y;", kXmlAddKeepEntities));
    ASSERT_TRUE(document.AddChildElem(L"c", L"a]]>b<", kXmlAddCdata));
    EXPECT_EQ(document.GetDoc(), L"<r>\r\n<open>\r\n<q>&apos;&quot;&lt;&amp;&gt;</q>\r\n"
                                 L"<k>&amp; &#65; &a-b.c; &amp; &amp;x y;</k>\r\n"
                                 L"<c><![CDATA[a]]]]><![CDATA[>b<]]></c>\r\n</r>");
    ASSERT_TRUE(document.IntoElem());
    EXPECT_EQ(document.GetTagName(), L"c");
    EXPECT_EQ(document.GetData(), L"a]]>b<");
    ASSERT_TRUE(document.FindElem(L"/r/q"));
    EXPECT_EQ(document.GetData(), L"'\"<&>");

    CXmlDocument empty;
    EXPECT_FALSE(empty.AddChildElem(L"x")); // no current element
}

TEST(XmlEdit, EscapingFunctions)
{
    EXPECT_EQ(EscapeXmlText(L"a<b>&'\"", false, false), L"a&lt;b&gt;&amp;'\"");
    EXPECT_EQ(EscapeXmlText(L"&\x00E9t\x00E9; &#x41; &_:a; &-a; &;", false, true),
              L"&\x00E9t\x00E9; &#x41; &_:a; &amp;-a; &amp;;");
    // Long values grow the buffer more than once.
    const std::wstring many(5000, L'&');
    EXPECT_EQ(EscapeXmlText(many, false, false).size(), 25000u);
    std::wstring cdata;
    AppendXmlCdata(L"]]>]]>", cdata);
    EXPECT_EQ(cdata, L"<![CDATA[]]]]><![CDATA[>]]]]><![CDATA[>]]>");
}

TEST(XmlEdit, AddingToAnEmptyTextAndAfterTheRoot)
{
    CXmlDocument document;
    ASSERT_TRUE(document.AddElem(L"a", L"1"));
    EXPECT_EQ(document.GetDoc(), L"<a>1</a>\r\n");
    ASSERT_TRUE(document.AddElem(L"b"));
    EXPECT_EQ(document.GetDoc(), L"<a>1</a>\r\n<b/>\r\n");
    EXPECT_FALSE(document.SetDoc(L"<?xml version=\"1.0\"?>"));
    ASSERT_TRUE(document.AddElem(L"a"));
    EXPECT_EQ(document.GetDoc(), L"<?xml version=\"1.0\"?>\r\n<a/>\r\n");
}

TEST(XmlEdit, ManyAppendsKeepTheirPositions)
{
    const CountedHandle<CXmlDocument> document = NewDocument();
    ASSERT_TRUE(document->AddElem(L"queue"));
    ASSERT_TRUE(document->IntoElem());
    for (int i = 0; i < 40000; ++i)
    {
        ASSERT_TRUE(document->AddElem(L"track"));
        for (const wchar_t* name : {L"artist", L"name", L"album", L"time"})
            ASSERT_TRUE(document->AddChildElem(name, L"v"));
    }
    CXmlDocument parsed;
    ASSERT_TRUE(parsed.SetDoc(document->GetDoc()));
    ASSERT_TRUE(parsed.FindElem(L"/queue/track[40000]/time"));
    EXPECT_EQ(parsed.GetData(), L"v");
}
