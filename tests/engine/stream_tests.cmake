# A stream's life, and what a module is told in it.
korva_test(korva_stream_test
    LABEL unit
    SOURCES
        call_log_test.cpp
        effect_core_threads_test.cpp
        engine_start_test.cpp
        expected_calls.cpp
        notifications_test.cpp
        parameter_traffic_test.cpp
        stream_lock_test.cpp
        volume_level_test.cpp
    LIBRARIES korva_engine korva_test_effect_rig korva_test_support
    DEFINITIONS
        KORVA_MODULE_SUFFIX="${CMAKE_SHARED_MODULE_SUFFIX}"
        KORVA_TEST_MODULES="${KORVA_TEST_MODULES}")
add_dependencies(korva_stream_test korva_host_modules)
