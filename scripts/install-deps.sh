#!/usr/bin/env bash
# Installs the Debian packages that building, testing and running need.
# Does nothing when everything is already there, so it is cheap to call often.
set -euo pipefail

packages=(
    cmake g++ make pkg-config
    libgtest-dev libgmock-dev libbenchmark-dev
    nlohmann-json3-dev libxml2-dev libmicrohttpd-dev libgnutls28-dev libssl-dev libcrypt-dev
    libcurl4-gnutls-dev
    sblim-wbemcli curl openssl python3
    chromium
)

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
