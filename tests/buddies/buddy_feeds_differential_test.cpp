// Differential test: for generated well-formed friends and recenttracks
// feeds, ParseFriendNames and ParseRecentTracks must give what the same
// rules give when they are applied to the events of expat, an independent
// parser. The generator mixes orders, omissions and repetitions of a
// track's children, unknown elements and attributes, entities, character
// references, CDATA, comments, non-ASCII text and white space, and names
// in other letter cases (names compare without regard to ASCII case).
//
// The text of an element is what the document's GetData gives: empty for an
// element with children; otherwise its character data, except that where
// the content holds comments, processing instructions or CDATA sections,
// pieces of text between them that are white space only (as written) are
// left out. Left out of the generator on purpose: raw tabs and line breaks
// inside attribute values and carriage returns anywhere, which expat
// normalises and the document keeps.
#include "buddies/buddy_feeds.h"
#include "support/text_encoding.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace cvas;

namespace
{

std::string FoldAscii(std::string text)
{
    for (char& c : text)
    {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

bool NameIs(const char* name, const char* wanted)
{
    return FoldAscii(name) == wanted;
}

// Random well-formed feeds, as UTF-8 bytes.
class FeedGenerator
{
public:
    explicit FeedGenerator(unsigned seed) : m_random(seed) {}

    std::string Next()
    {
        std::string out;
        if (!Chance(8))
            out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        if (Chance(6))
            out += "<!DOCTYPE lfm>\n";
        if (Chance(5))
            out += "<!-- generated -->\n";
        const int kind = Pick(10);
        if (kind == 0)
        {
            // The feed inside another element: nothing is found.
            out += "<lfm status=\"ok\">";
            Pick(2) ? RecentTracks(out) : Friends(out);
            out += "</lfm>";
        }
        else if (kind < 6)
        {
            RecentTracks(out);
        }
        else
        {
            Friends(out);
        }
        if (Chance(5))
            out += "\n<?after the root?>";
        return out + (Chance(2) ? "\n" : "");
    }

private:
    bool Chance(int oneIn) { return Pick(oneIn) == 0; }
    int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }

    template <std::size_t N> const char* From(const char* const (&choices)[N])
    {
        return choices[Pick(static_cast<int>(N))];
    }

    // A name mostly in lower case, sometimes in capitals or mixed.
    std::string Cased(std::string name)
    {
        switch (Pick(12))
        {
        case 0:
            std::transform(name.begin(), name.end(), name.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? char(c - 32) : c; });
            break;
        case 1:
            name[0] = name[0] >= 'a' && name[0] <= 'z' ? char(name[0] - 32) : name[0];
            break;
        default:
            break;
        }
        return name;
    }

    std::string Space() { return From({"", "", "\n", "\n  ", " ", "\t", "\n\t\t"}); }

    std::string AttributeValue()
    {
        static const char* const kPieces[] = {
            "alice",        "Bj\xC3\xB6rk", "\xD0\x9A\xD0\xB8\xD0\xBD\xD0\xBE",
            "a b",          "&amp;",        "&lt;&gt;",
            "&quot;&apos;", "&#65;&#x42;",  "\xF0\x9F\x8E\xB5",
            "[Live]",       "&#x20AC;",     "",
            "1700000000",   " 42 ",         "-17",
            "x=y",          "&#10;",        "99999999999999999999"};
        std::string value;
        for (int k = Pick(3); k >= 0; --k)
            value += From(kPieces);
        return value;
    }

    void Attribute(std::string& out, const std::string& name)
    {
        const char quote = Chance(2) ? '"' : '\'';
        std::string value = AttributeValue();
        if (Chance(4))
            value += quote == '"' ? "'" : "\""; // the other quote, plain inside
        out += " " + name + "=" + quote + value + quote;
    }

    // Attributes of an element: unknown ones and, maybe, the one that
    // matters, possibly in another case and possibly twice (differing in case).
    void Attributes(std::string& out, const char* wanted, int oneInMissing)
    {
        static const char* const kOther[] = {"mbid", "realname", "x", "nowplaying", "\xC3\xA9"};
        std::vector<std::string> names;
        for (int k = Pick(3); k > 0; --k)
        {
            const std::string name = From(kOther) + std::to_string(names.size());
            names.push_back(name);
        }
        if (wanted && !Chance(oneInMissing))
        {
            names.insert(names.begin() + Pick(static_cast<int>(names.size()) + 1), Cased(wanted));
            if (Chance(8))
            {
                std::string other = FoldAscii(wanted);
                other[0] = static_cast<char>(other[0] - 32);
                if (std::find(names.begin(), names.end(), other) == names.end())
                    names.push_back(other);
            }
        }
        for (const std::string& name : names)
            Attribute(out, name);
    }

    // Text content: pieces of text, references, CDATA, comments.
    void Text(std::string& out)
    {
        static const char* const kText[] = {"Bj\xC3\xB6rk",
                                            "J\xC3\xB3ga",
                                            "Sigur R\xC3\xB3s",
                                            "Hopp\xC3\xADpolla",
                                            "\xD0\x9A\xD0\xB8\xD0\xBD\xD0\xBE",
                                            "\xD0\x93\xD1\x80\xD1\x83\xD0\xBF\xD0\xBF\xD0\xB0",
                                            "The [Bracket] Band",
                                            "Artist [Live]",
                                            "\xE4\xB8\xAD\xE6\x96\x87",
                                            "\xF0\x9F\x8E\xB5",
                                            "http://www.example.net/music/A?b=1&amp;c=2",
                                            " spaced words ",
                                            "\n",
                                            "\t",
                                            "&lt;&amp;&gt;&quot;&apos;",
                                            "&#65;&#x42;&#x1F3B5;",
                                            "'\">",
                                            "&#32;",
                                            "&#x9;&#10;",
                                            "14 Nov 2023, 22:13"};
        static const char* const kCdata[] = {"<b>&amp;</b>", "]]", "]", "\xC3\xA9", "\n", " "};
        for (int k = Pick(4); k >= 0; --k)
        {
            switch (Pick(8))
            {
            case 0:
                out += "<![CDATA[";
                out += From(kCdata);
                out += "]]>";
                break;
            case 1:
                out += From({"<!-- c -->", "<?pi data?>", "<!---->"});
                break;
            default:
                out += From(kText);
                break;
            }
        }
    }

    // An element with text, nothing, or children of its own.
    void Leaf(std::string& out, const std::string& name, const char* wantedAttribute)
    {
        out += "<" + name;
        Attributes(out, wantedAttribute, 5);
        switch (Pick(8))
        {
        case 0:
            out += Chance(2) ? "/>" : " />";
            return;
        case 1:
            out += ">";
            out += "<b>inner</b>";
            if (Chance(2))
                Text(out);
            break;
        default:
            out += ">";
            Text(out);
            break;
        }
        out += "</" + name + ">";
    }

    void Track(std::string& out)
    {
        static const char* const kFields[] = {"artist", "name", "mbid",      "album",
                                              "url",    "date", "streamable"};
        static const char* const kExtra[] = {"image", "track", "user", "x", "\xC3\xA9t\xC3\xA9"};
        std::vector<std::string> children;
        for (const char* field : kFields)
        {
            if (!Chance(10))
                children.push_back(field);
        }
        for (int k = Pick(3); k > 0; --k)
            children.insert(children.begin() + Pick(static_cast<int>(children.size()) + 1),
                            Chance(2) ? From(kFields) : From(kExtra));
        switch (Pick(6))
        {
        case 0:
            std::shuffle(children.begin(), children.end(), m_random);
            break;
        case 1:
            if (children.size() >= 2)
            {
                const std::size_t at = static_cast<std::size_t>(Pick(int(children.size()) - 1));
                std::swap(children[at], children[at + 1]);
            }
            break;
        default:
            break;
        }
        const std::string name = Cased("track");
        out += "<" + name;
        Attributes(out, nullptr, 1);
        if (Chance(30))
        {
            out += "/>";
            return;
        }
        out += ">";
        for (const std::string& child : children)
        {
            out += Space();
            if (Chance(12))
                out += "<!-- between -->";
            Leaf(out, Cased(child), child == "date" ? "uts" : nullptr);
        }
        out += Space() + "</" + name + ">";
    }

    void RecentTracks(std::string& out)
    {
        const std::string root = Cased("recenttracks");
        out += "<" + root;
        Attributes(out, "user", 3);
        out += ">";
        for (int k = Pick(8); k > 0; --k)
        {
            out += Space();
            switch (Pick(10))
            {
            case 0:
                Leaf(out, From({"page", "artist", "user", "tracks"}), "uts");
                break;
            case 1:
                out += From({"stray text", "<!-- c -->", "<![CDATA[x]]>"});
                break;
            default:
                Track(out);
                break;
            }
        }
        out += Space() + "</" + root + ">";
    }

    void User(std::string& out)
    {
        const std::string name = Cased("user");
        out += "<" + name;
        Attributes(out, "username", 6);
        if (Chance(4))
        {
            out += "/>";
            return;
        }
        out += ">";
        for (int k = Pick(3); k > 0; --k)
        {
            out += Space();
            if (Chance(5))
                User(out); // a user inside a user is not a friend
            else
                Leaf(out, From({"url", "image", "realname", "username"}), "username");
        }
        out += Space() + "</" + name + ">";
    }

    void Friends(std::string& out)
    {
        const std::string root = Cased("friends");
        out += "<" + root;
        Attributes(out, "user", 3);
        out += ">";
        for (int k = Pick(8); k > 0; --k)
        {
            out += Space();
            if (Chance(6))
                Leaf(out, From({"group", "users", "\xC3\xA9"}), "username");
            else
                User(out);
        }
        out += Space() + "</" + root + ">";
    }

    std::mt19937 m_random;
};

// The rules on expat's events.
class ExpatFeedRules
{
public:
    struct Track
    {
        std::string artist, name, url, uts;
    };

    bool Parse(const std::string& bytes)
    {
        std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
            XML_ParserCreate(nullptr), XML_ParserFree);
        XML_SetUserData(parser.get(), this);
        XML_SetElementHandler(parser.get(), &Start, &End);
        XML_SetCharacterDataHandler(parser.get(), &Characters);
        XML_SetCommentHandler(parser.get(), &Comment);
        XML_SetProcessingInstructionHandler(parser.get(), &Instruction);
        XML_SetCdataSectionHandler(parser.get(), &CdataStart, &CdataEnd);
        m_parser = parser.get();
        m_bytes = &bytes;
        return XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), 1) ==
               XML_STATUS_OK;
    }

    std::vector<std::string> friends;
    std::vector<Track> tracks;
    int droppedTracks = 0;

private:
    static constexpr std::array<const char*, 4> kWanted = {"artist", "name", "url", "date"};

    // The value of the first attribute of that name, in any case; empty if none.
    static std::string Attribute(const XML_Char** attributes, const char* name)
    {
        for (int i = 0; attributes[i]; i += 2)
        {
            if (NameIs(attributes[i], name))
                return attributes[i + 1];
        }
        return {};
    }

    static void Start(void* user, const XML_Char* name, const XML_Char** attributes)
    {
        auto* self = static_cast<ExpatFeedRules*>(user);
        const int depth = ++self->m_depth;
        if (depth == 1)
        {
            self->m_friendsRoot = NameIs(name, "friends");
            self->m_tracksRoot = NameIs(name, "recenttracks");
        }
        else if (depth == 2 && self->m_friendsRoot && NameIs(name, "user"))
        {
            self->friends.push_back(Attribute(attributes, "username"));
        }
        else if (depth == 2 && self->m_tracksRoot && NameIs(name, "track"))
        {
            self->m_inTrack = true;
            self->m_stage = 0;
            self->m_track = {};
        }
        else if (depth == 3 && self->m_inTrack && self->m_stage < 4 &&
                 NameIs(name, kWanted[self->m_stage]))
        {
            if (self->m_stage == 3)
            {
                self->m_track.uts = Attribute(attributes, "uts");
            }
            else
            {
                self->m_capturing = true;
                self->m_capture = {};
            }
            ++self->m_stage;
        }
        else if (depth == 4 && self->m_capturing)
        {
            self->m_capture.hasChild = true;
        }
    }

    static void End(void* user, const XML_Char*)
    {
        auto* self = static_cast<ExpatFeedRules*>(user);
        const int depth = self->m_depth--;
        if (depth == 3 && self->m_capturing)
        {
            std::string* fields[] = {&self->m_track.artist, &self->m_track.name,
                                     &self->m_track.url};
            *fields[self->m_stage - 1] = self->m_capture.Data();
            self->m_capturing = false;
        }
        else if (depth == 2 && self->m_inTrack)
        {
            if (self->m_stage == 4)
                self->tracks.push_back(self->m_track);
            else
                ++self->droppedTracks;
            self->m_inTrack = false;
        }
    }

    // Events directly inside the element whose text is taken.
    static ExpatFeedRules* Capturing(void* user)
    {
        auto* self = static_cast<ExpatFeedRules*>(user);
        return self->m_capturing && self->m_depth == 3 ? self : nullptr;
    }

    static void Characters(void* user, const XML_Char* text, int length)
    {
        if (ExpatFeedRules* self = Capturing(user))
        {
            const auto at = static_cast<std::size_t>(XML_GetCurrentByteIndex(self->m_parser));
            const auto count = static_cast<std::size_t>(XML_GetCurrentByteCount(self->m_parser));
            self->m_capture.Characters(std::string_view(text, static_cast<std::size_t>(length)),
                                       std::string_view(*self->m_bytes).substr(at, count));
        }
    }
    static void Comment(void* user, const XML_Char*)
    {
        if (ExpatFeedRules* self = Capturing(user))
            self->m_capture.Markup();
    }
    static void Instruction(void* user, const XML_Char*, const XML_Char*)
    {
        if (ExpatFeedRules* self = Capturing(user))
            self->m_capture.Markup();
    }
    static void CdataStart(void* user)
    {
        if (ExpatFeedRules* self = Capturing(user))
            self->m_capture.Markup(true);
    }
    static void CdataEnd(void* user)
    {
        if (ExpatFeedRules* self = Capturing(user))
            self->m_capture.Markup(false);
    }

    // The content of one element, in pieces between markup.
    struct Capture
    {
        bool hasChild = false;
        bool hasMarkup = false;
        bool inCdata = false;
        std::string all;
        std::string kept;  // the pieces GetData keeps when there is markup
        std::string piece; // the text since the last markup
        bool pieceIsSpace = true;

        void Characters(std::string_view text, std::string_view written)
        {
            all += text;
            if (inCdata)
            {
                kept += text;
                return;
            }
            piece += text;
            for (char c : written)
                pieceIsSpace = pieceIsSpace && (c == ' ' || c == '\t' || c == '\n' || c == '\r');
        }
        void Markup(bool cdataFollows = false)
        {
            if (!pieceIsSpace)
                kept += piece;
            piece.clear();
            pieceIsSpace = true;
            hasMarkup = true;
            inCdata = cdataFollows;
        }
        std::string Data()
        {
            if (hasChild)
                return {};
            if (!hasMarkup)
                return all;
            Markup();
            return kept;
        }
    };

    int m_depth = 0;
    bool m_friendsRoot = false;
    bool m_tracksRoot = false;
    bool m_inTrack = false;
    int m_stage = 0;
    Track m_track;
    bool m_capturing = false;
    Capture m_capture;
    XML_Parser m_parser = nullptr;
    const std::string* m_bytes = nullptr;
};

} // namespace

TEST(BuddyFeedsDifferential, AgreesWithTheRulesOnExpatsEvents)
{
    FeedGenerator generator(20261116);
    int keptTracks = 0;
    int droppedTracks = 0;
    int friends = 0;
    for (int i = 0; i < 3000; ++i)
    {
        const std::string bytes = generator.Next();
        SCOPED_TRACE(bytes);
        ExpatFeedRules expected;
        ASSERT_TRUE(expected.Parse(bytes)) << "the generator made a document expat refuses";
        const std::wstring text = Utf8ToWide(bytes);

        std::vector<std::string> names;
        for (const std::wstring& name : ParseFriendNames(text))
            names.push_back(WideToUtf8(name));
        EXPECT_EQ(names, expected.friends);

        const std::vector<CParsedRecentTrack> tracks = ParseRecentTracks(text);
        ASSERT_EQ(tracks.size(), expected.tracks.size());
        for (std::size_t t = 0; t < tracks.size(); ++t)
        {
            EXPECT_EQ(WideToUtf8(tracks[t].artist), expected.tracks[t].artist) << "track " << t;
            EXPECT_EQ(WideToUtf8(tracks[t].name), expected.tracks[t].name) << "track " << t;
            EXPECT_EQ(WideToUtf8(tracks[t].url), expected.tracks[t].url) << "track " << t;
            EXPECT_EQ(WideToUtf8(tracks[t].uts), expected.tracks[t].uts) << "track " << t;
        }
        if (testing::Test::HasFailure())
            break;
        keptTracks += static_cast<int>(expected.tracks.size());
        droppedTracks += expected.droppedTracks;
        friends += static_cast<int>(expected.friends.size());
    }
    // The generator must exercise both outcomes, or the comparison says little.
    EXPECT_GT(keptTracks, 1000);
    EXPECT_GT(droppedTracks, 1000);
    EXPECT_GT(friends, 1000);
    std::printf("differential: 3000 feeds, %d tracks kept, %d dropped, %d friends\n", keptTracks,
                droppedTracks, friends);
}
