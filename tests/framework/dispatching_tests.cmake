# Waiting and dispatching: both lists need korva_framework and korva_test_process. The second one is a program of
# its own, with korva_test_allocation_count: it counts all allocations.
set(dispatching_tests
    spin_test.cpp
    ring_queue_test.cpp
    ending_threads_test.cpp
    task_entry_test.cpp
    task_queue_test.cpp
    waitable_counter_test.cpp
    wait_any_test.cpp
    wait_block_test.cpp
    dispatch_task_test.cpp
    dispatcher_test.cpp
    dispatcher_calls_test.cpp
    dispatcher_stop_test.cpp
    delayed_task_test.cpp
    framework_scope_test.cpp)
set(allocation_tests
    allocations_test.cpp)
