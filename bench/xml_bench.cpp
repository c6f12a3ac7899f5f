// XML loading: xml::Document::Load of a generated document (many lines; attributes with entities;
// text runs) of 1, 4 and 16 MiB, as written and joined onto one line, beside TinyXML, tinyxml2 and
// pugixml loading the same file. Each iteration is the whole job: open, read, parse, destroy.
#include <benchmark/benchmark.h>
#include <tinyxml2.h>

#include <cstdio>
#include <filesystem>
#include <pugixml.hpp>
#include <string>

#include "pind/client/PindClient.h"
#include "pind/platform/System.h"
#include "pind/xml/TinyXml.h"
#include "pind/xml/XmlDocument.h"

namespace {

// About 240 bytes per item; the count of items is what each parser's result is checked against.
std::string Document(size_t bytes, int* items) {
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<items>\n";
    char buffer[512];
    int n = 0;
    while (out.size() < bytes) {
        std::snprintf(buffer, sizeof buffer,
                      "    <item id=\"%d\" name=\"alpha &amp; beta %d\" range=\"&lt;%d&gt;\" "
                      "kind=\"plain\">\n"
                      "        <label>text run %d with &quot;quoted&quot; words &amp; more of "
                      "them, long enough to matter</label>\n"
                      "        <value unit=\"ms\">%d</value>\n"
                      "    </item>\n",
                      n, n, n % 100, n, n * 7);
        out += buffer;
        ++n;
    }
    out += "</items>\n";
    *items = n;
    return out;
}

struct Sample {
    std::string folder;
    std::string name;
    std::string path;
    size_t size = 0;
    int items = 0;
};

// The generated files, removed when the program ends.
struct Samples {
    Sample bySize[3][2];
    ~Samples() {
        for (auto& layouts : bySize) {
            for (const Sample& s : layouts) {
                if (!s.path.empty()) {
                    std::remove(s.path.c_str());
                }
            }
        }
    }
};

// Writes the document once per (size, layout) into the temp folder.
const Sample& GetSample(int mib, bool oneLine) {
    static Samples samples;
    const int slot = mib == 1 ? 0 : mib == 4 ? 1 : 2;
    Sample& s = samples.bySize[slot][oneLine ? 1 : 0];
    if (s.size == 0) {
        std::string text = Document(static_cast<size_t>(mib) << 20, &s.items);
        if (oneLine) {
            std::string joined;
            joined.reserve(text.size());
            for (const char c : text) {
                if (c != '\n') {
                    joined += c;
                }
            }
            text.swap(joined);
        }
        s.folder = std::filesystem::temp_directory_path().string();
        s.name = "pind-xml-bench-" + std::to_string(pind::platform::CurrentProcessId()) + "-" +
                 std::to_string(mib) + (oneLine ? "-line" : "-lines") + ".xml";
        s.path = s.folder + "/" + s.name;
        std::FILE* f = std::fopen(s.path.c_str(), "wb");
        if (f == nullptr || std::fwrite(text.data(), 1, text.size(), f) != text.size() ||
            std::fclose(f) != 0) {
            std::fprintf(stderr, "xml_bench: cannot write %s\n", s.path.c_str());
            std::abort();
        }
        s.size = text.size();
    }
    return s;
}

class FolderClient : public IPindClientNone {
public:
    std::string folder;
    const char* GetPrimaryFolder() override { return folder.c_str(); }
};

void Check(benchmark::State& state, bool ok, int items, int want) {
    if (!ok || items != want) {
        state.SkipWithError("the document did not load as generated");
    }
}

void BM_PindLoad(benchmark::State& state) {
    const Sample& s = GetSample(static_cast<int>(state.range(0)), state.range(1) != 0);
    FolderClient client;
    client.folder = s.folder;
    SetClient(&client);
    {
        xml::Document doc;
        const bool ok = doc.Load(s.name) && doc.GetRoot() != nullptr;
        Check(state, ok, ok ? static_cast<int>(doc.GetRoot()->GetChildren().size()) : 0, s.items);
    }
    for (auto _ : state) {
        xml::Document doc;
        benchmark::DoNotOptimize(doc.Load(s.name));
    }
    SetClient(nullptr);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * s.size));
}

void BM_TinyXml(benchmark::State& state) {
    const Sample& s = GetSample(static_cast<int>(state.range(0)), state.range(1) != 0);
    {
        TiXmlDocument doc;
        const bool ok = doc.LoadFile(s.path.c_str()) && doc.RootElement() != nullptr;
        int items = 0;
        for (const TiXmlElement* e = ok ? doc.RootElement()->FirstChildElement() : nullptr;
             e != nullptr; e = e->NextSiblingElement()) {
            ++items;
        }
        Check(state, ok, items, s.items);
    }
    for (auto _ : state) {
        TiXmlDocument doc;
        benchmark::DoNotOptimize(doc.LoadFile(s.path.c_str()));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * s.size));
}

void BM_TinyXml2(benchmark::State& state) {
    const Sample& s = GetSample(static_cast<int>(state.range(0)), state.range(1) != 0);
    {
        tinyxml2::XMLDocument doc;
        const bool ok = doc.LoadFile(s.path.c_str()) == tinyxml2::XML_SUCCESS;
        int items = 0;
        for (const tinyxml2::XMLElement* e = ok ? doc.RootElement()->FirstChildElement() : nullptr;
             e != nullptr; e = e->NextSiblingElement()) {
            ++items;
        }
        Check(state, ok, items, s.items);
    }
    for (auto _ : state) {
        tinyxml2::XMLDocument doc;
        benchmark::DoNotOptimize(doc.LoadFile(s.path.c_str()));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * s.size));
}

void BM_Pugixml(benchmark::State& state) {
    const Sample& s = GetSample(static_cast<int>(state.range(0)), state.range(1) != 0);
    {
        pugi::xml_document doc;
        const bool ok = static_cast<bool>(doc.load_file(s.path.c_str()));
        int items = 0;
        for (const pugi::xml_node& item : doc.child("items").children("item")) {
            items += item.attribute("id") ? 1 : 0;
        }
        Check(state, ok, items, s.items);
    }
    for (auto _ : state) {
        pugi::xml_document doc;
        benchmark::DoNotOptimize(doc.load_file(s.path.c_str()));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * s.size));
}

// (MiB, one line?)
void Sizes(benchmark::internal::Benchmark* b) {
    for (const int mib : {1, 4, 16}) {
        for (const int oneLine : {0, 1}) {
            b->Args({mib, oneLine});
        }
    }
    b->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_PindLoad)->Apply(Sizes);
BENCHMARK(BM_TinyXml)->Apply(Sizes);
BENCHMARK(BM_TinyXml2)->Apply(Sizes);
BENCHMARK(BM_Pugixml)->Apply(Sizes);

}  // namespace
