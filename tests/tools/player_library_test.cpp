// The simulated player's library: field templates and the query language.

#include <gtest/gtest.h>

#include "tools/player/library_file.h"
#include "tools/player/library_query.h"

using namespace cvas::player;

namespace
{

CLibraryFile MakeFile(int key, std::wstring fileName, std::wstring artist, std::wstring name)
{
    CLibraryFile file;
    file.key = key;
    file.fileName = std::move(fileName);
    file.identity = L"C:\\Music\\" + file.fileName;
    file.duration = 200;
    file.fields = {{L"ARTIST", std::move(artist)}, {L"NAME", std::move(name)}, {L"ALBUM", L"Al"}};
    return file;
}

std::vector<CLibraryFile> Library()
{
    return {MakeFile(7, L"one.mp3", L"Low Roar", L"Nobody"),
            MakeFile(3, L"two.MP3", L"Guns N' Roses", L"a]b"),
            MakeFile(12, L"dir.v2\\three", L"\u00C9dith", L"Non"),
            MakeFile(5, L"four.ogg", L"Low Roar", L"Bones")};
}

std::vector<int> Keys(const CQueryResult& result)
{
    const auto library = Library();
    std::vector<int> keys;
    for (const std::size_t index : result.matches)
        keys.push_back(library[index].key);
    return keys;
}

std::vector<int> Matches(const std::wstring& query)
{
    const CQueryResult result = RunQuery(Library(), query);
    EXPECT_EQ(result.error, L"") << "query: " << testing::PrintToString(query);
    return Keys(result);
}

} // namespace

TEST(PlayerTemplate, FillsKnownFieldsAnyCaseAndKeepsOtherBrackets)
{
    const CLibraryFile file = MakeFile(7, L"one.mp3", L"Low Roar", L"Nobody");
    EXPECT_EQ(FillTemplate(file, L"[ARTIST] - [NAME]"), L"Low Roar - Nobody");
    EXPECT_EQ(FillTemplate(file, L"[artist]/[Album] [FILETYPE] [KEY] [DURATION]"),
              L"Low Roar/Al mp3 7 200");
    EXPECT_EQ(FillTemplate(file, L"[NOPE] [] [[NAME]] [NAME"), L"[NOPE] [] [Nobody] [NAME");
    EXPECT_EQ(FillTemplate(file, L"plain"), L"plain");
}

TEST(PlayerTemplate, FileTypeIsTheExtensionOfTheLastPathPart)
{
    EXPECT_EQ(FileType(L"a.b.flac"), L"flac");
    EXPECT_EQ(FileType(L"dir.v2\\three"), L"");
    EXPECT_EQ(FileType(L"noextension"), L"");
}

TEST(PlayerQuery, ThePlugInsFormFindsExactlyTheFileWithThatKeyAndType)
{
    EXPECT_EQ(Matches(L"~d=a [key]=[7] Filetype=[mp3],[wav],[ogg]"), std::vector<int>{7});
    // The file type compares regardless of case.
    EXPECT_EQ(Matches(L"~d=a [key]=[3] Filetype=[mp3],[wav],[ogg]"), std::vector<int>{3});
    // A file without an extension has an empty type.
    EXPECT_EQ(Matches(L"~d=a [key]=[12] Filetype=[mp3],[wav],[ogg]"), std::vector<int>{});
    EXPECT_EQ(Matches(L"~d=a [key]=[12] Filetype=[]"), std::vector<int>{12});
    // Filters may be given in any case; blanks between terms may be many.
    EXPECT_EQ(Matches(L"~d=a  [KEY]=[5]   FILETYPE=OGG "), std::vector<int>{5});
    EXPECT_EQ(Matches(L"~d=a [key]=[99] Filetype=[mp3]"), std::vector<int>{});
}

TEST(PlayerQuery, TermsAreAndedValuesOredAndOrderedByTheOption)
{
    EXPECT_EQ(Matches(L""), (std::vector<int>{7, 3, 12, 5}));
    EXPECT_EQ(Matches(L"~d=a"), (std::vector<int>{3, 5, 7, 12}));
    EXPECT_EQ(Matches(L"~d=d artist=[low roar]"), (std::vector<int>{7, 5}));
    EXPECT_EQ(Matches(L"artist=[Low Roar] name=[Bones],[Nobody]"), (std::vector<int>{7, 5}));
    EXPECT_EQ(Matches(L"artist=[Low Roar] name=[Bones]"), std::vector<int>{5});
    EXPECT_EQ(Matches(L"artist=[\u00E9dith]"), std::vector<int>{12});
    // A field that no file has is empty.
    EXPECT_EQ(Matches(L"genre=[Rock]"), std::vector<int>{});
    // Keys compare as numbers.
    EXPECT_EQ(Matches(L"[key]=[007]"), std::vector<int>{7});
    EXPECT_EQ(Matches(L"[key]=[seven]"), std::vector<int>{});
}

TEST(PlayerQuery, BracketedValuesKeepBlanksAndInnerClosingBrackets)
{
    EXPECT_EQ(Matches(L"artist=[Guns N' Roses] name=[a]b]"), std::vector<int>{3});
    EXPECT_EQ(Matches(L"name=[a]b],[Nobody]"), (std::vector<int>{7, 3}));
}

TEST(PlayerQuery, MalformedQueriesMatchNothingAndSayWhere)
{
    const struct
    {
        const wchar_t* query;
        const wchar_t* error;
    } cases[] = {
        {L"~d=a [key]=[7]\r\nFiletype=[mp3]", L"line break at character 15"},
        {L"~d=a [key]=[7]\nFiletype=[mp3]", L"line break at character 15"},
        {L"~d=x [key]=[7]", L"unknown option at character 1"},
        {L"~d=a [key=[7]", L"expected FIELD= at character 6"},
        {L"[key]=[7", L"unclosed value at character 7"},
        {L"[key]=", L"expected a value at character 7"},
        {L"Filetype=[mp3],", L"expected a value at character 16"},
        {L"Filetype=mp3]", L"unexpected character at character 13"},
        {L"=[mp3]", L"expected FIELD= at character 1"},
        {L"[key]=[7]x", L"unclosed value at character 7"},
    };
    for (const auto& test : cases)
    {
        const CQueryResult result = RunQuery(Library(), test.query);
        EXPECT_EQ(result.error, test.error) << testing::PrintToString(std::wstring(test.query));
        EXPECT_TRUE(result.matches.empty());
    }
}
