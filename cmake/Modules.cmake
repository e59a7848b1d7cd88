# korva_module(TARGET NAME name FOLDER folder SOURCES ... [DEFINITIONS ...]): a DSP module, as the file NAME.so or
# NAME.dll in FOLDER.
function(korva_module target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "NAME;FOLDER" "SOURCES;DEFINITIONS")
    add_library(${target} MODULE ${arg_SOURCES})
    target_compile_definitions(${target} PRIVATE ${arg_DEFINITIONS})
    target_link_libraries(${target} PRIVATE korva_module_options)
    set_target_properties(${target} PROPERTIES
        PREFIX ""
        OUTPUT_NAME ${arg_NAME}
        LIBRARY_OUTPUT_DIRECTORY ${arg_FOLDER})
endfunction()
