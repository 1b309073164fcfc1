// CXmlDocument beside pugixml and TinyXML-2 on the same generated queue
// document: parse, load from a file, navigate reading every text, and build
// plus save; a plain memcpy of the document's bytes is the floor. Every
// benchmark keeps its objects and buffers from one iteration to the next:
// first touches of fresh memory cost far more than the work measured here.
#include "queue_document.h"

#include "support/text_encoding.h"
#include "xml/xml_document.h"

#include <benchmark/benchmark.h>
#include <pugixml.hpp>
#include <tinyxml2.h>

#include <array>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <map>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <memory>

namespace
{

using namespace cvas;
using namespace cvas::bench;

constexpr const char* kChildren[] = {"artist", "name", "album", "duration", "time"};
constexpr const wchar_t* kWideChildren[] = {L"artist", L"name", L"album", L"duration", L"time"};

struct Input
{
    std::vector<QueueTrack> tracks;
    std::vector<std::array<std::wstring, 5>> wideTracks;
    std::string bytes;
    std::wstring wide;
    std::string path;     // the document as a UTF-8 file
    std::string savePath; // where the build benchmarks write
    std::wstring widePath;
    std::wstring wideSavePath;
};

std::filesystem::path Folder()
{
    static const std::filesystem::path folder = [] {
        auto path = std::filesystem::temp_directory_path() / "cvas_xml_bench";
        std::filesystem::create_directories(path);
        return path;
    }();
    return folder;
}

const Input& InputFor(int trackCount)
{
    static std::map<int, std::unique_ptr<Input>> inputs;
    std::unique_ptr<Input>& input = inputs[trackCount];
    if (!input)
    {
        input = std::make_unique<Input>();
        input->tracks = MakeQueueTracks(trackCount);
        for (const QueueTrack& t : input->tracks)
            input->wideTracks.push_back({Utf8ToWide(t.artist), Utf8ToWide(t.name),
                                         Utf8ToWide(t.album), Utf8ToWide(t.duration),
                                         Utf8ToWide(t.time)});
        input->bytes = MakeQueueDocument(input->tracks);
        input->wide = Utf8ToWide(input->bytes);
        const std::string stem = "queue" + std::to_string(trackCount);
        input->path = (Folder() / (stem + ".xml")).string();
        input->savePath = (Folder() / (stem + "-saved.xml")).string();
        input->widePath = Utf8ToWide(input->path);
        input->wideSavePath = Utf8ToWide(input->savePath);
        std::ofstream(input->path, std::ios::binary) << input->bytes;
    }
    return *input;
}

const Input& Prepare(benchmark::State& state)
{
    const Input& input = InputFor(static_cast<int>(state.range(0)));
    state.counters["MB"] = static_cast<double>(input.bytes.size()) / 1e6;
    return input;
}

void Finish(benchmark::State& state, const Input& input)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(input.bytes.size()));
}

// --- the floor

void MemcpyFloor(benchmark::State& state)
{
    const Input& input = Prepare(state);
    std::string copy(input.bytes.size(), '\0');
    for (auto _ : state)
    {
        std::memcpy(copy.data(), input.bytes.data(), input.bytes.size());
        benchmark::ClobberMemory();
    }
    Finish(state, input);
}

// The least SetDoc must do: copy the wide text (4 bytes a character where
// wchar_t is 32 bits, 2 on Windows).
void MemcpyWide(benchmark::State& state)
{
    const Input& input = Prepare(state);
    std::wstring copy(input.wide.size(), L'\0');
    for (auto _ : state)
    {
        std::wmemcpy(copy.data(), input.wide.data(), input.wide.size());
        benchmark::ClobberMemory();
    }
    Finish(state, input);
}

// --- parse text already in memory

void ParseOurs(benchmark::State& state)
{
    const Input& input = Prepare(state);
    CXmlDocument document;
    document.SetDocFlags(kXmlDocIgnoreCase);
    document.SetDoc(input.wide);
    for (auto _ : state)
        benchmark::DoNotOptimize(document.SetDoc(input.wide));
    Finish(state, input);
}

void ParsePugixml(benchmark::State& state)
{
    const Input& input = Prepare(state);
    pugi::xml_document document;
    document.load_buffer(input.bytes.data(), input.bytes.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(document.load_buffer(input.bytes.data(), input.bytes.size()));
    Finish(state, input);
}

void ParseTinyxml2(benchmark::State& state)
{
    const Input& input = Prepare(state);
    tinyxml2::XMLDocument document;
    document.Parse(input.bytes.data(), input.bytes.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(document.Parse(input.bytes.data(), input.bytes.size()));
    Finish(state, input);
}

// --- load from a file (read, decode, parse)

void LoadOurs(benchmark::State& state)
{
    const Input& input = Prepare(state);
    CountedHandle<CXmlDocument> document = NewDocument();
    document->Load(input.widePath);
    for (auto _ : state)
    {
        document->Load(input.widePath);
        benchmark::DoNotOptimize(document->GetResult().size());
    }
    Finish(state, input);
}

void LoadPugixml(benchmark::State& state)
{
    const Input& input = Prepare(state);
    pugi::xml_document document;
    document.load_file(input.path.c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(document.load_file(input.path.c_str()));
    Finish(state, input);
}

void LoadTinyxml2(benchmark::State& state)
{
    const Input& input = Prepare(state);
    tinyxml2::XMLDocument document;
    document.LoadFile(input.path.c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(document.LoadFile(input.path.c_str()));
    Finish(state, input);
}

// --- navigate, reading every text

void NavigateOurs(benchmark::State& state)
{
    const Input& input = Prepare(state);
    CXmlDocument document;
    document.SetDocFlags(kXmlDocIgnoreCase);
    document.SetDoc(input.wide);
    // One string takes every text, as pugixml hands out its texts in place.
    std::wstring data;
    for (auto _ : state)
    {
        std::size_t total = 0;
        document.FindElem(L"/queue");
        document.IntoElem();
        while (document.FindElem(L"track"))
        {
            document.IntoElem();
            for (const wchar_t* name : kWideChildren)
            {
                if (document.FindElem(name))
                {
                    document.GetData(data);
                    total += data.size();
                }
            }
            document.OutOfElem();
        }
        benchmark::DoNotOptimize(total);
    }
    Finish(state, input);
}

void NavigatePugixml(benchmark::State& state)
{
    const Input& input = Prepare(state);
    pugi::xml_document document;
    document.load_buffer(input.bytes.data(), input.bytes.size());
    for (auto _ : state)
    {
        std::size_t total = 0;
        for (pugi::xml_node track : document.child("queue").children("track"))
        {
            for (const char* name : kChildren)
                total += std::strlen(track.child(name).child_value());
        }
        benchmark::DoNotOptimize(total);
    }
    Finish(state, input);
}

void NavigateTinyxml2(benchmark::State& state)
{
    const Input& input = Prepare(state);
    tinyxml2::XMLDocument document;
    document.Parse(input.bytes.data(), input.bytes.size());
    for (auto _ : state)
    {
        std::size_t total = 0;
        for (const tinyxml2::XMLElement* track =
                 document.FirstChildElement("queue")->FirstChildElement("track");
             track; track = track->NextSiblingElement("track"))
        {
            for (const char* name : kChildren)
            {
                const char* text = track->FirstChildElement(name)->GetText();
                total += text ? std::strlen(text) : 0;
            }
        }
        benchmark::DoNotOptimize(total);
    }
    Finish(state, input);
}

// --- build the document and save it

void BuildSaveOurs(benchmark::State& state)
{
    const Input& input = Prepare(state);
    CXmlDocument document; // reused: its text and table keep their memory
    auto buildAndSave = [&] {
        document.SetDocFlags(kXmlDocIgnoreCase);
        document.SetDoc(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
        document.AddElem(L"queue");
        document.IntoElem();
        for (const auto& track : input.wideTracks)
        {
            document.AddElem(L"track");
            for (std::size_t k = 0; k < track.size(); ++k)
                document.AddChildElem(kWideChildren[k], track[k]);
        }
        return document.Save(input.wideSavePath);
    };
    buildAndSave();
    for (auto _ : state)
        benchmark::DoNotOptimize(buildAndSave());
    Finish(state, input);
}

void BuildSavePugixml(benchmark::State& state)
{
    const Input& input = Prepare(state);
    pugi::xml_document document;
    auto buildAndSave = [&] {
        document.reset();
        pugi::xml_node declaration = document.append_child(pugi::node_declaration);
        declaration.append_attribute("version") = "1.0";
        declaration.append_attribute("encoding") = "UTF-8";
        pugi::xml_node queue = document.append_child("queue");
        for (const QueueTrack& track : input.tracks)
        {
            pugi::xml_node node = queue.append_child("track");
            const std::string* values[] = {&track.artist, &track.name, &track.album,
                                           &track.duration, &track.time};
            for (std::size_t k = 0; k < 5; ++k)
                node.append_child(kChildren[k]).text().set(values[k]->c_str());
        }
        return document.save_file(input.savePath.c_str(), "", pugi::format_raw);
    };
    buildAndSave();
    for (auto _ : state)
        benchmark::DoNotOptimize(buildAndSave());
    Finish(state, input);
}

void BuildSaveTinyxml2(benchmark::State& state)
{
    const Input& input = Prepare(state);
    tinyxml2::XMLDocument document;
    auto buildAndSave = [&] {
        document.Clear();
        document.InsertEndChild(document.NewDeclaration());
        tinyxml2::XMLElement* queue = document.NewElement("queue");
        document.InsertEndChild(queue);
        for (const QueueTrack& track : input.tracks)
        {
            tinyxml2::XMLElement* node = document.NewElement("track");
            queue->InsertEndChild(node);
            const std::string* values[] = {&track.artist, &track.name, &track.album,
                                           &track.duration, &track.time};
            for (std::size_t k = 0; k < 5; ++k)
            {
                tinyxml2::XMLElement* child = document.NewElement(kChildren[k]);
                child->SetText(values[k]->c_str());
                node->InsertEndChild(child);
            }
        }
        return document.SaveFile(input.savePath.c_str(), true);
    };
    buildAndSave();
    for (auto _ : state)
        benchmark::DoNotOptimize(buildAndSave());
    Finish(state, input);
}

void Register(const char* name, void (*function)(benchmark::State&))
{
    benchmark::RegisterBenchmark(name, function)
        ->Arg(5000)
        ->Arg(20000)
        ->Arg(50000)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

} // namespace

int main(int argc, char** argv)
{
#ifdef __GLIBC__
    // The C library keeps the memory that is freed instead of handing large
    // blocks back to the system, so that the libraries that allocate afresh
    // on every parse (pugixml, TinyXML-2) also work in memory touched before.
    mallopt(M_MMAP_THRESHOLD, 32 * 1024 * 1024);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
#endif
    Register("memcpy/floor", MemcpyFloor);
    Register("memcpy/wide", MemcpyWide);
    Register("parse/ours", ParseOurs);
    Register("parse/pugixml", ParsePugixml);
    Register("parse/tinyxml2", ParseTinyxml2);
    Register("load/ours", LoadOurs);
    Register("load/pugixml", LoadPugixml);
    Register("load/tinyxml2", LoadTinyxml2);
    Register("navigate/ours", NavigateOurs);
    Register("navigate/pugixml", NavigatePugixml);
    Register("navigate/tinyxml2", NavigateTinyxml2);
    Register("build+save/ours", BuildSaveOurs);
    Register("build+save/pugixml", BuildSavePugixml);
    Register("build+save/tinyxml2", BuildSaveTinyxml2);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
