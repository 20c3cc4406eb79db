// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// The recipes' waits over the fakes, against a station built as devices build it whose flow's
// last events come while no call is attached: between two calls, where no client sees them.

#include <stdio.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "TesmirRecipes.h"
#include "client_test_base.h"

namespace recipes = tesmir::recipes;

namespace {

constexpr const char* kAp1 = "02:00:00:00:01:00";
constexpr const char* kAp2 = "02:00:00:00:02:00";
constexpr int kAssociated = 6;

std::string StateChange(int state, const std::string& bssid) {
    return "<3>CTRL-EVENT-STATE-CHANGE id=0 state=" + std::to_string(state) + " BSSID=" + bssid +
           " SSID=tesmir";
}

std::string Connected(const std::string& how, const std::string& bssid) {
    return "<3>CTRL-EVENT-CONNECTED - " + how + " to " + bssid + " completed [id=0 id_str=]";
}

// A connection's events as wpa_supplicant sends them, WPA2 to |bssid|, up to the handshake's
// last step; then the burst that completes it, which comes within a millisecond.
struct Flow {
    std::vector<std::string> before;
    std::vector<std::string> last;
    std::vector<std::string> after;  // what the supplicant goes on to do, unasked
};

Flow Wpa2(const std::string& bssid) {
    const std::string none = "00:00:00:00:00:00";
    return {{"<3>SME: Trying to authenticate with " + bssid + " (SSID='tesmir' freq=2412 MHz)",
             StateChange(4, none),
             "<3>Trying to associate with " + bssid + " (SSID='tesmir' freq=2412 MHz)",
             StateChange(5, none), StateChange(6, none), "<3>Associated with " + bssid,
             StateChange(7, bssid), StateChange(8, bssid)},
            {"<3>WPA: Key negotiation completed with " + bssid + " [PTK=CCMP GTK=CCMP]",
             Connected("Connection", bssid), StateChange(9, bssid)},
            {}};
}

// An open network completes as soon as it is associated.
Flow Open(const std::string& bssid) {
    Flow flow = Wpa2(bssid);
    flow.before.resize(4);
    flow.last = {StateChange(6, bssid), "<3>Associated with " + bssid,
                 Connected("Connection", bssid), StateChange(9, bssid)};
    return flow;
}

// A PEAP connection: the EAP exchange while associated, which ends with the server's success;
// then the handshake, whose burst may come while no call is attached.
Flow Peap(const std::string& bssid) {
    Flow flow = Wpa2(bssid);
    flow.before.resize(6);  // up to the association
    for (const char* eap :
         {"STARTED EAP authentication started", "PROPOSED-METHOD vendor=0 method=25",
          "METHOD EAP vendor 0 method 25 (PEAP) selected",
          "STATUS status='completion' parameter='success'",
          "SUCCESS EAP authentication completed successfully"}) {
        flow.before.push_back(std::string("<3>CTRL-EVENT-EAP-") + eap);
    }
    flow.last.insert(flow.last.begin(), {StateChange(7, bssid), StateChange(8, bssid)});
    return flow;
}

// An FT roam from associating on: the keys come with the reassociation, in its burst.
Flow Ft(const std::string& bssid) {
    return {{StateChange(5, "00:00:00:00:00:00")},
            {StateChange(6, "00:00:00:00:00:00"), "<3>Associated with " + bssid,
             "<3>WPA: Key negotiation completed with " + bssid + " [PTK=CCMP GTK=CCMP]",
             StateChange(9, bssid), Connected("Connection", bssid)},
            {}};
}

// The supplicant's answers, and its station: STATUS sends every attached client the present state
// (and a CONNECTED once completed), unless |desktop|: built as desktops build it, it sends no
// state changes at all. The flow moves on by an event during each state query and while a call
// waits for an event, after |quiet| waits that find none; its last burst and what comes after,
// only while a call waits. The last burst comes in the gap after the |gap|-th call that follows
// the event before it, unless a call meets it first.
class Station {
  public:
    Station(Flow flow, int state, std::string bssid, int gap, int quiet = 0, bool desktop = false)
        : flow_(std::move(flow)),
          state_(state),
          bssid_(std::move(bssid)),
          gap_(gap),
          quiet_(quiet),
          desktop_(desktop) {
        fake::GetScript().replyTo = [this](const std::string& command) { return Reply(command); };
        fake::GetScript().onWait = [this] { Next(true); };
        fake::GetScript().onDetach = [this] {
            if (flow_.before.empty() && !flow_.last.empty() && gap_-- == 0) Burst();
        };
    }
    ~Station() { fake::GetScript() = fake::Script(); }

    int queries = 0;    // STATUS in waiting mode or not: each sends the state
    int events = 0;     // the flow's events that reached the client
    int lateWaits = 0;  // waits that found no event once the flow had ended: 3 s each
    // Such a wait blocks, as a real one does, until another client's STATUS sends it the state;
    // it is late only if none does within |blocksFor|.
    bool blocks = false;
    std::chrono::milliseconds blocksFor{2000};
    std::string flags = "[WPA2-PSK+FT/PSK-CCMP][ESS]";  // of every BSS
    bool burstAtStatus = false;  // the last burst comes between a call's attach and its STATUS
    int CurrentState() const { return state_; }

  private:
    std::string Reply(const std::string& command) {
        if (command == "PING") return "PONG\n";
        if (command == "ADD_NETWORK") return "0\n";
        if (command.rfind("BSS ", 0) == 0) return "flags=" + flags + "\n";
        if (command == "STATUS" && burstAtStatus && flow_.before.empty()) Burst();
        // From ASSOCIATED on, STATUS begins with the BSSID (ctrl_iface.c), handshake or not.
        std::string status = state_ >= kAssociated ? "bssid=" + bssid_ + "\nfreq=2412\n"
                                                   : "wpa_state=ASSOCIATING\n";
        if (command == "STATUS-NO_EVENTS") return status;
        if (command != "STATUS") return "OK\n";
        ++queries;
        if (!desktop_) fake::Emit(StateChange(state_, bssid_));
        if (state_ != recipes::kCompleted) {
            if (!desktop_) Next(false);
            return status;
        }
        if (!desktop_) {
            fake::Emit("<3>CTRL-EVENT-CONNECTED - connection to " + bssid_ +
                       " completed (auth) [id=0 id_str=]");
        }
        return status;
    }

    // Whether |event| reached the client: a desktop build keeps its state changes.
    bool Send(const std::string& event) {
        static const std::string kAssociatedWith = "<3>Associated with ";
        recipes::State state;
        if (event.find("STATE-CHANGE") != std::string::npos && recipes::ParseState(event, &state)) {
            state_ = state.state;
            bssid_ = state.bssid;
            if (desktop_) return false;
        } else if (event.rfind(kAssociatedWith, 0) == 0) {
            bssid_ = event.substr(kAssociatedWith.size(), 17);  // events.c copies it there
        }
        const bool sent = fake::Emit(event);
        events += sent ? 1 : 0;
        return sent;
    }

    // The flow's next event that reaches the client, or its whole last burst.
    void Next(bool waiting) {
        if (quiet_ > 0 && waiting) {
            --quiet_;
            if (blocks) fake::AwaitEmit(blocksFor);
        } else if (!flow_.before.empty()) {
            Pop(&flow_.before, waiting);
        } else if (!flow_.last.empty() && waiting) {
            Burst();
        } else if (!flow_.after.empty() && waiting) {
            Pop(&flow_.after, waiting);
        } else if (waiting && !(blocks && fake::AwaitEmit(blocksFor))) {
            ++lateWaits;
        }
    }

    void Pop(std::vector<std::string>* events, bool waiting) {
        const bool sent = Send(events->front());
        events->erase(events->begin());
        // A state change a desktop build keeps to itself: the supplicant goes on.
        if (!sent && desktop_) Next(waiting);
    }

    void Burst() {
        for (const std::string& event : flow_.last) Send(event);
        flow_.last.clear();
    }

    Flow flow_;
    int state_;
    std::string bssid_;
    int gap_;
    int quiet_;
    bool desktop_;
};

class WaitsTest : public ClientTest {
  protected:
    void SetUp() override {
        ClientTest::SetUp();
        OpenClient();
    }

    // Reconnect() from |state| to kAp1 through |flow|: known without a quiet wait, at a bounded
    // cost to other clients.
    void Reconnects(const Flow& flow, int gap, int state = 0) {
        Station station(flow, state, "00:00:00:00:00:00", gap);
        std::string bssid;
        EXPECT_TRUE(recipes::Reconnect(*client_, &bssid));
        EXPECT_EQ(kAp1, bssid);
        EXPECT_EQ(0, station.lateWaits);
        EXPECT_LE(station.queries, station.events + 10);
    }

    // Connect() to an open network, kAp1, through |flow|.
    void ConnectsOpen(const Flow& flow, int gap) {
        Station station(flow, 0, "00:00:00:00:00:00", gap);
        std::string bssid;
        EXPECT_TRUE(recipes::Connect(*client_, "tesmir-open", recipes::Security::kOpen, "", "",
                                     &bssid));
        EXPECT_EQ(kAp1, bssid);
        EXPECT_EQ(0, station.lateWaits);
    }
};

// Every place of the last burst: in the gap after the call that took the event before it, after
// the next call, and so on, while the wait may still ask the state (a few calls: the burst comes
// within milliseconds of that event).
constexpr int kGaps = 6;

TEST_F(WaitsTest, a_connection_completed_between_two_calls_is_known_at_once) {
    for (int gap = 0; gap < kGaps; ++gap) {
        SCOPED_TRACE("the last burst after call " + std::to_string(gap));
        Reconnects(Wpa2(kAp1), gap);
        {
            Station station(Wpa2(kAp2), recipes::kCompleted, kAp1, gap);
            EXPECT_TRUE(recipes::Roam(*client_, kAp2));
            EXPECT_EQ(0, station.lateWaits);
        }
        ConnectsOpen(Open(kAp1), gap);
    }
}

TEST_F(WaitsTest, a_telling_roam_that_ends_between_two_calls_is_known_at_once) {
    // Wherever the burst falls, the roam's own calls find it done; when it fell between two
    // calls, what told is lost, and the way is unknown, never another.
    for (int gap = 0; gap < kGaps; ++gap) {
        SCOPED_TRACE("the last burst after call " + std::to_string(gap));
        Station station(Ft(kAp2), recipes::kCompleted, kAp1, gap);
        recipes::RoamVia via = recipes::RoamVia::kFull;
        EXPECT_TRUE(recipes::Roam(*client_, kAp2, false, &via));
        EXPECT_EQ(0, station.lateWaits);
        EXPECT_TRUE(via == recipes::RoamVia::kFt || via == recipes::RoamVia::kUnknown);
    }
}

TEST_F(WaitsTest, an_eap_handshake_completed_between_two_calls_is_known_at_once) {
    // Until the server's success the wait only waits, so as to miss no outcome; from there on
    // the handshake is as quick as a PSK network's.
    for (int gap = 0; gap < kGaps; ++gap) {
        SCOPED_TRACE("the last burst after call " + std::to_string(gap));
        Station station(Peap(kAp1), 0, "00:00:00:00:00:00", gap);
        recipes::ConnectResult result;
        EXPECT_TRUE(recipes::Connect(*client_, "tesmir-eap", recipes::Security::kEap, "",
                                     {{"eap", "PEAP"}, {"identity", "user"}}, "", &result));
        EXPECT_EQ(recipes::ConnectOutcome::kConnected, result.outcome);
        EXPECT_EQ(kAp1, result.bssid);
        EXPECT_EQ(0, station.lateWaits);
    }
}

TEST_F(WaitsTest, an_eap_exchange_that_ends_between_two_calls_is_known_through_a_prompter) {
    // The server's success and the handshake after it all come in one gap. The wait asks no state
    // during the exchange, so as to lose none of its events, and would wait out 3 s; a second
    // client's STATUS sends it the state sooner.
    Flow flow = Peap(kAp1);
    flow.last.insert(flow.last.begin(), flow.before.end() - 2, flow.before.end());
    flow.before.resize(flow.before.size() - 2);
    const std::vector<recipes::NetworkField> fields = {{"eap", "PEAP"}, {"identity", "user"}};
    for (bool prompted : {false, true}) {
        SCOPED_TRACE(prompted ? "prompted" : "alone");
        std::unique_ptr<WpacliWrapper> prompter(GetWpacliWrapperHandle());
        ASSERT_EQ(0, prompter->Open(kPath));
        Station station(flow, 0, "00:00:00:00:00:00", 0);
        station.blocks = prompted;
        recipes::ConnectResult result;
        EXPECT_TRUE(recipes::Connect(*client_, "tesmir-eap", recipes::Security::kEap, "", fields,
                                     "", &result, 30, prompted ? prompter.get() : nullptr));
        EXPECT_EQ(recipes::ConnectOutcome::kConnected, result.outcome);
        EXPECT_EQ(kAp1, result.bssid);
        EXPECT_EQ(prompted ? 0 : 1, station.lateWaits);
    }
}

TEST_F(WaitsTest, a_build_that_sends_no_state_is_not_prompted) {
    // It would answer a prompt with no event: a prompt would end no call, only add exchanges.
    std::unique_ptr<WpacliWrapper> prompter(GetWpacliWrapperHandle());
    ASSERT_EQ(0, prompter->Open(kPath));
    Take();
    // The state query and the PING after it each wait as long as three prompts would take.
    Station station(Wpa2(kAp1), 0, "00:00:00:00:00:00", kGaps, 2, true);
    station.blocks = true;
    station.blocksFor = std::chrono::milliseconds(300);
    recipes::ConnectResult result;
    EXPECT_TRUE(recipes::Connect(*client_, "tesmir", recipes::Security::kWpa2Psk, "passphrase", {},
                                 "", &result, 30, prompter.get()));
    for (const std::string& request : Take("request 3 ")) {
        EXPECT_EQ(std::string::npos, request.find("STATUS")) << request;
    }
}

TEST_F(WaitsTest, keys_set_end_a_wait_without_the_rest_of_their_burst) {
    // A call may see the keys as its last event, the supplicant not yet done with their step:
    // what follows them comes while the call detaches. On a build that sends no states a wait
    // for more would wait out 3 s; whole or cut, the keys tell that the station completed.
    const std::string keys = "<3>WPA: Key negotiation completed with ";
    {
        Flow flow = Wpa2(kAp1);
        flow.last = {keys + kAp1 + " [PTK=CCMP GTK=CCMP]", StateChange(9, kAp1)};
        Station station(flow, 0, "00:00:00:00:00:00", kGaps, 0, true);
        std::string connected;
        EXPECT_TRUE(recipes::Connect(*client_, "tesmir", recipes::Security::kWpa2Psk,
                                     "tesmir-passphrase", "", &connected));
        EXPECT_EQ(kAp1, connected);
        EXPECT_EQ(0, station.lateWaits);
    }
    // Whole, as a call's first event; or behind "Associated with", cut before the BSSID.
    for (bool cut : {false, true}) {
        SCOPED_TRACE(cut ? "keys cut" : "keys whole");
        Flow flow = Ft(kAp2);
        flow.before = {"<3>Trying to associate with " + std::string(kAp2) + " (SSID='tesmir')"};
        flow.last = {keys + kAp2 + " [PTK=CCMP GTK=CCMP]", StateChange(9, kAp2)};
        if (cut) flow.last.insert(flow.last.begin(), "<3>Associated with " + std::string(kAp2));
        Station station(flow, recipes::kCompleted, kAp1, kGaps, 0, true);
        recipes::RoamVia via = recipes::RoamVia::kFull;
        EXPECT_TRUE(recipes::Roam(*client_, kAp2, false, &via));
        EXPECT_EQ(0, station.lateWaits);
        EXPECT_EQ(recipes::RoamVia::kUnknown, via);  // FT, on a build without states
    }
}

TEST_F(WaitsTest, a_roam_without_ft_on_a_build_without_states_ends_with_its_handshake) {
    // Associated to the target, the station has the handshake still ahead, and a roam begun
    // before it ends is refused unseen ("connect_work exist", sme.c). Wherever the association's
    // burst falls, the roam returns with the keys set, and waits no 3 s for them.
    for (int gap = 0; gap < kGaps; ++gap) {
        SCOPED_TRACE("the association after call " + std::to_string(gap));
        const std::string to = kAp2;
        Flow flow{{"<3>SME: Trying to authenticate with " + to + " (SSID='tesmir' freq=2437 MHz)",
                   "<3>Trying to associate with " + to + " (SSID='tesmir' freq=2437 MHz)"},
                  {StateChange(kAssociated, kAp1), "<3>Associated with " + to,
                   "<3>CTRL-EVENT-SUBNET-STATUS-UPDATE status=0", StateChange(7, to),
                   StateChange(8, to)},
                  {StateChange(recipes::kCompleted, to),
                   "<3>WPA: Key negotiation completed with " + to + " [PTK=CCMP GTK=CCMP]",
                   Connected("Connection", to)}};
        Station station(flow, recipes::kCompleted, kAp1, gap, 0, true);
        station.flags = "[WPA2-PSK-CCMP][ESS]";
        recipes::RoamVia via = recipes::RoamVia::kFt;
        EXPECT_TRUE(recipes::Roam(*client_, to, false, &via));
        EXPECT_EQ(recipes::kCompleted, station.CurrentState());
        EXPECT_EQ(0, station.lateWaits);
        EXPECT_TRUE(via == recipes::RoamVia::kFull || via == recipes::RoamVia::kUnknown);
    }
}

TEST_F(WaitsTest, a_roam_that_another_client_sent_elsewhere_is_not_taken_for_ours) {
    // Another client's ROAM won: an FT reassociation to another BSS, its keys cut before their
    // BSSID behind the association, as the target's would be. The roam is false, at once.
    const std::string elsewhere = "02:00:00:00:03:00";
    for (bool desktop : {false, true}) {
        SCOPED_TRACE(desktop ? "desktop build" : "device build");
        Station station(Ft(elsewhere), recipes::kCompleted, kAp1, 100, 0, desktop);  // in a call
        recipes::RoamVia via = recipes::RoamVia::kFull;
        EXPECT_FALSE(recipes::Roam(*client_, kAp2, false, &via));
        EXPECT_EQ(0, station.lateWaits);
        EXPECT_EQ(recipes::RoamVia::kUnknown, via);
    }
    // A target given in upper case is the BSSID the events write in lower case, not another.
    Station station(Ft("02:00:00:00:0a:00"), recipes::kCompleted, kAp1, 100, 0);
    EXPECT_TRUE(recipes::Roam(*client_, "02:00:00:00:0A:00"));
    EXPECT_EQ(0, station.lateWaits);
}

TEST_F(WaitsTest, the_state_a_status_call_sends_is_not_taken_for_a_handshake) {
    // An 802.1X network's first roam: its association's burst comes between a STATUS call's
    // attach and its STATUS, whose own state event then follows it, cut as a handshake's state
    // would be. The EAP exchange comes after: the roam is full, or unknown, never cached.
    const std::string to = kAp2;
    Flow flow{{"<3>Trying to associate with " + to + " (SSID='tesmir-eap' freq=2437 MHz)"},
              {StateChange(kAssociated, kAp1), "<3>Associated with " + to,
               "<3>CTRL-EVENT-SUBNET-STATUS-UPDATE status=0"},
              {"<3>CTRL-EVENT-EAP-STARTED EAP authentication started",
               "<3>CTRL-EVENT-EAP-METHOD EAP vendor 0 method 25 (PEAP) selected",
               "<3>CTRL-EVENT-EAP-SUCCESS EAP authentication completed successfully",
               StateChange(7, to), StateChange(8, to), StateChange(recipes::kCompleted, to),
               "<3>WPA: Key negotiation completed with " + to + " [PTK=CCMP GTK=CCMP]"}};
    Station station(flow, recipes::kCompleted, kAp1, 100, 0);  // in a call
    station.flags = "[WPA2-EAP-CCMP][ESS]";
    station.burstAtStatus = true;
    recipes::RoamVia via = recipes::RoamVia::kCached;
    EXPECT_TRUE(recipes::Roam(*client_, to, false, &via));
    EXPECT_TRUE(via == recipes::RoamVia::kFull || via == recipes::RoamVia::kUnknown)
            << static_cast<int>(via);
}

TEST_F(WaitsTest, a_connection_completed_before_its_wait_begins_is_known_at_once) {
    // A known access point of an open network: done within milliseconds of the command, all of
    // it between the command's call and the wait's first.
    Flow flow = Open(kAp1);
    flow.last.insert(flow.last.begin(), flow.before.begin(), flow.before.end());
    flow.before.clear();
    Reconnects(flow, 0);
    ConnectsOpen(flow, 3);  // ADD_NETWORK, two SET_NETWORK, then SELECT_NETWORK
}

TEST_F(WaitsTest, a_state_that_comes_back_behind_another_event_is_asked_again) {
    // The state query's answer is not the last event of its call, and the burst comes right
    // after it, before the wait has seen any state.
    Flow flow = Wpa2(kAp1);
    flow.before = {"<3>Associated with " + std::string(kAp1)};
    Reconnects(flow, 0, 6);
}

TEST_F(WaitsTest, a_link_lost_between_two_calls_is_known_by_the_next_event) {
    // The access point leaves: the station drops to 0, then scans for another on its own.
    for (int gap = 0; gap < 3; ++gap) {
        SCOPED_TRACE("the loss after call " + std::to_string(gap));
        Flow flow;
        flow.last = {"<3>CTRL-EVENT-DISCONNECTED bssid=" + std::string(kAp1) +
                             " reason=3 locally_generated=0",
                     StateChange(0, kAp1)};
        flow.after = {StateChange(3, kAp1), "<3>CTRL-EVENT-SCAN-STARTED "};
        // Found after a quiet wait, the link is asked its state and waited on again.
        Station station(flow, recipes::kCompleted, kAp1, gap, 1);
        int reason = -1;
        EXPECT_TRUE(recipes::WaitForLinkLoss(*client_, 10, &reason));
        EXPECT_EQ(0, station.lateWaits);
    }
}

// A wrong passphrase holds the station in the handshake for seconds: the wait asks its state a
// bounded number of times, then waits for events.
TEST_F(WaitsTest, a_station_held_in_the_handshake_is_asked_a_bounded_number_of_times) {
    Flow flow = Wpa2(kAp1);
    flow.before.pop_back();  // stays in the 4-way handshake
    flow.last.clear();
    flow.after = {
            "<3>CTRL-EVENT-SSID-TEMP-DISABLED id=0 ssid=\"tesmir\" auth_failures=1 "
            "duration=10 reason=WRONG_KEY"};
    Station station(flow, 0, "00:00:00:00:00:00", kGaps);
    std::string bssid;
    EXPECT_FALSE(
            recipes::Connect(*client_, "tesmir", recipes::Security::kWpa2Psk, "wrong", "", &bssid));
    EXPECT_LE(station.queries, station.events + 10);
    EXPECT_EQ(0, station.lateWaits);
}

}  // namespace
