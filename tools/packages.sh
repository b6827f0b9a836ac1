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
    "${root[@]}" apt-get update -q
    "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# What configuring any preset takes: the tests are part of every build tree.
build_packages=(cmake ninja-build g++ ccache git googletest python3)
mingw64_packages=(g++-mingw-w64-x86-64-win32 binutils-mingw-w64-x86-64)
mingw32_packages=(g++-mingw-w64-i686-win32 binutils-mingw-w64-i686)
wine_packages=(wine wine64 xvfb)
packaging_packages=(nsis zip cmark-gfm dpkg-dev)
