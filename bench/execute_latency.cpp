// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Samples latencies so that the library and its baselines see the same machine, in two ways:
// - interleaved: round by round, one PING exchange through the library and one through the raw
//   client, ADD_NETWORK waited for through each, and every tenth round a wpa_cli process;
// - back to back: rounds of kBackToBack PINGs through one, then as many through the other.
// The order within a round alternates, so that neither side always goes first. Writes
// "impl,microseconds" lines; a back-to-back line is the mean of its round.
//   tesmir_execute_latency ROUNDS BACK_TO_BACK_ROUNDS OUT.csv    (in a lab: TESMIR_LAB_DIR)

#include <stdio.h>
#include <stdlib.h>

#include <chrono>
#include <memory>
#include <string>

#include "WpacliWrapper.h"
#include "bench_lab.h"

namespace {

constexpr int kWpaCliEvery = 10;  // a process per call is slow; sample it less often
constexpr int kBackToBack = 400;

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
    if (argc != 4 || lab == nullptr) {
        fprintf(stderr, "usage: TESMIR_LAB_DIR=... %s ROUNDS BACK_TO_BACK_ROUNDS OUT.csv\n",
                argv[0]);
        return 64;
    }
    const int rounds = atoi(argv[1]);
    const int backToBackRounds = atoi(argv[2]);
    FILE* out = fopen(argv[3], "we");
    if (out == nullptr) return 1;

    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    RawClient raw(*lab);
    if (client->Open(lab->socket) != 0 || !raw.ok()) return 1;

    RawClient housekeeping(*lab);
    std::string response;
    int failures = 0;
    auto libraryPing = [&] { failures += client->Execute("PING", "", response, false) != 0; };
    auto rawPing = [&] { failures += raw.Direct("PING") < 0; };
    auto library = [&] { fprintf(out, "library,%.1f\n", Micros(libraryPing)); };
    auto rawDirect = [&] { fprintf(out, "raw,%.1f\n", Micros(rawPing)); };
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
    auto backToBack = [&](const char* impl, auto&& call) {
        const double total = Micros([&] {
            for (int i = 0; i < kBackToBack; ++i) call();
        });
        fprintf(out, "%s,%.1f\n", impl, total / kBackToBack);
    };
    for (int i = 0; i < backToBackRounds; ++i) {
        if (i % 2 == 0) backToBack("b2b_library", libraryPing);
        backToBack("b2b_raw", rawPing);
        if (i % 2 == 1) backToBack("b2b_library", libraryPing);
    }
    fclose(out);
    if (failures != 0) fprintf(stderr, "%d calls failed\n", failures);
    return failures == 0 ? 0 : 1;
}
