# The object for endpoints of a sound server, as Wine offers them. Each test has a server of its own, and one a
# version of Windows of its own, which all programs in the prefix would see meanwhile.
add_executable(korva_endpoint_system_test windows/noted_devices.cpp windows/real_endpoint_test.cpp)
target_include_directories(korva_endpoint_system_test PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(korva_endpoint_system_test
    PRIVATE korva_test_hosted korva_test_run_program korva_options ole32 GTest::gtest_main)

function(korva_sound_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "SUFFIX" "OPTIONS")
    add_test(NAME wine.${name}${arg_SUFFIX}
        COMMAND ${PROJECT_SOURCE_DIR}/scripts/wine_with_sound ${arg_OPTIONS}
            $<TARGET_FILE:korva_endpoint_system_test> --gtest_filter=${name})
    set_tests_properties(wine.${name}${arg_SUFFIX} PROPERTIES LABELS wine RUN_SERIAL ON
        FAIL_REGULAR_EXPRESSION "0 tests from 0 test suites ran")
endfunction()
korva_sound_test(RealEndpoint.ItsSettingsChooseTheModule)
korva_sound_test(RealEndpoint.APresetThatAnotherProgramWritesReachesTheModuleWhileSoundRuns)
korva_sound_test(RealEndpoint.IsAskedForTheSystemsOwnSetsFromWindows11OnAndElseForNone)
korva_sound_test(RealEndpoint.IsAskedForTheSystemsOwnSetsFromWindows11OnAndElseForNone
    SUFFIX UnderWindows11 OPTIONS --windows-build 22631)
