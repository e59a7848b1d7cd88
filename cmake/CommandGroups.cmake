# The groups of commands of the tool. A group NAME has a folder of that name in tools/korva, where its sources
# declare it by a function addName, see tools/korva/command.h.

# korva_command_group(NAME SOURCES ... [LIBRARIES ...]): the group as the library korva_NAME_commands. A folder that
# lacks something on the system that is built for leaves the call out, and the tool is without the group.
function(korva_command_group group)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
    add_library(korva_${group}_commands STATIC ${arg_SOURCES})
    target_link_libraries(korva_${group}_commands PUBLIC korva_tool_common ${arg_LIBRARIES} PRIVATE korva_cli11)
endfunction()

# korva_command_table(TARGET GROUP...): what tools/korva/command_table.h promises, with those of the groups that
# there are, in this order, as a library that has them all.
function(korva_command_table target)
    add_library(${target} STATIC ${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp)
    target_link_libraries(${target} PUBLIC korva_tool_common)
    set(declarations)
    set(rows)
    foreach(group IN LISTS ARGN)
        if(NOT TARGET korva_${group}_commands)
            continue()
        endif()
        string(SUBSTRING ${group} 0 1 initial)
        string(SUBSTRING ${group} 1 -1 rest)
        string(TOUPPER ${initial} initial)
        string(APPEND declarations "AddCommands add${initial}${rest};\n")
        string(APPEND rows "    &add${initial}${rest},\n")
        target_link_libraries(${target} PUBLIC korva_${group}_commands)
    endforeach()
    file(GENERATE OUTPUT ${target}.cpp CONTENT
"#include \"korva/command_table.h\"

namespace korva::tool {

${declarations}
namespace {

constexpr AddCommands* groups[] = {
${rows}};

}  // namespace

const std::span<AddCommands* const> commandTable(groups);

}  // namespace korva::tool
")
endfunction()
