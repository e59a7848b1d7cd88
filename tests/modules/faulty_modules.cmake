# Modules with a fault each, for the conformance run to find. Each is linked with the honest one, whose functions
# are weak, and has its fault in the place of one of them.
if(NOT TARGET korva_module_commands)
    return()
endif()

function(korva_faulty_module name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "LANGUAGE" "")
    list(APPEND sources faulty/honest_module.c faulty/${name}.${arg_LANGUAGE})
    korva_module(korva_${name}_module NAME ${name} FOLDER ${KORVA_TEST_MODULES} SOURCES ${sources})
    target_include_directories(korva_${name}_module PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(korva_${name}_module PRIVATE m)
    add_dependencies(korva_faulty_modules korva_${name}_module)
endfunction()

add_custom_target(korva_faulty_modules)
korva_module(korva_honest_module NAME honest FOLDER ${KORVA_TEST_MODULES} SOURCES faulty/honest_module.c)
target_include_directories(korva_honest_module PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(korva_honest_module PRIVATE m)
add_dependencies(korva_faulty_modules korva_honest_module)
foreach(name IN ITEMS
        allocates answers_anything busy_thread calls_system changes_rounding counts_blocks crashes_at_load
        crashes_at_unload create_crashes create_exits create_fails expects_terminator forgets_nothing forks
        hangs hesitates insane_formats keeps_format keeps_nan keeps_parameter keeps_text lacks_entry leaks
        leaks_descriptors leaves_answers leaves_group leaves_thread locks locks_by_the_standard long_records
        makes_nan one_layout reads_before reads_beyond reads_parameter reads_past_record scribbler
        shared_state slow starts_with_old_sound stays_loaded unsafe_parameters waits_for_sound wild_table
        wrong_counts)
    korva_faulty_module(${name} LANGUAGE c)
endforeach()
korva_faulty_module(throws LANGUAGE cpp)
target_link_options(korva_stays_loaded_module PRIVATE LINKER:-z,nodelete)

# Without the honest one: it has what these lack.
foreach(name IN ITEMS lacks_create lacks_process)
    korva_module(korva_${name}_module NAME ${name} FOLDER ${KORVA_TEST_MODULES} SOURCES faulty/${name}.c)
    add_dependencies(korva_faulty_modules korva_${name}_module)
endforeach()
