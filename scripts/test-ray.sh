#!/usr/bin/env bash
# Tests the class for Ray in an environment of its own: Ray is too large for that of test.sh.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/parts/packages.sh
. scripts/parts/environment.sh

VENV=$PWD/build/ray-env
ensure_packages "${BUILD_PACKAGES[@]}"
ensure_environment "$VENV"
ensure_installed "$VENV" '.[ray]'
"$VENV/bin/python" -m pip install --quiet --disable-pip-version-check psutil pytest
exec "$VENV/bin/python" -m pytest -q -rfEs tests/engine/fleet/test_ray.py "$@"
