#!/bin/bash
# What fuzz/run makes of how fuzzers end. CMake, the package database and the fuzzers are played by scripts here,
# so nothing is built, installed or searched.
set -u
root=$(cd "$(dirname "$0")/../.." && pwd -P)
tree=$(mktemp -d) || exit 1
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree/tools" "$tree/scripts" "$tree/fuzz/corpus/"{quiet,loud} "$tree/build/fuzz/bin"
cp -r "$root/scripts/lib" "$tree/scripts/lib"
cp "$root/fuzz/run" "$tree/fuzz/run"
touch "$tree/fuzz/"{quiet,loud}_fuzz.cpp
echo seed | tee "$tree/fuzz/corpus/quiet/seed" >"$tree/fuzz/corpus/loud/seed"
wrong=0
cases=0

# plays FILE: a program there that does what standard input says.
plays() {
    { echo '#!/bin/bash'; cat; } >"$1"
    chmod +x "$1"
}

# gives CASE CODE WORDS ARGUMENT...: fuzz/run ends so and says these words.
gives() {
    local case=$1 code=$2 words=$3 said result
    shift 3
    said=$(PATH=$tree/tools:$PATH "$tree/fuzz/run" "$@" 2>&1)
    result=$?
    cases=$((cases + 1))
    if [ $result != "$code" ] || [[ $said != *"$words"* ]]; then
        echo "wrong: $case gave $result, not $code with '$words':"
        sed 's/^/    /' <<<"$said"
        wrong=$((wrong + 1))
    fi
}

claim() {
    cases=$((cases + 1))
    "${@:2}" || { echo "wrong: $1"; wrong=$((wrong + 1)); }
}

plays "$tree/tools/dpkg-query" < <(sed -nE '/^need_packages /,/\|\|/p' "$root/fuzz/run" | tr -d '\\|' | tr -s ' ' '\n' |
    sed 's/^/echo installed /')
plays "$tree/tools/cmake" <<<'echo "$@" >>"$(dirname "$0")/cmake.said"'
# A fuzzer that does what it is asked, and adds to the folder that it was given.
plays "$tree/build/fuzz/bin/fuzz_quiet" <<'END'
for word; do
    case $word in
        -runs=*) echo "stat::number_of_executed_units: ${word#-runs=}" ;;
        -*) ;;
        *) [ -e "$word/seed" ] && echo new >"$word/new" ;;
    esac
done
END
plays "$tree/build/fuzz/bin/fuzz_loud" <<'END'
for word; do
    case $word in -artifact_prefix=*) prefix=${word#*=} ;; esac
done
echo input >"${prefix}crash-1"
echo "==1==ERROR: AddressSanitizer: heap-buffer-overflow"
echo "artifact_prefix='$prefix'; Test unit written to ${prefix}crash-1"
echo "stat::number_of_executed_units: 12"
exit 77
END

gives 'a run without a finding' 0 'nothing found' quiet
claim 'the corpus stays as it is' [ "$(ls "$tree/fuzz/corpus/quiet")" = seed ]
claim 'the fuzzer had the seed to begin with' [ -e "$tree/build/fuzz/corpora/quiet/new" ]
claim 'only what is asked for is built' grep -qxF -e '--build --preset fuzz --target fuzz_quiet' "$tree/tools/cmake.said"
gives 'a number of runs' 0 '     4321 runs' --runs 4321 quiet
gives 'a finding' 1 "FOUND: $tree/build/fuzz/findings/loud/crash-1" loud
gives 'what was found' 1 'heap-buffer-overflow' loud
gives 'the targets after one with a finding' 1 'quiet ' loud quiet
gives 'all targets' 1 'quiet '

plays "$tree/build/fuzz/bin/fuzz_quiet" <<<'exit 3'
gives 'a fuzzer that ends badly without an input' 1 'no input kept, the program ended with 3' quiet
plays "$tree/build/fuzz/bin/fuzz_quiet" <<<'echo "stat::number_of_executed_units: 10"'
gives 'a fuzzer that stops too early' 1 '       10 runs' --runs 11 quiet
plays "$tree/build/fuzz/bin/fuzz_quiet" <<<':'
gives 'a fuzzer that does nothing' 1 '        0 runs' quiet
rm -r "$tree/fuzz/corpus/quiet"
gives 'a target without a corpus' 2 "can't copy the corpus of quiet" quiet
plays "$tree/tools/cmake" <<<'[ "$1" != --build ] || { echo "a.c:1: error: no"; exit 1; }'
gives 'a failed build' 2 'a.c:1: error: no' loud

exec 8>"$tree/build/fuzz.lock"
flock 8
gives 'a second run in one checkout' 2 'another run is going on' loud

echo "$cases cases, $wrong wrong"
[ $wrong = 0 ]
