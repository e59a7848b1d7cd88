# Modules that show what a host does.

# Records each call, and answers what it is told; a test copies it under the names that it needs.
korva_module(korva_recorder_module
    NAME recorder
    FOLDER ${KORVA_TEST_MODULES}
    SOURCES
        recorder/answers.cpp
        recorder/call_record.cpp
        recorder/recorder.cpp
        recorder/${KORVA_PLATFORM}/system.cpp)
target_include_directories(korva_recorder_module PRIVATE ${PROJECT_SOURCE_DIR})

# Tells the test in which it runs of each call.
korva_module(korva_reporting_module
    NAME reporting
    FOLDER ${KORVA_TEST_MODULES}
    SOURCES
        recorder/${KORVA_PLATFORM}/system.cpp
        reporting/reporting.cpp)
target_include_directories(korva_reporting_module PRIVATE ${PROJECT_SOURCE_DIR})

# Each lacks the export in its name; the last but one lacks nothing, and the last makes no instance.
foreach(lacks IN ITEMS
        Create Free IsInputFormatSupported IsOutputFormatSupported IsCaptureFormatSupported Initialize
        Uninitialize SetInputGain SetParameter SetGetData Clear WakeUp Process Capture nothing)
    korva_module(korva_lacking_${lacks}
        NAME lacking_${lacks}
        FOLDER ${KORVA_TEST_MODULES}
        SOURCES lacking/lacking.c
        DEFINITIONS ZRDSPAPI_${lacks}=unknownToHosts)
    list(APPEND lacking_modules korva_lacking_${lacks})
endforeach()
korva_module(korva_creating_null
    NAME creating_null
    FOLDER ${KORVA_TEST_MODULES}
    SOURCES lacking/lacking.c
    DEFINITIONS KORVA_CREATES_NULL)

# One that leaves most to a library that it needs.
add_library(korva_leaning_support SHARED leaning/support.c)
target_link_libraries(korva_leaning_support PRIVATE korva_module_options)
target_include_directories(korva_leaning_support PUBLIC ${PROJECT_SOURCE_DIR})
korva_module(korva_leaning_module NAME leaning FOLDER ${KORVA_TEST_MODULES} SOURCES leaning/leaning.c)
target_link_libraries(korva_leaning_module PRIVATE korva_leaning_support)


# The same, for a folder that has the library, too: the module looks for it beside itself only.
if(KORVA_PLATFORM STREQUAL "linux")
    korva_module(korva_neighbour_module NAME neighbour FOLDER ${KORVA_TEST_MODULES} SOURCES leaning/leaning.c)
    target_link_libraries(korva_neighbour_module PRIVATE korva_leaning_support)
    set_target_properties(korva_neighbour_module PROPERTIES
        BUILD_WITH_INSTALL_RPATH ON
        INSTALL_RPATH "$ORIGIN")
endif()

foreach(module IN LISTS lacking_modules ITEMS korva_creating_null)
    target_include_directories(${module} PRIVATE ${PROJECT_SOURCE_DIR})
endforeach()
add_custom_target(korva_host_modules
    DEPENDS korva_recorder_module korva_reporting_module ${lacking_modules} korva_creating_null korva_leaning_module)
