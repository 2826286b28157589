# shellcheck shell=bash
# What test.sh runs, one function for each stage.

# The owner of the checkout may be somebody else than root.
tracked() { git -c safe.directory='*' "$@"; }

cpp_files() { find src tests tools bench -name '*.cc' -o -name '*.h' 2>/dev/null; }

check_whitespace() {
  local file found=0
  tracked grep --untracked -nI -e '[[:blank:]]$' -e $'\r' -- . && found=1
  while IFS= read -r -d '' file; do
    if [ -f "$file" ] && grep -qI . "$file" && [ -n "$(tail -c 1 "$file")" ]; then
      echo "$file: no line end at its end"
      found=1
    fi
  done < <(tracked ls-files -z --cached --others --exclude-standard)
  return "$found"
}

check_cpp_format() { cpp_files | xargs clang-format-14 --dry-run -Werror; }

check_python() {
  "$VENV/bin/ruff" check --quiet . && "$VENV/bin/ruff" format --check --quiet .
}

check_shell() { find scripts .ci -type f \( -name '*.sh' -o -name run \) -print0 | xargs -0 shellcheck -x; }

build() { cmake --preset "$1" >/dev/null && cmake --build --preset "$1" -- --quiet; }

# Named in the environment, which an existing build folder ignores: a change of compiler there
# would make CMake forget its settings.
build_release() { CC=gcc CXX=g++ build release; }

unit_tests() {
  local preset=$1 name=$2
  timeout -k 10 600 "build/$preset/zv-unit-tests" --gtest_brief=1 --gtest_output="xml:$(report "$name")"
}

# Everything that is kept for the fuzzers, and a few variants, through every parser.
replay_tests() {
  local preset=$1 name=$2
  "$VENV/bin/python" tests/fuzz/seeds.py build/fuzz-seeds 2>/dev/null &&
    timeout -k 10 300 "build/$preset/zv-fuzz-replay" --gtest_brief=1 \
      --gtest_output="xml:$(report "$name")"
}

analyse() {
  find src -name '*.cc' ! -name '*_win32.cc' -print0 |
    xargs -0 -n 1 -P "$JOBS" clang-tidy-14 -p build/clang-asan --quiet 2>/dev/null
}

# python_tests NAME FOLDER [option of pytest...]
python_tests() {
  local name=$1
  shift
  timeout -k 10 900 "$VENV/bin/python" -m pytest "$@" -q -rfEs --no-header \
    -n "$JOBS" --dist loadfile --junit-xml "$(report "$name")"
}

# What is generated at build time does not depend on who compiled the program.
sanitized_end_to_end_tests() {
  ZV_ANPR_EXE=$PWD/build/clang-asan/zv-anpr ZV_ANPR_TEST_TOOLS=$PWD/build/clang-asan \
    python_tests "$1" tests/e2e --ignore tests/e2e/docs
}
