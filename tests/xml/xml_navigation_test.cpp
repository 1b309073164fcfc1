// Navigation: positions, paths, element data and attributes.
#include "xml/xml_document.h"

#include <gtest/gtest.h>

#include <string>

using namespace cvas;

namespace
{

constexpr const wchar_t* kFeed = L"<?xml version=\"1.0\"?>\n"
                                 L"<friends user=\"me\">\n"
                                 L"  <user username=\"ann\"><name>Ann</name></user>\n"
                                 L"  <group/>\n"
                                 L"  <user username='bob &amp; co'><name>Bob</name><url/></user>\n"
                                 L"  <user><name>Cy</name></user>\n"
                                 L"</friends>\n";

} // namespace

TEST(XmlNavigation, PositionsMoveInAndOut)
{
    CXmlDocument document;
    ASSERT_TRUE(document.SetDoc(kFeed));
    EXPECT_FALSE(document.IntoElem());  // no current element yet
    EXPECT_FALSE(document.OutOfElem()); // no parent
    ASSERT_TRUE(document.FindElem(L"friends"));
    EXPECT_FALSE(document.FindElem()); // the root has no sibling, position unchanged
    EXPECT_EQ(document.GetTagName(), L"friends");
    ASSERT_TRUE(document.FindChildElem(L"user"));
    ASSERT_TRUE(document.FindChildElem(L"user")); // the next one: bob
    ASSERT_TRUE(document.IntoElem());             // bob becomes current
    EXPECT_EQ(document.GetAttrib(L"username"), L"bob & co");
    ASSERT_TRUE(document.FindChildElem(L"name"));
    ASSERT_TRUE(document.OutOfElem()); // back to friends, bob is the child position
    EXPECT_EQ(document.GetTagName(), L"friends");
    ASSERT_TRUE(document.FindChildElem(L"user"));
    ASSERT_TRUE(document.IntoElem());
    EXPECT_EQ(document.GetAttrib(L"username"), L""); // Cy has none
    ASSERT_TRUE(document.FindChildElem());
    ASSERT_TRUE(document.IntoElem());
    EXPECT_EQ(document.GetData(), L"Cy");
}

TEST(XmlNavigation, FindChildElemStartsAtTheFirstElementWhenThereIsNone)
{
    CXmlDocument document;
    document.SetDoc(kFeed);
    ASSERT_TRUE(document.FindChildElem(L"group"));
    EXPECT_EQ(document.GetTagName(), L"friends");
}

TEST(XmlNavigation, PathSteps)
{
    CXmlDocument document;
    document.SetDoc(kFeed);
    ASSERT_TRUE(document.FindElem(L"/friends/user[2]/name"));
    EXPECT_EQ(document.GetData(), L"Bob");
    ASSERT_TRUE(document.FindElem(L"/friends/*[2]"));
    EXPECT_EQ(document.GetTagName(), L"group");
    // A child test, and an attribute test that skips what follows the name.
    ASSERT_TRUE(document.FindElem(L"/friends/user[url]"));
    EXPECT_EQ(document.GetAttrib(L"username"), L"bob & co");
    ASSERT_TRUE(document.FindElem(L"/friends/user[@username='whatever']/name"));
    EXPECT_EQ(document.GetData(), L"Ann");
    // A first step whose first match lacks the second step: the next one is tried.
    ASSERT_TRUE(document.FindElem(L"/friends/user/url"));
    EXPECT_EQ(document.GetTagName(), L"url");
    // The n-th match only; 0 matches nothing.
    EXPECT_FALSE(document.FindElem(L"/friends/user[4]"));
    EXPECT_FALSE(document.FindElem(L"/friends/user[0]"));
    EXPECT_EQ(document.GetTagName(), L"url"); // a failed search moves nothing
}

TEST(XmlNavigation, DocumentOrderSearch)
{
    CXmlDocument document;
    document.SetDoc(kFeed);
    ASSERT_TRUE(document.FindElem(L"//name"));
    EXPECT_EQ(document.GetData(), L"Ann");
    // On from the current element through the rest of the document.
    ASSERT_TRUE(document.FindElem(L"//name"));
    EXPECT_EQ(document.GetData(), L"Bob");
    ASSERT_TRUE(document.FindElem(L"//name"));
    EXPECT_EQ(document.GetData(), L"Cy");
    EXPECT_FALSE(document.FindElem(L"//name"));
    ASSERT_TRUE(document.FindElem(L"/friends"));
    ASSERT_TRUE(document.FindElem(L"//name[3]"));
    EXPECT_EQ(document.GetData(), L"Cy");
    // The found element's parent becomes the parent position.
    ASSERT_TRUE(document.OutOfElem());
    EXPECT_EQ(document.GetTagName(), L"user");
}

TEST(XmlNavigation, NamesAndFlag8)
{
    CXmlDocument document;
    document.SetDocFlags(kXmlDocIgnoreCase);
    document.SetDoc(L"<queue><track a='1'/></queue>");
    EXPECT_TRUE(document.FindElem(L"QUEUE/Track"));
    document.SetDocFlags(0);
    document.SetDoc(L"<queue><track a='1'/></queue>");
    EXPECT_FALSE(document.FindElem(L"queue/Track"));
    // A tag name ends at white space or one of <>=\/?! ; a path name at one of " =/[]".
    document.SetDoc(L"<q><tr\tx='1'/><tr/><t?/></q>");
    EXPECT_TRUE(document.FindElem(L"q/tr[2]"));
    EXPECT_TRUE(document.FindElem(L"/q/t"));
    EXPECT_FALSE(document.FindElem(L"/q/T"));
}

TEST(XmlNavigation, GetDataJoinsTextAndCdata)
{
    CXmlDocument document;
    document.SetDoc(L"<r><a>x &lt;&amp;&gt; <![CDATA[<b>&amp;]]> <!-- no --><?pi no?> y</a>"
                    L"<b>  \r\n </b><c/><d><e/>t</d><f><![CDATA[]]]]><![CDATA[>]]></f></r>");
    ASSERT_TRUE(document.FindElem(L"/r/a"));
    EXPECT_EQ(document.GetData(), L"x <&> <b>&amp; y");
    ASSERT_TRUE(document.FindElem(L"b"));
    EXPECT_EQ(document.GetData(), L"  \r\n ");
    ASSERT_TRUE(document.FindElem(L"c"));
    EXPECT_EQ(document.GetData(), L"");
    ASSERT_TRUE(document.FindElem(L"d")); // has a child
    EXPECT_EQ(document.GetData(), L"");
    ASSERT_TRUE(document.FindElem(L"f"));
    EXPECT_EQ(document.GetData(), L"]]>");
}

TEST(XmlNavigation, Unescaping)
{
    CXmlDocument document;
    document.SetDoc(L"<a>&#65;&#x42;&#x43;&#0;&#;&#x;&AMP;&amp &apos;&quot;&#1234567;&#12345678;"
                    L"&#x1F3B5;&#X41;&unknown;</a>");
    ASSERT_TRUE(document.FindElem());
    const std::wstring note =
        sizeof(wchar_t) == 2 ? std::wstring(L"\xD83C\xDFB5") : std::wstring(1, wchar_t(0x1F3B5));
    EXPECT_EQ(document.GetData(),
              L"ABC&#0;&#;&#x;&AMP;&amp '\"&#1234567;&#12345678;" + note + L"&#X41;&unknown;");
}

TEST(XmlNavigation, Attributes)
{
    CXmlDocument document;
    document.SetDoc(L"<a one=\"1\" two = '2' three=3 four five=\"a&lt;b\" six='\"'>x</a>");
    ASSERT_TRUE(document.FindElem());
    EXPECT_EQ(document.GetAttrib(L"one"), L"1");
    EXPECT_EQ(document.GetAttrib(L"two"), L"2");
    EXPECT_EQ(document.GetAttrib(L"three"), L"3");
    EXPECT_EQ(document.GetAttrib(L"five"), L"a<b");
    EXPECT_EQ(document.GetAttrib(L"six"), L"\"");
    EXPECT_EQ(document.GetAttrib(L"fou"), L"");
    EXPECT_EQ(document.GetAttrib(L"x"), L"");
    EXPECT_TRUE(document.FindElem(L"/a[@four]"));
}

TEST(XmlNavigation, SingleNamePathsMatchWholeNamesOnly)
{
    const wchar_t* text = L"<r><artist/><art/><artistx/><Art/><a?b/><t\tx='1'/>"
                          L"<a-long-name-12345/><a-long-name-12346/></r>";
    const auto found = [text](std::wstring_view path, std::uint32_t flags) {
        CXmlDocument document;
        document.SetDocFlags(flags);
        document.SetDoc(text);
        document.FindElem(L"r");
        document.IntoElem();
        std::wstring names; // every match, in order
        while (document.FindElem(path))
            names += document.GetTagName() + L";";
        return names;
    };
    EXPECT_EQ(found(L"art", 0), L"art;");
    EXPECT_EQ(found(L"artistx", 0), L"artistx;");
    EXPECT_EQ(found(L"ART", 0), L"");
    EXPECT_EQ(found(L"ART", kXmlDocIgnoreCase), L"art;Art;");
    // A tag name ends at "?" or white space; a name holding such a character
    // is no element's.
    EXPECT_EQ(found(L"a", 0), L"a;");
    EXPECT_EQ(found(L"t", 0), L"t;");
    EXPECT_EQ(found(L"a?b", 0), L"");
    EXPECT_EQ(found(L"t\tx", 0), L"");
    // Long names differ in their last character only.
    EXPECT_EQ(found(L"a-long-name-12346", 0), L"a-long-name-12346;");
    EXPECT_EQ(found(L"A-LONG-NAME-12345", kXmlDocIgnoreCase), L"a-long-name-12345;");
}
