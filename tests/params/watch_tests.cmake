# The tests of who hears of a change in the registry, and of who provides the sets of properties.
set(watch_tests
    effects_store_provider_test.cpp
    fx_property_sets_test.cpp
    fx_store_watcher_close_test.cpp
    fx_store_watcher_processes_test.cpp
    fx_store_watcher_test.cpp)
