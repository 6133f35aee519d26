// Encoding, streams and formatting against what a program would otherwise take: the C library's iconv and snprintf, and
// the standard streams.

#include <iconv.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <benchmark/benchmark.h>

#include "bench/ratio_reporter.h"
#include "ktl/platform/archive.h"
#include "ktl/platform/encoding.h"
#include "ktl/platform/mem_file.h"
#include "ktl/platform/stdio_file.h"
#include "ktl/platform/system.h"

namespace {

constexpr int kDoubles = 200000;

std::string Repeated(const std::string &piece, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) text += piece;
    return text;
}

const std::string kAscii = Repeated("name of a place, 12345; ", 4000);
const std::string kChinese = Repeated("北京市海淀区中关村大街1号 ", 4000);

std::string Iconv(const char *to, const char *from, std::string text) {
    const iconv_t converter = iconv_open(to, from);
    std::string out(text.size() * 2, '\0');
    char *in = text.data();
    char *next = out.data();
    std::size_t left = text.size();
    std::size_t room = out.size();
    iconv(converter, &in, &left, &next, &room);
    iconv_close(converter);
    out.resize(out.size() - room);
    return out;
}

void ToGbk(benchmark::State &state, const std::string &text, bool own) {
    for (auto _ : state) {
        if (own) {
            benchmark::DoNotOptimize(ktl::FromUtf8(text));
        } else {
            benchmark::DoNotOptimize(Iconv("CP936", "UTF-8", text));
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void ToUtf8(benchmark::State &state, bool own) {
    const std::string gbk(ktl::FromUtf8(kChinese).View());
    for (auto _ : state) {
        if (own) {
            benchmark::DoNotOptimize(ktl::ToUtf8(gbk));
        } else {
            benchmark::DoNotOptimize(Iconv("UTF-8", "CP936", gbk));
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(gbk.size()));
}

void WriteOwn(benchmark::State &state) {
    for (auto _ : state) {
        CMemFile file(kDoubles * 8);
        CArchive archive(&file, CArchive::store);
        for (int i = 0; i < kDoubles; ++i) archive << static_cast<double>(i);
        archive.Close();
        benchmark::DoNotOptimize(file.GetContent().data());
    }
    state.SetBytesProcessed(state.iterations() * kDoubles * 8);
}

void WriteStream(benchmark::State &state) {
    for (auto _ : state) {
        std::ostringstream stream;
        for (int i = 0; i < kDoubles; ++i) {
            const auto value = static_cast<double>(i);
            stream.write(reinterpret_cast<const char *>(&value), sizeof value);
        }
        benchmark::DoNotOptimize(stream.view().data());
    }
    state.SetBytesProcessed(state.iterations() * kDoubles * 8);
}

void ReadOwn(benchmark::State &state) {
    CMemFile file;
    file.SetLength(kDoubles * 8);
    for (auto _ : state) {
        file.SeekToBegin();
        CArchive archive(&file, CArchive::load);
        double sum = 0;
        double value = 0;
        for (int i = 0; i < kDoubles; ++i) {
            archive >> value;
            sum += value;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * kDoubles * 8);
}

void ReadStream(benchmark::State &state) {
    const std::string bytes(kDoubles * 8, '\0');
    for (auto _ : state) {
        std::istringstream stream(bytes);
        double sum = 0;
        double value = 0;
        for (int i = 0; i < kDoubles; ++i) {
            stream.read(reinterpret_cast<char *>(&value), sizeof value);
            sum += value;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * kDoubles * 8);
}

void Lines(benchmark::State &state, bool own) {
    const CString name = ktl::TemporaryFolder() + "ktl_lines_bench.txt";
    const std::string path = ktl::SystemPath(name);
    std::ofstream(path, std::ios::binary) << Repeated("a line of some forty characters, no more\r\n", 20000);
    for (auto _ : state) {
        std::size_t bytes = 0;
        if (own) {
            CStdioFile file(name, CFile::modeRead);
            for (CString line; file.ReadString(line);) bytes += line.View().size();
        } else {
            std::ifstream file(path);
            for (std::string line; std::getline(file, line);) bytes += line.size();
        }
        benchmark::DoNotOptimize(bytes);
    }
    DeleteFile(name);
}

void FormatOwn(benchmark::State &state) {
    CString text;
    for (auto _ : state) {
        text.Format("%s,%d,%.6f", "name", 12345, 116.391275);
        benchmark::DoNotOptimize(text.GetString());
    }
}

void FormatPrintf(benchmark::State &state) {
    char text[64];
    for (auto _ : state) {
        std::snprintf(text, sizeof text, "%s,%d,%.6f", "name", 12345, 116.391275);
        benchmark::DoNotOptimize(text);
    }
}

}  // namespace

int main(int argc, char **argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RegisterBenchmark("ascii to gbk/ktl", [](benchmark::State &s) { ToGbk(s, kAscii, true); });
    benchmark::RegisterBenchmark("ascii to gbk/iconv", [](benchmark::State &s) { ToGbk(s, kAscii, false); });
    benchmark::RegisterBenchmark("chinese to gbk/ktl", [](benchmark::State &s) { ToGbk(s, kChinese, true); });
    benchmark::RegisterBenchmark("chinese to gbk/iconv", [](benchmark::State &s) { ToGbk(s, kChinese, false); });
    benchmark::RegisterBenchmark("gbk to utf-8/ktl", [](benchmark::State &s) { ToUtf8(s, true); });
    benchmark::RegisterBenchmark("gbk to utf-8/iconv", [](benchmark::State &s) { ToUtf8(s, false); });
    benchmark::RegisterBenchmark("write doubles/ktl", WriteOwn);
    benchmark::RegisterBenchmark("write doubles/ostringstream", WriteStream);
    benchmark::RegisterBenchmark("read doubles/ktl", ReadOwn);
    benchmark::RegisterBenchmark("read doubles/istringstream", ReadStream);
    benchmark::RegisterBenchmark("read lines/ktl", [](benchmark::State &s) { Lines(s, true); });
    benchmark::RegisterBenchmark("read lines/getline", [](benchmark::State &s) { Lines(s, false); });
    benchmark::RegisterBenchmark("format/ktl", FormatOwn);
    benchmark::RegisterBenchmark("format/snprintf", FormatPrintf);
    ktl::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
