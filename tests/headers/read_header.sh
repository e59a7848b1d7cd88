#!/bin/bash
# read_header.sh FOLDER HEADER C_COMPILER CXX_COMPILER: whether the header below the folder compiles alone, and
# twice, in each standard of C and C++ that it is meant for, without a warning. Exit code 0: it does, 1: not;
# 77: a compiler is missing, which with CI=true counts as a failure.
set -u
[ $# = 4 ] || { echo "usage: read_header.sh FOLDER HEADER C_COMPILER CXX_COMPILER" >&2; exit 2; }
folder=$1
header=$2
warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wundef -Werror)
failed=0

for compiler in "$3" "$4"; do
    if ! command -v "$compiler" >/dev/null; then
        echo "$compiler is not installed"
        [ "${CI-}" != true ] || exit 1
        exit 77
    fi
done

# read_as COMPILER LANGUAGE STANDARD
read_as() {
    printf '#include "%s"\n#include "%s"\n' "$header" "$header" |
        "$1" -x "$2" -std="$3" "${warnings[@]}" -I "$folder" -fsyntax-only - ||
        { echo "$1 refuses $header as $3"; failed=1; }
}

for standard in c11 c17; do
    read_as "$3" c $standard
done
for standard in c++17 c++20; do
    read_as "$4" c++ $standard
done
exit $failed
