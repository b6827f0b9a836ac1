# A Wine prefix of our own, on the user's display or on a virtual one where there is none. To be sourced.
# Everything that runs in the prefix ends with wine_end; nothing is ended by name outside of it.

wine_display_pid=

# wine_begin DIRECTORY: makes the prefix when it is not there yet, and the display when there is none.
wine_begin() {
    WINEPREFIX=$(realpath -m "$1")
    export WINEPREFIX WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml='  # no questions about .NET and HTML
    [ -n "${DISPLAY:-}" ] || wine_virtual_display
    [ -f "$WINEPREFIX/.ready" ] && return
    echo "Making a Wine prefix (some 15 s, only the first time)"
    rm -rf "$WINEPREFIX"
    mkdir -p "$WINEPREFIX"
    wine wineboot -i >"$WINEPREFIX/wineboot.log" 2>&1 || { cat "$WINEPREFIX/wineboot.log" >&2; return 1; }
    wineserver -w
    touch "$WINEPREFIX/.ready"
}

wine_virtual_display() {
    local number
    # In a session of its own: Ctrl-C is not for the screen, on which programs may still have something to ask.
    exec {number}< <(exec setsid Xvfb -displayfd 1 -screen 0 "${WINE_SCREEN:-1280x900}x24" -nolisten tcp 2>/dev/null)
    wine_display_pid=$!
    read -r -t 20 -u "$number" number || { echo "Xvfb does not start" >&2; return 1; }
    export DISPLAY=":$number"
}

# One desktop for every process of the prefix. Its name matters: "shell" is the one that has a taskbar with a
# notification area.
wine_desktop() {
    [ -f "$WINEPREFIX/.desktop" ] && return
    wine 'C:\windows\system32\reg.exe' add 'HKCU\Software\Wine\Explorer' /v Desktop /d shell /f >/dev/null
    wine 'C:\windows\system32\reg.exe' add 'HKCU\Software\Wine\Explorer\Desktops' /v shell /d 800x600 /f >/dev/null
    wineserver -k
    touch "$WINEPREFIX/.desktop"
}

wine_end() {
    wineserver -k 2>/dev/null || true
    [ -n "$wine_display_pid" ] || return 0
    kill "$wine_display_pid" 2>/dev/null || true
    wait "$wine_display_pid" 2>/dev/null || true  # the display's number is free then
}
