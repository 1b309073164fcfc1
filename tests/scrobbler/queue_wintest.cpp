// The process-wide lists, Queue.xml and Replacements.xml in the data folder,
// and the status lines they write.
#include "common/captured_messages.h"
#include "common/temp_folder.h"
#include "scrobbler/queue/data_files.h"
#include "scrobbler/queue/engine_state.h"
#include "scrobbler/queue/queue_document.h"
#include "scrobbler/queue/replacements_file.h"
#include "scrobbler/queue/submission_queue.h"
#include "settings/data_folder.h"
#include "settings/ini_file.h"
#include "settings/log_settings.h"
#include "support/logs.h"
#include "support/text_encoding.h"
#include "support/win_handle.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cwchar>
#include <iterator>
#include <regex>
#include <thread>
#include <vector>

using namespace cvas;
using cvas::test::CTempFolder;
using cvas::test::FileExists;
using cvas::test::ReadFileBytes;
using cvas::test::WriteFileBytes;

namespace
{

const std::wstring kSakamoto = L"\x5742\x672C\x9F8D\x4E00"; // 坂本龍一

class EngineFiles : public testing::Test
{
protected:
    void SetUp() override
    {
        OverrideSpecialFolders(root.Path() + L"Documents", root.Path() + L"AppData");
        ForgetDataFilePaths();
        // A short status log: every line rewrites the whole file.
        CIni ini(root.File(L"Settings.INI"));
        ini.WriteString(L"General", L"StatusLogLimit", L"200");
        OpenLogs(ini);
        ClearTrackLists();
        SetCurrentReplacements({});
        ASSERT_TRUE(CreateEngineEvents());
        test::TakeCapturedMessages();
    }
    void TearDown() override
    {
        CloseLogs();
        CloseEngineEvents();
        ClearTrackLists();
        SetCurrentReplacements({});
        OverrideSpecialFolders(L"", L"");
        ForgetDataFilePaths();
        EXPECT_TRUE(test::TakeCapturedMessages().empty()) << "no message box";
    }

    // The status lines written since the last call, oldest first. The file
    // holds the newest first, each as "dd/mm/yyyy hh:mm:ss.mmm (%9u) > text".
    std::vector<std::string> NewStatusLines()
    {
        const std::string bytes = ReadFileBytes(DataFolder() + L"StatusLog.txt");
        std::vector<std::string> lines;
        for (std::size_t start = 3, end; (end = bytes.find("\r\n", start)) != std::string::npos;
             start = end + 2)
        {
            const std::string line = bytes.substr(start, end - start);
            if (line.size() < 38 || std::stoul(line.substr(25, 9)) <= m_linesSeen)
                break;
            lines.insert(lines.begin(), line.substr(38));
        }
        m_linesSeen = StatusLineCounter();
        return lines;
    }

    static std::string Utf8(const std::wstring& text) { return WideToUtf8(text); }

    std::wstring QueuePath() const { return DataFolder() + L"Queue.xml"; }

    static void Add(TrackList& list, const std::wstring& artist, const std::wstring& name = L"N")
    {
        list.push_back(std::make_unique<CTrackRecord>(
            artist, L"Album", name, L"200", L"2024-01-02 03:04:05", CurrentReplacements()));
    }

    CTempFolder root;
    unsigned long m_linesSeen = 0;
};

} // namespace

TEST_F(EngineFiles, EventsAndEnqueue)
{
    NewStatusLines();
    ASSERT_TRUE(CreateEngineEvents());
    const std::vector<std::string> created = NewStatusLines();
    ASSERT_EQ(created.size(), 1u);
    EXPECT_TRUE(std::regex_match(
        created[0], std::regex("Created EventShutdown=0x[0-9a-f]+   EventData=0x[0-9a-f]+")))
        << created[0];

    // The kinds we chose: a wait leaves EventShutdown set; EventData starts
    // unset, is set by each play and taken by a wait.
    EXPECT_EQ(WaitForSingleObject(EventData(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    SetEvent(EventShutdown());
    WaitForSingleObject(EventShutdown(), 0);
    EXPECT_EQ(WaitForSingleObject(EventShutdown(), 0), WAIT_OBJECT_0);
    SetCurrentReplacements({{L"Band", L"Group"}});
    Enqueue(L"The Band", L"Album", L"Song", 241, true);
    EXPECT_EQ(WaitForSingleObject(EventData(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(EventData(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(IncomingCount(), 1u);
    EXPECT_EQ(SubmissionQueueCount(), 0u) << "the worker moves it";

    // A later table leaves the queued record as it was made.
    SetCurrentReplacements({{L"Band", L"Crew"}});
    ASSERT_TRUE(MoveIncomingToQueue());
    const CTrackRecord& record = *SubmissionQueue().front();
    EXPECT_EQ(record.Artist(), L"The Band");
    EXPECT_EQ(record.ArtistBytes(), "The%20Group");
    EXPECT_EQ(record.Duration(), L"241");
    EXPECT_TRUE(
        std::regex_match(Utf8(record.Time()), std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)")));

    // The Wine tests run 5 h 45 min east of UTC (TZ), so the two clocks differ.
    Enqueue(L"A", L"B", L"Local", 200, false);
    Enqueue(L"A", L"B", L"Utc", 200, true);
    ASSERT_TRUE(MoveIncomingToQueue());
    const auto minutes = [](const std::wstring& time) {
        int y, mo, d, h, mi, sec;
        EXPECT_EQ(std::swscanf(time.c_str(), L"%d-%d-%d %d:%d:%d", &y, &mo, &d, &h, &mi, &sec), 6);
        return (d * 24 + h) * 60 + mi;
    };
    const auto localPlay = std::next(SubmissionQueue().begin());
    const int local = minutes((*localPlay)->Time());
    const int utc = minutes((*std::next(localPlay))->Time());
    // A month's turn between the two days is as good as a day's.
    const int ahead = ((local - utc) % (24 * 60) + 24 * 60) % (24 * 60);
    EXPECT_GE(ahead, 345) << "local time is 5:45 ahead of UTC";
    EXPECT_LE(ahead, 346) << "(a minute may turn between the two plays)";
}

TEST_F(EngineFiles, MoveSavesAndLogs)
{
    NewStatusLines();
    EXPECT_FALSE(MoveIncomingToQueue());
    EXPECT_TRUE(NewStatusLines().empty()) << "an empty incoming list does nothing";

    Enqueue(kSakamoto, L"B-2 Unit", L"Riot in Lagos", 300, true);
    Enqueue(L"Simon & Garfunkel", L"Bookends", L"Old Friends", 160, false);
    ASSERT_TRUE(MoveIncomingToQueue());
    EXPECT_EQ(IncomingCount(), 0u);
    EXPECT_EQ(SubmissionQueueCount(), 2u);
    EXPECT_EQ(NewStatusLines(), (std::vector<std::string>{"Added 2 entries to queue",
                                                          "Saving queue to " + Utf8(QueuePath()) +
                                                              " ... 2 entries"}));

    // Stored as the player gave it: UTF-8 in the file, unescaped; sent as
    // percent-escaped UTF-8.
    EXPECT_EQ(SubmissionQueue().front()->ArtistBytes(), "%E5%9D%82%E6%9C%AC%E9%BE%8D%E4%B8%80");
    const std::string file = ReadFileBytes(QueuePath());
    EXPECT_NE(file.find("<artist>" + Utf8(kSakamoto) + "</artist>"), std::string::npos);
    EXPECT_NE(file.find("<artist>Simon &amp; Garfunkel</artist>"), std::string::npos);
    EXPECT_FALSE(FileExists(QueuePath() + L".new")) << "the new file was moved over the old";

    // The end of a pass: only the reattempt list stays. Loaded again, it
    // takes the replacements current then.
    TrackList reattempt;
    reattempt.splice(reattempt.end(), SubmissionQueue(), std::next(SubmissionQueue().begin()));
    ReplaceQueueContents(std::move(reattempt));
    ASSERT_TRUE(SaveQueue());
    ClearTrackLists();
    SetCurrentReplacements({{L"Garfunkel", L"G."}});
    LoadQueue();
    ASSERT_EQ(SubmissionQueueCount(), 1u);
    EXPECT_EQ(SubmissionQueue().front()->Artist(), L"Simon & Garfunkel");
    EXPECT_EQ(SubmissionQueue().front()->ArtistBytes(), "Simon%20%26%20G.");
}

TEST_F(EngineFiles, LoadLinesForMissingEmptyAndIncompleteQueues)
{
    const std::string loading = "Loading queue from " + Utf8(QueuePath());
    NewStatusLines();
    LoadQueue();
    EXPECT_EQ(NewStatusLines(), std::vector<std::string>{loading}) << "missing file";

    WriteFileBytes(QueuePath(), "<?xml version=\"1.0\"?>\r\n<nothing/>\r\n");
    LoadQueue();
    EXPECT_EQ(NewStatusLines(), std::vector<std::string>{loading}) << "no queue element";

    WriteFileBytes(QueuePath(), "<queue/>");
    LoadQueue();
    EXPECT_EQ(NewStatusLines(), (std::vector<std::string>{loading, "Loaded 0 entries"}));

    WriteFileBytes(QueuePath(), "<queue><track><artist>A</artist><name>N</name><album>B</album>"
                                "<duration>1</duration></track><track><artist>A</artist>"
                                "<name>N</name><album>B</album><duration>1</duration>"
                                "<time>T</time></track></queue>");
    LoadQueue();
    EXPECT_EQ(NewStatusLines(), (std::vector<std::string>{loading, "Loaded 1 entries"}));
    EXPECT_FALSE(FileExists(QueuePath() + L".damaged"));
}

TEST_F(EngineFiles, FileCutAtEveryByteLoadsItsCompleteTracksAndKeepsTheDamagedFile)
{
    Add(SubmissionQueue(), kSakamoto, L"Merry Christmas Mr. Lawrence");
    Add(SubmissionQueue(), L"AC/DC", L"T.N.T. & <more>");
    ASSERT_TRUE(SaveQueue());
    const std::string whole = ReadFileBytes(QueuePath());
    const std::size_t firstEnd = whole.find("</track>") + 8;
    const std::size_t secondEnd = whole.find("</track>", firstEnd) + 8;
    const std::size_t queueOpened = whole.find("<queue>") + 7;
    const std::size_t queueClosed = whole.find("</queue>") + 8;
    NewStatusLines();
    for (std::size_t length = 0; length < whole.size(); ++length)
    {
        const std::string cut = whole.substr(0, length);
        WriteFileBytes(QueuePath(), cut);
        DeleteFileW((QueuePath() + L".damaged").c_str());
        LoadQueue();
        const std::size_t expected = length >= secondEnd ? 2 : length >= firstEnd ? 1 : 0;
        ASSERT_EQ(SubmissionQueueCount(), expected) << "cut after " << length << " bytes";
        if (expected > 0)
        {
            EXPECT_EQ(SubmissionQueue().front()->Artist(), kSakamoto);
        }
        const std::vector<std::string> lines = NewStatusLines();
        if (length < queueOpened)
        {
            ASSERT_EQ(lines.size(), 1u) << "no queue: the loading line only";
            continue;
        }
        if (length >= queueClosed)
        {
            EXPECT_EQ(lines.size(), 2u) << "only line breaks are missing: nothing is damaged";
            continue;
        }
        ASSERT_EQ(lines.size(), 3u) << "cut after " << length << " bytes";
        EXPECT_EQ(lines[1].rfind("The queue file is damaged (", 0), 0u) << lines[1];
        EXPECT_EQ(lines[2], "Loaded " + std::to_string(expected) + " entries");
        EXPECT_EQ(ReadFileBytes(QueuePath() + L".damaged"), cut);
    }
}

TEST_F(EngineFiles, AFailedSaveLeavesTheOldFile)
{
    Add(SubmissionQueue(), L"Kept");
    ASSERT_TRUE(SaveQueue());
    const std::string old = ReadFileBytes(QueuePath());
    Add(SubmissionQueue(), L"Lost for now");
    const std::wstring beside = QueuePath() + L".new";
    const auto saveFails = [&](const std::string& expected) {
        SCOPED_TRACE(expected);
        NewStatusLines();
        EXPECT_FALSE(SaveQueue());
        const std::vector<std::string> lines = NewStatusLines();
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[1].rfind(expected, 0), 0u) << lines[1];
        EXPECT_EQ(ReadFileBytes(QueuePath()), old);
    };

    // Each step in turn. A folder where the new file is to be written:
    ASSERT_TRUE(CreateDirectoryW(beside.c_str(), nullptr));
    saveFails("Could not write " + Utf8(beside) + ": ");
    ASSERT_TRUE(RemoveDirectoryW(beside.c_str()));
    {
        // another program that has the new file open for writing (we may
        // write it too, but not open it for the flush, which shares reading
        // only);
        const CHandle writer(CreateFileW(beside.c_str(), GENERIC_WRITE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                         nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(writer);
        saveFails("Could not flush " + Utf8(beside) + " to the disk (error 32); " +
                  Utf8(QueuePath()) + " is left as it was");
    }
    {
        // and a program that reads the old file and lets it be neither
        // written nor deleted, so that it may not be replaced.
        const CHandle reader(CreateFileW(QueuePath().c_str(), GENERIC_READ, FILE_SHARE_READ,
                                         nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(reader);
        saveFails("Could not move " + Utf8(beside) + " over " + Utf8(QueuePath()) + " (error 5)");
    }
    EXPECT_FALSE(FileExists(beside)) << "no failed step leaves the new file behind";
    EXPECT_TRUE(SaveQueue());
}

TEST_F(EngineFiles, OverLongFieldIsLogged)
{
    NewStatusLines();
    Enqueue(L"Artist", L"Album", std::wstring(9000, L'n'), 100, true);
    const std::vector<std::string> lines = NewStatusLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "The name of \"" + std::string(80, 'n') +
                            "\" is too long for a request: only its first 8191 of 9000 "
                            "characters are sent");
}

TEST_F(EngineFiles, ReplacementsFile)
{
    const std::wstring path = DataFolder() + L"Replacements.xml";
    NewStatusLines();
    SetCurrentReplacements({{L"x", L"y"}});
    LoadReplacements();
    EXPECT_TRUE(CurrentReplacements().empty());
    EXPECT_TRUE(NewStatusLines().empty()) << "a missing file is no news";

    SetCurrentReplacements({{L"a&b", L"<c>"}, {kSakamoto, L"Sakamoto"}, {L"", L"empty"}});
    ASSERT_TRUE(SaveReplacements());
    EXPECT_FALSE(FileExists(path + L".new"));
    EXPECT_NE(ReadFileBytes(path).find("<lhs>" + Utf8(kSakamoto) + "</lhs>"), std::string::npos);

    // The line counts the submission queue's records, not the replacements.
    Add(SubmissionQueue(), L"one");
    SetCurrentReplacements({});
    LoadReplacements();
    EXPECT_EQ(NewStatusLines(), std::vector<std::string>{"Loaded 1 entries"});
    const CReplacementTable table = CurrentReplacements();
    ASSERT_EQ(table.size(), 3u);
    EXPECT_EQ(table[0].rhs, L"<c>");
    EXPECT_EQ(table[1].lhs, kSakamoto);
    EXPECT_EQ(table[2].rhs, L"empty");

    // Cut inside the second entry: the first is used and the damage logged.
    const std::string whole = ReadFileBytes(path);
    WriteFileBytes(path, whole.substr(0, whole.find("</lhs>", whole.find("</replacement>"))));
    LoadReplacements();
    ASSERT_EQ(CurrentReplacements().size(), 1u);
    EXPECT_EQ(CurrentReplacements()[0].lhs, L"a&b");
    std::vector<std::string> lines = NewStatusLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].rfind("The replacements file " + Utf8(path) + " is damaged (", 0), 0u)
        << lines[0];
    EXPECT_EQ(lines[1], "Loaded 1 entries");

    // A file that another program holds without sharing cannot be read.
    const CHandle held(
        CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    LoadReplacements();
    EXPECT_TRUE(CurrentReplacements().empty());
    lines = NewStatusLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].rfind("Could not read " + Utf8(path) + ": ", 0), 0u) << lines[0];
    EXPECT_EQ(lines[1], "Loaded 1 entries");
}

TEST_F(EngineFiles, ConcurrentEnqueuesAreAllQueuedOnce)
{
    constexpr int kThreads = 4;
    constexpr int kEach = 40;
    std::vector<std::thread> players;
    for (int t = 0; t < kThreads; ++t)
        players.emplace_back([t] {
            for (int i = 0; i < kEach; ++i)
                Enqueue(L"Player " + std::to_wstring(t), L"", std::to_wstring(i), 100 + i, true);
        });
    // The worker's side: move until every play arrived, bounded in time.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (SubmissionQueueCount() < kThreads * kEach && std::chrono::steady_clock::now() < deadline)
    {
        WaitForSingleObject(EventData(), 100);
        MoveIncomingToQueue();
    }
    for (std::thread& player : players)
        player.join();
    MoveIncomingToQueue();
    ASSERT_EQ(SubmissionQueueCount(), static_cast<std::size_t>(kThreads * kEach));
    std::vector<int> next(kThreads, 0);
    for (const auto& record : SubmissionQueue())
    {
        const int player = std::stoi(record->Artist().substr(7));
        EXPECT_EQ(std::stoi(record->Name()), next[player]++) << "each player's plays in order";
    }
    ClearTrackLists();
    LoadQueue();
    EXPECT_EQ(SubmissionQueueCount(), static_cast<std::size_t>(kThreads * kEach));
}

// Run by hand: queue_wintests --gtest_also_run_disabled_tests --gtest_filter=*TenThousand*
TEST_F(EngineFiles, DISABLED_BenchmarkTenThousandRecords)
{
    for (int i = 0; i < 10000; ++i)
        Add(SubmissionQueue(), L"Artist " + std::to_wstring(i) + L" " + kSakamoto,
            L"Track name number " + std::to_wstring(i));
    using Clock = std::chrono::steady_clock;
    const auto ms = [](Clock::duration d) {
        return std::chrono::duration<double, std::milli>(d).count();
    };
    constexpr int kRounds = 5;
    double save = 0, load = 0;
    for (int round = 0; round < kRounds; ++round)
    {
        const auto start = Clock::now();
        ASSERT_TRUE(SaveQueue());
        const auto saved = Clock::now();
        LoadQueue();
        const auto loaded = Clock::now();
        ASSERT_EQ(SubmissionQueueCount(), 10000u);
        save += ms(saved - start);
        load += ms(loaded - saved);
    }
    std::printf("10,000 records, %zu bytes: save %.1f ms, load %.1f ms (mean of %d)\n",
                ReadFileBytes(QueuePath()).size(), save / kRounds, load / kRounds, kRounds);
}
