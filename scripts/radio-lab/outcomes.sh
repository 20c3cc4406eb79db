#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# Inside the radio lab's enterprise layout: connects with tesmir-recipes RUNS times for each case
# whose outcome depends on an event a call may lose, and prints how each run ended, a line a case
# and outcome: "case<TAB>outcome<TAB>runs". Run by scripts/outcome-survey.sh.
#   outcomes.sh RECIPES RUNS
set -uo pipefail
recipes=$1
runs=$2
socket=${TESMIR_LAB_SOCKET:?run inside the radio lab}
certs=${TESMIR_LAB_CERTS:?}
peap=(eap=PEAP identity=tesmir-user phase2=auth=MSCHAPV2)

survey() {  # case ssid fields...
    local name=$1 ssid=$2 said
    shift 2
    for _ in $(seq "$runs"); do
        said=$("$recipes" "$socket" connect "$ssid" eap 2412 "$@" 2>&1 >/dev/null | tail -n 1)
        printf '%s\t%s\n' "$name" "${said:-connected}"
        "$recipes" "$socket" forget >/dev/null 2>&1
    done | sort | uniq -c | awk -F'\t' '{ split($1, n, " "); printf "%s\t%s\t%s\n", substr($1, index($1, n[2])), $2, n[1] }'
}

survey "PEAP, right password" tesmir-eap "${peap[@]}" password=tesmir-password \
    "ca_cert=$certs/ca.pem"
survey "PEAP, wrong password" tesmir-eap "${peap[@]}" password=wrong "ca_cert=$certs/ca.pem"
survey "PEAP, unknown identity" tesmir-eap eap=PEAP identity=nobody password=x \
    phase2=auth=MSCHAPV2 "ca_cert=$certs/ca.pem"
survey "unknown CA" tesmir-eap "${peap[@]}" password=x "ca_cert=$certs/ca2.pem"
survey "expired server certificate" tesmir-eap-expired "${peap[@]}" password=x \
    "ca_cert=$certs/ca.pem"
survey "domain mismatch" tesmir-eap "${peap[@]}" password=x "ca_cert=$certs/ca.pem" \
    domain_suffix_match=wrong.example
survey "TLS, refused client certificate" tesmir-eap eap=TLS identity=tesmir-client \
    "client_cert=$certs/client2.pem" "private_key=$certs/client2.key" "ca_cert=$certs/ca.pem"
survey "PEAP, no password" tesmir-eap "${peap[@]}" "ca_cert=$certs/ca.pem"
