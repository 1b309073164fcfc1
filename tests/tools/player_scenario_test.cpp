// The simulated player's scenario files and command line.

#include <gtest/gtest.h>

#include "tools/player/command_line.h"
#include "tools/player/scenario.h"

using namespace cvas::player;

namespace
{

std::wstring ErrorOf(const std::string& text)
{
    CScenario scenario;
    std::wstring error;
    EXPECT_FALSE(ParseScenario(text, scenario, error)) << text;
    return error;
}

} // namespace

TEST(PlayerScenario, ReadsLibraryPlaylistAndEverySortOfStep)
{
    const std::string text =
        "\xEF\xBB\xBF# a comment\r\n"
        "file 101 filename=\"Low Roar - Nobody.mp3\" artist=\"Low Roar\" album=0 name=Nobody "
        "duration=233 genre=\"Post \"\"rock\"\"\" further=x\r\n"
        "  file 0x20 filename=b.ogg identity=\"C:\\Music\\b.ogg\" duration=-1 Name=Caf\xC3\xA9\n"
        "\n"
        "playlist 101 32\n"
        "playlist 101\n"
        "speed 2.5\n"
        "play 2 30\n"
        "pause\n"
        "resume 1.5\n"
        "seek 010\n"
        "stop 4\n"
        "run 12\n"
        "wait 250\n"
        "send WM_USER+6 101\n"
        "post WM_HOTKEY 110 0x20\n"
        "send 0x8001 -1\n"
        "await WM_USER+2 3 60000\n"
        "await query 1 5\n"
        "polls 2 100\n"
        "await file \"%APPDATA%\\x y\\Log.txt\" \"Got error 1\u00e9\" 700\n"
        "end\n"
        "play 0\n";
    CScenario scenario;
    std::wstring error;
    ASSERT_TRUE(ParseScenario(text, scenario, error)) << testing::PrintToString(error);

    ASSERT_EQ(scenario.library.size(), 2u);
    const CLibraryFile& first = scenario.library[0];
    EXPECT_EQ(first.key, 101);
    EXPECT_EQ(first.fileName, L"Low Roar - Nobody.mp3");
    EXPECT_EQ(first.identity, first.fileName);
    EXPECT_EQ(first.duration, 233);
    EXPECT_EQ(first.further, L"x");
    EXPECT_EQ(FillTemplate(first, L"[ARTIST]|[ALBUM]|[NAME]|[GENRE]"),
              L"Low Roar|0|Nobody|Post \"rock\"");
    const CLibraryFile& second = scenario.library[1];
    EXPECT_EQ(second.key, 32);
    EXPECT_EQ(second.identity, L"C:\\Music\\b.ogg");
    EXPECT_EQ(second.duration, -1);
    EXPECT_EQ(FillTemplate(second, L"[NAME]"), L"Caf\u00E9");
    EXPECT_EQ(scenario.playlist, (std::vector<std::size_t>{0, 1, 0}));

    ASSERT_EQ(scenario.steps.size(), 17u);
    const auto& steps = scenario.steps;
    EXPECT_EQ(steps[0].kind, EStep::Speed);
    EXPECT_DOUBLE_EQ(steps[0].speed, 2.5);
    EXPECT_EQ(steps[1].kind, EStep::Play);
    EXPECT_EQ(steps[1].index, 2u);
    EXPECT_DOUBLE_EQ(steps[1].seconds, 30);
    EXPECT_EQ(steps[1].line, 8);
    EXPECT_EQ(steps[1].text, L"play 2 30");
    EXPECT_EQ(steps[2].kind, EStep::Pause);
    EXPECT_DOUBLE_EQ(steps[2].seconds, 0);
    EXPECT_EQ(steps[3].kind, EStep::Resume);
    EXPECT_DOUBLE_EQ(steps[3].seconds, 1.5);
    EXPECT_EQ(steps[4].kind, EStep::Seek);
    EXPECT_DOUBLE_EQ(steps[4].seconds, 10); // never octal
    EXPECT_EQ(steps[5].kind, EStep::Stop);
    EXPECT_EQ(steps[6].kind, EStep::Run);
    EXPECT_EQ(steps[7].kind, EStep::Wait);
    EXPECT_EQ(steps[7].milliseconds, 250u);
    EXPECT_EQ(steps[8].kind, EStep::Send);
    EXPECT_EQ(steps[8].message, 0x406u);
    EXPECT_EQ(steps[8].wParam, 101);
    EXPECT_EQ(steps[9].kind, EStep::Post);
    EXPECT_EQ(steps[9].message, 0x312u);
    EXPECT_EQ(steps[9].wParam, 110);
    EXPECT_EQ(steps[9].lParam, 0x20);
    EXPECT_EQ(steps[10].message, 0x8001u);
    EXPECT_EQ(steps[10].wParam, -1);
    EXPECT_EQ(steps[11].kind, EStep::Await);
    EXPECT_EQ(steps[11].message, 0x402u);
    EXPECT_EQ(steps[11].times, 3u);
    EXPECT_EQ(steps[11].milliseconds, 60000u);
    EXPECT_EQ(steps[12].kind, EStep::Await);
    EXPECT_EQ(steps[12].message, 0u) << "library queries";
    EXPECT_EQ(steps[13].kind, EStep::Polls);
    EXPECT_EQ(steps[13].times, 2u);
    EXPECT_EQ(steps[13].milliseconds, 100u);
    EXPECT_EQ(steps[14].kind, EStep::AwaitFile);
    EXPECT_EQ(steps[14].path, L"%APPDATA%\\x y\\Log.txt");
    EXPECT_EQ(steps[14].needle, "Got error 1\xC3\xA9") << "the text as UTF-8";
    EXPECT_EQ(steps[14].milliseconds, 700u);
    EXPECT_EQ(steps[14].times, 1u) << "the file holds the text once";
    EXPECT_EQ(steps[15].kind, EStep::End);
    EXPECT_EQ(steps[16].kind, EStep::Play);
}

TEST(PlayerScenario, FaultsNameTheirLine)
{
    const std::string file = "file 1 filename=a.mp3 duration=60\n";
    const struct
    {
        std::string text;
        const wchar_t* error;
    } cases[] = {
        {"jump 3\n", L"line 1: unknown word: jump"},
        {file + "file 1 filename=b.mp3 duration=1\n", L"line 2: two files have the key 1"},
        {"file 2 filename=b.mp3\n", L"line 1: file needs filename= and duration="},
        {"file 2 filename=\"b.mp3 duration=1\n", L"line 1: unclosed quote"},
        {"file 2 filename=b.mp3 duration=1 artist=x ARTIST=y\n",
         L"line 1: field given twice or built in: ARTIST"},
        {"file 2 filename=b.mp3 duration=1 key=3\n", L"line 1: field given twice or built in: key"},
        {"file 2 filename=b.mp3 duration=1 artist\n", L"line 1: expected FIELD=VALUE: artist"},
        {file + "playlist 1\n\nplaylist 9\n", L"line 4: no file has the key 9"},
        {file + "playlist 1\nplay 1\n", L"line 3: the playlist has 1 entries"},
        {"play -1\n", L"line 1: index must be a whole number from 0 to 2147483647: -1"},
        {"pause -2\n", L"line 1: seconds must be a number from 0 to 1000000: -2"},
        {"run\n", L"line 1: run takes 1 arguments"},
        {"pause 1 2\n", L"line 1: pause takes 0 to 1 arguments"},
        {"speed 1001\n", L"line 1: speed must be a number from 0 to 1000: 1001"},
        {"wait 1.5\n", L"line 1: milliseconds must be a whole number from 0 to 600000: 1.5"},
        {"await WM_USER+2 0 100\n", L"line 1: count must be a whole number from 1 to 1000000: 0"},
        {"await WM_USER+2 1\n", L"line 1: await takes 3 arguments"},
        {"await file a.txt 100\n", L"line 1: await takes 4 arguments"},
        {"await file \"\" x 100\n", L"line 1: await file needs a path and a text"},
        {"send WM_USER+x\n", L"line 1: message offset must be a whole number from 0 to 16383: x"},
        {"post WM_PAINT\n", L"line 1: message must be a whole number from 1 to 65535: WM_PAINT"},
    };
    for (const auto& test : cases)
        EXPECT_EQ(ErrorOf(test.text), test.error) << test.text;
}

TEST(PlayerCommandLine, OptionsAndTheirFaults)
{
    COptions options;
    std::wstring error;
    ASSERT_TRUE(ParseCommandLine({L"--progid", L"X.Y", L"--size", L"640x480", L"--trace",
                                  L"--screenshot", L"s.png", L"--timeout", L"30", L"play.txt"},
                                 options, error));
    EXPECT_EQ(options.progId, L"X.Y");
    EXPECT_EQ(options.width, 640);
    EXPECT_EQ(options.height, 480);
    EXPECT_TRUE(options.trace);
    EXPECT_EQ(options.screenshot, L"s.png");
    EXPECT_EQ(options.timeoutSeconds, 30u);
    EXPECT_EQ(options.scenario, L"play.txt");

    COptions defaults;
    ASSERT_TRUE(ParseCommandLine({L"play.txt"}, defaults, error));
    EXPECT_EQ(defaults.progId, L"CVAudioScrobbler.Interface");

    const std::vector<std::vector<std::wstring>> faults = {
        {},
        {L"a.txt", L"b.txt"},
        {L"--size", L"640", L"a.txt"},
        {L"--size", L"100x100", L"a.txt"},
        {L"--timeout", L"0", L"a.txt"},
        {L"a.txt", L"--progid"},
        {L"--progid", L"", L"a.txt"},
        {L"--colour", L"a.txt"},
    };
    for (const auto& arguments : faults)
    {
        COptions ignored;
        EXPECT_FALSE(ParseCommandLine(arguments, ignored, error)) << arguments.size();
    }
}
