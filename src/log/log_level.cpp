// SPDX-License-Identifier: Apache-2.0
// Copyright 2026 The libtesmirwpacliwrapper Authors

#include "TesmirLogLevel.h"

// Errors only. 0x02 and 0x40 enable nothing but are kept: hosts compare against this value.
uint32_t gTesmirLogLevel = 0x43;
