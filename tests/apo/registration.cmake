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

# The files of the install kit, which are read where they lie.
if(KORVA_PLATFORM STREQUAL "linux")
    korva_test(korva_install_kit_test
        LABEL unit
        SOURCES
            inf_faults.cpp
            inf_file.cpp
            inf_file_test.cpp
            install_kit_test.cpp
        LIBRARIES korva_engine korva_registration korva_server_resources korva_test_endpoint
        DEFINITIONS
            KORVA_INSTALL_KIT="${PROJECT_SOURCE_DIR}/packaging/windows"
            KORVA_VERSION_RESOURCE="${PROJECT_SOURCE_DIR}/src/apo/library/korva.rc")
endif()

# The library from outside; on Windows by what only that has: its own program that registers, COM, type libraries,
# and resources.
if(KORVA_PLATFORM STREQUAL "linux")
    korva_test(korva_server_library_test
        LABEL system
        SOURCES linux/server_library_test.cpp
        LIBRARIES korva_platform korva_test_loaded_library korva_test_own_folder korva_test_registry
        DEFINITIONS KORVA_SERVER_LIBRARY="$<TARGET_FILE:KORVA>")
    add_dependencies(korva_server_library_test KORVA)
endif()
if(KORVA_PLATFORM STREQUAL "windows")
    add_executable(korva_class_user windows/class_user.cpp)
    target_include_directories(korva_class_user PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(korva_class_user PRIVATE korva_options ole32)
    korva_test(korva_server_library_test
        LABEL wine
        RESOURCE_LOCK korva_server
        SOURCES windows/server_library_test.cpp
        LIBRARIES korva_platform korva_test_run_program
        DEFINITIONS
            KORVA_CLASS_USER="$<TARGET_FILE:korva_class_user>"
            KORVA_SERVER_LIBRARY="$<TARGET_FILE:KORVA>")
    add_dependencies(korva_server_library_test korva_class_user KORVA)
    korva_test(korva_library_file_test
        LABEL wine
        SOURCES
            windows/library_file_test.cpp
            windows/type_library_test.cpp
        LIBRARIES ole32 oleaut32 version
        DEFINITIONS KORVA_SERVER_LIBRARY="$<TARGET_FILE:KORVA>")
    add_dependencies(korva_library_file_test KORVA)
    korva_test(korva_install_kit_test
        LABEL wine
        RESOURCE_LOCK korva_telemetry_key
        SOURCES
            inf_file.cpp
            windows/install_kit_test.cpp
        LIBRARIES korva_platform korva_test_registry setupapi
        DEFINITIONS KORVA_INSTALL_KIT="${PROJECT_SOURCE_DIR}/packaging/windows")
    add_test(NAME wine.KORVA.NeedsWhatEveryWindowsHas
        COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/windows/imports_test.sh ${CMAKE_OBJDUMP} $<TARGET_FILE:KORVA>)
    set_tests_properties(wine.KORVA.NeedsWhatEveryWindowsHas PROPERTIES LABELS wine TIMEOUT 60)
endif()
