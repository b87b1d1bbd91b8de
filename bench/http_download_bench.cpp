// bench_http_download: the HTTP downloader taking a 512 MB body over loopback into a file, against
// a plain copy of the same file in 8192-byte blocks (read and write, nothing else). The server is
// the test HTTP server on a thread of this process, sending the file from disk with a
// Content-Length. Both write a new file each time; the source stays in the page cache.
// Figures: bench/README.md.

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "net/http_downloader.h"
#include "tests/net/http_test_server.h"
#include "tests/net/net_test_support.h"

namespace {

constexpr size_t body_size = size_t{512} << 20;

struct source_file {
    net_test::temp_dir dir;
    std::string path = dir.file("source.bin");
    std::string copy = dir.file("copy.bin");

    source_file() {
        const int out = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        std::vector<char> block(size_t{1} << 20);
        unsigned state = 12345;
        for (char& c : block) {
            state = state * 1103515245u + 12345u;
            c = static_cast<char>(state >> 24);
        }
        for (size_t written = 0; written < body_size; written += block.size()) {
            block[0] = static_cast<char>(written >> 20);  // no two blocks alike
            if (write(out, block.data(), block.size()) != static_cast<ssize_t>(block.size())) std::abort();
        }
        close(out);
    }
};

source_file& source() {
    static source_file file;
    return file;
}

void BM_plain_copy_8192(benchmark::State& state) {
    const source_file& file = source();
    std::vector<char> block(8192);
    for (auto _ : state) {
        const int in = open(file.path.c_str(), O_RDONLY | O_CLOEXEC);
        const int out = open(file.copy.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        for (ssize_t got; (got = read(in, block.data(), block.size())) > 0;) {
            if (write(out, block.data(), static_cast<size_t>(got)) != got) std::abort();
        }
        close(in);
        close(out);
        state.PauseTiming();
        unlink(file.copy.c_str());
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * body_size));
}
BENCHMARK(BM_plain_copy_8192)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

void BM_http_download(benchmark::State& state) {
    const source_file& file = source();
    net_test::http_test_server server;
    net_test::http_reply reply;
    reply.body_file = file.path;
    if (!server.start(reply)) {
        state.SkipWithError("no server");
        return;
    }
    for (auto _ : state) {
        zorn_http_downloader downloader;
        downloader.set_connection("127.0.0.1", server.port(), 0);
        if (!downloader.download("127.0.0.1", "/soundpack/big.bin", file.copy.c_str()) ||
            downloader.received_bytes != static_cast<int>(body_size)) {
            state.SkipWithError("download failed");
            break;
        }
        state.PauseTiming();
        unlink(file.copy.c_str());
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * body_size));
}
BENCHMARK(BM_http_download)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

}  // namespace

BENCHMARK_MAIN();
