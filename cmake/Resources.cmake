# korva_resources(TARGET [TEXTS number file ...] [RC file ...] [DEPENDS file ...]): what a library, or program,
# carries in its file, as a library of objects to link: texts, which src/platform/resources.h finds by their
# numbers, and on Windows the resources of scripts for its compiler, made anew when one of DEPENDS changes.
function(korva_resources target)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "TEXTS;RC;DEPENDS")
    set(rows)
    set(script)
    while(arg_TEXTS)
        list(POP_FRONT arg_TEXTS number file)
        cmake_path(ABSOLUTE_PATH file)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
        list(APPEND arg_DEPENDS ${file})
        file(READ ${file} text)
        string(APPEND rows "    {${number}, R\"text(${text})text\"},\n")
        string(APPEND script "${number} REGISTRY \"${file}\"\n")
    endwhile()
    if(WIN32)
        file(GENERATE OUTPUT ${target}.rc CONTENT "${script}")
        add_library(${target} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc ${arg_RC})
        set_source_files_properties(${CMAKE_CURRENT_BINARY_DIR}/${target}.rc ${arg_RC}
            PROPERTIES OBJECT_DEPENDS "${arg_DEPENDS}")
    else()
        # A raw text may have any character but for its end's.
        file(GENERATE OUTPUT ${target}.cpp CONTENT
"#include \"platform/linux/resource_table.h\"

namespace korva::platform {
namespace {

constexpr TextResource texts[] = {
${rows}};

}  // namespace

const std::span<const TextResource> textResources(texts);

}  // namespace korva::platform
")
        add_library(${target} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp)
        target_link_libraries(${target} PRIVATE korva_options)
    endif()
endfunction()
