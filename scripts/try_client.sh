#!/usr/bin/env bash
# Generates a client from a running server's description and reads a photo with it:
# ./scripts/try_client.sh [URL] [photo]
set -euo pipefail
cd "$(dirname "$0")/.."
url=${1:-http://127.0.0.1:8000}
photo=${2:-examples/car.jpg}
environment=build/client-env
client=$(mktemp -d)
trap 'rm -rf "$client"' EXIT

if [ ! -x "$environment/bin/openapi-python-client" ]; then
  python3 -m venv "$environment"
  "$environment/bin/pip" install -q openapi-python-client
fi
PATH=$PWD/$environment/bin:$PATH openapi-python-client generate --url "$url/openapi.json" --meta none \
  --output-path "$client/anpr_client" --fail-on-warning
PYTHONPATH=$client "$environment/bin/python" scripts/parts/read_with_client.py "$url" "$photo"
