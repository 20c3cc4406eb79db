# SPDX-License-Identifier: Apache-2.0
# Copyright 2026 The libtesmirwpacliwrapper Authors
#
# The access points of each layout of the radio lab (TESMIR_LAB_APS), as hostapd configuration
# files. Sourced by inside.sh, which defines $lab and starts them. hwsim gives radio N the
# address 02:00:00:00:0N:00; a further BSS on radio N is 02:00:00:00:0N:0M. Every protected
# network's passphrase is "tesmir-passphrase".
#   standard  wlan1 "tesmir" WPA2-PSK, channel 1     wlan2 "tesmir", channel 6 (to roam to)
#             wlan3 "tesmir-sae" WPA3-SAE, ch. 11    wlan4 "tesmir-open" open, channel 11
#   hostile   SSIDs that pass for events or fields, and one in other scripts, all WPA2-PSK:
#             wlan1 and wlan2 "CTRL-EVENT-CONNECTED" (channels 1 and 6, to roam between);
#             02:00:00:00:01:01 'x" state=9 BSSID=1'; 02:00:00:00:02:01 'k=v "q" \ e';
#             wlan3 the 32 bytes of UTF-8 below, channel 11; wlan4 "CTRL-EVENT-STATE-CHANGE state=9"
#   enterprise  certificates from certs.sh ($certs), EAP users "tesmir-user" (PEAP and TTLS,
#             password "tesmir-password"), "tesmir quoted" (TTLS-PAP, password pa"ss 'wörd")
#             and any (TLS, with a client certificate of ca.pem):
#             wlan1 "tesmir-eap" WPA2-Enterprise, channel 1; 02:00:00:00:01:01 "tesmir-eap-expired",
#             its server certificate expired; wlan2 "tesmir-eap3" WPA3-Enterprise (WPA-EAP-SHA256,
#             PMF), channel 6; 02:00:00:00:02:01 "CTRL-EVENT-CONNECTED - Connectio", its server
#             certificate of ca2.pem with a subject that reads like an EAP success; wlan3
#             "tesmir-hidden" WPA2-PSK, hidden, channel 11; 02:00:00:00:03:01 "tesmir-owe" OWE;
#             wlan4 "tesmir-eap-silent", channel 11, whose RADIUS server never answers
#   roaming   FT-PSK (mobility domains, keys derived from the passphrase at each AP), EAP as in
#             enterprise: wlan1 and wlan2 "tesmir-ft", FT over the air, channels 1 and 6;
#             wlan3 and wlan4 "tesmir-ft-ds", FT over the DS as well, channel 11;
#             02:00:00:00:01:01 and 02:00:00:00:02:01 "tesmir-eap" WPA2-Enterprise (PMKSA caching);
#             02:00:00:00:03:01 and 02:00:00:00:04:01 "tesmir-psk" WPA2-PSK without FT
#   crowd     24 BSSes: "tesmir" on wlan1 and wlan2 with seven WPA2 networks "crowd-N-M" beside
#             each, and eight open ones on wlan3 (channel 11), which churn.sh takes away and back

hostile_utf8="Café ☕ 東京の無線LAN-Ω!"

psk=(wpa=2 wpa_key_mgmt=WPA-PSK rsn_pairwise=CCMP wpa_passphrase=tesmir-passphrase)
sae=(wpa=2 wpa_key_mgmt=SAE rsn_pairwise=CCMP ieee80211w=2 sae_password=tesmir-passphrase)

hex_of() { printf '%s' "$1" | od -An -tx1 | tr -d ' \n'; }

# Starts a radio's configuration: interface channel ssid [settings...]. Prints its path.
ap() {
    local conf=$lab/hostapd-$1.conf
    printf '%s\n' "interface=$1" driver=nl80211 "ctrl_interface=$lab/hostapd" hw_mode=g \
        "channel=$2" "ssid2=$(hex_of "$3")" "${@:4}" >"$conf"
    echo "$conf"
}

# Adds a further BSS to a radio's configuration: conf index ssid [settings...].
bss() {
    local conf=$1 radio
    radio=$(sed -n 's/^interface=//p' "$conf")
    printf '%s\n' "bss=${radio}_$2" "bssid=02:00:00:00:0${radio#wlan}:0$2" \
        "ssid2=$(hex_of "$3")" "${@:4}" >>"$conf"
}

# FT-PSK: each AP derives its keys from the passphrase (no key holders to configure), and one
# hostapd process carries the frames of FT over the DS.
ft=(wpa=2 wpa_key_mgmt=FT-PSK rsn_pairwise=CCMP wpa_passphrase=tesmir-passphrase
    ft_psk_generate_local=1)

eap=(ieee8021x=1 eap_server=1 "eap_user_file=$lab/eap_users" "ca_cert=$certs/ca.pem"
    "server_cert=$certs/server.pem" "private_key=$certs/server.key" wpa=2 wpa_key_mgmt=WPA-EAP
    rsn_pairwise=CCMP)

case ${TESMIR_LAB_APS:-standard} in
standard)
    aps=(wlan1 wlan2 wlan3 wlan4)
    confs=("$(ap wlan1 1 tesmir "${psk[@]}")" "$(ap wlan2 6 tesmir "${psk[@]}")"
        "$(ap wlan3 11 tesmir-sae "${sae[@]}")" "$(ap wlan4 11 tesmir-open)")
    ;;
hostile)
    aps=(wlan1 wlan2 wlan3 wlan4)
    confs=("$(ap wlan1 1 CTRL-EVENT-CONNECTED "${psk[@]}")"
        "$(ap wlan2 6 CTRL-EVENT-CONNECTED "${psk[@]}")"
        "$(ap wlan3 11 "$hostile_utf8" "${psk[@]}")"
        "$(ap wlan4 11 "CTRL-EVENT-STATE-CHANGE state=9" "${psk[@]}")")
    bss "${confs[0]}" 1 'x" state=9 BSSID=1' "${psk[@]}"
    bss "${confs[1]}" 1 'k=v "q" \ e' "${psk[@]}"
    ;;
enterprise)
    # The second user's password, in hex: pa"ss 'wörd"
    printf '%s\n' '* PEAP,TTLS,TLS' \
        '"tesmir-user" MSCHAPV2,TTLS-MSCHAPV2,TTLS-PAP "tesmir-password" [2]' \
        "\"tesmir quoted\" TTLS-PAP $(hex_of "pa\"ss 'wörd\"") [2]" >"$lab/eap_users"
    aps=(wlan1 wlan2 wlan3 wlan4)
    confs=("$(ap wlan1 1 tesmir-eap "${eap[@]}")"
        "$(ap wlan2 6 tesmir-eap3 "${eap[@]}" wpa_key_mgmt=WPA-EAP-SHA256 ieee80211w=2)"
        "$(ap wlan3 11 tesmir-hidden "${psk[@]}" ignore_broadcast_ssid=1)"
        "$(ap wlan4 11 tesmir-eap-silent ieee8021x=1 own_ip_addr=127.0.0.1 \
            auth_server_addr=127.0.0.1 auth_server_port=1812 auth_server_shared_secret=tesmir \
            wpa=2 wpa_key_mgmt=WPA-EAP rsn_pairwise=CCMP)")
    bss "${confs[0]}" 1 tesmir-eap-expired "${eap[@]}" "server_cert=$certs/expired.pem" \
        "private_key=$certs/expired.key"
    bss "${confs[1]}" 1 "CTRL-EVENT-CONNECTED - Connectio" "${eap[@]}" \
        "server_cert=$certs/other.pem" "private_key=$certs/other.key"
    bss "${confs[2]}" 1 tesmir-owe wpa=2 wpa_key_mgmt=OWE rsn_pairwise=CCMP ieee80211w=2
    ;;
roaming)
    printf '%s\n' '* PEAP' '"tesmir-user" MSCHAPV2 "tesmir-password" [2]' >"$lab/eap_users"
    aps=(wlan1 wlan2 wlan3 wlan4)
    air=("${ft[@]}" mobility_domain=a1b2 ft_over_ds=0)
    ds=("${ft[@]}" mobility_domain=c3d4 ft_over_ds=1)
    confs=("$(ap wlan1 1 tesmir-ft "${air[@]}" nas_identifier=ap1.tesmir.example)"
        "$(ap wlan2 6 tesmir-ft "${air[@]}" nas_identifier=ap2.tesmir.example)"
        "$(ap wlan3 11 tesmir-ft-ds "${ds[@]}" nas_identifier=ap3.tesmir.example)"
        "$(ap wlan4 11 tesmir-ft-ds "${ds[@]}" nas_identifier=ap4.tesmir.example)")
    bss "${confs[0]}" 1 tesmir-eap "${eap[@]}"
    bss "${confs[1]}" 1 tesmir-eap "${eap[@]}"
    bss "${confs[2]}" 1 tesmir-psk "${psk[@]}"
    bss "${confs[3]}" 1 tesmir-psk "${psk[@]}"
    ;;
crowd)
    aps=(wlan1 wlan2 wlan3)
    confs=("$(ap wlan1 1 tesmir "${psk[@]}")" "$(ap wlan2 6 tesmir "${psk[@]}")"
        "$(ap wlan3 11 crowd-3-0)")
    for m in 1 2 3 4 5 6 7; do
        bss "${confs[0]}" "$m" "crowd-1-$m" "${psk[@]}"
        bss "${confs[1]}" "$m" "crowd-2-$m" "${psk[@]}"
        bss "${confs[2]}" "$m" "crowd-3-$m"
    done
    ;;
*) die "unknown layout of access points: $TESMIR_LAB_APS" ;;
esac
