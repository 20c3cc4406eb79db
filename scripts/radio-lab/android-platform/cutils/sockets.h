/* SPDX-License-Identifier: Apache-2.0 */
/* Copyright 2026 The libtesmirwpacliwrapper Authors */

/* What wpa_supplicant's Android code takes from libcutils, for a host build: there are no sockets
 * that init created, so the supplicant and its clients make their own, as on a desktop. */
#pragma once

#define ANDROID_SOCKET_NAMESPACE_RESERVED 1

static inline int android_get_control_socket(const char* name) {
    (void)name;
    return -1;
}

static inline int socket_local_client_connect(int fd, const char* name, int ns, int type) {
    (void)fd;
    (void)name;
    (void)ns;
    (void)type;
    return -1;
}
