#!/bin/bash
# Whether scripts/check_includes finds each kind of breach, and only those: it runs over small trees that are
# made here. Ends with 1 after saying which of them it judged wrongly.
set -u
check=$(cd "$(dirname "$0")/../.." && pwd -P)/scripts/check_includes
tree=$(mktemp -d) || exit 1
trap 'rm -rf "$tree"' EXIT
wrong=0
cases=0

# put FILE LINE...: a source of the tree, with these lines.
put() {
    local file=$tree/$1
    shift
    mkdir -p "$(dirname "$file")"
    printf '%s\n' "$@" >"$file"
}

# A tree in order, with something in each kind of place. Each case starts from it.
new_tree() {
    rm -rf "${tree:?}"/*
    put include/korva/dsp_module.h '#pragma once' '#include <stdint.h>'
    put src/platform/clock.h '#pragma once'
    put src/platform/published/records.h '#pragma once' '#include "native/types.h"'
    put src/platform/linux/native/types.h '#pragma once' '#include <sys/types.h>'
    put src/platform/windows/native/types.h '#pragma once' '#include <windows.h>'
    put src/platform/windows/clock.cpp '#include "platform/clock.h"' '#ifdef _WIN32' '#endif'
    put src/rt/mixer.h '#pragma once' '#include <array>' '#include "platform/published/records.h"'
    put src/rt/kernels/fast.cpp '#include <immintrin.h>' '#include "rt/mixer.h"'
    put src/framework/counter.h '#pragma once' '#include "rt/mixer.h"' '#include "korva/dsp_module.h"'
    put src/engine/core.cpp '#include "framework/counter.h"' '#include "platform/clock.h"' '#include <fmt/core.h>'
    put tools/korva/main.cpp '#include "korva/options.h"' '#include "engine/core.h"'
    put tools/korva/options.h '#pragma once'
    put src/engine/core.h '#pragma once'
    put tests/support/system.h '#pragma once' '#ifdef __linux__' '#endif'
    put examples/modules/loud/gain.h '#pragma once' '#include "korva/dsp_module.h"'
    put examples/modules/loud/loud.cpp '#include "gain.h"'
    put tests/rt/mixer_test.cpp '#include "tests/support/system.h"' '#include "engine/core.h"'
}

complain() {
    echo "wrong: $1"
    sed 's/^/    /' <<<"$2"
    wrong=$((wrong + 1))
}

# passes NAME: the tree is in order.
passes() {
    local said code
    said=$("$check" "$tree" 2>&1)
    code=$?
    cases=$((cases + 1))
    [ $code = 0 ] && [ -z "$said" ] || complain "$1 gave $code" "$said"
}

# fails NAME FILE:LINE WORDS: there is one finding, at that place and with these words in it.
fails() {
    local said code
    said=$("$check" "$tree" 2>&1)
    code=$?
    cases=$((cases + 1))
    [ $code = 1 ] && [ "$(wc -l <<<"$said")" = 1 ] && [[ $said == "$2: "*"$3"* ]] ||
        complain "$1 gave $code, not 1 with one finding '$2: ...$3...'" "$said"
}

new_tree
passes 'a tree in order'

new_tree
put src/rt/bad.cpp '#include <array>' '#include "engine/core.h"'
fails 'an include from below to above' src/rt/bad.cpp:2 'src/engine, which is above it'

new_tree
put src/framework/bad.cpp '#include "korva/options.h"'
fails 'an include of the tool' src/framework/bad.cpp:1 'tools/korva, which is above it'

new_tree
put src/rt/bad.cpp '#include <engine/core.h>'
fails 'an include from below to above in angles' src/rt/bad.cpp:1 'src/engine, which is above it'

new_tree
put src/platform/bad.h '#pragma once' '#  include	"rt/mixer.h"'
fails 'a spaced include' src/platform/bad.h:2 'src/rt, which is above it'

new_tree
put include/korva/bad.h '#pragma once' '#include "platform/clock.h"'
fails 'a public header that needs more of ours' include/korva/bad.h:2 'src/platform, which is above it'

new_tree
put src/engine/bad.cpp '#include "tests/support/system.h"'
fails 'an include of a test' src/engine/bad.cpp:1 'of tests'

new_tree
put src/rt/bad.cpp '#include "platform/clock.h"'
fails 'an include of the platform in rt' src/rt/bad.cpp:1 'may include only src/platform/published'

new_tree
put src/rt/bad.cpp '#include "native/types.h"'
fails "an include of a system's own header in rt" src/rt/bad.cpp:1 'may include only src/platform/published'

new_tree
put src/rt/bad.cpp '#include "korva/dsp_module.h"'
fails 'an include of the public header in rt' src/rt/bad.cpp:1 'may include only src/platform/published'

new_tree
put src/rt/bad.cpp '#include <unistd.h>'
fails 'a system header in rt' src/rt/bad.cpp:1 'not of the standard library'

new_tree
put src/rt/bad.cpp '#include <immintrin.h>'
fails 'intrinsics outside the kernels' src/rt/bad.cpp:1 'outside src/rt/kernels'

new_tree
put src/platform/linux/bad.cpp '#include "korva/dsp_module.h"'
fails "a system's source that includes more" src/platform/linux/bad.cpp:1 'a source of one system'

new_tree
put src/engine/bad.cpp '#include "platform/linux/native/types.h"'
fails "a system's header by its folder" src/engine/bad.cpp:1 "one system's own"

new_tree
put src/engine/bad.cpp '' '#include "framework/nothing.h"'
fails 'an include of nothing' src/engine/bad.cpp:2 'is no file'

new_tree
put src/engine/bad.cpp '#include "core.h"'
fails 'an include from its own folder' src/engine/bad.cpp:1 'is no file'

new_tree
put examples/modules/quiet/bad.cpp '#include "gain.h"'
fails "an include of another module's header" examples/modules/quiet/bad.cpp:1 'is no file'

new_tree
put examples/modules/loud/bad.cpp '#include "rt/mixer.h"'
fails 'an include of more than the public headers in a module' examples/modules/loud/bad.cpp:1 'of src/rt'

new_tree
put src/framework/bad.cpp '#include "../engine/core.h"'
fails 'an include by way of ..' src/framework/bad.cpp:1 'not written from'

new_tree
put src/framework/bad.cpp '#define NAME "engine/core.h"' '#include NAME'
fails 'an include by a macro' src/framework/bad.cpp:2 'not written out'

new_tree
put tests/rt/bad_test.cpp '#include "tests/support/nothing.h"'
fails 'a test that includes nothing' tests/rt/bad_test.cpp:1 'is no file'

new_tree
put src/unknown/bad.cpp 'int i;'
fails 'a folder that is not in the order' src/unknown/bad.cpp:1 'no folder of the order'

new_tree
put src/engine/bad.cpp 'int i;' '#if defined(_WIN32) && 1'
fails 'a macro of one system' src/engine/bad.cpp:2 '_WIN32 outside'

new_tree
put tests/rt/bad_test.cpp '#ifdef __linux__'
fails 'a macro of one system in a test' tests/rt/bad_test.cpp:1 '__linux__ outside'

new_tree
put src/engine/bad.h 'int i;'
fails 'a header that can be read twice' src/engine/bad.h:1 'without #pragma once'

new_tree
put src/engine/bad.h '// #pragma once'
fails 'a header with its #pragma once in a comment' src/engine/bad.h:1 'without #pragma once'

new_tree
mkdir -p "$tree/src/engine" && : >"$tree/src/engine/bad.h"
fails 'an empty header' src/engine/bad.h:1 'an empty source'

new_tree
put src/framework/good.cpp '// #include "engine/core.h"' '/* #include "engine/core.h"' '#include "engine/core.h"' \
    '#ifdef _WIN32 */ #define X "/*"' "constexpr long n = 1'000'000;  // '" '#include "framework/counter.h"  // why' \
    '#define MY_WIN32 __linux__s'
passes 'breaches in comments and in longer names'

new_tree
put src/framework/bad.cpp '#define X "/*"' "char c = '\"'; /* */" '#include "engine/core.h"  /* " */'
fails 'an include after what looks like a comment' src/framework/bad.cpp:3 'src/engine, which is above it'

new_tree
printf '#pragma once\r\n#include "rt/mixer.h"\r\n' >"$tree/src/engine/good.h"
passes 'lines that end as on Windows'

"$check" "$tree/include/korva" >/dev/null 2>&1
[ $? = 2 ] || complain 'a folder without sources did not give 2' ''
"$check" "$tree/nowhere" >/dev/null 2>&1
[ $? = 2 ] || complain 'a folder that is not there did not give 2' ''
"$check" a b >/dev/null 2>&1
[ $? = 2 ] || complain 'two folders did not give 2' ''

echo "$cases trees, $wrong judged wrongly"
[ $wrong = 0 ]
