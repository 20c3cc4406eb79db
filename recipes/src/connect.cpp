// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

// Connecting, staying connected and disconnecting.

#include <stdlib.h>

#include <chrono>
#include <functional>
#include <regex>
#include <thread>
#include <utility>
#include <vector>

#include "TesmirRecipes.h"
#include "hex.h"
#include "waits.h"

namespace tesmir::recipes {
namespace {

constexpr int kScanning = 3;
constexpr int kAssociated = 6;
constexpr int kFourWayHandshake = 7;

// The fields Connect() takes, and whether each is text, which goes in hex.
struct FieldKind {
    const char* name;
    bool text;
};
constexpr FieldKind kFieldKinds[] = {
        {"eap", false},
        {"identity", true},
        {"anonymous_identity", true},
        {"password", true},
        {"phase1", true},
        {"phase2", true},
        {"ca_cert", true},
        {"ca_path", true},
        {"domain_suffix_match", true},
        {"domain_match", true},
        {"altsubject_match", true},
        {"subject_match", true},
        {"client_cert", true},
        {"private_key", true},
        {"private_key_passwd", true},
        {"scan_ssid", false},
        {"key_mgmt", false},
        {"ieee80211w", false},
        {"proactive_key_caching", false},
};

const FieldKind* KindOf(const std::string& name) {
    for (const FieldKind& kind : kFieldKinds) {
        if (name == kind.name) return &kind;
    }
    return nullptr;
}

// A setting as SET_NETWORK takes it: name and value.
using Setting = std::pair<std::string, std::string>;

// The supplicant's hex of a text value; an empty one has no hex form, and is quoted.
std::string TextValue(const std::string& value) {
    return value.empty() ? "\"\"" : Hex(value);
}

// Adds a network with |settings| and selects it. False with the refused setting's name in
// |refused| when the supplicant refuses one; the network is then removed.
bool AddAndSelect(WpacliWrapper& client, const std::vector<Setting>& settings, std::string* id,
                  std::string* refused) {
    if (!Command(client, "ADD_NETWORK", id)) return false;
    const std::string set = "SET_NETWORK " + *id + " ";
    for (const Setting& setting : settings) {
        if (!Command(client, set + setting.first + " " + setting.second)) {
            *refused = setting.first;
            Command(client, "REMOVE_NETWORK " + *id);
            return false;
        }
    }
    return Command(client, "SELECT_NETWORK " + *id);
}

// What a kind of security sets, after the SSID (in hex: an SSID may hold any byte).
std::vector<Setting> SecuritySettings(const std::string& ssid, Security security,
                                      const std::string& passphrase) {
    std::vector<Setting> settings = {{"ssid", Hex(ssid)}};
    switch (security) {
        case Security::kOpen:
            settings.emplace_back("key_mgmt", "NONE");
            break;
        case Security::kWpa2Psk:
            settings.emplace_back("key_mgmt", "WPA-PSK");
            settings.emplace_back("psk", "\"" + passphrase + "\"");
            break;
        case Security::kWpa3Sae:
            settings.emplace_back("key_mgmt", "SAE");
            settings.emplace_back("ieee80211w", "2");
            settings.emplace_back("sae_password", "\"" + passphrase + "\"");
            break;
        case Security::kOwe:
            settings.emplace_back("key_mgmt", "OWE");
            settings.emplace_back("ieee80211w", "2");
            break;
        case Security::kEap:
            settings.emplace_back("key_mgmt", "WPA-EAP");
            break;
    }
    return settings;
}

// The events that end a connect other than its completion, on the network |id|, each as far as
// the shortest event before it in a call leaves it (JudgeOutcome).
std::string OutcomePattern(const std::string& id) {
    return "(CTRL-EVENT-SSID-TEMP-DISABLED id=" + id +
           " |CTRL-EVENT-EAP-(FAILURE|TLS-CERT-ERROR) |CTRL-REQ-[A-Z_]+-" + id +
           ":|CTRL-EVENT-NETWORK-NOT-F|EAP-MSCHAPV2: failure message: |CTRL-EVENT-DISCONNECTED "
           "bssid=[0-9a-f:]{17} reason=23( |$))";
}

// The network field a CTRL-REQ-<FIELD> asks for (wpa_supplicant's eap_ctrl_req types).
std::string AskedField(const std::string& request) {
    if (request == "PASSPHRASE") return "private_key_passwd";
    if (request == "PSK_PASSPHRASE") return "psk";
    return Lower(request);
}

// The reason SSID-TEMP-DISABLED gives after the SSID, which it prints escaped between quotes:
// "" when the event was cut before it.
std::string TempDisabledReason(const std::string& event) {
    size_t at = event.find(" ssid=\"");
    if (at == std::string::npos) return "";
    for (at += 7; at < event.size() && event[at] != '"'; ++at) {
        if (event[at] == '\\') ++at;
    }
    static const std::regex kReason(R"(^" auth_failures=[0-9]+ duration=[0-9]+ reason=([A-Z_]+)$)");
    std::smatch match;
    const std::string rest = at < event.size() ? event.substr(at) : "";
    return std::regex_search(rest, match, kReason) ? match[1].str() : "";
}

// Sorts an event of OutcomePattern() into |result|: kFailed when it ends the connect.
Verdict JudgeOutcome(const std::string& event, Security security, ConnectResult* result) {
    static const std::regex kCertError(EventPattern("CTRL-EVENT-EAP-TLS-CERT-ERROR "));
    // "reason=1 depth=0 subject='...'": both within the event's first 50 bytes.
    static const std::regex kCertPlace(
            EventPattern("CTRL-EVENT-EAP-TLS-CERT-ERROR reason=([0-9]+) depth=([0-9]+)( |$)"));
    static const std::regex kRequest(EventPattern("CTRL-REQ-([A-Z_]+)-"));
    // It follows SCAN-RESULTS, which leaves it 27 bytes: "<3>CTRL-EVENT-NETWORK-NOT-F".
    static const std::regex kNotFound(EventPattern("CTRL-EVENT-NETWORK-NOT-F"));
    static const std::regex kMschapFailure(EventPattern("EAP-MSCHAPV2: failure message: "));
    static const std::regex kEapFailure(EventPattern("CTRL-EVENT-EAP-FAILURE "));
    // Reason 23: IEEE 802.1X authentication failed.
    static const std::regex kAuthFailed(EventPattern("CTRL-EVENT-DISCONNECTED "));
    std::smatch match;
    if (std::regex_search(event, kCertError)) {
        result->outcome = ConnectOutcome::kRejectedServerCertificate;
        if (std::regex_search(event, match, kCertPlace)) {
            result->certReason = Number(match[2]);
            result->certDepth = Number(match[3]);
        }
    } else if (std::regex_search(event, match, kRequest)) {
        result->outcome = ConnectOutcome::kAsksFor;
        result->field = AskedField(match[2]);
    } else if (std::regex_search(event, kNotFound)) {
        result->outcome = ConnectOutcome::kNotFound;
    } else if (std::regex_search(event, kMschapFailure)) {
        // The server's answer to the password, once the station took its certificate.
        result->outcome = ConnectOutcome::kRejectedCredentials;
    } else if (std::regex_search(event, kEapFailure) || std::regex_search(event, kAuthFailed)) {
        // Why is told by an event before it, from which a call may have detached.
        result->outcome = ConnectOutcome::kRejected;
    } else {
        // SSID-TEMP-DISABLED: WRONG_KEY after a handshake with a key that did not match,
        // AUTH_FAILED after an EAP failure. Its reason comes after the SSID, and a shorter event
        // before it in the same call cuts it off; for a PSK or SAE network nothing else than a
        // failed handshake disables it here.
        const std::string reason = TempDisabledReason(event);
        const bool keyed = security == Security::kWpa2Psk || security == Security::kWpa3Sae;
        if (reason == "WRONG_KEY" || (keyed && (reason.empty() || reason == "AUTH_FAILED"))) {
            result->outcome = ConnectOutcome::kRejectedCredentials;
        } else if (security == Security::kEap && (reason.empty() || reason == "AUTH_FAILED")) {
            result->outcome = ConnectOutcome::kRejected;
        } else {
            result->outcome = ConnectOutcome::kFailed;
        }
    }
    return Verdict::kFailed;
}

// Whether the supplicant holds a PMKSA, which an EAP success adds: "Index / AA / PMKID /
// expiration (in seconds) / opportunistic\n" is 61 bytes, and the first entry's index follows.
bool HoldsPmksa(WpacliWrapper& client) {
    std::string reply;
    return Command(client, "PMKSA", &reply) && reply.find('\n') != std::string::npos;
}

}  // namespace

bool IsConnectField(const std::string& name) {
    return KindOf(name) != nullptr;
}

bool Connect(WpacliWrapper& client, const std::string& ssid, Security security,
             const std::string& passphrase, const std::string& freqs, std::string* bssid) {
    CompileEventPatterns();
    std::vector<Setting> settings = SecuritySettings(ssid, security, passphrase);
    // A full scan of every channel takes seconds; the network's own channels take a fraction.
    if (!freqs.empty()) settings.emplace_back("scan_freq", freqs);
    std::string id;
    std::string refused;
    if (!AddAndSelect(client, settings, &id, &refused)) return false;
    Completion completion;
    completion.id = Number(id);
    // A wrong passphrase ends in SSID-TEMP-DISABLED, after which the supplicant retries later.
    completion.failure = "CTRL-EVENT-SSID-TEMP-DISABLED id=" + id + " ";
    completion.happened = HeldAssociation(client);
    return AwaitCompleted(client, completion, bssid);
}

bool Connect(WpacliWrapper& client, const std::string& ssid, Security security,
             const std::string& passphrase, const std::vector<NetworkField>& fields,
             const std::string& freqs, ConnectResult* result, int seconds,
             WpacliWrapper* prompter) {
    *result = ConnectResult();
    CompileEventPatterns();
    std::vector<Setting> settings = SecuritySettings(ssid, security, passphrase);
    if (!freqs.empty()) settings.emplace_back("scan_freq", freqs);
    for (const NetworkField& field : fields) {
        const FieldKind* kind = KindOf(field.name);
        if (kind == nullptr) {
            result->field = field.name;
            return false;
        }
        settings.emplace_back(field.name, kind->text ? TextValue(field.value) : field.value);
    }
    // Its thread starts before the first command, not in a gap between two calls.
    Prompter prompting(prompter);
    const bool pmksaBefore = security == Security::kEap && HoldsPmksa(client);
    std::string id;
    if (!AddAndSelect(client, settings, &id, &result->field)) return false;
    result->networkId = Number(id);
    Completion completion;
    completion.id = result->networkId;
    completion.failure = OutcomePattern(id);
    completion.onFailure = [security, result](const std::string& event) {
        return JudgeOutcome(event, security, result);
    };
    completion.seconds = seconds;
    completion.prompter = &prompting;
    // Without the state as events, a connection held through two quiet periods counts as made.
    completion.happened = HeldAssociation(client);
    if (security == Security::kEap) {
        // A server that stopped answering holds the station associated too: there it takes a
        // PMKSA, which only an EAP success adds, where none was held before.
        completion.happened = [&client, pmksaBefore,
                               associated = HeldAssociation(client)]() mutable {
            return associated() && !pmksaBefore && HoldsPmksa(client);
        };
        // Associated to this network, then back to scanning or below: the exchange failed, its
        // events lost. The state the supplicant falls to after a failure has no network (id -1);
        // a state of another network, such as one this connect left, never counts as associated.
        completion.onState = [result, associated = false](const State& state) mutable {
            associated =
                    associated || (state.id == result->networkId && state.state >= kAssociated);
            if (!associated || state.state > kScanning) return Verdict::kNotYet;
            result->outcome = ConnectOutcome::kRejected;
            return Verdict::kFailed;
        };
        // The outcome comes as an event, which a call's detach drops should it come between two
        // calls: no state query may add a call before it. Once the server's EAP-Success came
        // (eap.c: "completion" status, then EAP-SUCCESS), only the handshake's few milliseconds
        // are left, which a call that waits for them would often miss.
        completion.settlingFrom = kFourWayHandshake;
        completion.stateAfterEvents = false;
        // A PMKSA is added once the exchange gave a key, before the handshake.
        completion.settledBy =
                "(CTRL-EVENT-EAP-(SUCCESS |STATUS status='completion' parameter='success')|"
                "PMKSA-CACHE-ADDED )";
    }
    const auto start = std::chrono::steady_clock::now();
    if (AwaitCompleted(client, completion, &result->bssid)) {
        result->outcome = ConnectOutcome::kConnected;
        return true;
    }
    switch (result->outcome) {
        case ConnectOutcome::kRejectedCredentials:
        case ConnectOutcome::kRejectedServerCertificate:
        case ConnectOutcome::kRejected:
            // Or the supplicant tries again after a while, with the same credentials: enough
            // failures lock an account on many servers.
            DisableNetwork(client, result->networkId);
            break;
        case ConnectOutcome::kFailed:
            if (std::chrono::steady_clock::now() - start >= std::chrono::seconds(seconds)) {
                result->outcome = ConnectOutcome::kTimedOut;
            }
            break;
        default:
            break;
    }
    return false;
}

bool CurrentBssid(WpacliWrapper& client, std::string* bssid) {
    // Associated, STATUS begins with "bssid=xx:xx:xx:xx:xx:xx\n"; otherwise with wpa_state=.
    // Its wpa_state line comes too late to fit once associated. -NO_EVENTS: a build as devices
    // build it would also send every attached client the state; a desktop build ignores it.
    std::string status;
    if (!Command(client, "STATUS-NO_EVENTS", &status) || status.rfind("bssid=", 0) != 0) {
        return false;
    }
    if (bssid != nullptr) *bssid = Field(status, "bssid");
    return true;
}

bool ReadSignal(WpacliWrapper& client, Signal* signal) {
    // "RSSI=-30\nLINKSPEED=54\nNOISE=9999\nFREQUENCY=2412\n...": the first four fit.
    std::string reply;
    if (!Command(client, "SIGNAL_POLL", &reply)) return false;
    signal->rssi = Number(Field(reply, "RSSI"));
    signal->linkSpeed = Number(Field(reply, "LINKSPEED"));
    signal->freq = Number(Field(reply, "FREQUENCY"));
    return signal->freq != 0;
}

bool Disconnect(WpacliWrapper& client) {
    // DISCONNECTED is the first event to come; with nothing to disconnect from, none comes.
    int reason = 0;
    return AwaitDisconnected(client, "DISCONNECT", 10, &reason);
}

bool Reconnect(WpacliWrapper& client, std::string* bssid) {
    CompileEventPatterns();
    Completion completion;
    completion.happened = HeldAssociation(client);
    return Command(client, "RECONNECT") && AwaitCompleted(client, completion, bssid);
}

bool WaitForLinkLoss(WpacliWrapper& client, int seconds, int* reason) {
    // The state first: a link already down ends the wait at once.
    return AwaitDisconnected(client, "STATUS", seconds, reason);
}

bool Forget(WpacliWrapper& client) {
    return Command(client, "REMOVE_NETWORK all");
}

bool Reopen(WpacliWrapper& client, const std::string& socket, int seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    std::string reply;
    // Until the supplicant has made its socket, Open fails (and logs an error at the default
    // mask); a socket left by a supplicant that ended opens but does not answer.
    while (client.Open(socket) != 0 || !Command(client, "PING", &reply) || reply != "PONG") {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return true;
}

}  // namespace tesmir::recipes
