# The tests of the catalogue, and of parameters and their readers.
set(parameter_tests
    catalogue_rows_test.cpp
    catalogue_test.cpp
    chunk_plan_test.cpp
    chunk_reader_test.cpp
    parameter_set_test.cpp
    parameter_test.cpp
    preset_blob_test.cpp)
