# Modules that the system's loader refuses: what they need is nowhere, a function or a whole library.
if(NOT KORVA_PLATFORM STREQUAL "linux")
    return()
endif()
korva_module(korva_needing_symbol NAME needing_symbol FOLDER ${KORVA_TEST_MODULES} SOURCES unloadable/needing.c)

add_library(korva_somebody SHARED unloadable/somebody.c)
target_link_libraries(korva_somebody PRIVATE korva_module_options)
korva_module(korva_needing_library NAME needing_library FOLDER ${KORVA_TEST_MODULES} SOURCES unloadable/needing.c)
target_link_libraries(korva_needing_library PRIVATE korva_somebody)
# Without a path to it, the library isn't found.
set_target_properties(korva_needing_library PROPERTIES SKIP_BUILD_RPATH ON)
