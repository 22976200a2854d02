// Speed of the code-page converter on a big text: UTF-8 -> UTF-16, UTF-16 -> UTF-8, CP1252 -> UTF-16 and
// reading a UTF-8 file through KwFile. The text is a UTF-8 file named by the first argument or by the
// environment variable KW_BENCH_DATA; the UTF-16 and CP1252 forms are made from it before timing.
// Throughput is counted in bytes of the source form. bench/codepages.sh runs iconv beside it.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "base/CodePages.h"
#include "base/KwFile.h"

namespace {

std::string g_path;

struct Data {
  std::string utf8;
  std::u16string utf16;
  std::string cp1252;
};

const Data& GetData() {
  static const Data data = [] {
    Data d;
    std::ifstream in(g_path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    d.utf8 = s.str();
    d.utf16 = kw::FromUtf8(d.utf8);
    d.cp1252.resize(d.utf16.size());
    int64_t written = 0;
    kw::EncodeUnits(kw::kCodePage1252, d.utf16.data(), static_cast<int64_t>(d.utf16.size()), d.cp1252.data(),
                    static_cast<int64_t>(d.cp1252.size()), 0, nullptr, nullptr, true, nullptr, &written);
    d.cp1252.resize(static_cast<size_t>(written));
    return d;
  }();
  return data;
}

void BM_Utf8ToUtf16(benchmark::State& state) {
  const Data& d = GetData();
  std::vector<char16_t> out(d.utf8.size());
  for (auto _ : state) {
    int64_t used = 0, written = 0;
    kw::DecodeBytes(kw::kCodePageUtf8, d.utf8.data(), static_cast<int64_t>(d.utf8.size()), out.data(),
                    static_cast<int64_t>(out.size()), true, &used, &written);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(d.utf8.size()));
}

void BM_Utf16ToUtf8(benchmark::State& state) {
  const Data& d = GetData();
  std::vector<char> out(3 * d.utf16.size());
  for (auto _ : state) {
    int64_t used = 0, written = 0;
    kw::EncodeUnits(kw::kCodePageUtf8, d.utf16.data(), static_cast<int64_t>(d.utf16.size()), out.data(),
                    static_cast<int64_t>(out.size()), 0, nullptr, nullptr, true, &used, &written);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(2 * d.utf16.size()));
}

void BM_Cp1252ToUtf16(benchmark::State& state) {
  const Data& d = GetData();
  std::vector<char16_t> out(d.cp1252.size());
  for (auto _ : state) {
    int64_t used = 0, written = 0;
    kw::DecodeBytes(kw::kCodePage1252, d.cp1252.data(), static_cast<int64_t>(d.cp1252.size()), out.data(),
                    static_cast<int64_t>(out.size()), true, &used, &written);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(d.cp1252.size()));
}

void BM_KwFileReadUtf8(benchmark::State& state) {
  const Data& d = GetData();
  std::vector<char16_t> block(64000);
  const std::u16string name = kw::FromUtf8(g_path);
  for (auto _ : state) {
    kw::KwFile file;
    file.Open(name, kw::KwFile::kRead, 13, 26, kw::kEncodingUtf8);
    int64_t total = 0;
    for (int64_t n; (n = file.ReadBlock(block.data(), 64000)) > 0;) total += n;
    benchmark::DoNotOptimize(total);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(d.utf8.size()));
}

BENCHMARK(BM_Utf8ToUtf16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Utf16ToUtf8)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Cp1252ToUtf16)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KwFileReadUtf8)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc > 1) g_path = argv[1];
  else if (const char* env = std::getenv("KW_BENCH_DATA")) g_path = env;
  if (g_path.empty() || !std::ifstream(g_path)) {
    std::fprintf(stderr, "usage: codepages_bench [benchmark options] FILE (or KW_BENCH_DATA=FILE): UTF-8 text\n");
    return 2;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
