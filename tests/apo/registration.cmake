# The registration of the library. It writes to what the whole machine shares on Windows, so one at a time there.
set(registration_sources)
set(registration_libraries)
set(registration_lock RESOURCE_LOCK korva_server)
if(KORVA_PLATFORM STREQUAL "linux")
    set(registration_lock)
    list(APPEND registration_sources
        linux/registration_refusals_test.cpp
        ${PROJECT_SOURCE_DIR}/tests/support/linux/environment.cpp)
    list(APPEND registration_libraries korva_test_own_folder)
endif()
korva_test(korva_registration_test
    LABEL unit
    ${registration_lock}
    SOURCES
        apo_registration_test.cpp
        registry_script_reader_test.cpp
        registry_script_test.cpp
        server_registration_test.cpp
        ${registration_sources}
    LIBRARIES korva_registration korva_server_resources korva_test_registry ${registration_libraries})
