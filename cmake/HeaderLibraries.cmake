# Libraries that are headers only. One package serves every target system; a cross build sees each in a folder of
# its own, since the system's other headers are not for it.

# korva_header_library(TARGET HEADER [REQUIRED]): the target, if there is FOLDER/FILE, which HEADER is.
function(korva_header_library target header)
    find_path(${target}_INCLUDE ${header} NO_CMAKE_FIND_ROOT_PATH ${ARGN})
    if(NOT ${target}_INCLUDE)
        return()
    endif()
    set(include ${${target}_INCLUDE})
    if(CMAKE_CROSSCOMPILING)
        cmake_path(GET header PARENT_PATH folder)
        set(include ${PROJECT_BINARY_DIR}/headers/${folder})
        file(MAKE_DIRECTORY ${include})
        file(CREATE_LINK ${${target}_INCLUDE}/${folder} ${include}/${folder} SYMBOLIC)
    endif()
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE ${include})
endfunction()

korva_header_library(korva_json nlohmann/json.hpp REQUIRED)
korva_header_library(korva_cli11 CLI/CLI.hpp)
korva_header_library(korva_fmt fmt/core.h)
if(TARGET korva_fmt)
    target_compile_definitions(korva_fmt INTERFACE FMT_HEADER_ONLY)
endif()
