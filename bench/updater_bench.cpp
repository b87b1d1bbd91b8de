// bench_updater: the soundpack updater over loopback against the test world's web host on a thread
// of this process.
//   - An update of 2,000 files of 4 KB to 1 MB (sizes spread evenly on a log scale, fixed seed)
//     into an empty folder, against a plain copy of the same files (read and write in 8192-byte
//     blocks, one file after another into a new folder).
//   - An update with nothing to do against a 50,000-line manifest: the fetch of the compressed
//     manifest, its parse and the compare ("compare"), and the same after loading and pruning the
//     local manifest from disk ("load and compare").
// Figures: bench/README.md.

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "base/files.h"
#include "config/debug_log.h"
#include "net/file_manifest.h"
#include "testworld/web_host.h"
#include "tests/net/net_test_support.h"

namespace {

void remove_tree(const std::string& path) {
    const std::string command = "rm -rf '" + path + "'";
    if (std::system(command.c_str()) != 0) std::abort();
}

struct served_folder {
    net_test::temp_dir dir;
    std::string served = dir.file("web");
    std::vector<std::string> names;
    double total_bytes = 0;
    testworld::web_host host;

    served_folder(int files, bool tiny) {
        zorn_client_set_debug_logfile_name("/dev/null");
        zorn_debug_level = 0;
        std::vector<char> block(size_t{1} << 20);
        unsigned state = 4242;
        for (char& c : block) {
            state = state * 1103515245u + 12345u;
            c = static_cast<char>(state >> 24);
        }
        for (int i = 0; i < files; ++i) {
            state = state * 1103515245u + 12345u;
            const double spread = (state >> 8) / double(1u << 24);
            const size_t size = tiny ? 0 : static_cast<size_t>(4096.0 * std::pow(256.0, spread));
            char name[64];
            std::snprintf(name, sizeof name, "group%02d/sound %05d.ogg", i % 40, i);
            names.push_back(name);
            const std::string path = served + "/" + name;
            zorn_recursive_mkdir(path.c_str(), 0700, nullptr);
            const int out = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
            block[0] = static_cast<char>(i);
            if (size && write(out, block.data() + (i % 4096), size) != static_cast<ssize_t>(size)) std::abort();
            close(out);
            total_bytes += static_cast<double>(size);
        }
        std::string error;
        if (!testworld::make_manifest(served, &error) || !host.start(served)) std::abort();
    }
};

served_folder& many_files() {
    static served_folder folder(2000, false);
    return folder;
}

void BM_plain_copy_2000_files(benchmark::State& state) {
    served_folder& folder = many_files();
    std::vector<char> block(8192);
    int run = 0;
    for (auto _ : state) {
        // A new folder each run: files deleted just before make ext4 search longer for free inodes.
        const std::string target = folder.dir.file("copy" + std::to_string(run++));
        for (const std::string& name : folder.names) {
            const std::string path = target + "/" + name;
            zorn_recursive_mkdir(path.c_str(), 0700, nullptr);
            const int in = open((folder.served + "/" + name).c_str(), O_RDONLY | O_CLOEXEC);
            const int out = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
            for (ssize_t got; (got = read(in, block.data(), block.size())) > 0;) {
                if (write(out, block.data(), static_cast<size_t>(got)) != got) std::abort();
            }
            close(in);
            close(out);
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * folder.total_bytes));
    for (int i = 0; i < run; ++i) remove_tree(folder.dir.file("copy" + std::to_string(i)));
}
BENCHMARK(BM_plain_copy_2000_files)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

void BM_update_2000_files(benchmark::State& state) {
    served_folder& folder = many_files();
    int run = 0;
    for (auto _ : state) {
        const std::string pack = folder.dir.file("pack" + std::to_string(run++));
        kvu_file_manifest manifest;
        manifest.port = folder.host.port();
        manifest.set_destination(pack.c_str());
        manifest.set_temporary_file((pack + "/tmp/update.tmp").c_str());
        manifest.load_manifest((pack + "/update_manifest.lst").c_str());
        if (manifest.update("127.0.0.1", "/soundpack", testworld::manifest_file_name) != 0 ||
            manifest.files_updated != 2000) {
            state.SkipWithError("update failed");
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * folder.total_bytes));
    for (int i = 0; i < run; ++i) remove_tree(folder.dir.file("pack" + std::to_string(i)));
}
BENCHMARK(BM_update_2000_files)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(3);

// 50,000 empty files, fetched once so that the client's manifest names them all.
struct synced_folder {
    served_folder folder{50000, true};
    std::string pack = folder.dir.file("pack");
    synced_folder() {
        kvu_file_manifest manifest;
        manifest.port = folder.host.port();
        manifest.set_destination(pack.c_str());
        manifest.set_temporary_file((pack + "/tmp/update.tmp").c_str());
        manifest.load_manifest((pack + "/update_manifest.lst").c_str());
        if (manifest.update("127.0.0.1", "/soundpack", testworld::manifest_file_name) != 0) std::abort();
    }
};

synced_folder& synced() {
    static synced_folder folder;
    return folder;
}

void run_nothing_to_do(benchmark::State& state, bool time_the_load) {
    synced_folder& synced_one = synced();
    for (auto _ : state) {
        if (!time_the_load) state.PauseTiming();
        kvu_file_manifest manifest;
        manifest.port = synced_one.folder.host.port();
        manifest.set_destination(synced_one.pack.c_str());
        manifest.set_temporary_file((synced_one.pack + "/tmp/update.tmp").c_str());
        manifest.load_manifest((synced_one.pack + "/update_manifest.lst").c_str());
        if (!time_the_load) state.ResumeTiming();
        if (manifest.update("127.0.0.1", "/soundpack", testworld::manifest_file_name) != 0 ||
            manifest.remote_records != 50000 || manifest.files_to_update != 0) {
            state.SkipWithError("not an update with nothing to do");
        }
    }
}

void BM_compare_50000_lines(benchmark::State& state) { run_nothing_to_do(state, false); }
BENCHMARK(BM_compare_50000_lines)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);

void BM_load_and_compare_50000_lines(benchmark::State& state) { run_nothing_to_do(state, true); }
BENCHMARK(BM_load_and_compare_50000_lines)->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);

}  // namespace

BENCHMARK_MAIN();
