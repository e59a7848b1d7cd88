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
