// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

#include <stdint.h>

#include <string>

#include "TesmirExport.h"
#include "TesmirLibcxx.h"
#include "TesmirLogLevel.h"

struct wpa_ctrl;

// Client of one wpa_supplicant control socket, over two connections to it: one for commands
// and one for unsolicited events. Not thread-safe: use one object from one thread at a time.
// Calls of Open() on different objects must not overlap either, nor any other wpa_ctrl_open() of
// the process: libwpa_client names its client sockets with a counter it does not guard, and two
// connections opened at once may share a name and each other's replies (docs/RELIABILITY.md).
// Objects come from GetWpacliWrapperHandle() and are released with delete.
//
// The order of the virtual functions is part of the ABI: do not reorder or insert.
class TESMIR_EXPORT WpacliWrapper {
  public:
    WpacliWrapper() = default;
    // A copy would close both connections twice; without copies there are no moves either.
    WpacliWrapper(const WpacliWrapper&) = delete;
    WpacliWrapper& operator=(const WpacliWrapper&) = delete;

    // Closes both connections.
    virtual ~WpacliWrapper();

    // Closes whatever is open (through Close()), then opens the command connection and the
    // event connection on the control socket |ctrlPath|. Returns 0 on success, -1 if either
    // connection cannot be opened; the object is then left closed.
    virtual int32_t Open(const std::string& ctrlPath);

    // Closes both connections, if open. Harmless on a closed object.
    virtual void Close();

    // Sends |command| on the command connection, with the event connection attached for the
    // duration of the call. The object must be open.
    //
    // wait == false: |response| receives the direct reply, at most 63 bytes, with its last byte
    // dropped unseen and every space removed. The dropped byte is the line feed of most replies;
    // replies without one lose a real byte: IFNAME gives "wlan" for wlan0, every GET_NETWORK and
    // GET value loses its last byte ("\"home" for "home"), and so do several GET_CAPABILITY
    // fields. Longer replies are cut: connected, STATUS ends before its wpa_state line. A reply
    // of 0 bytes ends the process: the supplicant sends one for BSS of an entry it does not hold
    // (any BSS query before a scan, an id past the last), BSSID_IGNORE when empty,
    // INTERFACE_LIST, RADIO_WORK show, VENDOR_ELEM_GET and WFD_SUBELEM_GET; on a device, also
    // DRIVER when the vendor's library answers nothing (docs/FORK.md). No BSS query is safe
    // from it while the supplicant's table changes: entries go when scans stop seeing them, with
    // age, and on any client's BSS_FLUSH; "BSS RANGE=N-" is empty only when nothing at or past N
    // is left (how often that ends a listing: docs/RELIABILITY.md). It ends by the
    // platform's unsigned-overflow check, differently on each platform generation
    // (docs/RELIABILITY.md). docs/COMMANDS.md lists what each command gives on nl80211, measured
    // against wpa_supplicant 2.10 in both builds; the recipes (recipes/include) ask queries that
    // fit.
    // wait == true: the direct reply is ignored and |response| receives what GetResponse()
    // returns for |pattern|.
    //
    // Returns 0 whenever the supplicant replied, also with FAIL or UNKNOWN COMMAND: check
    // |response|. On failure |response| is untouched and the result is -1 (attach failed), or the
    // negative result of wpa_ctrl_request() (-2: no reply within 10 s) or of GetResponse().
    virtual int32_t Execute(const std::string& command, const std::string& pattern,
                            std::string& response, bool wait);

    // Waits up to 3 s in all on the event connection for an event whose text contains a match of
    // the ECMAScript regex |pattern|. Examines the first event and then those queued behind it,
    // one at a time, and stops at the first that matches, or at the last one queued if none
    // does: when the first event does not match and nothing is queued behind it, that event is
    // returned. Either way its text goes to |response| and the result is 0, so a caller that
    // needs the match must check |response|. Returns -22 on time-out or receive failure, or the
    // negative result of select() or wpa_ctrl_pending(), leaving |response| untouched.
    //
    // On real flows the awaited event seldom comes first: waiting mode on SCAN returns
    // CTRL-EVENT-SCAN-STARTED (from an idle station on a supplicant built with ANDROID defined,
    // its CTRL-EVENT-STATE-CHANGE to state 3), on SELECT_NETWORK, RECONNECT or ROAM an early
    // event of the connection, not CTRL-EVENT-CONNECTED; DISCONNECT gets its own event.
    //
    // |pattern| is found anywhere in an event, and events carry text that is not the
    // supplicant's: an SSID, up to 32 bytes chosen by whoever runs an access point, in
    // "SME: Trying to authenticate with X (SSID='...')", "Trying to associate with X (SSID=...)",
    // "CTRL-EVENT-SSID-TEMP-DISABLED id=N ssid=\"...\"" and, on a supplicant built with ANDROID
    // defined (every device's), "CTRL-EVENT-STATE-CHANGE id=N state=S BSSID=X SSID=...". An
    // access point named CTRL-EVENT-CONNECTED matches "CTRL-EVENT-CONNECTED" before the station
    // is associated; one named x" state=9 gives "... state=4 BSSID=... SSID=x\" state=9". Anchor
    // a pattern on the event's whole prefix, "^(IFNAME=\S+ )?<[0-9]>CTRL-EVENT-CONNECTED -
    // Connection to " (IFNAME= on the global control socket), and read fields only from before
    // the SSID: the recipes (recipes/include: EventPattern, ParseState) do both.
    //
    // An event is at most 512 bytes. Each event after the first of one call is received into at
    // most as many bytes as the one before it, and cut there: after a 36-byte first event,
    // "<3>CTRL-EVENT-CONNECTED - Connection" is all of the next. Events reach the event
    // connection only while it is attached, which is only inside Execute(): called on its own,
    // this sees only events left queued by an earlier call, and an event sent between two calls
    // is lost. A malformed |pattern| aborts the process once an event has arrived.
    int32_t GetResponse(const std::string& pattern, std::string& response);

  private:
    struct wpa_ctrl* mCommandConn = nullptr;
    struct wpa_ctrl* mEventConn = nullptr;
};

// Returns a new, closed client owned by the caller.
extern "C" TESMIR_EXPORT WpacliWrapper* GetWpacliWrapperHandle();
