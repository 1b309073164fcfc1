#include "scrobbler/network/handshake_answer.h"
#include "scrobbler/network/response_lines.h"

#include <gtest/gtest.h>

#include <climits>

using namespace cvas;

using Lines = std::vector<std::string>;

TEST(ResponseLines, RunsOfLineBreaksAreOneSeparatorAndNulEndsTheText)
{
    EXPECT_EQ(SplitResponseLines("UPTODATE\r\n\r\nabc\n\n\rhttp://h:1/p\r\n"),
              (Lines{"UPTODATE", "abc", "http://h:1/p"}));
    EXPECT_EQ(SplitResponseLines("\n\nOK"), (Lines{"OK"}));
    EXPECT_EQ(SplitResponseLines(""), Lines{});
    EXPECT_EQ(SplitResponseLines(std::string_view("OK\nA\0FAILED x\n", 15)), (Lines{"OK", "A"}));
}

TEST(ResponseLines, IntervalIsReadLikeAtoiFromTheLastIntervalLine)
{
    EXPECT_EQ(ReadInterval({"UPTODATE", "INTERVAL 5"}), 5u);
    EXPECT_EQ(ReadInterval({"INTERVAL 5", "INTERVAL 7s"}), 7u);
    EXPECT_EQ(ReadInterval({"INTERVAL x"}), 0u);
    EXPECT_EQ(ReadInterval({"INTERVAL   12"}), 12u) << "leading blanks are skipped";
    EXPECT_EQ(ReadInterval({"INTERVAL5", "interval 5", " INTERVAL 5"}), 0u);
    EXPECT_EQ(ReadInterval({"INTERVAL -3"}), 0u) << "no negative pause";
    EXPECT_EQ(ReadInterval({"INTERVAL 99999999999999999999"}), static_cast<unsigned>(INT_MAX));
    EXPECT_EQ(ReadLeadingNumber("+42abc"), 42);
    EXPECT_EQ(ReadLeadingNumber("-99999999999999"), INT_MIN);
}

TEST(HandshakeAnswer, OnlyUptodateWithThreeLinesOpensASession)
{
    const CHandshakeAnswer four = AcceptHandshake(
        SplitResponseLines("UPTODATE\nchallenge1\nhttp://post.example:8080/protocol_1.1\n"
                           "INTERVAL 5\n"));
    EXPECT_EQ(four.challenge, "challenge1");
    EXPECT_EQ(four.submissionUrl, "http://post.example:8080/protocol_1.1");

    for (const Lines& refused :
         {Lines{"UPTODATE", "challenge1"}, Lines{"UPDATE http://x/", "c", "http://h:1/p"},
          Lines{"FAILED Plugin bug", "c", "http://h:1/p"}, Lines{"BADUSER"},
          Lines{"uptodate", "c", "http://h:1/p"}, Lines{}})
    {
        const CHandshakeAnswer answer = AcceptHandshake(refused);
        EXPECT_TRUE(answer.challenge.empty() && answer.submissionUrl.empty())
            << (refused.empty() ? "" : refused[0]);
    }
}

TEST(SubmissionUrl, OrdinaryUrlGivesHostPortAndPath)
{
    CSubmissionTarget target;
    ASSERT_TRUE(SplitSubmissionUrl("http://post.example:8080/protocol_1.1", target));
    EXPECT_EQ(target.host, "post.example");
    EXPECT_EQ(target.port, 8080);
    EXPECT_EQ(target.path, "/protocol_1.1");

    ASSERT_TRUE(SplitSubmissionUrl("http://127.0.0.1:5000/a/b?x=1", target));
    EXPECT_EQ(target.host, "127.0.0.1");
    EXPECT_EQ(target.port, 5000);
    EXPECT_EQ(target.path, "/a/b?x=1");
}

TEST(SubmissionUrl, HostWithoutPortTakesThePortOfTheScheme)
{
    struct Case
    {
        const char* url;
        const char* host;
        int port;
        const char* path;
        bool secure;
    };
    for (const Case& c : {
             Case{"http://h/p", "h", 80, "/p", false},
             Case{"http://h//p", "h", 80, "//p", false},
             Case{"http://h:8080//submissions/1.2/", "h", 8080, "//submissions/1.2/", false},
             Case{"https://h/p", "h", 443, "/p", true},
             Case{"HTTPS://h/p", "h", 443, "/p", true},
             Case{"https://h:8443/p", "h", 8443, "/p", true},
             Case{"http://127.0.0.1//submissions/1.2/", "127.0.0.1", 80, "//submissions/1.2/",
                  false},
             Case{"https://127.0.0.1/p", "127.0.0.1", 443, "/p", true},
         })
    {
        SCOPED_TRACE(c.url);
        CSubmissionTarget target;
        ASSERT_TRUE(SplitSubmissionUrl(c.url, target));
        EXPECT_EQ(target.host, c.host);
        EXPECT_EQ(target.port, c.port);
        EXPECT_EQ(target.path, c.path);
        EXPECT_EQ(target.secure, c.secure);
    }
}

TEST(SubmissionUrl, NoHostTextGivesAnEmptyHostAndALeadingSlashIsMalformed)
{
    CSubmissionTarget target;
    ASSERT_TRUE(SplitSubmissionUrl("post.example:80", target)) << "not reported as malformed";
    EXPECT_EQ(target.host, "");

    ASSERT_TRUE(SplitSubmissionUrl("http://h:81", target)) << "no path at all";
    EXPECT_EQ(target.host, "");

    target = {"kept", 1, "/kept", true};
    EXPECT_FALSE(SplitSubmissionUrl("/protocol_1.1", target));
    EXPECT_EQ(target.host, "kept");
    EXPECT_TRUE(target.secure);
}
