# Debian packages that a script needs: which are missing, and how they get onto the machine.
# Sourced by bash scripts.

# Prints those of its arguments that are not installed, a line each.
missing_packages() {
    local installed
    installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^installed //p')
    printf '%s\n' "$@" | grep -vxF -e "${installed:-(none)}"
}

# need_packages LOG PACKAGE...: installs what is missing. Neither calls apt-get nor asks for rights when
# nothing is. False after a line on standard error if it can't.
need_packages() {
    local log=$1 missing as_root=()
    shift
    if ! command -v dpkg-query >/dev/null; then
        echo "packages: no dpkg-query here: install by hand what these are on this system: $*" >&2
        return 1
    fi
    missing=$(missing_packages "$@" | tr '\n' ' ')
    [ -n "$missing" ] || return 0
    if [ "$(id -u)" != 0 ]; then
        if ! command -v sudo >/dev/null || ! { sudo -n true 2>/dev/null || [ -t 2 ]; }; then
            echo "packages: run as root, or with sudo: apt-get install --no-install-recommends $missing" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "installing $missing"
    install_packages "$log" "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y \
        -o DPkg::Lock::Timeout=300
}

# install_packages LOG APT_GET...: the lists first, which a bare machine doesn't have. Old lists may do when
# no server answers, so a failed update alone is no failure.
install_packages() {
    local log=$1
    shift
    # shellcheck disable=SC2086  # a list of words
    if ! { "$@" update; "$@" install --no-install-recommends $missing; } >"$log" 2>&1 </dev/null; then
        tail -n 5 "$log" | sed 's/^/  /' >&2
        echo "packages: apt-get failed, see $log" >&2
        return 1
    fi
}
