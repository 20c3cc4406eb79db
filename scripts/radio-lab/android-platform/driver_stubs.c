/* SPDX-License-Identifier: Apache-2.0 */
/* Copyright 2026 The libtesmirwpacliwrapper Authors */

/* The nl80211 driver's calls into a device's vendor driver library, for a host build without one:
 * what a device with no vendor extension answers. */
#include <netlink/socket.h>

struct i802_bss;
struct wpa_driver_scan_params;

int android_nl_socket_set_nonblocking(struct nl_sock* handle) {
    return nl_socket_set_nonblocking(handle);
}

int android_pno_start(struct i802_bss* bss, struct wpa_driver_scan_params* params) {
    (void)bss;
    (void)params;
    return -1;
}

int android_pno_stop(struct i802_bss* bss) {
    (void)bss;
    return -1;
}
