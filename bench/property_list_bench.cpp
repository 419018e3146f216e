// Property lists of settings records: reading beside a bare libxml2 parse of the same file, writing beside
// libplist, and the memory that reading takes.
#include "platform/base/status.h"
#include "platform/plist/property_list.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <plist/plist.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

namespace drevix {
namespace {

constexpr int kRecords = 1000;

// The bare parser takes no names and no text, only the calls.
void IgnoreStart(void *, const xmlChar *, const xmlChar *, const xmlChar *, int, const xmlChar **, int, int,
                 const xmlChar **) {}
void IgnoreEnd(void *, const xmlChar *, const xmlChar *, const xmlChar *) {}
void IgnorePlainStart(void *, const xmlChar *, const xmlChar **) {}
void IgnorePlainEnd(void *, const xmlChar *) {}
void IgnoreText(void *, const xmlChar *, int) {}

PropertyListDictionary Slot(int number) {
    PropertyListDictionary slot;
    slot.Add("action", std::int64_t{number % 44});
    slot.Add("modifiers", std::int64_t{number % 32 * 256});
    slot.Add("keyCode", std::int64_t{number % 128});
    slot.Add("repeat", std::int64_t{0});
    slot.Add("delay", std::int64_t{65535});
    slot.Add("menu", std::int64_t{number} * 2654435761 % 4294967296);
    slot.Add("data", number % 5 == 0 ? std::string("Item to open.txt") : std::string());
    return slot;
}

// A dictionary of the shape and the size of an exported settings record.
PropertyList Record(int number) {
    PropertyListDictionary assignments;
    for (const char *control :
         {"ringLeft", "ringRight", "ringUp", "ringDown", "ringXYRest", "ringCCW", "ringCW", "ringZRest",
          "tunerCCW", "tunerCW", "buttonV", "buttonP", "buttonI", "buttonII", "buttonIII"}) {
        assignments.Add(control, Slot(number++));
    }
    PropertyListDictionary device;
    device.Add("clickEnabled", true);
    for (const char *key : {"ringSensitivity", "ringSpeed", "tunerSensitivity", "ringSensitivitySeparate",
                            "ringSensitivityX", "ringSensitivityY", "ringSensitivityZ", "ringSpeedSeparate",
                            "ringSpeedX", "ringSpeedY", "ringSpeedZ"}) {
        device.Add(key, std::int64_t{100});
    }
    device.Add("assignments", std::move(assignments));
    PropertyListDictionary devices;
    devices.Add("veltrana", std::move(device));
    PropertyListDictionary record;
    record.Add("signature", std::int64_t{1061109567});
    record.Add("fileName", "Application " + std::to_string(number));
    record.Add("configName", "Application " + std::to_string(number));
    record.Add("active", true);
    record.Add("devices", std::move(devices));
    return record;
}

PropertyListArray Records() {
    PropertyListArray records;
    for (int i = 0; i < kRecords; ++i) {
        records.push_back(Record(i));
    }
    return records;
}

// The list in both formats, in files that last as long as the program.
struct Files {
    std::string folder =
        std::filesystem::temp_directory_path() / ("drevix-bench-" + std::to_string(::getpid()));
    std::string xml = folder + "/list.xml";
    std::string binary = folder + "/list.bin";
    std::string out = folder + "/out.xml";
    plist_t tree = nullptr;

    Files() {
        std::filesystem::create_directory(folder);
        const std::string text = PropertyListArrayText(Records());
        std::ofstream(xml, std::ios::binary) << text;
        plist_from_xml(text.data(), static_cast<std::uint32_t>(text.size()), &tree);
        char *bytes = nullptr;
        std::uint32_t size = 0;
        plist_to_bin(tree, &bytes, &size);
        std::ofstream(binary, std::ios::binary).write(bytes, size);
        std::free(bytes);
    }
    Files(const Files &) = delete;
    Files &operator=(const Files &) = delete;
    ~Files() {
        plist_free(tree);
        std::filesystem::remove_all(folder);
    }
};

const Files &TheFiles() {
    static const Files files;
    return files;
}

void Read(benchmark::State &state, const std::string &path) {
    for (auto unused : state) {
        int count = 0;
        const OSErr status = ReadPropertyListArray(path, [&](PropertyList &) { return ++count > 0; });
        if (status != noErr || count != kRecords) {
            state.SkipWithError("the list was not read");
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(std::filesystem::file_size(path)));
}

void BM_ReadXml(benchmark::State &state) {
    Read(state, TheFiles().xml);
}

void ParseBare(benchmark::State &state, xmlSAXHandler *handler) {
    handler->characters = handler->ignorableWhitespace = IgnoreText;
    for (auto unused : state) {
        if (xmlSAXUserParseFile(handler, nullptr, TheFiles().xml.c_str()) != 0) {
            state.SkipWithError("the list was not parsed");
        }
    }
    state.SetBytesProcessed(state.iterations() *
                            static_cast<std::int64_t>(std::filesystem::file_size(TheFiles().xml)));
}

void BM_ReadXmlBareLibxml2(benchmark::State &state) {
    xmlSAXHandler handler{};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = IgnoreStart;
    handler.endElementNs = IgnoreEnd;
    ParseBare(state, &handler);
}

void BM_ReadXmlBareLibxml2WithoutNameSpaces(benchmark::State &state) {
    xmlSAXHandler handler{};
    handler.initialized = 1;
    handler.startElement = IgnorePlainStart;
    handler.endElement = IgnorePlainEnd;
    ParseBare(state, &handler);
}

void BM_ReadBinary(benchmark::State &state) {
    Read(state, TheFiles().binary);
}

void BM_ReadBinaryLibplist(benchmark::State &state) {
    for (auto unused : state) {
        std::ifstream file(TheFiles().binary, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        plist_t tree = nullptr;
        plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &tree);
        plist_free(tree);
    }
}

void BM_WriteXmlText(benchmark::State &state) {
    const PropertyListArray records = Records();
    for (auto unused : state) {
        benchmark::DoNotOptimize(PropertyListArrayText(records));
    }
}

void BM_WriteXmlTextLibplist(benchmark::State &state) {
    for (auto unused : state) {
        char *text = nullptr;
        std::uint32_t size = 0;
        plist_to_xml(TheFiles().tree, &text, &size);
        benchmark::DoNotOptimize(text);
        std::free(text);
    }
}

void BM_WriteXmlFile(benchmark::State &state) {
    const PropertyListArray records = Records();
    for (auto unused : state) {
        PropertyListArrayWriter writer;
        OSErr status = writer.Open(TheFiles().out);
        for (const PropertyList &record : records) {
            status = status == noErr ? writer.Add(record) : status;
        }
        if (status != noErr || writer.Finish() != noErr) {
            state.SkipWithError("the list was not written");
        }
    }
}

void BM_WriteXmlFileLibplist(benchmark::State &state) {
    for (auto unused : state) {
        char *text = nullptr;
        std::uint32_t size = 0;
        plist_to_xml(TheFiles().tree, &text, &size);
        std::FILE *file = std::fopen(TheFiles().out.c_str(), "w");
        std::fwrite(text, 1, size, file);
        std::fflush(file);
        ::fsync(::fileno(file));
        std::fclose(file);
        std::free(text);
    }
}

// The most memory of a child process that does `work`, less that of one that does nothing, in kilobytes.
template <typename Work>
long PeakKilobytes(const Work &work) {
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(0);
    }
    struct rusage usage {};
    int status = 0;
    ::wait4(child, &status, 0, &usage);
    return usage.ru_maxrss;
}

void ReadMemory(benchmark::State &state, const std::string &path) {
    for (auto unused : state) {
        const long nothing = PeakKilobytes([] {});
        const long reading = PeakKilobytes([&] {
            std::ignore =
                ReadPropertyListArray(path, [](PropertyList &) { return true; }); // BM_Read checks it
        });
        state.counters["peak_kB"] = static_cast<double>(reading - nothing);
    }
}

void BM_ReadXmlMemory(benchmark::State &state) {
    ReadMemory(state, TheFiles().xml);
}

void BM_ReadBinaryMemory(benchmark::State &state) {
    ReadMemory(state, TheFiles().binary);
}

void BM_ReadBinaryMemoryLibplist(benchmark::State &state) {
    for (auto unused : state) {
        const long nothing = PeakKilobytes([] {});
        const long reading = PeakKilobytes([] {
            std::ifstream file(TheFiles().binary, std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), {}};
            plist_t tree = nullptr;
            plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &tree);
        });
        state.counters["peak_kB"] = static_cast<double>(reading - nothing);
    }
}

// Over an old file as large as the new one, whose bytes are kept until the new one is whole.
void BM_WriteXmlMemory(benchmark::State &state) {
    for (auto unused : state) {
        std::filesystem::copy_file(TheFiles().xml, TheFiles().out,
                                   std::filesystem::copy_options::overwrite_existing);
        const long nothing = PeakKilobytes([] {});
        const long writing = PeakKilobytes([] {
            PropertyListArrayWriter writer;
            OSErr status = writer.Open(TheFiles().out);
            for (int i = 0; status == noErr && i < kRecords; ++i) {
                status = writer.Add(Record(i));
            }
            std::ignore = status == noErr ? writer.Finish() : status; // BM_WriteXmlFile checks it
        });
        state.counters["peak_kB"] = static_cast<double>(writing - nothing);
    }
}

// The memory first, while this program is small.
BENCHMARK(BM_ReadXmlMemory)->Iterations(1);
BENCHMARK(BM_ReadBinaryMemory)->Iterations(1);
BENCHMARK(BM_ReadBinaryMemoryLibplist)->Iterations(1);
BENCHMARK(BM_WriteXmlMemory)->Iterations(1);
BENCHMARK(BM_ReadXml)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadXmlBareLibxml2)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadXmlBareLibxml2WithoutNameSpaces)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadBinary)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadBinaryLibplist)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteXmlText)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteXmlTextLibplist)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteXmlFile)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteXmlFileLibplist)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace drevix
