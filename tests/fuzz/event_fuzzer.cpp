// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Execute over the link-time fakes of libwpa_client and select(): any direct reply of 1 to 64
// bytes, any number of events of any bytes and lengths, select() ready after any share of the
// wait, timed out or interrupted, receives and pending checks that fail, in either mode. Left
// out are the inputs that end the process by design: a malformed pattern (patterns here match
// escaped input bytes), a reply of 0 or more than 64 bytes, a descriptor of 1024 or more.

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <memory>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "WpacliWrapper.h"
#include "fakes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    fake::Reset();
    fake::Script& script = fake::GetScript();
    gTesmirLogLevel = input.ConsumeIntegral<uint32_t>();
    script.attachResult = input.ConsumeIntegralInRange(-3, 0);
    script.requestResult = input.ConsumeIntegralInRange(-3, 0);
    script.reply = input.ConsumeBytesAsString(input.ConsumeIntegralInRange(1, 64));
    if (script.reply.empty()) script.reply = "\n";
    for (int n = input.ConsumeIntegralInRange(0, 6); n > 0; --n) {
        script.selectSteps.push_back({input.ConsumeIntegralInRange(-1, 1),
                                      input.ConsumeIntegralInRange<long>(0, 3000000)});
    }
    for (int n = input.ConsumeIntegralInRange(0, 3); n > 0; --n) {
        script.recvResults.push_back(input.ConsumeIntegralInRange(-1, 0));
        script.pendingResults.push_back(input.ConsumeIntegralInRange(-1, 1));
    }
    std::string pattern;
    for (unsigned char c : input.ConsumeRandomLengthString(6)) {
        char escaped[5];
        snprintf(escaped, sizeof(escaped), "\\x%02x", c);
        pattern += escaped;
    }
    const bool wait = input.ConsumeBool();

    std::unique_ptr<WpacliWrapper> client(GetWpacliWrapperHandle());
    if (client->Open("/fuzz/ctrl") == 0) {
        for (int n = input.ConsumeIntegralInRange(0, 8); n > 0; --n) {
            fake::SendEvent(input.ConsumeRandomLengthString(700));
        }
        std::string response = "untouched";
        const int32_t status = client->Execute("PING", pattern, response, wait);
        if (status != 0 && response != "untouched") __builtin_trap();
        if (status == 0 && !wait && response.size() > 63) __builtin_trap();
        if (status == 0 && wait && response.size() > 512) __builtin_trap();
    }
    return 0;
}
