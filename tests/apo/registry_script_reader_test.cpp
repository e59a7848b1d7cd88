#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "apo/registration/registry_script.h"
#include "tests/support/registry_tree.h"

namespace korva::apo {
namespace {

using platform::RegistryRoot;
using test::valueText;

const Replacements replacements = {{"NAME", "Other"}, {"PATH", "C:\\it's 100%\\a.dll"}, {"EMPTY", ""}};

/// The one key of a script's one block.
ScriptKey keyOf(const std::string& described) {
    RegistryScript script = readRegistryScript("HKCR { " + described + " }", replacements);
    EXPECT_EQ(script.size(), 1U);
    EXPECT_EQ(script.at(0).keys.size(), 1U);
    return script.at(0).keys.at(0);
}

/// What a script of one key with one value makes of the value.
std::string valueOf(const std::string& described) {
    const ScriptKey key = keyOf("a = " + described);
    return valueText(key.values.at(0).value);
}

/// The line of the error that a script has; 0 if it has none.
std::size_t lineOfError(std::string_view script) {
    try {
        static_cast<void>(readRegistryScript(script, replacements));
        return 0;
    } catch (const RegistryScriptError& error) {
        EXPECT_STRNE(error.what(), "");
        return error.line;
    }
}

TEST(RegistryScriptReader, ReadsNothingFromNothing) {
    EXPECT_TRUE(readRegistryScript("", {}).empty());
    EXPECT_TRUE(readRegistryScript(" \t\r\n", {}).empty());
    EXPECT_TRUE(readRegistryScript("HKCR { }", {}).at(0).keys.empty());
}

TEST(RegistryScriptReader, ReadsAKeyWithItsValuesAndKeysInTheirOrder) {
    const ScriptKey key = keyOf("k = s 'whole' { val b = s 'B' one val a = d '7' two { three } }");

    EXPECT_EQ(key.name, "k");
    ASSERT_EQ(key.values.size(), 3U);
    EXPECT_EQ(key.values[0].name, "");
    EXPECT_EQ(valueText(key.values[0].value), "'whole'");
    EXPECT_EQ(key.values[1].name, "b");
    EXPECT_EQ(valueText(key.values[1].value), "'B'");
    EXPECT_EQ(key.values[2].name, "a");
    EXPECT_EQ(valueText(key.values[2].value), "7");
    ASSERT_EQ(key.keys.size(), 2U);
    EXPECT_EQ(key.keys[0].name, "one");
    EXPECT_EQ(key.keys[1].name, "two");
    ASSERT_EQ(key.keys[1].keys.size(), 1U);
    EXPECT_EQ(key.keys[1].keys[0].name, "three");
}

TEST(RegistryScriptReader, KnowsEachRoot) {
    const RegistryScript script = readRegistryScript(
        "HKCR {} HKCU {} HKLM {} HKEY_CLASSES_ROOT {} HKEY_CURRENT_USER {} HKEY_LOCAL_MACHINE {} hkcr {}",
        {});

    ASSERT_EQ(script.size(), 7U);
    EXPECT_EQ(script[0].root, RegistryRoot::classesRoot);
    EXPECT_EQ(script[1].root, RegistryRoot::currentUser);
    EXPECT_EQ(script[2].root, RegistryRoot::localMachine);
    EXPECT_EQ(script[3].root, RegistryRoot::classesRoot);
    EXPECT_EQ(script[4].root, RegistryRoot::currentUser);
    EXPECT_EQ(script[5].root, RegistryRoot::localMachine);
    EXPECT_EQ(script[6].root, RegistryRoot::classesRoot);
}

TEST(RegistryScriptReader, ReadsWhatIsLeftOfAKeyInTheEnd) {
    EXPECT_EQ(keyOf("k").removal, KeyRemoval::ifEmpty);
    EXPECT_EQ(keyOf("NoRemove k").removal, KeyRemoval::never);
    EXPECT_EQ(keyOf("noremove k").removal, KeyRemoval::never);
    EXPECT_EQ(keyOf("ForceRemove k").removal, KeyRemoval::whole);
    EXPECT_EQ(keyOf("FORCEREMOVE 'k'").removal, KeyRemoval::whole);
}

TEST(RegistryScriptReader, NeedsNoBlanksAroundMarksAndQuotes) {
    const ScriptKey key = keyOf("NoRemove'k'=s'text'{val'v'=d'1'}");

    EXPECT_EQ(key.name, "k");
    EXPECT_EQ(valueText(key.values.at(0).value), "'text'");
    EXPECT_EQ(key.values.at(1).name, "v");
}

TEST(RegistryScriptReader, TakesWhatIsBetweenQuotesAsItIs) {
    EXPECT_EQ(keyOf("'a key {of} = our own'").name, "a key {of} = our own");
    EXPECT_EQ(keyOf("'ForceRemove'").name, "ForceRemove");
    EXPECT_EQ(keyOf("'val'").name, "val");
    EXPECT_EQ(valueOf("s ''"), "''");
    EXPECT_EQ(valueOf("s '\xC3\xA4'"), "'\xC3\xA4'");
    EXPECT_EQ(valueOf("s 'two\nlines'"), "'two\nlines'");
    EXPECT_EQ(valueOf("s bare"), "'bare'");
}

TEST(RegistryScriptReader, TakesTwoQuotesForOne) {
    EXPECT_EQ(valueOf("s 'it''s'"), "'it's'");
    EXPECT_EQ(valueOf("s ''''"), "'''");
    EXPECT_EQ(valueOf("s '''a'''"), "''a''");
}

TEST(RegistryScriptReader, ReadsNumbersOf32Bits) {
    EXPECT_EQ(valueOf("d '0'"), "0");
    EXPECT_EQ(valueOf("d 13"), "13");
    EXPECT_EQ(valueOf("d '4294967295'"), "4294967295");
    EXPECT_EQ(valueOf("d '&H1F'"), "31");
    EXPECT_EQ(valueOf("d '&hffffffff'"), "4294967295");
}

TEST(RegistryScriptReader, ReplacesNamesBetweenPercentSigns) {
    EXPECT_EQ(keyOf("'a %NAME% b'").name, "a Other b");
    EXPECT_EQ(keyOf("%name%").name, "Other");
    EXPECT_EQ(keyOf("'%NAME%%NAME%'").name, "OtherOther");
    EXPECT_EQ(keyOf("k { val '%Name%' = s '' }").values.at(0).name, "Other");
    EXPECT_EQ(valueOf("s '%EMPTY%'"), "''");
    EXPECT_EQ(valueOf("s '100%%'"), "'100%'");
    EXPECT_EQ(valueOf("s '%%NAME%%'"), "'%NAME%'");
}

TEST(RegistryScriptReader, LeavesWhatAReplacementBringsAsItIs) {
    EXPECT_EQ(valueOf("s '%PATH%'"), "'C:\\it's 100%\\a.dll'");
    EXPECT_EQ(valueOf("s %PATH%"), "'C:\\it's 100%\\a.dll'");
}

TEST(RegistryScriptReader, TellsTheLineOfWhatItCantUnderstand) {
    EXPECT_EQ(lineOfError("HKCR\n{\n  k = s '%NAME%'\n}\n"), 0U);
    EXPECT_EQ(lineOfError("HKCR\n{\n  k = s '%MISSING%'\n}\n"), 3U);
    EXPECT_EQ(lineOfError("HKCR\r\n{\r\n k = s 'two\r\nlines'\r\n { val = d 'x' }\r\n}"), 5U);
}

TEST(RegistryScriptReader, RefusesWhatIsNoScript) {
    const std::string longName(256, 'n');
    const std::string zero("HKCR { 'a\0b' }", 14);
    const std::string zeroText("HKCR { a = s 'a\0b' }", 20);
    for (const std::string& script : {
             std::string("HKXX { }"),
             std::string("'HKCR' { }"),
             std::string("{ }"),
             std::string("HKCR"),
             std::string("HKCR k"),
             std::string("HKCR {"),
             std::string("HKCR { }}"),
             std::string("HKCR { k { }"),
             std::string("HKCR { = s 'text' }"),
             std::string("HKCR { k = 'text' }"),
             std::string("HKCR { k = s }"),
             std::string("HKCR { k = b '00' }"),
             std::string("HKCR { k = 's' 'text' }"),
             std::string("HKCR { k = d '' }"),
             std::string("HKCR { k = d '-1' }"),
             std::string("HKCR { k = d '4294967296' }"),
             std::string("HKCR { k = d '&H' }"),
             std::string("HKCR { k = d '1 2' }"),
             std::string("HKCR { k = d '0x10' }"),
             std::string("HKCR { k = s 'open }"),
             std::string("HKCR { k = s 'open'' }"),
             std::string("HKCR { k = s '%NAME' }"),
             std::string("HKCR { k = s '%MISSING%' }"),
             std::string("HKCR { '%EMPTY%' }"),
             std::string("HKCR { '' }"),
             std::string("HKCR { 'a\\b' }"),
             std::string("HKCR { '%PATH%' }"),
             std::string("HKCR { '\xFF' }"),
             std::string("HKCR { k = s '\xFF' }"),
             std::string("HKCR { val v = s 'not in a key' }"),
             std::string("HKCR { k { val v } }"),
             std::string("HKCR { NoRemove ForceRemove k }"),
             std::string("HKCR { Delete k }"),
             std::string("HKCR { NoRemove }"),
             "HKCR { " + longName + " }",
             zero,
             zeroText,
         }) {
        EXPECT_NE(lineOfError(script), 0U) << script;
    }
}

TEST(RegistryScriptReader, TakesAKeysNameOf255Characters) {
    EXPECT_EQ(keyOf(std::string(255, 'n')).name.size(), 255U);
}

std::string keysThisDeep(std::size_t depth) {
    std::string script = "HKCR {";
    for (std::size_t i = 0; i < depth; ++i) {
        script += " k {";
    }
    return script + std::string(depth + 1, '}');
}

TEST(RegistryScriptReader, RefusesKeysMoreThan64Deep) {
    EXPECT_EQ(lineOfError(keysThisDeep(64)), 0U);
    EXPECT_EQ(lineOfError(keysThisDeep(65)), 1U);
    EXPECT_EQ(lineOfError(keysThisDeep(100'000)), 1U);
}

TEST(RegistryScriptReader, RefusesEveryScriptThatIsCutShort) {
    const std::string script =
        "HKCR { NoRemove 'A' = s 'it''s %NAME%' { ForceRemove B { val V = d '&H10' } C } }";
    ASSERT_EQ(lineOfError(script), 0U);

    for (std::size_t length = 1; length < script.size(); ++length) {
        EXPECT_NE(lineOfError(script.substr(0, length)), 0U) << script.substr(0, length);
    }
}

}  // namespace
}  // namespace korva::apo
