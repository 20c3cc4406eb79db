#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# The enterprise layout's certificates, made anew for each lab (P-256 keys: quick to make):
#   ca.pem              "Tesmir Lab CA", which the station trusts
#   server.pem/.key     radius.tesmir.example (subject and SAN), from ca.pem
#   expired.pem/.key    the same names, valid 2020 to 2021, from ca.pem
#   client.pem/.key     tesmir-client, from ca.pem: a client certificate the server accepts
#   ca2.pem             "Tesmir Other CA", which nobody trusts
#   other.pem/.key      a server certificate of ca2.pem whose subject reads like an EAP success
#   client2.pem/.key    tesmir-client, from ca2.pem: one the server refuses
#   certs.sh DIR
set -euo pipefail
dir=${1:?usage: certs.sh DIR}
mkdir -p "$dir"
cd "$dir"

key() { openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:prime256v1 -out "$1.key" 2>/dev/null; }

ca() {  # name subject
    key "$1"
    openssl req -x509 -new -key "$1.key" -subj "$2" -days 3650 -out "$1.pem" \
        -addext basicConstraints=critical,CA:TRUE -addext keyUsage=critical,keyCertSign,cRLSign
    mkdir -p "$1.db"
    : >"$1.db/index.txt"
    cat >"$1.db/ca.conf" <<CONF
[ca]
default_ca = this
[this]
dir = $dir/$1.db
database = \$dir/index.txt
new_certs_dir = \$dir
serial = \$dir/serial
certificate = $dir/$1.pem
private_key = $dir/$1.key
default_md = sha256
policy = any
unique_subject = no
copy_extensions = copy
[any]
commonName = supplied
CONF
    openssl rand -hex 8 >"$1.db/serial"
}

# name ca subject usage [start end]: start and end as YYMMDDHHMMSSZ, else ten years from now.
issue() {
    local name=$1 ca=$2 subject=$3 usage=$4 dates=(-days 3650)
    [ $# -gt 4 ] && dates=(-startdate "$5" -enddate "$6")
    key "$name"
    openssl req -new -key "$name.key" -subj "$subject" -out "$name.csr" \
        -addext "extendedKeyUsage=$usage" \
        ${SAN:+-addext "subjectAltName=$SAN"}
    openssl ca -batch -notext -config "$ca.db/ca.conf" -in "$name.csr" -out "$name.pem" \
        "${dates[@]}" 2>/dev/null
    rm "$name.csr"
}

ca ca "/CN=Tesmir Lab CA"
ca ca2 "/CN=Tesmir Other CA"
SAN=DNS:radius.tesmir.example issue server ca /CN=radius.tesmir.example serverAuth
SAN=DNS:radius.tesmir.example issue expired ca /CN=radius.tesmir.example serverAuth \
    200101000000Z 210101000000Z
issue other ca2 "/CN=CTRL-EVENT-EAP-SUCCESS EAP authentication completed successfully" serverAuth
issue client ca /CN=tesmir-client clientAuth
issue client2 ca2 /CN=tesmir-client clientAuth
