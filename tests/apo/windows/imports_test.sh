#!/bin/bash
# imports_test OBJDUMP LIBRARY: whether the library needs what every Windows has and nothing else, and exports the
# four entry points of a server and nothing else.
set -u
objdump=$1
library=$2
system='ADVAPI32 KERNEL32 NTDLL OLE32 OLEAUT32 USER32 WINMM MSVCRT'
entries='DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer'
failed=0

headers=$("$objdump" -p "$library") || exit 1
imports=$(sed -nE 's/^[[:space:]]*DLL Name: (.*)\.dll$/\U\1/p' <<<"$headers" | sort -u)
[ -n "$imports" ] || { echo "no imports are told"; failed=1; }
for name in $imports; do
    [[ " $system " = *" $name "* ]] || { echo "imports $name.dll, which not every Windows has"; failed=1; }
done

# The table of names: "[   0] DllCanUnloadNow", by newer versions with a base and an ordinal.
exports=$(sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$headers" |
    sed -nE 's/^[[:space:]]*\[ *[0-9]+\].*[[:space:]]([^[:space:]]+)$/\1/p' | sort | tr '\n' ' ')
[ "$exports" = "$entries " ] || { echo "exports '$exports' instead of '$entries'"; failed=1; }
exit $failed
