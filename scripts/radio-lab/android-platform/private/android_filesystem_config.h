/* SPDX-License-Identifier: Apache-2.0 */
/* Copyright 2026 The libtesmirwpacliwrapper Authors */

/* The platform's user and group ids that libwpa_client's Android code names, with the platform's
 * values: the client socket goes to system:wifi so that the supplicant may answer on it. */
#pragma once

#define AID_SYSTEM 1000
#define AID_WIFI 1010
#define AID_KEYSTORE 1017
#define AID_INET 3003
