# What an instance shows of itself. Where all processes share a registry, they share the place for it, too.
set(telemetry_runs "")
if(WIN32)
    set(telemetry_runs RUN_SERIAL)
endif()
korva_test(korva_telemetry_test
    LABEL unit
    ${telemetry_runs}
    SOURCES
        diagnostics_test.cpp
        telemetry_test.cpp
    LIBRARIES korva_engine korva_test_effect_rig korva_test_support)
add_dependencies(korva_telemetry_test korva_host_modules)
