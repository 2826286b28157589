#!/usr/bin/env bash
# Installs what is missing and reads photos: ./scripts/try.sh [photo or option of "read"...]
set -euo pipefail
start=$PWD
cd "$(dirname "$0")/.."
. scripts/parts/packages.sh
. scripts/parts/environment.sh

ensure_packages "${BUILD_PACKAGES[@]}"
ensure_environment .venv
ensure_installed .venv .
program=$PWD/.venv/bin/zv-anpr
[ "$#" -gt 0 ] || set -- "$PWD"/examples/*.jpg
cd "$start"
echo "Running: $program read $*"
exec "$program" read "$@"
