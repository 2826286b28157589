# shellcheck shell=bash disable=SC2034  # the lists are for the scripts that read this
# Debian and Ubuntu packages: which are needed, and installing those that are missing.

BUILD_PACKAGES=(
  ca-certificates cmake g++ ninja-build pkg-config python3 python3-venv
  libboost-dev libfreetype-dev libjpeg-dev libpng-dev libtiff-dev nlohmann-json3-dev
)
TEST_PACKAGES=(
  ccache clang-14 clang-format-14 clang-tidy-14 git libclang-rt-14-dev libgmock-dev libgtest-dev
  fonts-dejavu-core procps shellcheck strace
  # the shells and readers of what the command table generates
  bash-completion fish man-db mandoc zsh
)
# What the tests of the dashboard drive; Ubuntu has it outside its package archive only.
BROWSER_PACKAGES=(chromium chromium-driver)
# What the tests put before the server, and what checks its unit; other archives lack some of it.
PROXY_PACKAGES=(caddy nginx systemd)

missing_packages() {
  local package
  for package; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q ' installed$' || echo "$package"
  done
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

apt_get() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y -o DPkg::Lock::Timeout=300 "$@"
}

ensure_packages() {
  local missing
  if ! command -v dpkg-query >/dev/null; then
    echo "This is no Debian or Ubuntu: nothing is installed; README.md names the packages."
    return
  fi
  mapfile -t missing < <(missing_packages "$@")
  [ "${#missing[@]}" -gt 0 ] || return 0
  echo "Installing system packages: ${missing[*]}"
  apt_get update || return
  apt_get install --no-install-recommends "${missing[@]}"
}

# Leaves out, with a word, what this system's archive does not offer as a package of its own.
ensure_browser() {
  command -v chromium >/dev/null && command -v chromedriver >/dev/null && return
  if [ "$(. /etc/os-release && echo "$ID")" = debian ]; then
    ensure_packages "${BROWSER_PACKAGES[@]}"
  else
    echo "No Chromium and chromedriver on PATH: the tests of the dashboard will be skipped."
  fi
}

# Installing them must not start them: tests run their own, on free ports.
ensure_proxies() {
  command -v caddy >/dev/null && command -v nginx >/dev/null && command -v systemd-analyze \
    >/dev/null && return
  if [ "$(. /etc/os-release && echo "$ID")" = debian ]; then
    RUNLEVEL=1 ensure_packages "${PROXY_PACKAGES[@]}"
  else
    echo "Without caddy, nginx and systemd-analyze on PATH their tests will be skipped."
  fi
}

# A system without a table of hosts does not know the name localhost, by which servers, browsers and
# their drivers are reached.
ensure_localhost() { getent hosts localhost >/dev/null || ensure_packages libnss-myhostname; }
