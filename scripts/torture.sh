#!/usr/bin/env bash
# Every fault there is, at every command: ./scripts/torture.sh [FOLDER]
# Records each in FOLDER (build/torture) and goes on where an earlier run was broken off. Ends with
# a table of counts; the status is 0 only when nothing went wrong. Needs the release build.
set -euo pipefail
cd "$(dirname "$0")/.."
records=${1:-build/torture}
python=${PYTHON:-build/test-env/bin/python}
jobs=$(nproc)
export PYTHONPATH=tests/torture:tests/e2e:tests/shared

sweeps=()
for part in $(seq "$jobs"); do
  "$python" tests/torture/sweep.py "$records" "$part/$jobs" &
  sweeps+=($!)
done
status=0
for sweep in "${sweeps[@]}"; do wait "$sweep" || status=1; done
"$python" tests/torture/sweep.py "$records" --report || status=1
exit "$status"
