#!/usr/bin/env bash
# Fuzzes every parser: ./scripts/fuzz.sh [MINUTES for each, 30] [HARNESS...]
# Inputs that reach something new stay in build/fuzz/corpus, findings in build/fuzz/found. The status
# is 0 only when there was none; a finding belongs into tests/fuzz/found, which every test replays.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-30}
shift || true
python=${PYTHON:-build/test-env/bin/python}
"$python" tests/fuzz/seeds.py build/fuzz-seeds
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -- --quiet
mkdir -p build/fuzz/corpus build/fuzz/found build/fuzz/empty

# The patterns of the harness "glob" are looked up in the current folder, which is an empty one.
fuzz() {
  local name=$1 folder=$PWD/build/fuzz
  mkdir -p "$folder/corpus/$name"
  (cd "$folder/empty" && ZV_FUZZ_TARGET=$name "$folder/zv-fuzz" -max_total_time="$((minutes * 60))" \
    -max_len=20000 -timeout=25 -rss_limit_mb=3000 -print_final_stats=1 -verbosity=0 \
    -artifact_prefix="$folder/found/$name-" "$folder/corpus/$name" "$folder/../fuzz-seeds/$name") \
    > "$folder/$name.log" 2>&1
}

status=0
names=("$@")
[ "$#" -gt 0 ] || mapfile -t names < <(ls build/fuzz-seeds)
for name in "${names[@]}"; do
  verdict=clean
  fuzz "$name" || { verdict="FOUND, see build/fuzz/$name.log"; status=1; }
  runs=$(sed -n 's/stat::number_of_executed_units: *//p' "build/fuzz/$name.log")
  printf '%-14s %12s runs in %d min: %s\n' "$name" "${runs:-?}" "$minutes" "$verdict"
done
exit "$status"
