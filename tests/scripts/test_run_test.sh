#!/bin/bash
# What scripts/test makes of how a preset went. CMake, ctest and the package database are played by scripts here,
# so nothing is built or installed.
set -u
root=$(cd "$(dirname "$0")/../.." && pwd -P)
tree=$(mktemp -d) || exit 1
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree/tools"
cp -r "$root/scripts" "$tree/scripts"
wrong=0
cases=0

# plays NAME CODE: a program of that name that prints what it is given here and ends with CODE.
plays() {
    local name=$1 code=$2
    { echo '#!/bin/sh'; echo 'cat <<"END"'; cat; echo END; echo "exit $code"; } >"$tree/tools/$name"
    chmod +x "$tree/tools/$name"
}

# ends CASE CODE LAST_LINE WORDS: scripts/test ends so, with these words somewhere before.
ends() {
    local said code
    said=$(PATH=$tree/tools:$PATH "$tree/scripts/test" release 2>&1)
    code=$?
    cases=$((cases + 1))
    if [ $code != "$2" ] || [ "$(tail -n 1 <<<"$said")" != "$3" ] || [[ $said != *"$4"* ]]; then
        echo "wrong: $1 gave $code, not $2 with '$3' after '$4':"
        sed 's/^/    /' <<<"$said"
        wrong=$((wrong + 1))
    fi
}

plays apt-get 100 <<<'E: no such package'
# The lists of packages may go over several lines.
plays dpkg-query 0 < <(sed -nE '/^(common|release)_packages=\(/,/\)$/p' "$root/scripts/test" |
    sed -E 's/^[a-z]+_packages=\(//; s/\)$//' | tr -s ' ' '\n' | sed -n 's/^./installed &/p')
plays cmake 0 <<<''

plays ctest 0 <<'END'
1/3 Test #1: unit.A ...   Passed    0.01 sec

100% tests passed, 0 tests failed out of 3

Total Test time (real) =   1.04 sec
END
ends 'a run without fault' 0 '3 passed, 0 failed' 'release   3 passed, 0 failed ('

plays ctest 8 <<'END'
Test project /somewhere
    Start 1: unit.A
1/9 Test #1: unit.A ...   Passed    0.01 sec
2/9 Test #2: unit.B ...***Failed    0.01 sec
what it said

44% tests passed, 5 tests failed out of 9

The following tests did not run:
	  6 - unit.C (Skipped)
	  7 - unit.D (Skipped)
	  8 - unit.E (Disabled)

The following tests FAILED:
	  2 - unit.B (Failed)
END
ends 'a run with failed and skipped tests' 1 '2 passed, 5 failed' 'what it said'
ends 'skipped tests' 1 '2 passed, 5 failed' '2 passed, 5 failed, 2 skipped ('

plays ctest 0 <<<'No tests were found!!!'
ends 'a preset without tests' 1 '0 passed, 1 failed' 'FAILED: ran no test'

plays ctest 0 <<'END'
100% tests passed, 0 tests failed out of 1

The following tests did not run:
	  6 - unit.C (Skipped)
END
ends 'a preset whose tests are all skipped' 1 '0 passed, 1 failed' 'FAILED: ran no test'

plays ctest 3 <<<'100% tests passed, 0 tests failed out of 2'
ends 'a ctest that ends badly for no test' 1 '2 passed, 1 failed' 'FAILED: ctest ended with 3'

plays ctest 139 <<<''
ends 'a ctest that crashes' 1 '0 passed, 1 failed' 'FAILED: ran no test'

cat >"$tree/tools/cmake" <<'END'
#!/bin/sh
[ "$1" != --build ] || { printf 'FAILED: a.o\ncc -c a.c\na.c:1: error: no\n[2/3] more\n'; exit 1; }
END
ends 'a failed build' 1 '0 passed, 1 failed' "FAILED: can't be built, see build/release/build.log"
ends 'what the compiler said' 1 '0 passed, 1 failed' 'a.c:1: error: no'

plays cmake 1 <<<'CMake Error at CMakeLists.txt:1: nothing there'
ends 'a failed configuration' 1 '0 passed, 1 failed' 'nothing there'

plays dpkg-query 0 <<<''
plays id 0 <<<'0'
ends 'a package that is not to be had' 1 '0 passed, 1 failed' 'E: no such package'

exec 8>"$tree/build/test.lock"
flock 8
ends 'a second run in one checkout' 1 '0 passed, 1 failed' 'another run is going on'

echo "$cases runs, $wrong wrong"
[ $wrong = 0 ]
