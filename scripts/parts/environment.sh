# shellcheck shell=bash
# The virtual environment with this project in it, built anew only when its sources changed.

# A digest of everything that goes into the wheel.
wheel_sources_digest() {
  find CMakeLists.txt LICENSE README.md cmake engine pyproject.toml src -type f \
    ! -name '*.pyc' -print0 | LC_ALL=C sort -z | xargs -0 sha256sum | sha256sum
}

ensure_environment() {
  local folder=$1
  [ -x "$folder/bin/python" ] && "$folder/bin/python" -m pip --version >/dev/null 2>&1 && return
  echo "Making the virtual environment $folder"
  # Beside the system's interpreter, which has the venv module that its package brought.
  PYTHON=${PYTHON:-/usr/bin/python3}
  [ -x "$PYTHON" ] || PYTHON=python3
  "$PYTHON" -m venv --clear "$folder"
}

# ensure_installed FOLDER REQUIREMENT: `pip install` of this directory, such as ".[test]".
ensure_installed() {
  local folder=$1 requirement=$2 digest
  digest="$requirement $(wheel_sources_digest)"
  if [ -f "$folder/.installed" ] && [ "$(cat "$folder/.installed")" = "$digest" ]; then return; fi
  echo "Building and installing the package into $folder"
  rm -f "$folder/.installed"
  "$folder/bin/python" -m pip install --quiet --disable-pip-version-check "$requirement" || return
  echo "$digest" > "$folder/.installed"
}
