// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#pragma once

#include <stdint.h>

#include "TesmirExport.h"

// Mask of the messages the library writes to the Android log (tag "WpacliWrapper").
// The host may write it at any time, from any thread; every message statement reads it afresh.
//
//   0x01  errors            ANDROID_LOG_ERROR
//   0x04  progress          ANDROID_LOG_INFO: every command verbatim, secrets included
//                           ("SET_NETWORK 0 psk ..."), into the system log and bug reports
//   0x08  entry/exit trace  ANDROID_LOG_DEBUG (also the direct-reply line of Execute)
//
// Initial value 0x43: errors only. Bits 0x02 and 0x40 are part of the default but enable nothing.
extern "C" TESMIR_EXPORT uint32_t gTesmirLogLevel;
