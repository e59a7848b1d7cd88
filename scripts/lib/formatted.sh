# Which files clang-format looks after, and which clang-format. Sourced by bash scripts that have set `root`.
# Another major version would format otherwise, so it is an error.

clang_format=
find_clang_format() {
    local candidate
    for candidate in clang-format-14 clang-format; do
        if "$candidate" --version 2>/dev/null | grep -q 'version 14\.'; then
            clang_format=$candidate
            return 0
        fi
    done
    echo "clang-format 14 is not installed (Debian 12: apt-get install clang-format)" >&2
    return 1
}

# formatted_files: their names, each ended by a zero byte.
formatted_files() {
    local folder folders=()
    for folder in include src tools tests bench examples fuzz; do
        [ ! -d "$root/$folder" ] || folders+=("$root/$folder")
    done
    find "${folders[@]}" -type f \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -print0
}
