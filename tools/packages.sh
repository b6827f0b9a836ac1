# need PACKAGE...: installs what is missing of these Debian packages, and says so. To be sourced.
# Nothing is asked of the network when all are there.

need() {
    local missing=() package
    if ! command -v dpkg-query >/dev/null; then
        echo "This is no Debian system; these packages must be there under their own names: $*" >&2
        return 0
    fi
    for package; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0

    local root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "Please install as root: apt-get install ${missing[*]}" >&2; return 1; }
        root=(sudo)
    fi
    echo "Installing: ${missing[*]}"
    apt_get update && apt_get install -y --no-install-recommends "${missing[@]}"
}

# Another program may hold one of the package locks, often a new machine that brings itself up to date: it is waited for.
# (apt-get's own waiting knows only one of the three locks.)
apt_get() {
    local errors status limit=$((SECONDS + 900)) told=
    errors=$(mktemp)
    while status=0; do
        "${root[@]}" env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get -q "$@" 2>"$errors" || status=$?
        cat "$errors" >&2
        { [ $status -ne 0 ] && grep -qE 'Could not get lock|Unable to (lock|acquire)' "$errors"; } || break
        [ $SECONDS -lt $limit ] || { echo "The package lock is still held after 15 minutes." >&2; break; }
        [ -n "$told" ] || echo "Another program holds the package lock; waiting for it." >&2
        told=yes
        sleep 3
    done
    rm -f "$errors"
    return $status
}

# What configuring any preset takes: the tests are part of every build tree.
build_packages=(cmake ninja-build g++ ccache git googletest python3)
mingw64_packages=(g++-mingw-w64-x86-64-win32 binutils-mingw-w64-x86-64)
mingw32_packages=(g++-mingw-w64-i686-win32 binutils-mingw-w64-i686)
wine_packages=(wine wine64 xvfb)
packaging_packages=(nsis zip cmark-gfm dpkg-dev)
