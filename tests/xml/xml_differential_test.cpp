// Differential test: for generated well-formed documents, the element names,
// nesting, attributes and element data that CXmlDocument yields must equal
// what expat, an independent parser, reports for the same bytes.
#include "support/text_encoding.h"
#include "xml/xml_document.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace cvas;

namespace
{

struct Node
{
    std::string name;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text; // character data directly inside, CDATA included
    std::vector<Node> children;
};

// Random well-formed documents, as UTF-8 bytes.
class DocumentGenerator
{
public:
    explicit DocumentGenerator(unsigned seed) : m_random(seed) {}

    std::string Next()
    {
        std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        if (Chance(3))
            out += "<!DOCTYPE r [ <!ELEMENT r ANY> <!-- inside --> ]>\n";
        if (Chance(2))
            out += "<!-- before the root -->\n";
        Element(out, 0);
        if (Chance(2))
            out += "\n<?after the root?>\n";
        return out;
    }

private:
    bool Chance(int oneIn) { return Pick(oneIn) == 0; }
    int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }

    template <std::size_t N> const char* From(const char* const (&choices)[N])
    {
        return choices[Pick(static_cast<int>(N))];
    }

    void Element(std::string& out, int depth)
    {
        static const char* const kNames[] = {"track",        "artist", "a",     "_x",
                                             "b:c",          "n-1.2",  "Track", "\xC3\xA9t\xC3\xA9",
                                             "\xE5\x90\x8D", "user",   "name",  "q"};
        const std::string name = From(kNames);
        out += "<" + name;
        const int attributes = Pick(3);
        for (int i = 0; i < attributes; ++i)
            Attribute(out, i);
        const int shape = depth >= 4 ? Pick(2) : Pick(4);
        if (shape == 0)
        {
            out += Chance(2) ? "/>" : " />";
            return;
        }
        out += ">";
        if (shape == 1)
        {
            LeafContent(out);
        }
        else
        {
            const int children = 1 + Pick(4);
            for (int i = 0; i < children; ++i)
            {
                out += From({"\n", "\n  ", "", " "});
                if (Chance(5))
                    out += "<!-- between -->";
                Element(out, depth + 1);
            }
            out += "\n";
        }
        out += "</" + name + ">";
    }

    void Attribute(std::string& out, int index)
    {
        static const char* const kValues[] = {
            "1", "a b", "&lt;&amp;&gt;", "&quot;&apos;", "\xE2\x82\xAC", "&#65;&#x42;", "", "x=y"};
        const bool apostrophes = Chance(2);
        std::string value = From(kValues);
        value += apostrophes ? "\"" : "'"; // the other quote, plain inside
        const char quote = apostrophes ? '\'' : '"';
        out += " at" + std::to_string(index) + "=" + quote + value + quote;
    }

    // Text, CDATA sections, comments and processing instructions. Every
    // piece of text holds something other than white space.
    void LeafContent(std::string& out)
    {
        static const char* const kText[] = {"plain",
                                            " spaced words ",
                                            "\xC3\xA9",
                                            "\xE4\xB8\xAD\xE6\x96\x87",
                                            "\xF0\x9F\x8E\xB5",
                                            "&lt;",
                                            "&amp;",
                                            "&gt;",
                                            "&quot;",
                                            "&apos;",
                                            "&#65;",
                                            "&#x20AC;",
                                            "&#128512;",
                                            "'",
                                            "\"",
                                            ">",
                                            "line\nbreak",
                                            "a&amp;b"};
        static const char* const kCdata[] = {"<b>&amp;</b>", "]]", "]", "x]y",
                                             "\xC3\xA9",     "\n", " "};
        const int pieces = Pick(5);
        for (int i = 0; i < pieces; ++i)
        {
            switch (Pick(6))
            {
            case 0:
                out += "<![CDATA[";
                for (int k = Pick(3); k >= 0; --k)
                    out += From(kCdata);
                out += "]]>";
                break;
            case 1:
                out += From({"<!-- note -->", "<?pi some data?>"});
                break;
            default:
                for (int k = Pick(3); k >= 0; --k)
                    out += From(kText);
                break;
            }
        }
    }

    std::mt19937 m_random;
};

// What expat reports, as a tree.
class ExpatTree
{
public:
    bool Parse(const std::string& bytes)
    {
        std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
            XML_ParserCreate(nullptr), XML_ParserFree);
        XML_SetUserData(parser.get(), this);
        XML_SetElementHandler(parser.get(), &Start, &End);
        XML_SetCharacterDataHandler(parser.get(), &Characters);
        return XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), 1) ==
               XML_STATUS_OK;
    }

    Node root;

private:
    static void Start(void* user, const XML_Char* name, const XML_Char** attributes)
    {
        auto* self = static_cast<ExpatTree*>(user);
        Node node;
        node.name = name;
        for (int i = 0; attributes[i]; i += 2)
            node.attributes.emplace_back(attributes[i], attributes[i + 1]);
        if (self->m_open.empty())
        {
            self->root = std::move(node);
            self->m_open.push_back(&self->root);
        }
        else
        {
            self->m_open.back()->children.push_back(std::move(node));
            self->m_open.push_back(&self->m_open.back()->children.back());
        }
    }
    static void End(void* user, const XML_Char*)
    {
        static_cast<ExpatTree*>(user)->m_open.pop_back();
    }
    static void Characters(void* user, const XML_Char* text, int length)
    {
        auto* self = static_cast<ExpatTree*>(user);
        if (!self->m_open.empty())
            self->m_open.back()->text.append(text, static_cast<std::size_t>(length));
    }

    // Children are complete before their parent moves on, so pointers to
    // the open chain stay valid.
    std::vector<Node*> m_open;
};

// Compares the current element of document with node, then their children.
void ExpectSame(CXmlDocument& document, const Node& node, const std::string& path)
{
    const std::string here = path + "/" + node.name;
    ASSERT_EQ(WideToUtf8(document.GetTagName()), node.name) << here;
    for (const auto& [name, value] : node.attributes)
        EXPECT_EQ(WideToUtf8(document.GetAttrib(Utf8ToWide(name))), value) << here << "@" << name;
    EXPECT_EQ(WideToUtf8(document.GetData()), node.children.empty() ? node.text : "") << here;
    // A string kept across the whole walk holds the current element's text only.
    static std::wstring kept;
    document.GetData(kept);
    EXPECT_EQ(WideToUtf8(kept), node.children.empty() ? node.text : "") << here << " (kept string)";
    ASSERT_TRUE(document.IntoElem());
    for (const Node& child : node.children)
    {
        ASSERT_TRUE(document.FindElem()) << here;
        ExpectSame(document, child, here);
    }
    EXPECT_FALSE(document.FindElem()) << here << ": more elements than expat reports";
    ASSERT_TRUE(document.OutOfElem());
}

} // namespace

TEST(XmlDifferential, AgreesWithExpatOnGeneratedDocuments)
{
    DocumentGenerator generator(20240601);
    for (int i = 0; i < 400; ++i)
    {
        const std::string bytes = generator.Next();
        SCOPED_TRACE(bytes);
        ExpatTree expected;
        ASSERT_TRUE(expected.Parse(bytes)) << "the generator made a document expat refuses";

        CXmlDocument document;
        ASSERT_TRUE(document.SetDoc(Utf8ToWide(bytes))) << WideToUtf8(document.GetResult());
        EXPECT_EQ(document.GetResult(), L"");
        ASSERT_TRUE(document.FindElem(L"/" + Utf8ToWide(expected.root.name)));
        ExpectSame(document, expected.root, "");
        if (testing::Test::HasFailure())
            break;
    }
}
