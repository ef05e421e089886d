#!/usr/bin/env bash
# Installs every build and test dependency from Debian packages.
# Idempotent: packages already present are left alone and nothing is printed for them.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-base-dev-tools libgl-dev
  libhidapi-dev libpugixml-dev libfontconfig-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
  python3-pyftpdlib vsftpd srecord openssl strace curl
  xvfb x11-apps imagemagick
  qt6-qpa-plugins fonts-dejavu-core
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

[ ${#missing[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "setup-deps: need root to install: ${missing[*]}" >&2
  exit 1
fi

echo "setup-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
# vsftpd's package starts a system daemon on port 21; tests run their own instances.
if command -v systemctl >/dev/null 2>&1; then systemctl disable --now vsftpd >/dev/null 2>&1 || true; fi
service vsftpd stop >/dev/null 2>&1 || true
