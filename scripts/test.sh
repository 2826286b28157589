#!/usr/bin/env bash
# Installs what is missing, then checks, builds and tests everything: ./scripts/test.sh
# Ends with the line "N passed, N failed"; the status is 0 only when nothing failed.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
. scripts/parts/packages.sh
. scripts/parts/environment.sh
. scripts/parts/stages.sh
. scripts/parts/checks.sh

VENV=$PWD/build/test-env
JOBS=$(nproc)
export CMAKE_BUILD_PARALLEL_LEVEL=${CMAKE_BUILD_PARALLEL_LEVEL:-$JOBS}
# The environment of the caller must not choose what is tested.
unset ZV_ANPR_EXE ZV_ANPR_TEST_TOOLS ZV_ANPR_PYTHON ZELVORAN_CONFIG_DIR PYTHONPATH

install_packages() {
  ensure_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" && ensure_browser &&
    ensure_proxies && ensure_localhost
}

# Compiled as build_release does it, so that ccache has the same objects for both.
install_wheel() {
  ensure_environment "$VENV" &&
    CC=gcc CXX=g++ SKBUILD_CMAKE_DEFINE=CMAKE_COMPILE_WARNING_AS_ERROR=ON \
      ensure_installed "$VENV" '.[dev]'
}

run_stages() {
  stage "System packages" install_packages
  stage "Wheel in a fresh environment" install_wheel
  stage "White space" check_whitespace
  stage "C++ format" check_cpp_format
  stage "Python lint and format" check_python
  stage "Shell scripts" check_shell
  stage "Build with g++" build_release
  stage "Unit tests" unit_tests release "Unit tests"
  stage "Build with clang and sanitizers" build clang-asan
  stage "Sanitized unit tests" unit_tests clang-asan "Sanitized unit tests"
  stage "Replayed fuzz tests" replay_tests clang-asan "Replayed fuzz tests"
  stage "Static analysis" analyse
  for folder in tests/engine/*/; do
    name="$(basename "$folder") engine tests"
    stage "$name" python_tests "$name" "$folder"
  done
  stage "Training tests" python_tests "Training tests" tests/training
  stage "End-to-end tests" python_tests "End-to-end tests" tests/e2e
  stage "Torture tests" python_tests "Torture tests" tests/torture
  stage "Sanitized end-to-end tests" sanitized_end_to_end_tests "Sanitized end-to-end tests"
}

begin_stages
run_stages
exec python3 scripts/parts/count_results.py "$RESULTS"
