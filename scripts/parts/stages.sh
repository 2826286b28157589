# shellcheck shell=bash
# Running the stages of a check one after the other, and keeping what each came to.

# Stages whose runner counts its tests itself leave its JUnit report at $(report NAME).
RESULTS=build/test-results

begin_stages() {
  rm -rf "$RESULTS"
  mkdir -p "$RESULTS"
}

report() { echo "$PWD/$RESULTS/${1// /-}.xml"; }

# stage NAME COMMAND...: a failure is kept, and the next stage runs all the same.
stage() {
  local name=$1 began=$SECONDS status=0 verdict="as it should be"
  shift
  printf '\n=== %s\n' "$name"
  "$@" || { status=$?; verdict=FAILED; }
  printf '=== %s: %s in %d s\n' "$name" "$verdict" "$((SECONDS - began))"
  printf '%s\t%d\t%d\t%s\n' "$name" "$status" "$((SECONDS - began))" "$(report "$name")" \
    >> "$RESULTS/stages.tsv"
}
