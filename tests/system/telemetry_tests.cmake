# What objects show of themselves. Where all processes share a registry, they share the place for it, too.
add_executable(korva_telemetry_companion telemetry_companion.cpp)
target_include_directories(korva_telemetry_companion PRIVATE ${PROJECT_SOURCE_DIR})
target_compile_definitions(korva_telemetry_companion PRIVATE KORVA_LIBRARY="$<TARGET_FILE:KORVA>")
target_link_libraries(korva_telemetry_companion
    PRIVATE korva_platform korva_test_loaded_library korva_options)
add_dependencies(korva_telemetry_companion KORVA)

set(telemetry_runs "")
if(WIN32)
    set(telemetry_runs RUN_SERIAL)
endif()
korva_test(korva_system_telemetry_test
    LABEL system
    ${telemetry_runs}
    SOURCES telemetry_test.cpp
    LIBRARIES korva_test_hosted korva_test_conversation korva_test_telemetry_base
    DEFINITIONS KORVA_TELEMETRY_COMPANION="$<TARGET_FILE:korva_telemetry_companion>")
add_dependencies(korva_system_telemetry_test korva_telemetry_companion)

# One that has a function of the database in it, which all others do without.
if(NOT WIN32)
    find_package(SQLite3 REQUIRED)
    korva_test(korva_registry_calls_test
        LABEL system
        SOURCES linux/registry_calls_test.cpp
        LIBRARIES korva_test_hosted korva_test_telemetry_base SQLite::SQLite3)
endif()
