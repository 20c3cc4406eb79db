// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

// Recipes: the usual station tasks done through WpacliWrapper, as a host on a device does them,
// in the namespace tesmir::recipes. Link the static library libtesmirrecipes (Android.bp) or
// tesmir::recipes (CMake); what of this interface a version may change is in CHANGELOG.md. The
// library's edges they work within are told in WpacliWrapper.h; how each recipe meets them, and
// what it costs, in docs/RECIPES.md. In short:
//  - every query asks for a reply that fits the 63-byte window, and none can get an empty reply
//    while the supplicant's BSS table stands still;
//  - a wait is a loop of waiting-mode calls whose patterns are anchored on the whole prefix of
//    the events they await, and which read fields only from where an SSID cannot reach;
//  - events between two calls are lost, so a wait also asks the supplicant's state: on a
//    supplicant built as devices build it (its STATUS sends the state as an event) after every
//    event, and a few milliseconds apart while a connection settles; on a desktop build after 3 s
//    without events. When, and what each query sends the supplicant's other clients:
//    docs/RECIPES.md, "Knowing the outcome as soon as the supplicant does".
// Every recipe returns false when the supplicant did not do what was asked, or a call failed.

#include <functional>
#include <string>
#include <vector>

#include "WpacliWrapper.h"

namespace tesmir::recipes {

// A command in direct mode; false if the call failed or the reply is FAIL or UNKNOWN COMMAND.
bool Command(WpacliWrapper& client, const std::string& command, std::string* reply = nullptr);

// A pattern for the event named |name| ("CTRL-EVENT-CONNECTED - Connection to "), anchored on its
// whole prefix: the priority and, on the global control socket, "IFNAME=<name> ". A name found
// anywhere else in an event (an SSID can be "CTRL-EVENT-CONNECTED") does not match.
std::string EventPattern(const std::string& name);

// The station's state as CTRL-EVENT-STATE-CHANGE or CTRL-EVENT-CONNECTED tell it.
constexpr int kIdCut = -2;  // State::id of a CONNECTED cut before its id
struct State {
    int id = -1;        // the network's id; -1 for none, kIdCut when the event was cut before it
    int state = -1;     // wpa_states: 0 DISCONNECTED ... 3 SCANNING ... 9 COMPLETED
    std::string bssid;  // 00:00:00:00:00:00 for none
};
constexpr int kCompleted = 9;
constexpr int kAuthenticating = 4;  // below it, the station is not associated

// Reads |state| from an event, whole or cut: true only when the event is one of
//   <3>CTRL-EVENT-STATE-CHANGE id=0 state=9 BSSID=02:00:00:00:01:00 SSID=...
//   <3>CTRL-EVENT-CONNECTED - Connection to 02:00:00:00:01:00 completed [id=0 id_str=...]
//   <3>CTRL-EVENT-CONNECTED - connection to 02:00:00:00:01:00 completed (auth) [id=0 id_str=...]
// and long enough to hold the state and BSSID (a CONNECTED's id when it holds it too), or a
// CONNECTED cut before its BSSID is whole, which gives state 9, an empty |bssid| and kIdCut. The
// SSID and id_str, the only text in them that is not the supplicant's own, are left unread.
bool ParseState(const std::string& event, State* state);

// The state, from a supplicant built as devices build it: waiting mode on STATUS, whose
// CTRL-EVENT-STATE-CHANGE that build sends every attached client. One exchange. On a desktop
// build no event comes: false after 3 s.
bool QueryState(WpacliWrapper& client, State* state);

// What a wait makes of an event.
enum class Verdict { kNotYet, kDone, kFailed };

// The members are in the order a wait is read; a Wait is made once per wait.
struct Wait {  // NOLINT(clang-analyzer-optin.performance.Padding)
    // The events that may end the wait (EventPattern). Waiting mode hands back the first event
    // that matches, so a pattern that matches events which do not end the wait loses those
    // queued behind them.
    std::string pattern;
    // Judges an event the pattern matched, or the last event of a call when none matched.
    std::function<Verdict(const std::string& event)> judge;
    // Whether the station's state can end the wait (connect, roam, ...): then every event that
    // does not end it is followed by STATUS in waiting mode, which on a device build hands the
    // state to |judge| as an event; a state read from associating to the group handshake is
    // followed by STATUS again a few milliseconds later (at most 9 times a wait) instead of a
    // wait on PING. On a desktop build STATUS waits as PING does.
    bool askState = false;
    // Asked after each 3 s without events, on a build that sends no state: whether what the
    // awaited event announces has happened, its event lost between two calls.
    std::function<bool()> happened;
    int seconds = 30;
};

// Sends |command| in waiting mode (its direct reply is not seen: send commands that can fail in
// direct mode first, and wait on "PING"), then calls again until |wait| is done or failed, or
// its time is up. Puts the deciding event in |event|, or "" when happened() decided.
bool Await(WpacliWrapper& client, const std::string& command, const Wait& wait,
           std::string* event = nullptr);

// Await() on PING for the first event that |pattern| matches; after each 3 s without events,
// |happened| may end the wait instead, with |event| empty.
bool AwaitEvent(WpacliWrapper& client, const std::string& pattern,
                const std::function<bool()>& happened, std::string* event = nullptr,
                int seconds = 30);

// Scans the given frequencies in MHz ("2412,2437"; "" for all, which takes seconds on a radio
// with 5 GHz channels) and waits for the results to be taken in. Should their event be lost,
// settles for the supplicant holding results after 3 s without events: keep scans narrow, so
// that a scan is done by then.
bool Scan(WpacliWrapper& client, const std::string& freqs);

struct Bss {
    int id = -1;
    std::string bssid;
    int freq = 0;
    int level = 0;           // dBm
    std::string flags;       // "[WPA2-PSK-CCMP][ESS]", cut when long
    std::string ssid;        // its bytes, from the SSID element: spaces, quotes and UTF-8 as sent
    size_t ssidLength = 0;   // the SSID's length in bytes, also when |ssid| is cut
    bool ssidWhole = false;  // false when |ssid| holds only the first bytes (see SsidCanBe)
};

// Every BSS the supplicant holds, from its last scans, in id order. Empty when it holds none.
// SSIDs of up to 24 bytes come whole (25 while ids are below 100): the SSID element in hex fills
// the 63 bytes of a reply; of a longer one the first bytes, with its length. The ids come first,
// about ten to a query, then each BSS in three queries, from the newest down. An entry the
// supplicant drops during the listing is skipped, and one added meanwhile is not listed. A query
// can still end the process in one case: when every entry from the one it asks for to the last
// is dropped between two queries (docs/RELIABILITY.md): ListNetworksIsolated() below cannot end
// the host. A listing right after a scan of your own has the quietest table.
bool ListNetworks(WpacliWrapper& client, std::vector<Bss>* found);

// Where ListNetworksIsolated() runs its helper, and how long it lets it run.
struct Isolation {
    // tesmir-list-helper, installed with this library (Android.bp: required by libtesmirrecipes).
    std::string helper = "/vendor/bin/tesmir-list-helper";
    // Where libwpa_client binds client sockets (its CONFIG_CTRL_IFACE_CLIENT_DIR): a helper that
    // ended could not remove its own, which are removed from here.
#ifdef __ANDROID__
    std::string clientDir = "/data/vendor/wifi/wpa/sockets";
#else
    std::string clientDir = "/tmp";
#endif
    int attempts = 3;         // helpers started at most in one listing
    int milliseconds = 5000;  // a listing not answered by then is ended (SIGKILL)
};

// What the helpers of one ListNetworksIsolated() did.
struct ListingReport {
    int helpers = 0;  // started, and the one that did not start; 0: the kept helper listed
    int ended = 0;    // ended by a signal: the library ended it, on an entry that went away
    int hung = 0;     // ended after Isolation::milliseconds
    int failed = 0;   // did not start, could not open |socket|, or a call failed
    // What kept a helper from starting, and the path tried; 0 and "" when none failed to start.
    // A helper that did not start is not tried again in the same listing: a wrong path or
    // permission stays wrong. The error is posix_spawn's where it reports a failed exec (glibc).
    // Where it does not (bionic, an emulator), the helper ends with status 127 before it prints
    // anything, as when the dynamic linker cannot load it: the error is then access(X_OK)'s on
    // the path, or ENOEXEC when the path may be run (a library it needs, or on a device the
    // domain's execute_no_trans, is missing: docs/DEVICE.md).
    int startError = 0;
    std::string startPath;
};

// ListNetworks() in a helper process, on a client of its own opened on |socket|: an empty reply
// ends the helper, never the host. True with |found| when a helper listed the whole table; false
// with |found| empty otherwise, and |report| tells why.
//
// The first listing on a socket starts its helper; later ones ask the same helper, over a
// socket pair, on the client it keeps open, and cost about what ListNetworks() does in the host
// (docs/PERFORMANCE.md). One helper serves a socket, one listing at a time: callers on several
// threads wait their turn rather than each holding a client of the supplicant and a process.
// A helper that ends or hangs is reaped, its client sockets removed, and the listing tried again
// in a new one, up to Isolation::attempts started; one that does not start is not tried again
// (ListingReport::startError). So is one whose supplicant went away (Wi-Fi off): the next
// listing after Wi-Fi is back starts a helper on the new supplicant.
//
// The helper's life is the host's: it ends when the host's end of their channel closes (the host
// exits or is killed), whichever thread started it, and removes its client sockets. That end is
// close-on-exec, so that no other child of the host keeps the helper. The host's own clients and
// threads are untouched: the helper is spawned (posix_spawn), not forked, and signalled and
// reaped through a pidfd where the kernel has one. Neither side gets SIGPIPE when the other is
// gone, whatever the host's handlers. A helper of another version, which cannot serve, is run
// once a listing instead. A host that ignores SIGCHLD cannot learn how a helper ended: one that
// ends then counts as failed.
bool ListNetworksIsolated(const std::string& socket, std::vector<Bss>* found, ListingReport* report,
                          const Isolation& isolation = Isolation());

// Ends every helper that ListNetworksIsolated() keeps, after the listing each may be serving,
// waits for each and removes its client sockets: before Wi-Fi is turned off, or before the host
// exits, to free the supplicant's clients at once. The next listing starts a helper again.
void EndListingHelpers();

// Whether |ssid| can be the listed one: equal when whole, else the same length and beginning.
bool SsidCanBe(const Bss& bss, const std::string& ssid);

// The bytes of an SSID as the supplicant prints it in its replies and events: printable ASCII
// as it is, '"' and '\' escaped with '\', \e \n \r \t, and every other byte as \xNN. An
// escape cut at its end stays as it is.
std::string DecodeSsid(const std::string& printed);

// How a network is secured. kOwe: Opportunistic Wireless Encryption (PMF required). kEap:
// 802.1X with the EAP method and credentials given as fields (NetworkField); WPA3-Enterprise is
// kEap with key_mgmt WPA-EAP-SHA256 and ieee80211w 2. Suite B-192 and EAP-SIM/AKA (a SIM on the
// device) are not covered.
enum class Security { kOpen, kWpa2Psk, kWpa3Sae, kOwe, kEap };

// Adds a network and connects to it, narrowing the scan to |freqs| when given ("2412 2437").
// Returns the BSSID connected to in |bssid|. The network stays configured. The passphrase goes
// in a SET_NETWORK command, which the library logs verbatim at mask 0x04 (TesmirLogLevel.h).
bool Connect(WpacliWrapper& client, const std::string& ssid, Security security,
             const std::string& passphrase, const std::string& freqs, std::string* bssid);

// A network field by the supplicant's own name (wpa_supplicant.conf's) and its value, byte for
// byte. IsConnectField() tells which Connect() takes: eap, identity, anonymous_identity,
// password, phase1, phase2, ca_cert, ca_path, domain_suffix_match, domain_match,
// altsubject_match, subject_match, client_cert, private_key, private_key_passwd, scan_ssid,
// key_mgmt, ieee80211w and proactive_key_caching. Text fields go in hex, so that a value may hold
// quotes or any other byte; the rest (eap, scan_ssid, key_mgmt, ieee80211w,
// proactive_key_caching) go as they are, in the supplicant's words ("PEAP TTLS", "1").
// Certificates and keys are files the supplicant can read: on a device, where they go is in
// docs/DEVICE.md; keystore:// names the framework's keystore, which a vendor host cannot fill.
struct NetworkField {
    std::string name;
    std::string value;
};
bool IsConnectField(const std::string& name);

// How a connect ended, each from the supplicant's own events; a failure is never taken for a
// success (CTRL-EVENT-EAP-SUCCESS is no connection: after a PSK, SAE or OWE handshake the
// supplicant sends one "based on lower layer success").
enum class ConnectOutcome {
    kConnected,
    // The credentials were refused: a wrong passphrase (SSID-TEMP-DISABLED), or the EAP server's
    // MSCHAPv2 failure, for a wrong password. An unknown identity, a wrong PAP password or a
    // refused client certificate end in EAP-FAILURE alone: kRejected.
    kRejectedCredentials,
    // The station refused the server's certificate: ConnectResult::certReason and certDepth.
    kRejectedServerCertificate,
    // The supplicant asks for a field it lacks (CTRL-REQ-<FIELD>): ConnectResult::field. It
    // waits for the answer; the network stays selected.
    kAsksFor,
    // A scan did not find the network: hidden networks need scan_ssid 1. The supplicant goes on
    // scanning for it.
    kNotFound,
    kTimedOut,  // none of these within the time given
    // A call failed, or the supplicant refused a field (ConnectResult::field) or disabled the
    // network for another reason.
    kFailed,
    // The EAP exchange failed, and the event that tells why did not reach the wait: it comes in
    // the middle of a run of events, which a call ends on before the run is over and whose rest
    // its detach drops (docs/RECIPES.md, "Connecting": how often, measured).
    kRejected,
};

struct ConnectResult {
    ConnectOutcome outcome = ConnectOutcome::kFailed;
    // The network added, configured whatever the outcome; -1 if none. After a rejection it is
    // disabled, or the supplicant would try the same credentials again and again, which locks
    // accounts on many servers.
    int networkId = -1;
    std::string bssid;  // kConnected: the BSSID connected to
    // kRejectedServerCertificate: CTRL-EVENT-EAP-TLS-CERT-ERROR's reason (1 unknown CA, 4
    // expired, 9 domain mismatch; tls.h's enum tls_fail_reason) and the certificate's depth in
    // the chain (0 the server's own); -1 when a shorter event before it in the same call cut
    // them off.
    int certReason = -1;
    int certDepth = -1;
    // kAsksFor: the network field asked for ("identity", "password", "private_key_passwd"; else
    // the supplicant's name in lower case). kFailed: the field the supplicant refused, if any.
    std::string field;
};

// Connect() with fields and an outcome: true only when connected. The wait for an outcome lasts
// up to |seconds|. Which fields each kind of security needs, and what each outcome costs:
// docs/RECIPES.md, "Connecting". Every field goes in a SET_NETWORK command, which the library
// logs verbatim at mask 0x04 (TesmirLogLevel.h): passwords and key passphrases included.
// |prompter|, when given, is a second client open on the same socket, used from a thread of the
// call's own for its duration; the host makes no other call on it meanwhile. A call of the wait
// that has heard nothing for 100 to 200 ms is then sent the state through it (STATUS, which a build
// as devices build it sends every attached client): an exchange whose last events all came between
// two calls is known then, not after the call's 3 s. Each prompt doubles the quiet the next one
// needs: five at most in a wait. A desktop build sends nothing on STATUS, and is not prompted.
// Connect() returns once that thread's last STATUS is answered: should the supplicant stop
// answering, up to libwpa_client's 10 s later.
bool Connect(WpacliWrapper& client, const std::string& ssid, Security security,
             const std::string& passphrase, const std::vector<NetworkField>& fields,
             const std::string& freqs, ConnectResult* result, int seconds = 30,
             WpacliWrapper* prompter = nullptr);

// The BSSID of the current association, from the first line of STATUS-NO_EVENTS (STATUS that on
// a build as devices build it sends no event); false when there is none.
bool CurrentBssid(WpacliWrapper& client, std::string* bssid);

struct Signal {
    int rssi = 0;       // dBm
    int linkSpeed = 0;  // Mb/s
    int freq = 0;       // MHz
};

// The link's signal (SIGNAL_POLL); false when not associated.
bool ReadSignal(WpacliWrapper& client, Signal* signal);

// Disconnects and stays so until Reconnect().
bool Disconnect(WpacliWrapper& client);

// Connects again after Disconnect(); returns the BSSID connected to.
bool Reconnect(WpacliWrapper& client, std::string* bssid);

// Moves the association to |bssid| (a BSS of the same network, seen in a scan), in either case.
bool Roam(WpacliWrapper& client, const std::string& bssid);

// How a roam moved the association, as its events told it.
enum class RoamVia {
    kUnknown,   // the events did not tell (below)
    kFt,        // fast transition over the air: keys set at reassociation
    kFtOverDs,  // fast transition over the DS (asked for): the current AP carried the exchange
    kCached,    // an 802.1X network's handshake from a PMK held (PMKSA caching, OKC), no EAP
    kFull,      // an EAP exchange, or a PSK network's handshake
};

// Roam() over the DS when |overDs| (FT_DS: the network's APs must offer FT over the DS), telling in
// |via| how, from the order of the supplicant's own events that one call saw after the association:
// an EAP event (full); keys before any state (FT on a build that sends states); a handshake's state
// (cached for an 802.1X network, full for PSK). What the network is comes from the flags (BSS) of
// the BSSes left and joined. kUnknown when a burst was split between two calls or fell between them
// (often, on a device's clock), for FT on a desktop build, which sends no states (or where the keys
// came before any call showed one), for a cached roam whose association came in a call that sent
// STATUS (that call's own state event follows it, cut as the handshake's would be), for SAE and
// OWE, and for keys a driver set itself; never a guess. Beyond Roam(): STATUS and BSS for the BSS
// left, BSS for the one joined once the roam began, and waiting-mode calls. The first sends ROAM or
// FT_DS itself, so that no event of the roam comes before a call is attached; waiting mode drops
// its reply, so a refused roam returns false, and one to the BSS already joined true, after 3 s.
// The others send STATUS. A build as devices build it answers with the state as an event, so each
// returns at once, sending every attached client the state; 32 in a row that show the same state
// are followed by a PING that waits for the next event, which waits out 3 s if the roam ended just
// before it. The roam ends at the state that shows it completed, or at the keys, which the
// supplicant sets in the same step. Keys cut before their BSSID count as |bssid|'s right behind an
// association, since an association to any other BSS ends the calls (the roam then returns false);
// elsewhere a direct STATUS checks the BSSID. A desktop build answers without one: each call waits
// as PING would. A direct STATUS after the last, and before each from the third on where the BSS
// left offers FT (whose keys come with the reassociation), ends them once the station is associated
// to |bssid|; not once a call saw it associate without keys: STATUS shows the BSSID from the
// association on, and a roam sent before the handshake ends is answered OK and dropped (sme.c), so
// the roam waits for the keys. A network configured without FT on APs that offer it can still end
// before its handshake, when its association came between two calls. A call that begins after the
// roam ended waits out 3 s. How often, and how each way told, measured on mac80211 (the
// supplicant's own SME): docs/RECIPES.md, "Roaming".
bool Roam(WpacliWrapper& client, const std::string& bssid, bool overDs, RoamVia* via);

// Waits up to |seconds| for the link to drop (the AP going away, or a deauthentication), and
// returns the DISCONNECTED event's reason code, or 0 when the event was cut before it or only
// the state told it. A link already down ends the wait at once on a device build.
bool WaitForLinkLoss(WpacliWrapper& client, int seconds, int* reason);

// Removes every configured network, which also disconnects.
bool Forget(WpacliWrapper& client);

// A network of the supplicant's configuration, as its one-row LIST_NETWORKS replies hold it. On
// a device the framework removes the supplicant's networks when it connects elsewhere: keep the
// host's own record of what it configured, and read this one to learn what is left of it.
struct ConfiguredNetwork {
    int id = -1;
    // Its bytes, less every space (0x20): the library removes them from each reply, and no reply
    // gives an SSID in hex when all its bytes are printable. Compare with SsidCanBe().
    std::string ssid;
    bool ssidWhole = false;  // false when only the first bytes could be read
    // The flags the row held, of "[CURRENT]", "[DISABLED]", "[TEMP-DISABLED]" and
    // "[P2P-PERSISTENT]" in that order: a flag read is so. The 63-byte reply holds them only for
    // short SSIDs, about 12 bytes: those of a longer one are cut off, and one not read is unknown
    // unless |flagsWhole|, which only a next row in the same reply can tell.
    std::string flags;
    bool flagsWhole = false;
};

// The configured networks in id order, a query for each and one more for an SSID its row cuts.
// A network removed while they are read is left out, one added is listed when its id comes
// later. What cannot be read back: the SSID's spaces, the flags of most rows (above), and
// the priority (GET_NETWORK's reply has no line feed: the cut takes its last digit).
bool ListConfiguredNetworks(WpacliWrapper& client, std::vector<ConfiguredNetwork>* networks);

// Whether |ssid| can be the configured network's SSID: equal but for spaces when whole, else the
// same beginning.
bool SsidCanBe(const ConfiguredNetwork& network, const std::string& ssid);

// ENABLE_NETWORK, DISABLE_NETWORK and REMOVE_NETWORK of one network; false (FAIL) for an id that
// is not configured. Enabling lets the supplicant connect to it; removing the current network
// disconnects.
bool EnableNetwork(WpacliWrapper& client, int id);
bool DisableNetwork(WpacliWrapper& client, int id);
bool RemoveNetwork(WpacliWrapper& client, int id);

// The network's priority: among networks in reach, the supplicant picks from the highest.
bool SetPriority(WpacliWrapper& client, int id, int priority);

// Writes the configuration to the supplicant's file; false unless the supplicant runs with
// update_config=1 and may write it (a device's framework saves through its own interface).
bool SaveConfig(WpacliWrapper& client);

// After Wi-Fi was turned off (the supplicant ends: every call returns -1), opens |client| on
// |socket| again once the supplicant is back and answers, trying for up to |seconds|.
bool Reopen(WpacliWrapper& client, const std::string& socket, int seconds);

}  // namespace tesmir::recipes
