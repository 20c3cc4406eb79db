#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# tesmir-recipes' roam and the way it tells, in the radio lab's roaming layout
# (scripts/radio-lab.sh run -a roaming).
#   roaming_tools_test.sh RECIPES LIST_HELPER [EMULATOR]
set -uo pipefail
# shellcheck disable=SC2206 # the emulator, when there is one, runs the tool
emulator=(${3:-})
recipes=("${emulator[@]}" "$1" --helper "$2")
socket=${TESMIR_LAB_SOCKET:?run it through scripts/radio-lab.sh run -a roaming}
# shellcheck source=tests/tools/tools_lib.sh
. "$(dirname "$0")/tools_lib.sh"

tool() { "${recipes[@]}" "$socket" "$@"; }
# The other BSS of the pair the station joined, which may be either.
other() {  # first second
    local joined
    joined=$(tool status 2>/dev/null | sed -n 's/^bssid=\([^ ]*\) .*/\1/p')
    [ "$joined" = "$1" ] && echo "$2" || echo "$1"
}

# A desktop build sends no states: it cannot tell FT from a handshake.
ft=ft ft_ds=ft-ds
[ "${TESMIR_LAB_BUILD:-device}" = desktop ] && ft=unknown ft_ds=unknown

expect "join an FT network" 0 '^bssid=02:00:00:00:0[34]:00 ' \
    tool connect tesmir-ft-ds psk tesmir-passphrase 2462 key_mgmt=FT-PSK
to=$(other 02:00:00:00:03:00 02:00:00:00:04:00)
expect "FT over the DS" 0 "^bssid=$to .* via=$ft_ds\$" tool roam "$to" ds
to=$(other 02:00:00:00:03:00 02:00:00:00:04:00)
expect "FT over the air" 0 "^bssid=$to .* via=$ft\$" tool roam "$to"
outcome "a word other than ds" 64 . tool roam "$to" air
expect "join a PSK network" 0 '^bssid=02:00:00:00:0[34]:01 ' \
    tool connect tesmir-psk psk tesmir-passphrase 2462
to=$(other 02:00:00:00:03:01 02:00:00:00:04:01)
expect "its handshake" 0 "^bssid=$to .* via=full\$" tool roam "$to"
[ "$failures" -eq 0 ]
