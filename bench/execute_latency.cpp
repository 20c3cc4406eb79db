// Samples latencies round by round, so that the library and its baselines see the same machine:
// a PING exchange through the library, the raw client and (every tenth round) a wpa_cli process,
// and ADD_NETWORK waited for through the library and the raw client. The order within a round
// alternates, so that neither side always goes first. Writes "impl,microseconds" lines.
//   tesmir_execute_latency ROUNDS OUT.csv    (needs TESMIR_BENCH_SOCKET and TESMIR_BENCH_DIR)

#include <stdio.h>
#include <stdlib.h>

#include <chrono>
#include <memory>
#include <string>

#include "WpacliWrapper.h"
#include "bench_lab.h"

namespace {

constexpr int kWpaCliEvery = 10;  // a process per call is slow; sample it less often

template <typename F>
double Micros(F&& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
            .count();
}

}  // namespace

int main(int argc, char** argv) {
    const BenchLab* lab = BenchLab::Get();
    if (argc != 3 || lab == nullptr) {
        fprintf(stderr, "usage: TESMIR_BENCH_SOCKET=... TESMIR_BENCH_DIR=... %s ROUNDS OUT.csv\n",
                argv[0]);
        return 64;
    }
    const int rounds = atoi(argv[1]);
    FILE* out = fopen(argv[2], "we");
    if (out == nullptr) return 1;

    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    RawClient raw(*lab);
    if (client->Open(lab->socket) != 0 || !raw.ok()) return 1;

    RawClient housekeeping(*lab);
    std::string response;
    int failures = 0;
    auto library = [&] {
        fprintf(out, "library,%.1f\n",
                Micros([&] { failures += client->Execute("PING", "", response, false) != 0; }));
    };
    auto rawDirect = [&] {
        fprintf(out, "raw,%.1f\n", Micros([&] { failures += raw.Direct("PING") < 0; }));
    };
    auto libraryWait = [&] {
        fprintf(out, "library_wait,%.1f\n", Micros([&] {
                    failures +=
                            client->Execute("ADD_NETWORK", "NETWORK-ADDED", response, true) != 0;
                }));
        housekeeping.Request("REMOVE_NETWORK all");
    };
    auto rawWait = [&] {
        fprintf(out, "raw_wait,%.1f\n", Micros([&] { failures += raw.Wait("ADD_NETWORK") < 0; }));
        housekeeping.Request("REMOVE_NETWORK all");
    };
    fprintf(out, "impl,us\n");
    for (int i = 0; i < rounds; ++i) {
        if (i % 2 == 0) {
            library();
            rawDirect();
            libraryWait();
            rawWait();
        } else {
            rawDirect();
            library();
            rawWait();
            libraryWait();
        }
        if (i % kWpaCliEvery == 0) {
            fprintf(out, "wpa_cli,%.1f\n", Micros([&] { failures += !WpaCliPing(*lab); }));
        }
    }
    fclose(out);
    if (failures != 0) fprintf(stderr, "%d calls failed\n", failures);
    return failures == 0 ? 0 : 1;
}
