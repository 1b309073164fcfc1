// Loading and saving: the three encodings, byte-order marks, the load and
// save descriptions, failures, and wide file names.
#include "support/text_encoding.h"
#include "xml/xml_document.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

using namespace cvas;
namespace fs = std::filesystem;

namespace
{

// A folder of its own for each test, removed afterwards.
class XmlFile : public testing::Test
{
protected:
    void SetUp() override
    {
        const auto tick = std::chrono::steady_clock::now().time_since_epoch().count();
        m_folder = fs::temp_directory_path() / ("cvas_xml_" + std::to_string(tick));
        fs::create_directories(m_folder);
    }
    void TearDown() override
    {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }

    // Wide names are joined by hand: outside Windows, std::filesystem would
    // convert them with the C locale, which knows no characters beyond ASCII.
    std::wstring PathOf(const std::wstring& name) const { return m_folder.wstring() + L"/" + name; }

    void WriteBytes(const std::wstring& name, const std::string& bytes) const
    {
        std::ofstream(m_folder / name, std::ios::binary) << bytes;
    }

    std::string ReadBytes(const std::wstring& name) const
    {
        std::ifstream in(m_folder / name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    fs::path m_folder;
};

std::wstring MusicalNote()
{
    return sizeof(wchar_t) == 2 ? std::wstring(L"\xD83C\xDFB5") : std::wstring(1, wchar_t(0x1F3B5));
}

// Builds a small queue with texts outside ASCII and characters to escape.
CountedHandle<CXmlDocument> BuildQueue()
{
    CountedHandle<CXmlDocument> document = NewDocument();
    document->AddElem(L"queue");
    document->IntoElem();
    document->AddElem(L"track");
    document->AddChildElem(L"artist", L"Bj\x00F6rk & <Caf\x00E9>");
    document->AddChildElem(L"name", L"\x6771\x4EAC " + MusicalNote());
    document->AddChildElem(L"album", L"a]]>b", kXmlAddCdata);
    return document;
}

void ExpectQueue(CXmlDocument& document)
{
    ASSERT_TRUE(document.FindElem(L"/queue/track/artist"));
    EXPECT_EQ(document.GetData(), L"Bj\x00F6rk & <Caf\x00E9>");
    ASSERT_TRUE(document.FindElem(L"name"));
    EXPECT_EQ(document.GetData(), L"\x6771\x4EAC " + MusicalNote());
    ASSERT_TRUE(document.FindElem(L"album"));
    EXPECT_EQ(document.GetData(), L"a]]>b");
}

} // namespace

TEST_F(XmlFile, RoundTripsInAllThreeEncodings)
{
    struct Case
    {
        std::uint32_t flags;
        std::string mark;
        bool utf16;
    };
    for (const Case& c : {Case{0, "", false}, Case{kXmlDocUtf8Bom, "\xEF\xBB\xBF", false},
                          Case{kXmlDocUtf16Le, "\xFF\xFE", true}})
    {
        SCOPED_TRACE(c.flags);
        CountedHandle<CXmlDocument> built = BuildQueue();
        built->SetDocFlags(built->GetDocFlags() | c.flags);
        const std::wstring text = built->GetDoc();
        ASSERT_TRUE(built->Save(PathOf(L"Queue.xml")));

        const std::string body = c.utf16 ? WideToUtf16Le(text) : WideToUtf8(text);
        EXPECT_EQ(ReadBytes(L"Queue.xml"), c.mark + body);
        const std::wstring chars = std::to_wstring(text.size());
        const std::wstring bytes = std::to_wstring(body.size());
        if (c.utf16)
            EXPECT_EQ(built->GetResult(), L"UTF-16LE BOM + " + chars + L" wide chars");
        else
            EXPECT_EQ(built->GetResult(), chars + L" wide chars to " +
                                              (c.mark.empty() ? L"" : L"UTF-8 BOM + ") + bytes +
                                              L" bytes");

        CountedHandle<CXmlDocument> loaded = NewDocument();
        loaded->Load(PathOf(L"Queue.xml"));
        EXPECT_EQ(loaded->GetDoc(), text);
        EXPECT_EQ(loaded->GetDocFlags(), kXmlDocIgnoreCase | c.flags);
        if (c.utf16)
            EXPECT_EQ(loaded->GetResult(), L"UTF-16LE BOM + " + chars + L" wide chars");
        else
            EXPECT_EQ(loaded->GetResult(), (c.mark.empty() ? L"" : L"UTF-8 BOM + ") + bytes +
                                               L" bytes to " + chars + L" wide chars");
        ExpectQueue(*loaded);

        // Saved again, a loaded document keeps its encoding.
        ASSERT_TRUE(loaded->Save(PathOf(L"Again.xml")));
        EXPECT_EQ(ReadBytes(L"Again.xml"), c.mark + body);
    }
}

TEST_F(XmlFile, LoadDescriptionsAndErrorsTogether)
{
    CountedHandle<CXmlDocument> document = NewDocument();
    WriteBytes(L"empty.xml", "");
    document->Load(PathOf(L"empty.xml"));
    EXPECT_EQ(document->GetResult(), L"0 bytes to 0 wide chars, Empty document");

    WriteBytes(L"bom.xml", "\xEF\xBB\xBF<a>\xC3\xA9</b>");
    document->Load(PathOf(L"bom.xml"));
    EXPECT_EQ(document->GetResult(),
              L"UTF-8 BOM + 9 bytes to 8 wide chars, No start tag for end tag 'b' at offset 4");
    EXPECT_EQ(document->GetParseError(), L"No start tag for end tag 'b' at offset 4");
    EXPECT_EQ(document->GetDocFlags(), kXmlDocIgnoreCase | kXmlDocUtf8Bom);

    // FF not followed by FE is no mark: the bytes read as they are.
    WriteBytes(L"ff.xml", "\xFF<a/>");
    document->Load(PathOf(L"ff.xml"));
    EXPECT_EQ(document->GetDocFlags(), kXmlDocIgnoreCase);
    EXPECT_EQ(document->GetDoc(), L"\x00FF<a/>");
    EXPECT_EQ(document->GetResult(), L"5 bytes to 5 wide chars");
    EXPECT_TRUE(document->IsLoaded());
    EXPECT_EQ(document->GetParseError(), L"");
    document->Load(PathOf(L"missing.xml"));
    EXPECT_FALSE(document->IsLoaded());
}

TEST_F(XmlFile, Utf16WithAnOddByteLosesIt)
{
    WriteBytes(L"odd.xml", std::string("\xFF\xFE<\0a\0/\0>\0Z", 11));
    CountedHandle<CXmlDocument> document = NewDocument();
    document->Load(PathOf(L"odd.xml"));
    EXPECT_EQ(document->GetDoc(), L"<a/>");
    EXPECT_EQ(document->GetResult(), L"UTF-16LE BOM + 4 wide chars");
    EXPECT_TRUE(document->FindElem(L"a"));
}

TEST_F(XmlFile, FailuresLeaveTheDocumentAsItWas)
{
    CountedHandle<CXmlDocument> document = NewDocument();
    document->Load(PathOf(L"missing.xml"));
    EXPECT_EQ(document->GetResult(), Utf8ToWide(std::strerror(ENOENT)));
    EXPECT_EQ(document->GetDoc(), L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    EXPECT_FALSE(document->FindElem());

    ASSERT_TRUE(document->AddElem(L"kept"));
    EXPECT_FALSE(document->Save(PathOf(L"no-such-folder/x.xml")));
    EXPECT_EQ(document->GetResult(), Utf8ToWide(std::strerror(ENOENT)));
    document->Load(PathOf(L"missing.xml"));
    EXPECT_TRUE(document->FindElem(L"/kept"));
}

TEST_F(XmlFile, WideFileNames)
{
    const std::wstring name = L"R\x00E9pl\x00E4"
                              L"cements \x97F3\x697D.xml";
    CountedHandle<CXmlDocument> built = BuildQueue();
    ASSERT_TRUE(built->Save(PathOf(name)));
#ifdef _WIN32
    EXPECT_TRUE(fs::exists(m_folder / name));
#else
    EXPECT_TRUE(fs::exists(m_folder / WideToUtf8(name)));
#endif
    CountedHandle<CXmlDocument> loaded = NewDocument();
    loaded->Load(PathOf(name));
    ExpectQueue(*loaded);
}

TEST_F(XmlFile, LargeFilesDecodeAcrossReadPieces)
{
    // Multi-byte characters at every alignment, well past the read buffer.
    std::wstring value;
    for (int i = 0; value.size() < 150000; ++i)
        value += (i % 3 == 0) ? L"\x00E9" : (i % 3 == 1) ? L"\x20AC" : MusicalNote();
    CountedHandle<CXmlDocument> built = NewDocument();
    ASSERT_TRUE(built->AddElem(L"v", value));
    for (std::uint32_t flags : {0u, kXmlDocUtf16Le})
    {
        built->SetDocFlags(flags);
        ASSERT_TRUE(built->Save(PathOf(L"big.xml")));
        CountedHandle<CXmlDocument> loaded = NewDocument();
        loaded->Load(PathOf(L"big.xml"));
        ASSERT_TRUE(loaded->FindElem(L"v"));
        EXPECT_EQ(loaded->GetData(), value);
    }
}
