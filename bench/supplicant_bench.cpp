// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Execute against a real wpa_supplicant, beside the same exchanges made with the raw client
// library and beside running wpa_cli as a process. Skipped outside a lab (TESMIR_LAB_DIR).

#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "WpacliWrapper.h"
#include "alloc_counter.h"
#include "bench_lab.h"

namespace {

// The supplicant scripts/bench.sh started, or null with the benchmark marked skipped.
const BenchLab* LabOrSkip(benchmark::State& state) {
    const BenchLab* lab = BenchLab::Get();
    if (lab == nullptr) state.SkipWithError("no supplicant (run scripts/bench.sh)");
    return lab;
}

std::unique_ptr<WpacliWrapper> OpenClient(benchmark::State& state, const BenchLab& lab) {
    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open(lab.socket) != 0) state.SkipWithError("Open failed");
    return client;
}

void BM_Execute_Ping_Library(benchmark::State& state) {
    const BenchLab* lab = LabOrSkip(state);
    if (lab == nullptr) return;
    gTesmirLogLevel = 0x43;
    auto client = OpenClient(state, *lab);
    std::string response;
    response.reserve(64);
    uint64_t allocations = 0;
    for (auto _ : state) {
        const uint64_t before = AllocationCount();
        if (client->Execute("PING", "", response, false) != 0) {
            state.SkipWithError("Execute failed");
            break;
        }
        allocations += AllocationCount() - before;
    }
    state.counters["allocs_per_call"] = benchmark::Counter(static_cast<double>(allocations),
                                                           benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_Execute_Ping_Library)->UseRealTime();

void BM_Execute_Ping_Raw(benchmark::State& state) {
    const BenchLab* lab = LabOrSkip(state);
    if (lab == nullptr) return;
    RawClient raw(*lab);
    if (!raw.ok()) return state.SkipWithError("raw open failed");
    for (auto _ : state) {
        if (raw.Direct("PING") < 0) {
            state.SkipWithError("raw request failed");
            break;
        }
    }
}
BENCHMARK(BM_Execute_Ping_Raw)->UseRealTime();

void BM_Execute_Ping_WpaCli(benchmark::State& state) {
    const BenchLab* lab = LabOrSkip(state);
    if (lab == nullptr) return;
    for (auto _ : state) {
        if (!WpaCliPing(*lab)) {
            state.SkipWithError("wpa_cli failed");
            break;
        }
    }
}
BENCHMARK(BM_Execute_Ping_WpaCli)->UseRealTime();

// Each iteration adds a network and takes its event; removing it again is not timed.
void BM_Wait_AddNetwork_Library(benchmark::State& state) {
    const BenchLab* lab = LabOrSkip(state);
    if (lab == nullptr) return;
    gTesmirLogLevel = 0x43;
    auto client = OpenClient(state, *lab);
    RawClient housekeeping(*lab);
    std::string response;
    for (auto _ : state) {
        if (client->Execute("ADD_NETWORK", "NETWORK-ADDED", response, true) != 0) {
            state.SkipWithError("Execute failed");
            break;
        }
        state.PauseTiming();
        housekeeping.Request("REMOVE_NETWORK all");
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Wait_AddNetwork_Library)->UseRealTime();

void BM_Wait_AddNetwork_Raw(benchmark::State& state) {
    const BenchLab* lab = LabOrSkip(state);
    if (lab == nullptr) return;
    RawClient raw(*lab);
    RawClient housekeeping(*lab);
    if (!raw.ok()) return state.SkipWithError("raw open failed");
    for (auto _ : state) {
        if (raw.Wait("ADD_NETWORK") < 0) {
            state.SkipWithError("raw wait failed");
            break;
        }
        state.PauseTiming();
        housekeeping.Request("REMOVE_NETWORK all");
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Wait_AddNetwork_Raw)->UseRealTime();

}  // namespace
