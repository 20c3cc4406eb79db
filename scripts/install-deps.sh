#!/usr/bin/env bash
# Installs, from Debian packages, everything the build, the tests and the demo need.
# Safe to run again: packages already present are left alone.
set -euo pipefail

host_pkgs=(
    clang lld libc++-dev libc++abi-dev libclang-rt-14-dev
    clang-format clang-tidy
    cmake ninja-build
    libwpa-client-dev android-liblog-dev
    googletest
    wpasupplicant hostapd iproute2
    binutils file procps
)

missing=()
for p in "${host_pkgs[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if [ "${#missing[@]}" -gt 0 ]; then
    echo "install-deps: installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    # A third-party source that cannot be reached must not stop us; Debian's own lists are
    # what we need.
    apt-get update -qq || true
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
echo "install-deps: host packages ready"
