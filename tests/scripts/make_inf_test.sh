#!/bin/bash
# What packaging/windows/make_inf says to a maker, writes, and takes for stale; and whether the INF files here are
# those of the description here. Exit code 0: all as it should be, 1: not; 77: there is no Python.
set -u
root=$(cd "$(dirname "$0")/../.." && pwd -P)
kit=$root/packaging/windows
command -v python3 >/dev/null || { echo "python3 is not installed"; exit 77; }
folder=$(mktemp -d) || exit 1
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
mkdir out
wrong=0
cases=0

complain() {
    echo "wrong: $1"
    sed 's/^/    /' <<<"$2"
    wrong=$((wrong + 1))
}

# gives CODE WORDS COMMAND...: the command ends so and its output has these words; a refusal is one line.
gives() {
    local code=$1 words=$2 said result
    shift 2
    said=$("$@" 2>&1 </dev/null)
    result=$?
    cases=$((cases + 1))
    if [ $result != "$code" ] || [[ $said != *"$words"* ]] || { [ "$code" = 2 ] && [ "$(wc -l <<<"$said")" != 1 ]; }
    then
        complain "$* gave $result, not $code with '$words'" "$said"
    fi
}

# changed STATEMENT: the description, with a statement of Python run on it, its classes `mfx`, `efx` and `sfx`.
changed() {
    python3 - "$kit/description.json" "$1" >changed.json <<'PYTHON'
import json
import sys
kit = json.load(open(sys.argv[1], encoding='utf-8'))
mfx, efx, sfx = kit['classes']
exec(sys.argv[2])
print(json.dumps(kit))
PYTHON
}

# refuses STATEMENT WORDS: a description so changed gives this error, and no file.
refuses() {
    changed "$1"
    gives 2 "make_inf: changed.json: description$2" "$kit/make_inf" changed.json out
    [ -z "$(ls out)" ] || { complain "'$1' left files" "$(ls out)"; rm -f out/*; }
}

# makes STATEMENT: a description so changed gives files, which are in out/ then.
makes() {
    rm -f out/*
    changed "$1"
    gives 0 out/korva_extension.inf "$kit/make_inf" changed.json out
}

# has FILE LINE, lacks FILE LINE: whether a file that was made has a line with these words.
has() {
    cases=$((cases + 1))
    grep -qF -- "$2" "out/$1" || complain "$1 has no '$2'" ''
}
lacks() {
    cases=$((cases + 1))
    ! grep -qF -- "$2" "out/$1" || complain "$1 has '$2'" ''
}

gives 0 '' "$kit/make_inf" --check

gives 0 'usage: make_inf [--check] [DESCRIPTION [FOLDER]]' "$kit/make_inf" --help
gives 2 'usage: make_inf' "$kit/make_inf" --chek
gives 2 'usage: make_inf' "$kit/make_inf" a b c
gives 2 'make_inf: none.json: No such file' "$kit/make_inf" none.json out
gives 2 'No such file' "$kit/make_inf" "$kit/description.json" nowhere
printf '{\n"provider": }\n' >broken.json
gives 2 'make_inf: broken.json: line 2: Expecting value' "$kit/make_inf" broken.json out
printf '{"provider": "a", "provider": "b"}' >broken.json
gives 2 'make_inf: broken.json: provider: expected each key once' "$kit/make_inf" broken.json out
printf '"\xff"' >broken.json
gives 2 'make_inf: broken.json: expected UTF-8' "$kit/make_inf" broken.json out
echo '[]' >broken.json
gives 2 'make_inf: broken.json: description: expected an object' "$kit/make_inf" broken.json out

refuses 'del kit["provider"]' '.provider: expected a value'
refuses 'kit["provdier"] = "a"' '.provdier: expected no such key'
refuses 'kit["provider"] = "50% \"of\""' '.provider: expected a text'
refuses 'kit["provider"] = ""' '.provider: expected a text'
refuses 'kit["provider"] = "a\nb"' '.provider: expected a text'
refuses 'kit["version"] = "2.1.2"' '.version: expected four numbers'
refuses 'kit["version"] = "2.1.2.65536"' '.version: expected four numbers'
refuses 'kit["version"] = "0.0.0.0"' '.version: expected four numbers'
refuses 'kit["version"] = 2' '.version: expected four numbers'
refuses 'kit["date"] = "2026-02-30"' '.date: expected a date'
refuses 'kit["date"] = "22.11.2026"' '.date: expected a date'
refuses 'kit["date"] = 20261122' '.date: expected a date'
refuses 'kit["extensionId"] = "12345678-1234-1234-1234-123456789012"' '.extensionId: expected a GUID in braces'
refuses 'kit["device"]["hardwareIds"] = []' '.device.hardwareIds: expected a list of 1 or more'
refuses 'kit["device"]["hardwareIds"] = ["A,B"]' '.device.hardwareIds[0]: expected letters, digits'
refuses 'kit["device"]["hardwareIds"] = ["A", "a"]' '.device.hardwareIds: expected each of the list once'
refuses 'kit["device"]["nodeType"] = "none"' '.device.nodeType: expected a GUID'
refuses 'kit["modules"] = ["../PELLUX64.dll"]' '.modules[0]: expected the name of a file'
refuses 'kit["modules"] = ["korva.DLL"]' '.modules: expected no module with the name of the library'
refuses 'kit["telemetryKey"] = 1' '.telemetryKey: expected true or false'
refuses 'kit["record"]["MaxInstances"] = 4294967296' '.record.MaxInstances: expected a whole number'
refuses 'kit["record"]["MaxInstances"] = True' '.record.MaxInstances: expected a whole number'
refuses 'mfx["flags"] = -1' '.classes[0].flags: expected a whole number'
refuses 'mfx["clsid"] = "{C26AD82E}"' '.classes[0].clsid: expected a GUID'
refuses 'mfx["modes"] = ["LOUD"]' '.classes[0].modes[0]: expected one of DEFAULT, RAW'
refuses 'mfx["modes"] = []' '.classes[0].settings: expected null for a class without modes'
refuses 'mfx["settings"]["engine"] = None' '.classes[0].settings.engine: expected a GUID'
refuses 'kit["settingsSets"] = ["Default"]' '.classes[0].settings: expected null without the set User'
refuses 'kit["settingsSets"] = ["Volatile"]' '.settingsSets[0]: expected one of Default, User'
refuses 'efx["position"] = "MFX"' '.classes: position: expected another one in each class'
refuses 'efx["clsid"] = mfx["clsid"].lower()' '.classes: clsid: expected another one in each class'
refuses 'mfx.update(modes=[], settings=None); efx["modes"] = []; sfx["modes"] = []' '.classes: expected processing'

# Only what changes the files is stale, and --check writes nothing.
makes 'pass'
gives 0 '' "$kit/make_inf" --check changed.json out
gives 0 'placeholder: description.extensionId' "$kit/make_inf" changed.json out
printf ' ' >>out/korva_component_11.inf
before=$(cksum out/*)
gives 1 "out/korva_component_11.inf: not what make_inf makes" "$kit/make_inf" --check changed.json out
[ "$before" = "$(cksum out/*)" ] || complain '--check wrote' ''
rm out/korva_component_10.inf
gives 1 "out/korva_component_10.inf: not what make_inf makes" "$kit/make_inf" --check changed.json out

# What a maker fills in is no placeholder any more.
makes 'kit["extensionId"] = "{8d3f6c57-6f0e-4d7e-9d0c-0b8b3a1f5a11}"
kit["device"].update(hardwareIds=["HDAUDIO\\A", "USB\\B"], topologies=["Front", "Rear"])
kit["component"]["id"] = "VEN_0A0B&CID_APO"'
[[ $("$kit/make_inf" changed.json out) != *placeholder* ]] || complain 'a placeholder where there is none' ''
has korva_extension.inf 'ExtensionId = {8D3F6C57-6F0E-4D7E-9D0C-0B8B3A1F5A11}'
has korva_extension.inf '%DeviceName% = Korva.Install11,USB\B'
has korva_extension.inf 'AddInterface = %KSCATEGORY_TOPOLOGY%,"Rear",Korva.Topology10'
has korva_component_10.inf 'Korva.Install,SWC\VEN_0A0B&CID_APO'

makes 'kit["modules"] = ["TANMER64.dll", "tuning.bin"]; kit["telemetryKey"] = False'
has korva_component_11.inf 'tuning.bin = 1'
has korva_component_11.inf 'TANMER64.dll = SignatureAttributes.PETrust'
lacks korva_component_11.inf 'tuning.bin = SignatureAttributes'
lacks korva_component_11.inf Kestrelwright
lacks korva_component_11.inf Korva.Telemetry

# A class without modes is registered, and placed nowhere.
makes 'efx["modes"] = []; mfx["settings"] = None'
has korva_component_11.inf 'FriendlyName,,"KORVAEFX"'
lacks korva_extension.inf EFX
lacks korva_extension.inf Korva.Settings

# Characters beyond ASCII: the whole file in UTF-16, which begins with its mark; the others stay.
makes 'kit["device"]["name"] = "Klangverst\u00e4rker \U0001F50A"'
[ "$(head -c 2 out/korva_extension.inf | od -An -tx1)" = ' ff fe' ] || complain 'no mark of UTF-16' ''
iconv -f UTF-16 -t UTF-8 out/korva_extension.inf >text && grep -qF 'DeviceName = "Klangverstärker 🔊"' text ||
    complain 'other text in UTF-16' ''
head -c 2 out/korva_component_10.inf | grep -q '^; ' || complain 'a file in UTF-16 without need' ''

echo "$cases cases, $wrong wrong"
[ $wrong = 0 ]
