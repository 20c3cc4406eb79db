/* SPDX-License-Identifier: Apache-2.0 */
/* Copyright 2026 The libtesmirwpacliwrapper Authors */

/* bionic's <sys/capability.h>: the kernel's types and the two system calls, which glibc also
 * exports. os_unix.c's Android code takes them from here. */
#pragma once

#include <linux/capability.h>

#ifdef __cplusplus
extern "C" {
#endif
int capget(cap_user_header_t header, cap_user_data_t data);
int capset(cap_user_header_t header, const cap_user_data_t data);
#ifdef __cplusplus
}
#endif
