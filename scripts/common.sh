# What the scripts share; sourced, not run. Changes to the root of the tree.
# shellcheck shell=bash disable=SC2034

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit

readonly build_packages=(
    g++ cmake ninja-build ccache pkgconf python3
    qt6-base-dev qt6-svg-dev libqt6sql6-sqlite libqt6sql6-psql postgresql libcurl4-openssl-dev libssl-dev libspdlog-dev
    libcpp-httplib-dev libcli11-dev nlohmann-json3-dev libsqlitecpp-dev libsqlite3-dev libedit-dev
    libgtest-dev libgmock-dev libbenchmark-dev
)
# For the tests of the simulator's page, which are skipped without it.
readonly page_packages=(chromium)
readonly lint_packages=(clang-format clang-tidy cppcheck)
readonly fuzz_packages=(clang libclang-rt-14-dev)
readonly package_packages=(dpkg-dev fakeroot lintian debootstrap)
readonly docs_packages=(mscgen)
readonly bench_packages=(gnuplot-nox jq strace)

say() {
    printf '\n== %s\n' "$*"
}

# Installs those of the given Debian packages that are missing. Asks for no rights when none is.
install_packages() {
    local package missing=()
    for package in "$@"; do
        if [[ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" != installed ]]; then
            missing+=("$package")
        fi
    done
    if ((${#missing[@]} == 0)); then
        return
    fi
    say "Installing ${missing[*]}"
    local as_root=()
    if ((EUID != 0)); then
        as_root=(sudo)
    fi
    "${as_root[@]}" apt-get update
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
}

# Installs Node.js with npm from Debian, unless they are there already.
install_node() {
    if ! command -v node >/dev/null || ! command -v npm >/dev/null; then
        install_packages nodejs npm
    fi
}

# Configures a preset; quick if nothing has changed.
configure() {
    say "Configuring build/$1"
    cmake --preset "$1"
}

# Waits, at most ten seconds, until a command succeeds.
wait_for() {
    local tries
    for ((tries = 0; tries < 100; ++tries)); do
        if "$@"; then
            return
        fi
        sleep 0.1
    done
    echo "Gave up waiting for: $*" >&2
    return 1
}

# Starts the service's stand-in: start_service BIN FOLDER PORT [OPTION...]. Its database, its log and the file with its
# port are in FOLDER. Sets `service` to its process; fails as soon as that has ended.
start_service() {
    rm -f "$2/port"
    "$1/loyalty-sim" serve --database "$2/service.db" --port "$3" --port-file "$2/port" "${@:4}" >>"$2/service.log" 2>&1 &
    service=$!
    wait_for has_begun_or_ended "$2/port" "$service"
    [[ -s "$2/port" ]]
}

has_begun_or_ended() {
    [[ -s "$1" ]] || ! kill -0 "$2" 2>/dev/null
}

# Ends processes of this shell, passing over those that have ended: for traps, which `set -e` would cut short.
end_processes() {
    local process
    for process in "$@"; do
        kill "$process" 2>/dev/null || true
        wait "$process" 2>/dev/null || true
    done
}
