// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Throughput of the string helpers on texts shaped like the supplicant's, and where the time of
// GetKeyValues goes: compiling the key patterns (required per call) against the rest.

#include <map>
#include <regex>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "WpaStringUtils.h"

namespace {

// 100 lines of SCAN_RESULTS: bssid, frequency, signal, flags, ssid, tab-separated.
std::string ScanResults() {
    std::string text = "bssid / frequency / signal level / flags / ssid\n";
    for (int i = 0; i < 100; ++i) {
        char line[160];
        snprintf(line, sizeof(line),
                 "02:00:00:%02x:%02x:00\t%d\t-%d\t[WPA2-PSK-CCMP][ESS]\tnetwork <%d> name\n",
                 i / 16, i % 16, 2412 + 5 * (i % 13), 40 + i % 50, i);
        text += line;
    }
    return text;
}

// A 60-word event with key/value word pairs.
std::string LongEvent() {
    std::string text = "<3>CTRL-EVENT-BSS-ADDED";
    for (int i = 0; i < 29; ++i) {
        text += " key" + std::to_string(i) + " <value" + std::to_string(i) + ">";
    }
    return text + " end";
}

std::map<std::string, std::string> TenKeys() {
    std::map<std::string, std::string> keys;
    for (int i = 0; i < 10; ++i) keys["^key" + std::to_string(i * 3) + "$"] = "";
    return keys;
}

void BM_StripSet(benchmark::State& state) {
    const std::string text = ScanResults();
    std::string out;
    for (auto _ : state) {
        WpaStringUtils::Strip(text, "<>[]", out);
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_StripSet);

void BM_StripChar(benchmark::State& state) {
    const std::string text = ScanResults();
    std::string out;
    for (auto _ : state) {
        WpaStringUtils::Strip(text, ' ', out);
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_StripChar);

void BM_SplitScanResults(benchmark::State& state) {
    const std::string text = ScanResults();
    for (auto _ : state) {
        std::vector<std::string> fields;
        WpaStringUtils::SplitString(text, '\t', fields);
        benchmark::DoNotOptimize(fields);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_SplitScanResults);

void BM_SplitEvent(benchmark::State& state) {
    const std::string text = LongEvent();
    for (auto _ : state) {
        std::vector<std::string> fields;
        WpaStringUtils::SplitString(text, ' ', fields);
        benchmark::DoNotOptimize(fields);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_SplitEvent);

void BM_GetKeyValues(benchmark::State& state) {
    const std::string text = LongEvent();
    const std::map<std::string, std::string> keys = TenKeys();
    for (auto _ : state) {
        std::map<std::string, std::string> values = keys;
        WpaStringUtils::GetKeyValues(text, values);
        benchmark::DoNotOptimize(values);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_GetKeyValues);

// The part of GetKeyValues that the behaviour requires on every call: one compile per key.
void BM_GetKeyValues_CompileOnly(benchmark::State& state) {
    const std::map<std::string, std::string> keys = TenKeys();
    for (auto _ : state) {
        for (const auto& entry : keys) {
            std::regex pattern(entry.first);
            benchmark::DoNotOptimize(pattern);
        }
    }
}
BENCHMARK(BM_GetKeyValues_CompileOnly);

// What waiting mode spends on each event beside the exchange itself: the pattern compile the
// contract asks for on every event, and the search.
void BM_EventPattern_CompileAndSearch(benchmark::State& state) {
    const std::string event = "<3>CTRL-EVENT-NETWORK-ADDED 0";
    for (auto _ : state) {
        const std::regex pattern("NETWORK-ADDED");
        benchmark::DoNotOptimize(std::regex_search(event, pattern));
    }
}
BENCHMARK(BM_EventPattern_CompileAndSearch);

}  // namespace
