// Execute in both modes over the link-time fakes: arbitrary direct replies of 1 to 64 bytes and
// arbitrary sequences of events of 0 to 2048 bytes, with valid patterns and every log bit set.
// Statuses are 0 or the documented negative values; a response is untouched on failure, and
// otherwise is what the reply or an event makes of it.

#include <algorithm>
#include <vector>

#include "WpacliWrapper.h"
#include "direct_reply.h"
#include "fake_android_log.h"
#include "fake_wpa_ctrl.h"
#include "fuzz_input.h"

namespace {

constexpr const char* kPatterns[] = {
        "", "CTRL-EVENT-CONNECTED", "^<3>", "NETWORK-(ADDED|REMOVED)", "[0-9]{2}", "x$", "\\s",
        "."};
constexpr size_t kMaxEvents = 8;
constexpr size_t kMaxEventSize = 2048;
constexpr size_t kEventBuffer = 512;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    fake::Reset();
    fake::Logs().clear();
    gTesmirLogLevel = 0xffffffff;

    const uint8_t mode = input.Byte();
    const std::string pattern = kPatterns[mode % (sizeof(kPatterns) / sizeof(kPatterns[0]))];
    const bool wait = (mode & 0x80) != 0;
    std::string reply = input.Bytes(64);
    if (reply.empty()) reply = "\n";  // a zero-length reply ends the process by design
    std::vector<std::string> events;
    const size_t eventCount = wait ? 1 + input.Byte() % kMaxEvents : 0;
    for (size_t i = 0; i < eventCount; ++i) events.push_back(input.Bytes(kMaxEventSize));

    WpacliWrapper* client = GetWpacliWrapperHandle();
    FUZZ_CHECK(client->Open("/fuzz/wlan0") == 0);
    fake::Script().reply = reply;
    // Queued before the call, so the first wait returns at once.
    for (const std::string& event : events) fake::SendEvent(event);

    std::string response = "untouched";
    const int32_t status = client->Execute("CMD", pattern, response, wait);
    FUZZ_CHECK(status == 0 || status == -22);
    if (status != 0) {
        FUZZ_CHECK(response == "untouched");
    } else if (!wait) {
        FUZZ_CHECK(response == DirectModeResponse(reply));
    } else {
        // Some event, cut to its first NUL, to the buffer, and to earlier events' lengths.
        FUZZ_CHECK(response.size() <= kEventBuffer);
        FUZZ_CHECK(std::any_of(events.begin(), events.end(), [&](const std::string& e) {
            return e.compare(0, response.size(), response) == 0;
        }));
    }
    delete client;
    FUZZ_CHECK(fake::OpenConnections() == 0);
    return 0;
}
