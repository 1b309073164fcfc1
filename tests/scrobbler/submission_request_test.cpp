#include "scrobbler/network/internet_error_texts.h"
#include "scrobbler/network/session_keys.h"
#include "scrobbler/network/submission_request.h"

#include <gtest/gtest.h>

using namespace cvas;

TEST(SessionKeys, HandshakeUrlPastesTheValuesUnescaped)
{
    EXPECT_EQ(BuildHandshakeUrl(L"http://h/?hs=true&p=1.1", L"qzt", L"0.1", L"Zo\u00eb & co"),
              L"http://h/?hs=true&p=1.1&c=qzt&v=0.1&u=Zo\u00eb & co");
}

TEST(SessionKeys, SessionResponseIsTheDigestOfDigestAndChallenge)
{
    const std::string digest = PasswordDigest("secret");
    EXPECT_EQ(digest, "5ebe2294ecd0e0f08eab7690d2a6ee69");
    EXPECT_EQ(SessionResponse(digest, "0123456789abcdef0123456789abcdef"),
              "848b4c0f455377fdfcc23483a4c45e34");
}

TEST(SubmissionRequest, BodyCarriesOnePlayAndEndsWithAmpersand)
{
    const std::string artist("Bj%C3%B6rk\0junk", 15);
    const CPlayWireForms play{artist, "Army%20of%20Me", "Post", "234", "2024-01-02%2003%3A04%3A05"};
    EXPECT_EQ(BuildPostBody("user", "abc", play),
              "u=user&s=abc&a[0]=Bj%C3%B6rk&t[0]=Army%20of%20Me&b[0]=Post&m[0]=&l[0]=234"
              "&i[0]=2024-01-02%2003%3A04%3A05&");
}

TEST(SubmissionRequest, OnlyAFirstLineOkSucceedsAndRefusalsAreCollected)
{
    EXPECT_TRUE(JudgeSubmissionAnswer({"OK", "INTERVAL 3"}).succeeded);

    const CSubmissionVerdict late = JudgeSubmissionAnswer({"NOTICE", "OK"});
    EXPECT_FALSE(late.succeeded);
    EXPECT_TRUE(late.refusals.empty()) << "a failure without failed-log entries";
    EXPECT_TRUE(late.judged) << "the service did answer in its own words";

    const CSubmissionVerdict refused = JudgeSubmissionAnswer(
        {"FAILED Plugin bug", "x", "BADAUTH", "FAILED", "BADAUTH ", "BADSESSION", "badsession"});
    EXPECT_FALSE(refused.succeeded);
    EXPECT_TRUE(refused.judged);
    EXPECT_EQ(refused.refusals,
              (std::vector<std::string>{"FAILED Plugin bug", "BADAUTH", "BADSESSION"}));
}

TEST(SubmissionRequest, AnswersWithoutAProtocolLineJudgeNothing)
{
    for (const std::vector<std::string>& lines : {std::vector<std::string>{},
                                                  {"OK "},
                                                  {"<html><body>502 Bad Gateway</body></html>"},
                                                  {"FAILED"},
                                                  {"BADAUTH "},
                                                  {"Thanks", "ok"}})
    {
        const CSubmissionVerdict verdict = JudgeSubmissionAnswer(lines);
        EXPECT_FALSE(verdict.succeeded);
        EXPECT_FALSE(verdict.judged) << (lines.empty() ? "" : lines[0]);
        EXPECT_TRUE(verdict.refusals.empty());
    }
}

TEST(InternetErrorTexts, FixedTextsAndTheFallback)
{
    EXPECT_EQ(InternetErrorFallbackText(12029), L"Cannot connect to the specified address/port.");
    EXPECT_EQ(InternetErrorFallbackText(12002), L"Timeout.");
    EXPECT_EQ(InternetErrorFallbackText(12007), L"Internet name not resolved.");
    EXPECT_EQ(InternetErrorFallbackText(12013), L"Incorrect username.");
    EXPECT_EQ(InternetErrorFallbackText(12014), L"Incorrect password.");
    EXPECT_EQ(InternetErrorFallbackText(12003), L"");
    EXPECT_EQ(InternetErrorFallbackText(4000000000u),
              L"Could not find error text for error 4000000000");
}
