#!/bin/bash
# read_header_test.sh CHECK: whether the check of a header refuses what it should.
set -u
check=$1
folder=$(mktemp -d) || exit 2
trap 'rm -rf "$folder"' EXIT
failed=0

# expect CODE CLAIM HEADER_TEXT [C_COMPILER]
expect() {
    printf '%b' "$3" >"$folder/header.h"
    bash "$check" "$folder" header.h "${4-gcc}" g++ >"$folder/output" 2>&1
    code=$?
    [ $code = "$1" ] && return
    echo "FAILED: $2: $code"
    cat "$folder/output"
    failed=1
}

expect 0 'takes a header' '#pragma once\n#include <stdint.h>\ntypedef uint32_t number;\n'
expect 1 'refuses what is no C11' '#pragma once\n#include <stdint.h>\nbool f(uint32_t);\n'
expect 1 'refuses what is no C17' '#pragma once\nstatic_assert(1, "");\n'
expect 1 'refuses what is no C++' '#pragma once\nint f(int class);\n'
expect 1 'refuses what is no C++17' \
    '#pragma once\n#if defined(__cplusplus) && __cplusplus < 202002\n#error old\n#endif\nint f(void);\n'
expect 1 'refuses what leans on another header' '#pragma once\nuint32_t f(void);\n'
expect 1 'refuses a header that cannot be read twice' 'enum { one = 1 };\n'
expect 1 'refuses a warning' '#pragma once\nstatic inline int f(int a) { int b; return a; }\n'
expect 1 'refuses an extension' '#pragma once\nenum { one = 1, };\nstruct s { int a[0]; };\n'
(unset CI; expect 77 'skips for a compiler that is missing' 'int f(void);\n' no-such-cc; exit $failed) || failed=1
(export CI=true; expect 1 'fails there for a compiler that is missing' 'int f(void);\n' no-such-cc; exit $failed) || failed=1

[ $failed = 0 ] && echo "all as expected"
exit $failed
