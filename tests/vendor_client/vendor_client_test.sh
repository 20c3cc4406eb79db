#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Whether the libwpa_client that docs/DEVICE.md has a vendor define for an older tree lets a host
# open. Builds it from the page with the library and a host (build_from_page.py), from Debian's
# source with AOSP's handling of the client socket (tesmir-aosp-client-socket.patch, ours), then
# runs the host in the radio lab's device-shaped root (radio-lab/vendor-root.sh) as a vendor
# service runs. The page's block must work; its first version and a copy without the socket
# directory must not, nor a host outside the wifi group.
#   vendor_client_test.sh OUT CC CXX LIBLOG_SO LIBLOG_INCLUDE_DIR
#   vendor_client_test.sh --inside OUT LIBLOG_SO          (what runs in the lab)
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
sockets=/data/vendor/wifi/wpa/sockets
failures=0

check() {  # what expected actual
    if [ "$2" = "$3" ]; then
        echo "ok: $1"
    else
        printf 'FAIL: %s\n  want: %s\n  got:  %s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

if [ "${1:-}" != --inside ]; then
    out=${1:?usage: vendor_client_test.sh OUT CC CXX LIBLOG_SO LIBLOG_INCLUDE_DIR}
    mkdir -p "$out"
    # The source of the supplicant the lab runs, as its device build takes it.
    "$root/scripts/deb-source.sh" wpa "$out/wpa" "$(dpkg-query -W -f='${Version}' wpasupplicant)" ||
        exit 1
    rm -rf "$out/aosp" "$out/tree"
    mkdir -p "$out/aosp"
    cp -r "$out/wpa/src" "$out/aosp/" &&
        patch -s -p1 -d "$out/aosp" <"$here/tesmir-aosp-client-socket.patch" || exit 1
    build() {  # variant
        python3 "$here/build_from_page.py" --variant "$1" --source "$out/aosp" --out "$out" \
            --cc "$2" --cxx "$3" --liblog "$4" --liblog-include "$5"
    }
    for variant in page no-client-dir; do
        build "$variant" "${@:2}" || exit 1
    done
    rejection=$(build first-version "${@:2}")
    check "the first version's header directory is refused" "3 rejected: no directory" \
        "$? $(cut -c1-22 <<<"$rejection")"
    [ "$failures" -eq 0 ] || exit 1
    exec "$root/scripts/radio-lab.sh" run -t 300 -- bash "$0" --inside "$out" "$4"
fi

out=$2
liblog_dir=$(dirname "$3")
new=/run/vendor-root
bash "$root/scripts/radio-lab/vendor-root.sh" "$new" || exit 1
# shellcheck source=scripts/lab-lib.sh
. "$root/scripts/lab-lib.sh"
trap 'stop_pidfile "$new/data/vendor/wifi/wpa/wpa_supplicant.pid"' EXIT
# As myhost.rc runs it: user system, group wifi, no other groups.
as_host() { chroot --userspec=1000:1010 --groups=1010 "$new" "$@"; }
check "the host cannot write /tmp" refused \
    "$(as_host sh -c ': >/tmp/probe' 2>/dev/null && echo written || echo refused)"

run_host() {  # variant umask [group]
    rm -rf "$new/vendor/lib64" "$new/vendor/bin/vendor_host"
    cp -r "$out/$1/lib64" "$new/vendor/lib64"
    cp "$out/$1/bin/vendor_host" "$new/vendor/bin/"
    # shellcheck disable=SC2016 # the inner shell expands them
    chroot --userspec="1000:${3:-1010}" --groups="${3:-1010}" "$new" sh -c 'umask "$0" && exec "$@"' \
        "$2" env LD_LIBRARY_PATH="/vendor/lib64:$liblog_dir" /vendor/bin/vendor_host \
        "$sockets/wlan0" "$sockets" 2>/dev/null
    echo "exit: $?"
}

# AOSP's libwpa_client sets the socket's mode after bind(), so a host's umask of 022 does not
# take the group's write away from the supplicant's replies.
check "the page's libwpa_client: a host with umask 022 opens, binds in $sockets and drives the supplicant" \
    "open: 0
client sockets: 2 in $sockets, 0 in /tmp
PING: 0 PONG
ADD_NETWORK: 0 <3>CTRL-EVENT-NETWORK-ADDED 0
after Close: 0
exit: 0" "$(run_host page 022)"
# The sockets directory is the supplicant's, wifi:wifi 0770: no bind, so Open fails at once.
check "a host outside the wifi group cannot bind, and Open fails" \
    "open: -1
client sockets: 0 in $sockets, 0 in /tmp
exit: 1" "$(run_host page 022 1000)"
check "without the client socket directory libwpa_client binds in /tmp, and Open fails" \
    "open: -1
client sockets: 0 in $sockets, 0 in /tmp
exit: 1" "$(run_host no-client-dir 022)"
[ "$failures" -eq 0 ]
