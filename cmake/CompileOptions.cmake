# What every target is compiled with, as one interface target: DSP modules, which see the public headers only.
add_library(korva_module_options INTERFACE)
target_compile_features(korva_module_options INTERFACE cxx_std_20 c_std_11)
target_include_directories(korva_module_options INTERFACE ${PROJECT_SOURCE_DIR}/include)
target_compile_options(korva_module_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wundef -Werror
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual>
    -fvisibility=hidden
    # GCC marks some variables of templates as one in the process; the loader keeps a library with such for good.
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>
    # Results are defined to the bit: one multiply and one add are two roundings.
    -ffp-contract=off)
# Release is -O2: what the plain kernels are measured at.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -g1")
set(CMAKE_C_FLAGS_RELEASE "-O2 -g1")
# Line numbers are all that a report of a sanitizer needs.
set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1 -fno-omit-frame-pointer")
set(CMAKE_C_FLAGS_DEBUG "-O1 -g1 -fno-omit-frame-pointer")

# And everything else, which sees the sources.
add_library(korva_options INTERFACE)
target_link_libraries(korva_options INTERFACE korva_module_options)
target_include_directories(korva_options INTERFACE ${PROJECT_SOURCE_DIR}/src)

if(WIN32)
    set(KORVA_PLATFORM windows)
    target_compile_definitions(korva_options INTERFACE
        _WIN32_WINNT=0x0A00 WINVER=0x0A00 NOMINMAX WIN32_LEAN_AND_MEAN UNICODE _UNICODE)
else()
    set(KORVA_PLATFORM linux)
    # All symbols are bound when a library is loaded: the audio thread never meets the dynamic linker.
    target_link_options(korva_module_options INTERFACE LINKER:-z,now LINKER:-z,relro)
endif()
target_include_directories(korva_options INTERFACE ${PROJECT_SOURCE_DIR}/src/platform/${KORVA_PLATFORM})

set(KORVA_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them")
if(KORVA_SANITIZE)
    target_compile_options(korva_module_options INTERFACE -fsanitize=${KORVA_SANITIZE} -fno-sanitize-recover=all)
    target_link_options(korva_module_options INTERFACE -fsanitize=${KORVA_SANITIZE})
endif()
