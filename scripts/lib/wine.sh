# Windows programs on Linux: a Wine prefix of our own, made on demand. Sourced by sh and bash scripts that
# have set `root` to the project's folder.

wine_bin=/usr/lib/wine   # /usr/bin/wine looks for a 32-bit Wine first and says so

# KORVA_WINEPREFIX names another prefix. WINEPREFIX doesn't count: it may be somebody's own.
wine_environment() {
    WINEPREFIX=${KORVA_WINEPREFIX:-$root/build/wineprefix}
    WINEDEBUG=${WINEDEBUG:--all}
    WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
    HOME=$WINEPREFIX.home   # Wine links the user's folders into the prefix: give it others
    export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES HOME
    unset DISPLAY WAYLAND_DISPLAY XDG_CONFIG_HOME XDG_CACHE_HOME XDG_DATA_HOME
}

# Makes the prefix unless it is there. Several at once wait for the first. The stamp is written last, and
# the prefix is made under another name, so one that is there is whole.
wine_need_prefix() {
    [ ! -e "$WINEPREFIX/korva_ready" ] || return 0
    mkdir -p "$(dirname "$WINEPREFIX")" || return 1
    (
        flock 9 || exit 1
        [ ! -e "$WINEPREFIX/korva_ready" ] || exit 0
        if [ -e "$WINEPREFIX" ]; then
            echo "wine: $WINEPREFIX is there and was not made by these scripts; remove it" >&2
            exit 1
        fi
        wine_make_prefix "$WINEPREFIX.new" 9>&- && mv "$WINEPREFIX.new" "$WINEPREFIX"
    ) 9>"$WINEPREFIX.lock"
}

# wine_make_prefix FOLDER. No output of Wine may reach a pipe of ours: services that its first program
# starts inherit it and keep it open.
wine_make_prefix() {
    rm -rf "$1"
    mkdir -p "$1" "$HOME"
    if (
        WINEPREFIX=$1
        "$wine_bin/wine64" wineboot -i &&
            # Without a sound server the device list is empty at once, and ALSA is not tried.
            "$wine_bin/wine64" reg add 'HKCU\Software\Wine\Drivers' /v Audio /d pulse /f &&
            "$wine_bin/wine64" winecfg -v win10 &&
            "$wine_bin/wineserver" -k
        made=$?
        "$wine_bin/wineserver" -w
        exit $made
    ) </dev/null >"$WINEPREFIX.log" 2>&1; then
        : >"$1/korva_ready"
    else
        echo "wine: can't make a prefix, see $WINEPREFIX.log" >&2
        return 1
    fi
}

# Keeps the prefix's server between programs, which saves 0.4 s a program. It ends by itself two minutes
# after the last one, should nobody be left to stop it. A server that is about to go must go first: it
# would not take the wish to stay.
wine_start_server() {
    wine_stop_server
    setsid "$wine_bin/wineserver" -p120 </dev/null >/dev/null 2>&1
}

# Ends our prefix's server and all its programs, and nobody else's.
wine_stop_server() {
    [ -d "$WINEPREFIX" ] || return 0
    "$wine_bin/wineserver" -k </dev/null >/dev/null 2>&1
    "$wine_bin/wineserver" -w </dev/null >/dev/null 2>&1
}
