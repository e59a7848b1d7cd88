# GoogleTest from Debian's sources, so that one version serves the native and the Windows build.
include(GoogleTest)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)

# korva_test(NAME [RUN_SERIAL] LABEL label [RESOURCE_LOCK name] SOURCES ... LIBRARIES ...): a GoogleTest program, each
# of its tests known to ctest as <label>.<suite>.<name>. Of those with a lock of one name, one runs at a time; with
# RUN_SERIAL none but one, of whatever program.
function(korva_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "RUN_SERIAL" "LABEL;RESOURCE_LOCK" "SOURCES;LIBRARIES;DEFINITIONS")
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_compile_definitions(${name} PRIVATE ${arg_DEFINITIONS})
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} korva_options GTest::gtest_main)
    # Reading it takes more than half of the time that a source needs, so it is read once for all of a program.
    # A cache of compiled files, where there is one, can't look behind it.
    if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
        target_precompile_headers(${name} PRIVATE <gtest/gtest.h>)
        # In what is precompiled GCC 12 takes moves of short texts, its own library's, for steps out of bounds.
        target_compile_options(${name} PRIVATE
            $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-restrict -Wno-stringop-overflow>)
    endif()
    # A claim runs for milliseconds and takes GCC seconds to optimise, three times as long with what these two
    # sanitizers add to it. What is tested is compiled as ever.
    if(KORVA_SANITIZE MATCHES address)
        target_compile_options(${name} PRIVATE -O0)
    elseif(CMAKE_BUILD_TYPE STREQUAL Release)
        target_compile_options(${name} PRIVATE -O1)
    endif()
    set(lock)
    if(arg_RESOURCE_LOCK)
        set(lock RESOURCE_LOCK ${arg_RESOURCE_LOCK})
    endif()
    if(arg_RUN_SERIAL)
        list(APPEND lock RUN_SERIAL TRUE)
    endif()
    gtest_discover_tests(${name}
        TEST_PREFIX "${arg_LABEL}."
        PROPERTIES LABELS ${arg_LABEL} ${lock}
        DISCOVERY_TIMEOUT 60
        NO_PRETTY_VALUES)
endfunction()
